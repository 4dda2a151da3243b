// A client that comes, does what clients do, and goes; again and again.
#pragma once

#include "server/RawClient.h"
#include "system/soak/FrameMark.h"

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace soak {

class Turnstile;

// Ways to behave.
enum class Manner { Reads, ReadsSlowly, BreaksOff, LeavesAtOnce, Talks, StopsReading, Resets };
constexpr std::size_t mannerCount = 7;

// What a visitor has seen. `complaint` is what should not have happened to it.
struct Experience {
    std::vector<Visit> visits;
    std::array<std::uint64_t, mannerCount> manners{}; // how often each
    std::uint64_t frames = 0;
    std::uint64_t bytes = 0;
    std::optional<QVR::ProtocolHeader> header; // of every visit
    std::string complaint;
};

class Visitor {
  public:
    Visitor(std::uint16_t port, std::uint32_t seed) : port_(port), random_(seed) {}

    // Until the turnstile closes for good.
    void run(Turnstile& turnstile);
    const Experience& experience() const { return experience_; }

  private:
    void visit(const Turnstile& turnstile);
    void readHeader(support::RawClient& client);
    void readFrames(const Turnstile& turnstile, support::RawClient& client, double seconds,
                    double pause);
    void stopReading(const Turnstile& turnstile, support::RawClient& client);
    double between(double least, double most);

    std::uint16_t port_;
    std::mt19937 random_;
    support::Bytes frame_;
    Experience experience_;
};

} // namespace soak
