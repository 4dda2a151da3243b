// Blobs with known centres, as the blob manager hands them to tracking.
#pragma once

#include "detection/cImageBlob.h"
#include "detection/touchManager.h"

#include <algorithm>
#include <array>
#include <initializer_list>

namespace touchtest {

struct Center {
    float x;
    float y;
    float depth;
};

using Blobs = std::array<QVR::cImageBlob, 10>;

inline Blobs blobsAt(std::initializer_list<Center> centers) {
    Blobs blobs;
    auto blob = blobs.begin();
    for (const Center& center : centers) {
        blob->centerX = center.x;
        blob->centerY = center.y;
        blob->centerDepth = center.depth;
        blob->valid = true;
        blob->dirty = false;
        ++blob;
    }
    return blobs;
}

inline void frame(QVR::touchManager& touches, std::initializer_list<Center> centers) {
    Blobs blobs = blobsAt(centers);
    touches.update(blobs);
}

// A copy of the records: the doubles in them sit at unaligned addresses.
inline std::array<QVR::NetworkTouch, 10> records(QVR::touchManager& touches) {
    const QVR::NetworkTouch* given = nullptr;
    touches.getTouches(&given);
    std::array<QVR::NetworkTouch, 10> copy;
    std::copy(given, given + copy.size(), copy.begin());
    return copy;
}

struct Record {
    int active;
    double x;
    double y;
    double z;
    bool operator==(const Record&) const = default;
};

inline Record record(QVR::touchManager& touches, std::size_t slot) {
    const QVR::NetworkTouch touch = records(touches)[slot];
    return {touch.active, touch.x, touch.y, touch.z};
}

constexpr Record noTouch{0, -1.0, -1.0, -1.0};

} // namespace touchtest
