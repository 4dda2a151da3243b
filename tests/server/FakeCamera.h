// A camera library with one camera that tests unplug, hang and resize while a server runs on it.
//
// Linked instead of the real one. Its depth image shows nothing, or one flat fingertip around
// (fingerColumn, fingerRow).
#pragma once

#include <atomic>

namespace support {

struct FakeCamera {
    static constexpr int fingerColumn = 80;
    static constexpr int fingerRow = 60;
    static constexpr int fingerDepth = 150; // depth units of a millimetre

    static FakeCamera& get();
    // A camera of 160 x 120 in both streams without a finger; only while nothing runs on it.
    void reset();

    std::atomic<bool> plugged{true};  // otherwise there is no device, and waits fail
    std::atomic<bool> starts{true};   // otherwise its streams do not start
    std::atomic<bool> hanging{false}; // a wait lasts until this ends
    std::atomic<int> failingWaits{0}; // so many of the next waits fail
    std::atomic<int> failingScale{0}; // which of the next questions for the depth scale fails
    std::atomic<int> width{160};
    std::atomic<int> height{120};
    std::atomic<bool> finger{false};
    std::atomic<bool> truthKnown{true};
    std::atomic<int> waits{0};
    std::atomic<int> searches{0};   // how often a device was looked for
    std::atomic<int> startCount{0}; // how often the streams were started
};

} // namespace support
