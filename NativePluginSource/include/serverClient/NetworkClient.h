// The byte stream from a camera server, as its receiver sees it.
#pragma once

#include "foundation/qvrApi.h"

#include <chrono>
#include <new>
#include <optional>

namespace QVR {

// A blocking client of one server. One owner thread uses a client at a time; nothing here locks.
//
// The order of the virtual functions is part of the binary interface: new ones go to the end, and
// there is no place for a destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
class QVR_API NetworkClient {
  public:
    // A new, closed client of the one kind there is (TCP), or null without memory. The caller owns
    // it and frees it after `close` and `cleanup`.
    static NetworkClient* mkClient();

    // Frees a client that was made with `new`; null does nothing. Only the memory goes: no
    // destructor runs and nothing is closed, so a client of another kind must let go of all that
    // it owns in `cleanup`.
    static void freeClient(NetworkClient* client);

    // `delete client` does the same. Compilers may warn about it for the destructor's sake, which
    // is not called.
    void operator delete(NetworkClient* client, std::destroying_delete_t);

    // Makes the client ready to connect. 0, or a negative code.
    virtual int init() = 0;

    // Connects to `host` (name or address) at `port` (decimal text), neither null. Blocks through
    // name lookup and connection. 0; -1: no address accepted; -2: no such host or no socket.
    virtual int connect(const char* host, const char* port) = 0;

    // Sends up to `length` bytes, not a negative number, with one system call and returns its
    // result.
    virtual int send(const char* buffer, int length) = 0;

    // Ends the connection, if there is one. Always 0.
    virtual int close() = 0;

    // Reads exactly `length` bytes into `buffer`, blocking. A null buffer or a length below 1
    // reads nothing and returns `length`. Otherwise the size of the last piece that arrived
    // (`length` itself only when all came in one piece), the negative result of a failed read,
    // -50 when the peer has closed, or -51 when the deadline has passed. After a failure the
    // connection is gone, though isConnected stays true until `close`.
    virtual int recv(char* buffer, int length) = 0;

    // Closes and releases what init took. Always 0.
    virtual int cleanup() = 0;

    // Sends `value` as four big-endian bytes with one system call and returns its result.
    virtual int sendInt(int value) = 0;

    // Reads four big-endian bytes into `value` with one system call and returns its result.
    virtual int rcvInt(int* value) = 0;

    // Whether init has made the client ready.
    virtual bool isInit() = 0;

    // Whether there is a connection, as far as this end has been told; see recv.
    virtual bool isConnected() = 0;

    using Clock = std::chrono::steady_clock;

    // When connect and recv give up, however much has come by then; nothing: never. One moment
    // for all that follows, so that a server which sends a byte at a time gains no time by it.
    // Name lookup is not limited. A client that cannot do it waits as without.
    virtual void setDeadline(std::optional<Clock::time_point> deadline);
};
#pragma GCC diagnostic pop

// Start-up of the platform's socket library, where it needs one; here it does not. 0.
QVR_API int socketsInit();

// The end of what socketsInit began; does nothing here.
QVR_API void socketsCleanUp();

// Placeholder of a receive test; does nothing and returns 0.
QVR_API int test_receiveB(NetworkClient* client, char* buffer, int length);

} // namespace QVR
