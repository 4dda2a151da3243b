// Bit for bit comparison of the product's detection with the literal one.
#pragma once

#include "literalDetection.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace literal {

inline bool sameBits(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

inline ::testing::AssertionResult sameBlob(const Blob& expected, const QVR::cImageBlob& actual) {
    const auto differs = [](const char* what) { return ::testing::AssertionFailure() << what; };
    if (actual.lineStart != expected.lineStart) {
        return differs("lineStart");
    }
    if (actual.lineEnd != expected.lineEnd) {
        return differs("lineEnd");
    }
    if (actual.minX != expected.minX || actual.maxX != expected.maxX) {
        return differs("limits in X");
    }
    if (actual.minY != expected.minY || actual.maxY != expected.maxY) {
        return differs("limits in Y");
    }
    if (actual.sumStart != expected.sumStart || actual.sumEnd != expected.sumEnd ||
        actual.lineCount != expected.lineCount) {
        return differs("sums");
    }
    if (!sameBits(actual.lineCenterX, expected.lineCenterX)) {
        return differs("lineCenterX");
    }
    if (!sameBits(actual.centerX, expected.centerX) ||
        !sameBits(actual.centerY, expected.centerY) ||
        !sameBits(actual.centerDepth, expected.centerDepth)) {
        return differs("center");
    }
    if (actual.valid != expected.valid || actual.dirty != expected.dirty) {
        return differs("state");
    }
    return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult sameDetection(const Detection& expected,
                                                const QVR::blobManager& actual) {
    if (actual.mask != expected.mask) {
        return ::testing::AssertionFailure() << "mask differs";
    }
    if (actual.cutoffDepth != expected.cutoffDepth) {
        return ::testing::AssertionFailure()
               << "cutoffDepth is " << actual.cutoffDepth << ", not " << expected.cutoffDepth;
    }
    for (std::size_t i = 0; i < expected.blobs.size(); ++i) {
        if (const auto same = sameBlob(expected.blobs[i], actual.blobs[i]); !same) {
            return ::testing::AssertionFailure()
                   << same.message() << " of blob " << i << " differs";
        }
    }
    return ::testing::AssertionSuccess();
}

} // namespace literal
