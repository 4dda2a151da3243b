// The server's pipeline once more, undisturbed by any network, on the same simulated camera: what
// every frame has to be.
#pragma once

#include "Options.h"
#include "serverClient/frameProtocol.h"
#include "system/soak/FrameMark.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <string>
#include <thread>
#include <vector>

namespace soak {

// Follows the server by its touch log: makes a frame for each of its lines, and compares the
// touches. One at a time in a process, as the pipeline is.
class Reference {
  public:
    // `options`: what the server was started with, as far as it concerns camera and streams.
    Reference(const server::Options& options, const std::string& touchLog);
    ~Reference();
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;

    // To be called when the server has ended. Returns with the log's last line; throws what went
    // wrong.
    void finish();

    // After finish().
    const std::vector<FrameMark>& frames() const { return frames_; }
    // A frame in which nothing is seen.
    const FrameMark& blank() const { return blank_; }
    const QVR::ProtocolHeader& header() const { return header_; }
    std::uint64_t touches() const { return touches_; }
    // Frames for which the log has other touches.
    std::uint64_t differences() const { return differences_; }

  private:
    void run();
    void follow(const std::string& line);

    server::Options options_;
    std::string touchLog_;
    std::vector<std::byte> frame_;
    std::vector<FrameMark> frames_;
    FrameMark blank_;
    QVR::ProtocolHeader header_;
    std::uint64_t touches_ = 0;
    std::uint64_t differences_ = 0;
    std::atomic<bool> serverEnded_{false};
    std::exception_ptr failure_;
    std::thread thread_;
};

} // namespace soak
