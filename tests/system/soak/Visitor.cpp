#include "system/soak/Visitor.h"

#include "system/soak/Turnstile.h"

#include <chrono>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <thread>

namespace soak {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

} // namespace

double Visitor::between(double least, double most) {
    return std::uniform_real_distribution<double>(least, most)(random_);
}

void Visitor::run(Turnstile& turnstile) {
    while (turnstile.enter()) {
        try {
            visit(turnstile);
        } catch (const std::exception& error) {
            experience_.complaint = error.what();
        }
        turnstile.leave();
        std::this_thread::sleep_for(Seconds(between(0.0, 0.3)));
    }
}

void Visitor::visit(const Turnstile& turnstile) {
    support::RawClient client(port_);
    const auto manner = static_cast<Manner>(
        std::uniform_int_distribution<std::size_t>(0, mannerCount - 1)(random_));
    ++experience_.manners[static_cast<std::size_t>(manner)];
    if (manner == Manner::LeavesAtOnce)
        return;
    readHeader(client);
    experience_.visits.emplace_back();
    switch (manner) {
    case Manner::Reads:
        return readFrames(turnstile, client, between(0.2, 4.0), 0.0);
    case Manner::ReadsSlowly:
        return readFrames(turnstile, client, between(0.5, 4.0), between(0.005, 0.2));
    case Manner::BreaksOff:
        readFrames(turnstile, client, between(0.0, 0.5), 0.0);
        client.read(
            static_cast<std::size_t>(between(1.0, static_cast<double>(client.frameBytes()) - 1.0)));
        return;
    case Manner::Talks:
        client.send(support::Bytes(static_cast<std::size_t>(between(1.0, 100000.0))));
        return readFrames(turnstile, client, between(0.1, 1.0), 0.0);
    case Manner::StopsReading:
        readFrames(turnstile, client, between(0.0, 0.2), 0.0);
        return stopReading(turnstile, client);
    case Manner::Resets:
        readFrames(turnstile, client, between(0.0, 0.3), 0.0);
        return client.reset();
    case Manner::LeavesAtOnce:
        return;
    }
}

void Visitor::readHeader(support::RawClient& client) {
    const QVR::ProtocolHeader header = client.readHeader();
    if (experience_.header && std::memcmp(&header, &*experience_.header, sizeof header) != 0)
        throw std::runtime_error("the header has changed");
    experience_.header = header;
}

void Visitor::readFrames(const Turnstile& turnstile, support::RawClient& client, double seconds,
                         double pause) {
    const auto end = Clock::now() + Seconds(seconds);
    while (Clock::now() < end && turnstile.open()) {
        client.readFrame(frame_);
        experience_.visits.back().push_back(markOf(frame_));
        ++experience_.frames;
        experience_.bytes += frame_.size();
        std::this_thread::sleep_for(Seconds(pause));
    }
}

// Longer than the server's patience half of the time.
void Visitor::stopReading(const Turnstile& turnstile, support::RawClient& client) {
    const auto end = Clock::now() + Seconds(between(0.5, 2.0 * Turnstile::clientTimeout));
    while (Clock::now() < end && turnstile.open())
        std::this_thread::sleep_for(Seconds(0.05));
    client.close();
}

} // namespace soak
