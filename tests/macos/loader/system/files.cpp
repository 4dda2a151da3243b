// Files: the same functions, but for errno and the layout of what stat fills in.
#include "macos/loader/system/errors.h"

#include <cstdint>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace loader {

namespace {

struct TimeOfMacos {
    std::int64_t seconds;
    std::int64_t nanoseconds;
};

struct StatOfMacos {
    std::int32_t device;
    std::uint16_t mode;
    std::uint16_t links;
    std::uint64_t inode;
    std::uint32_t user;
    std::uint32_t group;
    std::int32_t specialDevice;
    TimeOfMacos accessed;
    TimeOfMacos modified;
    TimeOfMacos changed;
    TimeOfMacos born;
    std::int64_t size;
    std::int64_t blocks;
    std::int32_t blockSize;
    std::uint32_t flags;
    std::uint32_t generation;
    std::int32_t spare;
    std::int64_t spares[2];
};
static_assert(sizeof(StatOfMacos) == 144);

TimeOfMacos timeOf(const timespec& time) {
    return {time.tv_sec, time.tv_nsec};
}

int fillStat(const char* path, StatOfMacos* filled) {
    struct stat here {};
    const int result = withErrno([&] { return stat(path, &here); });
    if (result == 0) {
        *filled = {};
        filled->device = static_cast<std::int32_t>(here.st_dev);
        filled->mode = static_cast<std::uint16_t>(here.st_mode); // the same bits in both
        filled->links = static_cast<std::uint16_t>(here.st_nlink);
        filled->inode = here.st_ino;
        filled->user = here.st_uid;
        filled->group = here.st_gid;
        filled->accessed = timeOf(here.st_atim);
        filled->modified = timeOf(here.st_mtim);
        filled->changed = timeOf(here.st_ctim);
        filled->size = here.st_size;
        filled->blocks = here.st_blocks;
        filled->blockSize = static_cast<std::int32_t>(here.st_blksize);
    }
    return result;
}

// Only the switch between waiting and not waiting is used.
int control(int descriptor, int command, int flags) {
    constexpr int nonBlockingOnMacos = 0x4;
    if (command == F_SETFL) {
        const int here = (flags & nonBlockingOnMacos) != 0 ? O_NONBLOCK : 0;
        return withErrno([&] { return fcntl(descriptor, F_SETFL, here); });
    }
    const int result = withErrno([&] { return fcntl(descriptor, F_GETFL); });
    return result < 0 || command != F_GETFL ? -1
           : (result & O_NONBLOCK) != 0     ? nonBlockingOnMacos
                                            : 0;
}

} // namespace

Symbols fileSymbols() {
    static std::FILE* errorStream = stderr;
    return {
        {"_access", translated<access>()},      {"_close", translated<close>()},
        {"_fcntl", addressOf(control)},         {"_fopen", translated<std::fopen>()},
        {"_stat$INODE64", addressOf(fillStat)}, {"___stderrp", addressOf(&errorStream)},
    };
}

} // namespace loader
