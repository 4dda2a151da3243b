#include "scriptedNetwork.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/types.h>

using fuzzing::Network;
using fuzzing::network;

namespace {

addrinfo theAddress;

} // namespace

Network& fuzzing::network() {
    static Network state;
    return state;
}

extern "C" {

int getaddrinfo(const char*, const char*, const addrinfo*, addrinfo** list) {
    theAddress.ai_family = AF_INET;
    *list = &theAddress;
    return 0;
}

void freeaddrinfo(addrinfo*) noexcept {}

int connect(int, const sockaddr*, socklen_t) {
    if (network().reachable) {
        return 0;
    }
    errno = ECONNREFUSED;
    return -1;
}

ssize_t recv(int, void* buffer, size_t size, int) {
    Network& script = network();
    std::size_t count = std::min(size, script.bytes.size() - script.sent);
    if (count == 0 && script.breaks) {
        errno = ECONNRESET;
        return -1;
    }
    if (script.piece != 0) {
        count = std::min(count, script.piece);
    }
    std::memcpy(buffer, script.bytes.data() + script.sent, count);
    script.sent += count;
    return static_cast<ssize_t>(count);
}

} // extern "C"
