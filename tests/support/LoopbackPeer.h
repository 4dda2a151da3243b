// A scripted server on 127.0.0.1, for tests of clients in the same process.
//
//     support::LoopbackPeer peer([](support::LoopbackPeer::Line& line) {
//         line.accept();
//         line.sendInPieces(bytes, {40, 24});
//         line.close();
//     });
//     client.connect("127.0.0.1", peer.port().c_str());
//     ...
//     EXPECT_EQ(peer.finish(), "");
//
// The script runs in a thread of its own. Every wait in it is bounded; one that lasts too long
// ends the script, and finish says where.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace support {

class LoopbackPeer {
  public:
    // The server's end, as the script sees it: one connection at a time.
    class Line {
      public:
        // Waits for a client; an earlier connection is closed first.
        void accept();

        void send(const std::string& bytes);

        // Sends the pieces one by one, each after the client has read the one before. What is
        // left over after the given sizes is the last piece.
        void sendInPieces(const std::string& bytes, const std::vector<std::size_t>& sizes);

        // Sends byte by byte with a pause after each, until the client has closed.
        void trickle(const std::string& bytes, std::chrono::milliseconds pause);

        // Waits until the client has read everything that was sent.
        void waitUntilRead();

        // Waits until the client has closed its end. What it sent up to then.
        std::string waitUntilClosed();

        // Reads exactly `size` bytes from the client.
        std::string receive(std::size_t size);

        // Waits until the test calls LoopbackPeer::proceed, once for each call.
        void waitForTest();

        void close();

        // Ends the connection the hard way: the client's next read fails.
        void reset();

      private:
        friend class LoopbackPeer;
        explicit Line(LoopbackPeer& peer) : peer_(peer) {}
        void await(int descriptor, short events, const char* what);

        LoopbackPeer& peer_;
        int descriptor_ = -1;
    };

    using Script = std::function<void(Line&)>;

    explicit LoopbackPeer(Script script);
    // Interrupts a script that is still waiting.
    ~LoopbackPeer();
    LoopbackPeer(const LoopbackPeer&) = delete;
    LoopbackPeer& operator=(const LoopbackPeer&) = delete;

    // The port in decimal.
    std::string port() const { return std::to_string(portNumber_); }
    unsigned int portNumber() const { return portNumber_; }

    // Lets the script pass one waitForTest.
    void proceed();

    // Waits for the script's end. "" when it ran through, else what went wrong. The last
    // connection stays open until the peer is destroyed.
    std::string finish();

  private:
    void listenOnFreePort();
    void run(const Script& script);

    int listener_ = -1;
    unsigned int portNumber_ = 0;
    int interrupt_[2] = {-1, -1}; // a byte in this pipe ends every wait
    int proceed_[2] = {-1, -1};   // a byte in this pipe is one proceed
    std::string failure_;
    Line line_{*this};
    std::thread thread_; // last: the script uses what is above
};

// A port of 127.0.0.1 on which nobody listens.
std::string unusedPort();

} // namespace support
