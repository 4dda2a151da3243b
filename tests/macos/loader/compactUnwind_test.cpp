#include "macos/loader/compactUnwind.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace loader {

bool operator==(const Frame::SavedRegister& left, const Frame::SavedRegister& right) {
    return left.number == right.number && left.offset == right.offset;
}

namespace {

using testing::ElementsAre;
using Saved = Frame::SavedRegister;

enum Register { rbx = 3, rbp = 6, rsp = 7, r12 = 12, r13, r14, r15 };

} // namespace

TEST(CompactUnwind, FindsTheCallerByTheFramePointer) {
    const Frame frame = decodeCompactUnwind(0x01000000, nullptr);
    EXPECT_EQ(frame.base, rbp);
    EXPECT_EQ(frame.offset, 16);
    EXPECT_THAT(frame.saved, ElementsAre(Saved{rbp, -16}));
}

TEST(CompactUnwind, FindsRegistersBelowTheFramePointer) {
    EXPECT_THAT(decodeCompactUnwind(0x010558D1, nullptr).saved,
                ElementsAre(Saved{rbp, -16}, Saved{rbx, -56}, Saved{r12, -48}, Saved{r13, -40},
                            Saved{r14, -32}, Saved{r15, -24}));
    // A place may stay empty: none, then r15, in the three words below.
    EXPECT_THAT(decodeCompactUnwind(0x01030028, nullptr).saved,
                ElementsAre(Saved{rbp, -16}, Saved{r15, -32}));
}

TEST(CompactUnwind, FindsTheCallerByTheStackPointer) {
    const Frame frame = decodeCompactUnwind(0x02040802, nullptr);
    EXPECT_EQ(frame.base, rsp);
    EXPECT_EQ(frame.offset, 32);
    EXPECT_THAT(frame.saved, ElementsAre(Saved{rbx, -24}, Saved{r14, -16}));
}

TEST(CompactUnwind, ReadsALargeFrameFromTheCode) {
    const std::vector<unsigned char> code = {0x90, 0x48, 0x81, 0xEC, 0x88, 0x13, 0x00, 0x00};
    const Frame frame = decodeCompactUnwind(0x03042000, code.data());
    EXPECT_EQ(frame.base, rsp);
    EXPECT_EQ(frame.offset, 0x1388 + 8);
}

TEST(CompactUnwind, TellsEveryOrderOfRegistersApart) {
    std::set<std::vector<int>> orders;
    for (std::uint32_t permutation = 0; permutation < 720; ++permutation) {
        std::vector<int> order;
        for (const Saved& saved : decodeCompactUnwind(0x02081800 | permutation, nullptr).saved) {
            order.push_back(saved.number);
        }
        orders.insert(order);
        std::sort(order.begin(), order.end());
        EXPECT_THAT(order, ElementsAre(rbx, rbp, r12, r13, r14, r15));
    }
    EXPECT_EQ(orders.size(), 720u);
}

TEST(CompactUnwind, RefusesFunctionsThatItDoesNotSufficeFor) {
    EXPECT_THROW(decodeCompactUnwind(0x04000000, nullptr), std::runtime_error);
    EXPECT_THROW(decodeCompactUnwind(0x02001C00, nullptr), std::runtime_error);
}

} // namespace loader
