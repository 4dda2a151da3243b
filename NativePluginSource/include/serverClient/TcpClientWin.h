// The blocking TCP client over BSD sockets.
#pragma once

#include "foundation/qvrApi.h"
#include "serverClient/NetworkClient.h"

#include <cstddef>

struct sockaddr;

namespace QVR {

// Without a virtual destructor, as NetworkClient says.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
class QVR_API TcpClientWin : public NetworkClient {
  public:
    int init() override;
    int connect(const char* host, const char* port) override;
    int send(const char* buffer, int length) override;
    int close() override;
    int recv(char* buffer, int length) override;
    int cleanup() override;
    int sendInt(int value) override;
    int rcvInt(int* value) override;
    bool isInit() override;
    bool isConnected() override;
    void setDeadline(std::optional<Clock::time_point> deadline) override;

    int socket = -1;    // the descriptor; -1 when closed; keeps its value after a failed recv
    int lastResult = 0; // of the last name lookup, connect or send

  private:
    // The descriptor to hand to the system: -1 once the number in `socket` has been closed, for
    // by then another thread of the host may have got the same number for a file of its own.
    int liveDescriptor() const;
    void releaseDescriptor();

    // The system's connect and one recv with their results, but not beyond the deadline.
    int connectInTime(const sockaddr* address, unsigned int addressSize) const;
    int receiveInTime(char* buffer, std::size_t size) const;
    // Waits for the event: 0 when it is there, -51 when the deadline has passed, else -1.
    int awaitInTime(short event) const;

    int releasedDescriptor_ = -1;
    std::optional<Clock::time_point> deadline_;
};
#pragma GCC diagnostic pop

} // namespace QVR
