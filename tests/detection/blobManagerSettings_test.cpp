#include "detection/blobManager.h"
#include "support/LogCapture.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <json11.hpp>

namespace {

using QVR::blobManager;
using Messages = std::vector<std::string>;

json11::Json parsed(const std::string& text) {
    std::string error = "noError";
    json11::Json document = json11::Json::parse(text, error);
    EXPECT_EQ(error, "noError");
    return document;
}

void load(blobManager& manager, const std::string& text) {
    json11::Json document = parsed(text);
    manager.loadJson(document);
}

const Messages allWarnings{
    "Warning: Did not find nearClipMeters value in calibration data.",
    "Warning: Did not find farClipMeters value in calibration data!",
    "Warning: Did not find maxDiffNear value in calibration data.",
    "Warning: Did not find maxDiffFar value in calibration data.",
    "Warning: Did not find blobLineAssocLimitU value in calibration data.",
    "Warning: Did not find blobLineAssocLimitV value in calibration data.",
    "Warning: Did not find flatnessRadius value in calibration data.",
    "Warning: Did not find flatnessThreshold value in calibration data.",
    "Warning: Did not find biasStrength value in calibration data.",
    "Warning: Did not find minBlobSize value in calibration data.",
    "Warning: Did not find minBlobSpace value in calibration data.",
    "Warning: Did not find allowedBlobNoiseGap value in calibration data.",
};

const char* const defaultReadout = "\n//////blobManager:\n"
                                   "maxDiffNear 200\n"
                                   "maxDiffFar 30\n"
                                   "nearNoiseCutoff 600\n"
                                   "farLimit 2400\n"
                                   "blobLineAssocLimitU 32\n"
                                   "blobLineAssocLimitV 11\n"
                                   "flatnessRadius 4\n"
                                   "flatnessThreshold 27\n"
                                   "biasStrength 45\n"
                                   "minBlobSize 11\n"
                                   "minBlobSpace 3\n"
                                   "allowedBlobNoiseGap 3\n"
                                   "oneMeter 0\n";

TEST(BlobManagerSettings, Defaults) {
    blobManager manager;
    EXPECT_EQ(manager.maxDiffNear, 200);
    EXPECT_EQ(manager.maxDiffFar, 30);
    EXPECT_EQ(manager.nearNoiseCutoff, 600);
    EXPECT_EQ(manager.farLimit, 2400);
    EXPECT_EQ(manager.blobLineAssocLimitU, 32);
    EXPECT_EQ(manager.blobLineAssocLimitV, 11);
    EXPECT_EQ(manager.flatnessRadius, 4U);
    EXPECT_EQ(manager.flatnessThreshold, 27);
    EXPECT_EQ(manager.biasStrength, 45U);
    EXPECT_EQ(manager.minBlobSize, 11U);
    EXPECT_EQ(manager.minBlobSpace, 3U);
    EXPECT_EQ(manager.allowedBlobNoiseGap, 3U);
    EXPECT_EQ(manager.oneMeter, 0);
    EXPECT_EQ(manager.cutoffDepth, 0);
    EXPECT_EQ(manager.blobs.size(), 10U);
    EXPECT_TRUE(manager.mask.empty());
    EXPECT_EQ(manager.width, 0U);
    EXPECT_EQ(manager.height, 0U);
    EXPECT_EQ(manager.pixelCount, 0U);
    for (const QVR::cImageBlob& blob : manager.blobs) {
        EXPECT_FALSE(blob.valid);
    }
}

TEST(BlobManagerSettings, ReadoutListsEverySetting) {
    blobManager manager;
    EXPECT_EQ(manager.getVariableReadout(), defaultReadout);
    manager.maxDiffNear = 1;
    manager.maxDiffFar = 2;
    manager.nearNoiseCutoff = 3;
    manager.farLimit = 65535;
    manager.blobLineAssocLimitU = -5;
    manager.blobLineAssocLimitV = 6;
    manager.flatnessRadius = 4294967295U;
    manager.flatnessThreshold = 8;
    manager.biasStrength = 9;
    manager.minBlobSize = 10;
    manager.minBlobSpace = 12;
    manager.allowedBlobNoiseGap = 13;
    manager.oneMeter = 8000;
    EXPECT_EQ(manager.getVariableReadout(),
              "\n//////blobManager:\nmaxDiffNear 1\nmaxDiffFar 2\nnearNoiseCutoff 3\n"
              "farLimit 65535\nblobLineAssocLimitU -5\nblobLineAssocLimitV 6\n"
              "flatnessRadius 4294967295\nflatnessThreshold 8\nbiasStrength 9\nminBlobSize 10\n"
              "minBlobSpace 12\nallowedBlobNoiseGap 13\noneMeter 8000\n");
}

TEST(BlobManagerSettings, ConfigSizesMaskAndBlobs) {
    blobManager manager;
    manager.setConfig(8000.9f, 640, 480);
    EXPECT_EQ(manager.oneMeter, 8000);
    EXPECT_EQ(manager.width, 640U);
    EXPECT_EQ(manager.height, 480U);
    EXPECT_EQ(manager.pixelCount, 307200U);
    EXPECT_EQ(manager.mask, std::vector<std::uint8_t>(307200, 0));
    for (const QVR::cImageBlob& blob : manager.blobs) {
        EXPECT_EQ(blob.width, 640U);
        EXPECT_EQ(blob.height, 480U);
        EXPECT_EQ(blob.lineStart, std::vector<std::int32_t>(480, -1));
        EXPECT_EQ(blob.lineEnd, std::vector<std::int32_t>(480, -1));
    }
}

TEST(BlobManagerSettings, ConfigClearsTheMask) {
    blobManager manager;
    manager.setConfig(1000.0f, 4, 2);
    manager.mask.assign(8, 16);
    manager.setConfig(1000.0f, 3, 5);
    EXPECT_EQ(manager.mask, std::vector<std::uint8_t>(15, 0));
}

TEST(BlobManagerSettings, UnitsPerMeterKeepTheirLow16Bits) {
    blobManager manager;
    manager.setConfig(70000.0f, 4, 2);
    EXPECT_EQ(manager.oneMeter, 70000 - 65536);
    manager.setConfig(-1.0f, 4, 2);
    EXPECT_EQ(manager.oneMeter, 65535);
    manager.setConfig(1e20f, 4, 2);
    EXPECT_EQ(manager.oneMeter, 0);
}

TEST(BlobManagerSettings, SizeThat32BitsCannotCountHasNoImage) {
    blobManager manager;
    manager.setConfig(1000.0f, 65536, 65537);
    EXPECT_EQ(manager.pixelCount, 65536U);
    EXPECT_TRUE(manager.mask.empty());
    const std::vector<unsigned short> depth(1, 1000);
    manager.processFrame(depth.data());
    manager.extractBlobs(depth.data());
    EXPECT_EQ(manager.cutoffDepth, 0);
}

TEST(BlobManagerSettings, FarClippingIsInMeters) {
    blobManager manager;
    manager.setFarClipping(0.5f);
    EXPECT_EQ(manager.farLimit, 2400); // units unknown
    manager.setConfig(8000.0f, 4, 2);
    manager.setFarClipping(0.5f);
    EXPECT_EQ(manager.farLimit, 4000);
    manager.setFarClipping(0.3f); // 2400.0000954 in double, 2400 in single precision
    EXPECT_EQ(manager.farLimit, 2400);
    manager.setFarClipping(10.0f);
    EXPECT_EQ(manager.farLimit, 80000 - 65536);
    manager.setFarClipping(1e30f);
    EXPECT_EQ(manager.farLimit, 0);
}

TEST(BlobManagerSettings, MetersAreMultipliedInSinglePrecision) {
    const support::LogCapture quiet;
    blobManager manager;
    manager.setConfig(1000.0f, 4, 2);
    // 0.57f is 0.569999993: 569.99999 in double precision, 570 in single.
    manager.setFarClipping(0.57f);
    EXPECT_EQ(manager.farLimit, 570);
    load(manager, R"({"nearClipMeters": 0.57})");
    EXPECT_EQ(manager.nearNoiseCutoff, 570);
}

TEST(BlobManagerSettings, NullDocumentChangesAndSaysNothing) {
    const support::LogCapture log;
    blobManager manager;
    manager.setConfig(8000.0f, 4, 2);
    json11::Json nothing;
    manager.loadJson(nothing);
    EXPECT_EQ(log.messages(), Messages{});
    EXPECT_EQ(manager.nearNoiseCutoff, 600);
    EXPECT_EQ(manager.farLimit, 2400);
}

TEST(BlobManagerSettings, EmptyDocumentFallsBackAndWarnsOfEveryKeyInOrder) {
    const support::LogCapture log;
    blobManager manager;
    manager.setConfig(1000.0f, 4, 2);
    load(manager, "{}");
    EXPECT_EQ(log.messages(), allWarnings);
    EXPECT_EQ(manager.nearNoiseCutoff, 70);
    EXPECT_EQ(manager.farLimit, 300);
    EXPECT_EQ(manager.maxDiffNear, 200);
    EXPECT_EQ(manager.allowedBlobNoiseGap, 3U);
}

TEST(BlobManagerSettings, WithoutUnitsTheNearLimitIsZeroAndTheFarLimitStays) {
    const support::LogCapture quiet;
    blobManager manager;
    load(manager, R"({"nearClipMeters": 0.2, "farClipMeters": 0.6})");
    EXPECT_EQ(manager.nearNoiseCutoff, 0);
    EXPECT_EQ(manager.farLimit, 2400);
}

TEST(BlobManagerSettings, CompleteDocumentSetsEveryFieldSilently) {
    const support::LogCapture log;
    blobManager manager;
    manager.setConfig(8000.0f, 4, 2);
    load(manager, R"({"nearClipMeters": 0.25, "farClipMeters": 0.75,
        "touchDetection": {"forwardFacing": {
            "maxDiffNear": 101, "maxDiffFar": 102, "blobLineAssocLimitU": 103,
            "blobLineAssocLimitV": 104, "flatnessRadius": 105, "flatnessThreshold": 106,
            "biasStrength": 107, "minBlobSize": 108, "minBlobSpace": 109,
            "allowedBlobNoiseGap": 110}}})");
    EXPECT_EQ(log.messages(), Messages{});
    EXPECT_EQ(manager.getVariableReadout(),
              "\n//////blobManager:\nmaxDiffNear 101\nmaxDiffFar 102\nnearNoiseCutoff 2000\n"
              "farLimit 6000\nblobLineAssocLimitU 103\nblobLineAssocLimitV 104\n"
              "flatnessRadius 105\nflatnessThreshold 106\nbiasStrength 107\nminBlobSize 108\n"
              "minBlobSpace 109\nallowedBlobNoiseGap 110\noneMeter 8000\n");
}

TEST(BlobManagerSettings, ValuesOfAnotherTypeAreWarnedOfAndLeaveTheField) {
    const support::LogCapture log;
    blobManager manager;
    manager.setConfig(1000.0f, 4, 2);
    load(manager, R"({"nearClipMeters": "0.25", "farClipMeters": true,
        "touchDetection": {"forwardFacing": {
            "maxDiffNear": "1", "maxDiffFar": null, "blobLineAssocLimitU": true,
            "blobLineAssocLimitV": [1], "flatnessRadius": {}, "flatnessThreshold": "x",
            "biasStrength": false, "minBlobSize": "", "minBlobSpace": [],
            "allowedBlobNoiseGap": null}}})");
    EXPECT_EQ(log.messages(), allWarnings);
    EXPECT_EQ(manager.nearNoiseCutoff, 70);
    EXPECT_EQ(manager.farLimit, 300);
    manager.nearNoiseCutoff = 600;
    manager.farLimit = 2400;
    manager.oneMeter = 0;
    EXPECT_EQ(manager.getVariableReadout(), defaultReadout);
}

TEST(BlobManagerSettings, SettingsOutsideForwardFacingDoNotCount) {
    const support::LogCapture quiet;
    blobManager manager;
    load(manager, R"({"maxDiffNear": 1, "forwardFacing": {"maxDiffNear": 2},
                      "touchDetection": {"maxDiffNear": 3}})");
    EXPECT_EQ(manager.maxDiffNear, 200);
}

TEST(BlobManagerSettings, NumbersAreTruncatedAndKeepTheFieldsLowBits) {
    const support::LogCapture quiet;
    blobManager manager;
    load(manager, R"({"touchDetection": {"forwardFacing": {
        "maxDiffNear": 99.9, "maxDiffFar": 65537, "blobLineAssocLimitU": -7.9,
        "blobLineAssocLimitV": 1e300, "flatnessRadius": -1, "flatnessThreshold": -1,
        "biasStrength": 1e12, "minBlobSize": -2}}})");
    EXPECT_EQ(manager.maxDiffNear, 99);
    EXPECT_EQ(manager.maxDiffFar, 1);
    EXPECT_EQ(manager.blobLineAssocLimitU, -7);
    EXPECT_EQ(manager.blobLineAssocLimitV, -2147483647 - 1);
    EXPECT_EQ(manager.flatnessRadius, 4294967295U);
    EXPECT_EQ(manager.flatnessThreshold, 65535);
    EXPECT_EQ(manager.biasStrength, 2147483648U);
    EXPECT_EQ(manager.minBlobSize, 4294967294U);
}

TEST(BlobManagerSettings, ClipDistancesOutOfRangeKeepTheirLow16Bits) {
    const support::LogCapture quiet;
    blobManager manager;
    manager.setConfig(1000.0f, 4, 2);
    load(manager, R"({"nearClipMeters": 66, "farClipMeters": -0.001})");
    EXPECT_EQ(manager.nearNoiseCutoff, 66000 - 65536);
    EXPECT_EQ(manager.farLimit, 65535);
    load(manager, R"({"nearClipMeters": 1e300, "farClipMeters": -1e300})");
    EXPECT_EQ(manager.nearNoiseCutoff, 0);
    EXPECT_EQ(manager.farLimit, 0);
}

} // namespace
