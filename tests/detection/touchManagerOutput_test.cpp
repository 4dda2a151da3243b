// What tracking hands out: the border clip, the records, the list of numbers, the settings.
#include "detection/touchManager.h"
#include "support/LogCapture.h"
#include "touchFixtures.h"

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <json11.hpp>

namespace {

using namespace touchtest;
using QVR::touchManager;
using Messages = std::vector<std::string>;

void report(touchManager& touches, std::initializer_list<Center> centers) {
    frame(touches, centers);
    frame(touches, centers);
}

void load(touchManager& touches, const std::string& text, int xRes = 640, int yRes = 480) {
    std::string error = "noError";
    json11::Json document = json11::Json::parse(text, error);
    ASSERT_EQ(error, "noError");
    touches.loadSettings(document, xRes, yRes);
}

bool passesClip(touchManager& touches, float x, float y) {
    QVR::cTouch touch;
    touch.lerpedPos = {x, y, 0.0f};
    return touches.clipTest(touch);
}

TEST(TouchOutput, ClipBoundsThemselvesPass) {
    touchManager touches;
    touches.borderClipLeft = 10;
    touches.borderClipRight = 600;
    touches.borderClipTop = 20;
    touches.borderClipBottom = 400;
    EXPECT_TRUE(passesClip(touches, 10.0f, 20.0f));
    EXPECT_TRUE(passesClip(touches, 600.0f, 400.0f));
    EXPECT_FALSE(passesClip(touches, 9.999f, 100.0f));
    EXPECT_FALSE(passesClip(touches, 600.001f, 100.0f));
    EXPECT_FALSE(passesClip(touches, 100.0f, 19.999f));
    EXPECT_FALSE(passesClip(touches, 100.0f, 400.001f));
}

TEST(TouchOutput, ClipUsesTheSmoothedPosition) {
    touchManager touches;
    QVR::cTouch touch;
    touch.lerpedPos = {100.0f, 100.0f, 0.0f};
    touch.currentPos = {9000.0f, 9000.0f, 0.0f};
    EXPECT_TRUE(touches.clipTest(touch));
}

TEST(TouchOutput, ClippedTouchIsNotReported) {
    touchManager touches;
    report(touches, {{639, 100, 900}, {641, 300, 900}});
    EXPECT_EQ(record(touches, 0), (Record{1, 639.0, 100.0, 900.0}));
    EXPECT_EQ(record(touches, 1), noTouch);
    EXPECT_EQ(touches.touchSlots[1].confidence, 2);
}

TEST(TouchOutput, WithoutATouchAllTenRecordsAreEmpty) {
    touchManager touches;
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(record(touches, i), noTouch);
    }
}

TEST(TouchOutput, RecordsBelongToTheManager) {
    touchManager touches;
    const QVR::NetworkTouch* first = nullptr;
    const QVR::NetworkTouch* second = nullptr;
    touches.getTouches(&first);
    touches.getTouches(&second);
    EXPECT_EQ(first, touches.networkTouches.get());
    EXPECT_EQ(second, first);
}

TEST(TouchOutput, RecordReturnsToEmptyWhenTheTouchIsLost) {
    touchManager touches;
    report(touches, {{100, 100, 900}});
    ASSERT_EQ(record(touches, 0).active, 1);
    frame(touches, {});
    EXPECT_EQ(record(touches, 0), noTouch);
}

TEST(TouchOutput, CalibratedOutputWithoutACameraManagerIsInCameraSpace) {
    touchManager touches;
    ASSERT_TRUE(touches.outputCalibratedTouches);
    report(touches, {{123, 45, 900}});
    EXPECT_EQ(record(touches, 0), (Record{1, 123.0, 45.0, 900.0}));
    touches.outputCalibratedTouches = false;
    EXPECT_EQ(record(touches, 0), (Record{1, 123.0, 45.0, 900.0}));
}

TEST(TouchOutput, CollectionListsThreeNumbersPerSlotAndThenASentinel) {
    touchManager touches;
    report(touches, {{100, 110, 900}, {300, 310, 1000}});
    touches.prepareTouchCollection();
    const std::vector<double> expected{100, 110, 900, 300, 310, 1000};
    for (std::size_t i = 0; i < 30; ++i) {
        EXPECT_EQ(touches.getTouchData(), i < expected.size() ? expected[i] : -1.0) << i;
    }
    EXPECT_EQ(touches.touchDataIndex, 30U);
    EXPECT_EQ(touches.getTouchData(), -9999.0);
    EXPECT_EQ(touches.getTouchData(), -9999.0);
    EXPECT_EQ(touches.touchDataIndex, 30U);
    touches.prepareTouchCollection();
    EXPECT_EQ(touches.getTouchData(), 100.0);
}

TEST(TouchOutput, CollectionKeepsThePreparedFrame) {
    touchManager touches;
    report(touches, {{100, 110, 900}});
    touches.prepareTouchCollection();
    for (int i = 0; i < 4; ++i) {
        frame(touches, {});
    }
    EXPECT_EQ(touches.getTouchData(), 100.0);
    touches.prepareTouchCollection();
    EXPECT_EQ(touches.getTouchData(), -1.0);
}

TEST(TouchOutput, CollectionLeavesOutClippedTouches) {
    touchManager touches;
    touches.borderClipLeft = 200;
    report(touches, {{100, 110, 900}});
    touches.prepareTouchCollection();
    EXPECT_EQ(touches.getTouchData(), -1.0);
}

TEST(TouchOutput, NumbersReadBeforeTheFirstCollectionAreNoTouch) {
    touchManager touches;
    for (int i = 0; i < 30; ++i) {
        EXPECT_EQ(touches.getTouchData(), -1.0);
    }
    EXPECT_EQ(touches.getTouchData(), -9999.0);
}

const Messages allWarnings{
    "Warning: Did not find confidenceThreshold value in calibration data.",
    "Warning: Did not find borderClipTop value in calibration data.",
    "Warning: Did not find borderClipBottom value in calibration data.",
    "Warning: Did not find borderClipLeft value in calibration data.",
    "Warning: Did not find borderClipRight value in calibration data.",
};

const char* const document = R"({"touchDetection": {"confidenceThreshold": 4, "forwardFacing": {
    "borderClipTop": 11, "borderClipBottom": 12, "borderClipLeft": 13, "borderClipRight": 14}}})";

TEST(TouchSettings, MarginsBecomeBounds) {
    const support::LogCapture log;
    touchManager touches;
    load(touches, document);
    EXPECT_EQ(log.messages(), Messages{});
    EXPECT_EQ(touches.confidenceThreshold, 4);
    EXPECT_EQ(touches.borderClipTop, 11);
    EXPECT_EQ(touches.borderClipBottom, 468);
    EXPECT_EQ(touches.borderClipLeft, 13);
    EXPECT_EQ(touches.borderClipRight, 626);
    EXPECT_EQ(touches.getVariableReadout(),
              "\n//////touchMgr:\nconfidenceThreshold: 4\nborderClipTop: 11\n"
              "borderClipBottom: 468\nborderClipLeft: 13\nborderClipRight: 626\n");
}

TEST(TouchSettings, SecondLoadOfACompleteDocumentGivesTheSameBounds) {
    touchManager touches;
    load(touches, document);
    load(touches, document, 320, 240);
    EXPECT_EQ(touches.borderClipBottom, 228);
    EXPECT_EQ(touches.borderClipRight, 306);
}

TEST(TouchSettings, MissingKeysAreWarnedOfInOrderAndTakeTheBoundsForMargins) {
    const support::LogCapture log;
    touchManager touches;
    load(touches, "{}", 640, 480);
    EXPECT_EQ(log.messages(), allWarnings);
    EXPECT_EQ(touches.confidenceThreshold, 2);
    EXPECT_EQ(touches.borderClipTop, 0);
    EXPECT_EQ(touches.borderClipLeft, 0);
    EXPECT_EQ(touches.borderClipRight, 0);
    EXPECT_EQ(touches.borderClipBottom, 0);
    EXPECT_TRUE(passesClip(touches, 0.0f, 0.0f));
    EXPECT_FALSE(passesClip(touches, 1.0f, 0.0f));
    EXPECT_FALSE(passesClip(touches, 0.0f, 1.0f));
}

TEST(TouchSettings, SecondLoadWithoutBorderKeysFlipsTheBoundsBack) {
    const support::LogCapture quiet;
    touchManager touches;
    load(touches, "{}");
    load(touches, "{}");
    EXPECT_EQ(touches.borderClipRight, 640);
    EXPECT_EQ(touches.borderClipBottom, 480);
    load(touches, "{}", 1000, 1000);
    EXPECT_EQ(touches.borderClipRight, 360);
    EXPECT_EQ(touches.borderClipBottom, 520);
}

TEST(TouchSettings, ValuesOfAnotherTypeAreWarnedOf) {
    const support::LogCapture log;
    touchManager touches;
    load(touches, R"({"touchDetection": {"confidenceThreshold": "4", "forwardFacing": {
        "borderClipTop": null, "borderClipBottom": true, "borderClipLeft": [],
        "borderClipRight": {}}}})");
    EXPECT_EQ(log.messages(), allWarnings);
    EXPECT_EQ(touches.confidenceThreshold, 2);
}

TEST(TouchSettings, KeysCountInTheirSectionsOnly) {
    const support::LogCapture log;
    touchManager touches;
    load(touches, R"({"confidenceThreshold": 9, "borderClipLeft": 9, "touchDetection": {
        "borderClipLeft": 9, "forwardFacing": {"confidenceThreshold": 9}}})");
    EXPECT_EQ(log.messages(), allWarnings);
    EXPECT_EQ(touches.confidenceThreshold, 2);
    EXPECT_EQ(touches.borderClipLeft, 0);
}

TEST(TouchSettings, NumbersAreTruncated) {
    const support::LogCapture quiet;
    touchManager touches;
    load(touches, R"({"touchDetection": {"confidenceThreshold": 3.9, "forwardFacing": {
        "borderClipTop": -0.9, "borderClipBottom": 10.9, "borderClipLeft": -5.5,
        "borderClipRight": 1e300}}})");
    EXPECT_EQ(touches.confidenceThreshold, 3);
    EXPECT_EQ(touches.borderClipTop, 0);
    EXPECT_EQ(touches.borderClipBottom, 470);
    EXPECT_EQ(touches.borderClipLeft, -5);
    EXPECT_EQ(touches.borderClipRight, std::numeric_limits<int>::min() + 640); // wraps
}

TEST(TouchSettings, DefaultReadout) {
    touchManager touches;
    EXPECT_EQ(touches.getVariableReadout(),
              "\n//////touchMgr:\nconfidenceThreshold: 2\nborderClipTop: 0\n"
              "borderClipBottom: 480\nborderClipLeft: 0\nborderClipRight: 640\n");
}

} // namespace
