// Matching of blobs to slots and the life of a touch.
#include "detection/blobManager.h"
#include "detection/touchManager.h"
#include "support/LogCapture.h"
#include "touchFixtures.h"

#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace touchtest;
using QVR::cTouch;
using QVR::touchManager;
using Messages = std::vector<std::string>;

void expectAt(const cTouch& slot, float x, float y) {
    EXPECT_EQ(slot.currentPos.x, x);
    EXPECT_EQ(slot.currentPos.y, y);
}

std::vector<int> matchedSlots(const touchManager& touches) {
    std::vector<int> matched;
    for (int i = 0; i < 10; ++i) {
        if (touches.touchSlots[static_cast<std::size_t>(i)].matched) {
            matched.push_back(i);
        }
    }
    return matched;
}

TEST(TouchManager, Defaults) {
    const touchManager touches;
    EXPECT_TRUE(touches.outputCalibratedTouches);
    EXPECT_EQ(touches.borderClipLeft, 0);
    EXPECT_EQ(touches.borderClipRight, 640);
    EXPECT_EQ(touches.borderClipTop, 0);
    EXPECT_EQ(touches.borderClipBottom, 480);
    EXPECT_EQ(touches.confidenceThreshold, 2);
    EXPECT_EQ(touches.touchSlots.size(), 10U);
    for (const cTouch& slot : touches.touchSlots) {
        EXPECT_EQ(slot.confidence, -1);
    }
    EXPECT_EQ(touches.touchDataIndex, 0U);
    ASSERT_NE(touches.networkTouches, nullptr);
}

TEST(TouchManager, ConfidenceRisesByTwoToTheThresholdAndFallsByOneAFrame) {
    touchManager touches;
    const cTouch& slot = touches.touchSlots[0];
    std::vector<int> confidences;
    std::vector<int> active;
    for (int i = 0; i < 6; ++i) {
        frame(touches, {{100, 100, 900}});
        confidences.push_back(slot.confidence);
        active.push_back(record(touches, 0).active);
    }
    EXPECT_EQ(confidences, (std::vector<int>{1, 2, 3, 2, 3, 2}));
    EXPECT_EQ(active, (std::vector<int>{0, 1, 1, 1, 1, 1}));
}

TEST(TouchManager, LostTouchDecaysToFree) {
    touchManager touches;
    for (int i = 0; i < 3; ++i) {
        frame(touches, {{100, 100, 900}});
    }
    std::vector<int> confidences;
    std::vector<int> active;
    for (int i = 0; i < 6; ++i) {
        frame(touches, {});
        confidences.push_back(touches.touchSlots[0].confidence);
        active.push_back(record(touches, 0).active);
    }
    EXPECT_EQ(confidences, (std::vector<int>{2, 1, 0, -1, -1, -1}));
    EXPECT_EQ(active, (std::vector<int>{1, 0, 0, 0, 0, 0}));
}

TEST(TouchManager, FingerSeenInOneFrameOnlyIsNeverReported) {
    touchManager touches;
    frame(touches, {{100, 100, 900}});
    EXPECT_EQ(record(touches, 0), noTouch);
    for (int i = 0; i < 4; ++i) {
        frame(touches, {});
        EXPECT_EQ(record(touches, 0), noTouch);
    }
}

TEST(TouchManager, ThresholdDecidesWhenATouchIsReported) {
    touchManager touches;
    touches.confidenceThreshold = 5;
    std::vector<int> confidences;
    for (int i = 0; i < 7; ++i) {
        frame(touches, {{100, 100, 900}});
        confidences.push_back(touches.touchSlots[0].confidence);
        EXPECT_EQ(record(touches, 0).active, i >= 4 ? 1 : 0) << i;
    }
    EXPECT_EQ(confidences, (std::vector<int>{1, 2, 3, 4, 5, 6, 5}));
}

TEST(TouchManager, ConfidenceDoesNotOverflow) {
    touchManager touches;
    touches.confidenceThreshold = std::numeric_limits<int>::max();
    touches.touchSlots[0].confidence = std::numeric_limits<int>::max() - 1;
    touches.setBlobToTouch(&touches.touchSlots[0], 1, 1, 1);
    EXPECT_EQ(touches.touchSlots[0].confidence, std::numeric_limits<int>::max());
}

TEST(TouchManager, FirstFingerTakesTheLowestOfEquallyNearSlots) {
    touchManager touches;
    frame(touches, {{100, 100, 900}});
    EXPECT_EQ(matchedSlots(touches), std::vector<int>{0});
    EXPECT_EQ(touches.touchSlots[0].currentPos.z, 900.0f);
}

TEST(TouchManager, TouchKeepsItsSlotAmongOthers) {
    touchManager touches;
    frame(touches, {{100, 100, 900}, {300, 300, 900}});
    // Blobs come in another order when the first finger is lower in the image.
    frame(touches, {{305, 300, 900}, {95, 110, 900}});
    expectAt(touches.touchSlots[0], 95, 110);
    expectAt(touches.touchSlots[1], 305, 300);
    EXPECT_EQ(matchedSlots(touches), (std::vector<int>{0, 1}));
}

TEST(TouchManager, OfTwoFingersEquallyNearASlotTheFirstBlobTakesIt) {
    touchManager touches;
    frame(touches, {{100, 100, 900}});
    frame(touches, {{90, 100, 900}, {110, 100, 900}});
    expectAt(touches.touchSlots[0], 90, 100);
    expectAt(touches.touchSlots[1], 110, 100);
}

TEST(TouchManager, NearestSlotTakesABlobHoweverFarItIs) {
    touchManager touches;
    frame(touches, {{600, 400, 900}});
    frame(touches, {{350, 250, 900}}); // farther from the free slots at the origin
    expectAt(touches.touchSlots[0], 350, 250);
    EXPECT_EQ(touches.touchSlots[0].confidence, 2);
}

TEST(TouchManager, FreeSlotThatIsNearerTakesTheBlob) {
    touchManager touches;
    frame(touches, {{600, 400, 900}});
    frame(touches, {{50, 50, 900}});
    expectAt(touches.touchSlots[0], 600, 400);
    expectAt(touches.touchSlots[1], 50, 50);
    EXPECT_EQ(touches.touchSlots[0].confidence, 0);
    EXPECT_EQ(touches.touchSlots[1].confidence, 1);
}

TEST(TouchManager, DepthPlaysNoPartInMatching) {
    touchManager touches;
    frame(touches, {{100, 100, 900}, {120, 100, 2000}});
    frame(touches, {{109, 100, 2000}});
    EXPECT_EQ(matchedSlots(touches), std::vector<int>{0});
}

TEST(TouchManager, OnlyValidBlobsAreMatched) {
    touchManager touches;
    Blobs blobs = blobsAt({{100, 100, 900}, {200, 200, 900}});
    blobs[0].valid = false;
    touches.update(blobs);
    EXPECT_EQ(matchedSlots(touches), std::vector<int>{0});
    expectAt(touches.touchSlots[0], 200, 200);
}

TEST(TouchManager, TenFingersTakeTenSlots) {
    const support::LogCapture log;
    touchManager touches;
    for (int i = 0; i < 2; ++i) {
        frame(touches, {{60, 10, 1},
                        {120, 10, 2},
                        {180, 10, 3},
                        {240, 10, 4},
                        {300, 10, 5},
                        {360, 10, 6},
                        {420, 10, 7},
                        {480, 10, 8},
                        {540, 10, 9},
                        {600, 10, 10}});
    }
    EXPECT_EQ(matchedSlots(touches).size(), 10U);
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(record(touches, i).active, 1);
        EXPECT_EQ(record(touches, i).x, 60.0 * static_cast<double>(i + 1));
    }
    EXPECT_TRUE(log.messages().empty());
}

TEST(TouchManager, SmoothedPositionTrailsAndSnapsWhenTheSlotWasFree) {
    touchManager touches;
    frame(touches, {{100, 100, 900}});
    frame(touches, {{200, 100, 900}});
    EXPECT_EQ(record(touches, 0).x, 100.0);
    frame(touches, {{200, 100, 900}});
    EXPECT_NEAR(record(touches, 0).x, 180.0, 1e-4);
    for (int i = 0; i < 4; ++i) {
        frame(touches, {});
    }
    ASSERT_EQ(touches.touchSlots[0].confidence, -1);
    frame(touches, {{300, 100, 900}});
    EXPECT_EQ(touches.touchSlots[0].lerpedPos.x, 300.0f);
    EXPECT_EQ(touches.touchSlots[0].previousPos.x, 300.0f);
}

TEST(TouchManager, BlobWithADirtyCenterCountsAtMinusOne) {
    const support::LogCapture log;
    touchManager touches;
    Blobs blobs = blobsAt({{100, 100, 900}});
    blobs[0].dirty = true;
    touches.update(blobs);
    EXPECT_EQ(log.messages(), Messages{"Tried to use dirty blob data!"});
    expectAt(touches.touchSlots[0], -1, -1);
}

TEST(TouchManager, BlobBeyondEveryDistanceTakesTheLeastConfidentSlot) {
    touchManager touches;
    for (cTouch& slot : touches.touchSlots) {
        slot.confidence = 3;
    }
    touches.touchSlots[4].confidence = 1;
    touches.touchSlots[7].confidence = 1;
    frame(touches, {{1e30f, 100, 900}}); // its squared distance is infinite
    EXPECT_EQ(matchedSlots(touches), std::vector<int>{4});
    EXPECT_EQ(touches.touchSlots[4].confidence, 2);
}

TEST(TouchManager, SlotBelowFreeIsTakenOnlyWhenNoOtherCanBe) {
    touchManager touches;
    touches.touchSlots[0].confidence = -2;
    frame(touches, {{10, 10, 900}});
    EXPECT_EQ(matchedSlots(touches), std::vector<int>{1});
    frame(touches, {{1e30f, 100, 900}});
    EXPECT_EQ(matchedSlots(touches), std::vector<int>{0});
}

TEST(TouchManager, MissingSlotIsLoggedAndMovesNothing) {
    const support::LogCapture log;
    touchManager touches;
    touches.setBlobToTouch(nullptr, 1, 2, 3);
    EXPECT_EQ(log.messages(),
              Messages{"ERROR: Was not able to assign a touch to a detected finger blob!!"});
    EXPECT_TRUE(matchedSlots(touches).empty());
    for (const cTouch& slot : touches.touchSlots) {
        EXPECT_EQ(slot.confidence, -1);
    }
}

TEST(TouchManager, SetBlobToTouchMovesRaisesAndMatches) {
    const support::LogCapture log;
    touchManager touches;
    cTouch& slot = touches.touchSlots[3];
    touches.setBlobToTouch(&slot, 10, 20, 30);
    EXPECT_EQ(slot.confidence, 1);
    EXPECT_TRUE(slot.matched);
    expectAt(slot, 10, 20);
    touches.setBlobToTouch(&slot, 10, 20, 30);
    EXPECT_EQ(slot.confidence, 3);
    touches.setBlobToTouch(&slot, 10, 20, 30);
    EXPECT_EQ(slot.confidence, 3);
    EXPECT_TRUE(log.messages().empty());
}

TEST(TouchManager, BlobManagerHandsItsBlobsOver) {
    touchManager touches;
    QVR::blobManager manager;
    manager.blobs = blobsAt({{100, 100, 900}});
    manager.updateTouches(&touches);
    EXPECT_EQ(touches.touchSlots[0].confidence, 1);
    manager.updateTouches(nullptr);
}

TEST(TouchManager, AveragePositionIsOverConfidentTouchesWithoutClip) {
    touchManager touches;
    touches.borderClipRight = 0;
    frame(touches, {{100, 100, 900}, {300, 200, 1000}});
    frame(touches, {{100, 100, 900}, {300, 200, 1000}, {500, 400, 50}});
    ASSERT_EQ(record(touches, 0), noTouch);
    QVR::Vector3 average;
    touches.getAveragePos(average);
    EXPECT_EQ(average.x, 200.0);
    EXPECT_EQ(average.y, 150.0);
    EXPECT_EQ(average.z, 950.0);
}

TEST(TouchManager, AveragePositionWithoutATouchIsNotANumber) {
    touchManager touches;
    QVR::Vector3 average{1.0, 2.0, 3.0};
    touches.getAveragePos(average);
    EXPECT_TRUE(std::isnan(average.x));
    EXPECT_TRUE(std::isnan(average.y));
    EXPECT_TRUE(std::isnan(average.z));
}

} // namespace
