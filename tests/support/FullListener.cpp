#include "support/FullListener.h"

#include <cerrno>
#include <cstddef>
#include <stdexcept>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace support {

FullListener::FullListener() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    descriptors_.push_back(socket(AF_INET, SOCK_STREAM, 0));
    if (bind(descriptors_[0], generic, size) != 0 || listen(descriptors_[0], 0) != 0 ||
        getsockname(descriptors_[0], generic, &size) != 0) {
        throw std::runtime_error("cannot listen");
    }
    port_ = ntohs(address.sin_port);
    // On the loopback an attempt that is not answered at once is not answered.
    constexpr std::size_t most = 64;
    while (descriptors_.size() < most) {
        const int filler = socket(AF_INET, SOCK_STREAM, 0);
        descriptors_.push_back(filler);
        fcntl(filler, F_SETFL, O_NONBLOCK);
        const int result = connect(filler, generic, size);
        pollfd watched{filler, POLLOUT, 0};
        if (result != 0 && errno == EINPROGRESS && poll(&watched, 1, 100) == 0) {
            return;
        }
    }
    throw std::runtime_error("the queue does not fill");
}

FullListener::~FullListener() {
    for (const int descriptor : descriptors_) {
        close(descriptor);
    }
}

} // namespace support
