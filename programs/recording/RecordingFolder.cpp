#include "recording/RecordingFolder.h"

#include "recording/RecordingError.h"
#include "recording/fileNames.h"
#include "recording/frameLine.h"
#include "recording/pngEncoder.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

namespace recording {

namespace fs = std::filesystem;

namespace {

constexpr mode_t fileMode = 0600;

// 0, or the error that ended it.
int writeAll(int descriptor, const void* bytes, std::size_t size) {
    const auto* next = static_cast<const std::byte*>(bytes);
    while (size > 0) {
        const ssize_t written = ::write(descriptor, next, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return written < 0 ? errno : EIO;
        }
        next += written;
        size -= static_cast<std::size_t>(written);
    }
    return 0;
}

// Some file systems tell of a full disk only when a file is closed.
int writeFile(const std::string& path, const void* bytes, std::size_t size) {
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, fileMode);
    if (descriptor < 0) {
        return errno;
    }
    const int error = writeAll(descriptor, bytes, size);
    const int closing = ::close(descriptor) != 0 ? errno : 0;
    return error != 0 ? error : closing;
}

} // namespace

RecordingFolder::RecordingFolder(const fs::path& folder) : folder_(folder) {
    std::error_code error;
    const bool exists = fs::exists(folder_, error);
    const bool fresh = exists && fs::is_directory(folder_, error) && fs::is_empty(folder_, error);
    if (!error && exists && !fresh) {
        throw RecordingError("cannot record to " + folder_.string() +
                             ": it exists and is not empty. Recordings are not replaced: name a "
                             "new folder, or remove this one");
    }
    if (!error && !exists) {
        fs::create_directories(folder_, error);
    }
    if (!error) {
        // Pictures show people.
        fs::permissions(folder_, fs::perms::owner_all, error);
    }
    if (error) {
        throw RecordingError("cannot record to " + folder_.string() + ": " + error.message());
    }
}

RecordingFolder::~RecordingFolder() {
    if (lines_ >= 0) {
        ::close(lines_);
    }
}

void RecordingFolder::begin(const Description& description,
                            const std::map<std::string, std::string>& settings) {
    depth_ = description.depth;
    color_ = description.color;
    for (const auto& [place, text] : settings) {
        std::error_code error;
        fs::create_directories((folder_ / place).parent_path(), error);
        if (error) {
            fail(error.value());
        }
        writeWhole(place, text);
    }
    lines_ = ::open((folder_ / linesFile).c_str(),
                    O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, fileMode);
    if (lines_ < 0) {
        fail(errno);
    }
    // The last one: with it, the folder is a recording.
    using nlohmann::ordered_json;
    writeWhole(descriptionFile,
               jsonOf(description).dump(2, ' ', false, ordered_json::error_handler_t::replace) +
                   "\n");
}

void RecordingFolder::write(const FrameInfo& frame, const PictureView& pictures) {
    encodeDepth(pictures.depth, depth_.width, depth_.height, encoded_);
    writeWhole(depthFile(frames_), encoded_);
    encodeColor(pictures.color, color_.width, color_.height, encoded_);
    writeWhole(colorFile(frames_), encoded_);
    appendLine(lineOf(frame, frames_));
    ++frames_;
}

template <typename Bytes>
void RecordingFolder::writeWhole(const std::string& name, const Bytes& bytes) {
    const std::string path = (folder_ / name).string();
    const std::string unfinished = path + ".part";
    int error = writeFile(unfinished, std::data(bytes), std::size(bytes));
    if (error == 0 && ::rename(unfinished.c_str(), path.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) {
        ::unlink(unfinished.c_str());
        fail(error);
    }
}

// A piece of a line is taken back.
void RecordingFolder::appendLine(const std::string& line) {
    const int error = writeAll(lines_, line.data(), line.size());
    if (error != 0) {
        // Readers pass over a piece that even this leaves.
        static_cast<void>(::ftruncate(lines_, lineBytes_) == 0);
        fail(error);
    }
    lineBytes_ += static_cast<std::int64_t>(line.size());
}

void RecordingFolder::fail(int error) const {
    throw RecordingError("cannot write to " + folder_.string() + ": " + std::strerror(error));
}

} // namespace recording
