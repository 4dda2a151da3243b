// The host's textures and the readout text.
#include "calibration/calibrationBlock.h"
#include "calibration/calibrationCell.h"
#include "camera/ManagerFixture.h"
#include "camera/hardwareCamera.h"
#include "detection/ImageDownsampler.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using QVR::cameraManager;
using support::smallDocument;
using testing::ElementsAre;

namespace {

constexpr std::size_t depthPixels = 64 * 48;
constexpr std::size_t colorPixels = 32 * 24;

class CameraManagerOutputs : public support::ManagerFixture {
  protected:
    CameraManagerOutputs() : manager(start(smallDocument())) {}

    // The texel at `index`; textures have room for one texel more, which nobody may touch.
    std::vector<int> texel(const std::vector<unsigned char>& texture, std::size_t index) const {
        const auto first = texture.begin() + static_cast<std::ptrdiff_t>(4 * index);
        return {first, first + 4};
    }

    std::vector<unsigned char> depthSized = std::vector<unsigned char>(4 * (depthPixels + 1), 9);
    std::vector<unsigned char> colorSized = std::vector<unsigned char>(4 * (colorPixels + 1), 9);
    cameraManager& manager;
};

TEST_F(CameraManagerOutputs, DepthTextureKeepsAllSixteenBits) {
    fake.depthImage[0] = 0x1234;
    fake.depthImage[depthPixels - 1] = 0xFF01;
    manager.depthTexture = depthSized.data();
    ASSERT_EQ(cameraManager::update(), 0);
    EXPECT_EQ(manager.depthBuffer, fake.depthImage);
    manager.updateDepthTexture();
    EXPECT_THAT(texel(depthSized, 0), ElementsAre(0x34, 0x12, 0, 255));
    EXPECT_THAT(texel(depthSized, 1), ElementsAre(0, 0, 0, 255));
    EXPECT_THAT(texel(depthSized, depthPixels - 1), ElementsAre(0x01, 0xFF, 0, 255));
    EXPECT_THAT(texel(depthSized, depthPixels), ElementsAre(9, 9, 9, 9));
}

TEST_F(CameraManagerOutputs, DepthTextureShowsTheWholeImageBesideADownsampler) {
    fake.depthImage[1] = 0x0203;
    manager.downsampler = std::make_unique<QVR::ImageDownsampler>(64, 48, 32, 24);
    manager.depthTexture = depthSized.data();
    ASSERT_EQ(cameraManager::update(), 0);
    manager.updateDepthTexture();
    EXPECT_THAT(texel(depthSized, 1), ElementsAre(3, 2, 0, 255));
}

TEST_F(CameraManagerOutputs, ColourTextureKeepsTheChannelOrder) {
    fake.colorImage[0] = 10;
    fake.colorImage[1] = 20;
    fake.colorImage[2] = 30;
    fake.colorImage[3 * colorPixels - 3] = 40;
    fake.colorImage[3 * colorPixels - 2] = 50;
    fake.colorImage[3 * colorPixels - 1] = 60;
    manager.colorTexture = colorSized.data();
    ASSERT_EQ(cameraManager::update(), 0);
    manager.updateColorTexture();
    EXPECT_THAT(texel(colorSized, 0), ElementsAre(10, 20, 30, 255));
    EXPECT_THAT(texel(colorSized, 1), ElementsAre(0, 0, 0, 255));
    EXPECT_THAT(texel(colorSized, colorPixels - 1), ElementsAre(40, 50, 60, 255));
    EXPECT_THAT(texel(colorSized, colorPixels), ElementsAre(9, 9, 9, 9));
}

TEST_F(CameraManagerOutputs, ProcessedTextureIsGrey) {
    support::showFinger(fake.depthImage);
    manager.processedTexture = depthSized.data();
    ASSERT_EQ(cameraManager::update(), 0);
    EXPECT_EQ(manager.processedBuffer, manager.blobs->mask);
    manager.updateProcessedTexture();
    EXPECT_THAT(texel(depthSized, 0), ElementsAre(0, 0, 0, 255));
    EXPECT_THAT(texel(depthSized, 24 * 64 + 31), ElementsAre(16, 16, 16, 255));
    EXPECT_THAT(texel(depthSized, depthPixels), ElementsAre(9, 9, 9, 9));
}

TEST_F(CameraManagerOutputs, CopiesOnlyForTexturesThatTheHostGave) {
    support::showFinger(fake.depthImage);
    fake.colorImage.assign(fake.colorImage.size(), 77);
    ASSERT_EQ(cameraManager::update(), 0);
    EXPECT_EQ(manager.depthBuffer, std::vector<std::uint16_t>(depthPixels, 0));
    EXPECT_EQ(manager.processedBuffer, std::vector<std::uint8_t>(depthPixels, 0));
    EXPECT_EQ(manager.colorBuffer, std::vector<std::uint8_t>(3 * colorPixels, 0));

    manager.depthTexture = depthSized.data();
    ASSERT_EQ(cameraManager::update(), 0);
    EXPECT_EQ(manager.depthBuffer[24 * 64 + 31], 500);
    EXPECT_EQ(manager.processedBuffer[24 * 64 + 31], 0);
    EXPECT_EQ(manager.colorBuffer[0], 0);

    manager.depthTexture = nullptr;
    manager.processedTexture = depthSized.data();
    fake.depthImage[24 * 64 + 31] = 501;
    ASSERT_EQ(cameraManager::update(), 0);
    EXPECT_EQ(manager.depthBuffer[24 * 64 + 31], 500);
    EXPECT_EQ(manager.processedBuffer[24 * 64 + 31], 16);
    EXPECT_EQ(manager.colorBuffer[0], 0);

    manager.processedTexture = nullptr;
    manager.colorTexture = colorSized.data();
    ASSERT_EQ(cameraManager::update(), 0);
    EXPECT_EQ(manager.colorBuffer[0], 77);
}

TEST_F(CameraManagerOutputs, BuffersKeepTheLastFrameWhenOneFails) {
    fake.depthImage[0] = 0x1234;
    manager.depthTexture = depthSized.data();
    ASSERT_EQ(cameraManager::update(), 0);
    fake.depthImage[0] = 0x4321;
    fake.failAt("rs_wait_for_frames");
    ASSERT_EQ(cameraManager::update(), 1);
    manager.updateDepthTexture();
    EXPECT_THAT(texel(depthSized, 0), ElementsAre(0x34, 0x12, 0, 255));
}

TEST_F(CameraManagerOutputs, WithoutTexturesNothingHappens) {
    cameraManager::processedTextureDebug = true;
    manager.updateColorTexture();
    manager.updateDepthTexture();
    manager.updateProcessedTexture();
}

TEST_F(CameraManagerOutputs, DebugOverlayShowsMarks) {
    manager.processedTexture = depthSized.data();
    manager.processedBuffer[0] = 200;
    manager.blobs->mask[0] = 7;
    manager.processedBuffer[1] = 200;
    manager.blobs->mask[1] = 150;
    manager.processedBuffer[2] = 10;
    manager.blobs->mask[2] = 1;
    manager.processedBuffer[3] = 20;
    manager.blobs->mask[3] = 0;
    manager.processedBuffer[4] = 105;
    manager.blobs->mask[4] = 255;
    manager.updateProcessedTexture();
    EXPECT_THAT(texel(depthSized, 0), ElementsAre(200, 200, 200, 255));

    cameraManager::processedTextureDebug = true;
    manager.updateProcessedTexture();
    EXPECT_THAT(texel(depthSized, 0), ElementsAre(200, 200, 255, 255));
    EXPECT_THAT(texel(depthSized, 1), ElementsAre(200, 255, 200, 255));
    EXPECT_THAT(texel(depthSized, 2), ElementsAre(10, 10, 160, 255));
    EXPECT_THAT(texel(depthSized, 3), ElementsAre(20, 20, 20, 255));
    EXPECT_THAT(texel(depthSized, 4), ElementsAre(105, 105, 255, 255));
}

TEST_F(CameraManagerOutputs, DebugOverlayEndsWithTheMarkImage) {
    manager.processedTexture = depthSized.data();
    cameraManager::processedTextureDebug = true;
    manager.blobs->mask.assign(2, 150);
    manager.blobs->mask.shrink_to_fit();
    manager.updateProcessedTexture();
    EXPECT_THAT(texel(depthSized, 1), ElementsAre(0, 255, 0, 255));
    EXPECT_THAT(texel(depthSized, 2), ElementsAre(0, 0, 0, 255));

    manager.blobs->mask.assign(depthPixels + 50, 150);
    manager.updateProcessedTexture();
    EXPECT_THAT(texel(depthSized, depthPixels - 1), ElementsAre(0, 255, 0, 255));
    EXPECT_THAT(texel(depthSized, depthPixels), ElementsAre(9, 9, 9, 9));
}

// A host makes its textures by the resolution.
TEST_F(CameraManagerOutputs, TexturesHaveThePixelsOfTheResolution) {
    manager.colorTexture = colorSized.data();
    manager.depthTexture = depthSized.data();
    manager.colorResX = 2;
    manager.colorResY = 3;
    manager.depthPixelCount = 5;
    manager.updateColorTexture();
    manager.updateDepthTexture();
    EXPECT_THAT(texel(colorSized, 5), ElementsAre(0, 0, 0, 255));
    EXPECT_THAT(texel(colorSized, 6), ElementsAre(9, 9, 9, 9));
    EXPECT_THAT(texel(depthSized, 4), ElementsAre(0, 0, 0, 255));
    EXPECT_THAT(texel(depthSized, 5), ElementsAre(9, 9, 9, 9));

    cameraManager::processedTextureDebug = true;
    manager.blobs->mask.assign(depthPixels, 150);
    depthSized.assign(depthSized.size(), 9);
    manager.processedTexture = depthSized.data();
    manager.updateProcessedTexture();
    EXPECT_THAT(texel(depthSized, 4), ElementsAre(0, 255, 0, 255));
    EXPECT_THAT(texel(depthSized, 5), ElementsAre(9, 9, 9, 9));
}

TEST_F(CameraManagerOutputs, TexturesEndWithTheirBuffersWhenTheResolutionHasGrown) {
    manager.colorTexture = colorSized.data();
    manager.depthTexture = depthSized.data();
    manager.colorResX = 4294967295U;
    manager.colorResY = 4294967295U;
    manager.depthPixelCount = 4294967295U;
    manager.updateColorTexture();
    manager.updateDepthTexture();
    EXPECT_THAT(texel(colorSized, colorPixels - 1), ElementsAre(0, 0, 0, 255));
    EXPECT_THAT(texel(colorSized, colorPixels), ElementsAre(9, 9, 9, 9));
    EXPECT_THAT(texel(depthSized, depthPixels - 1), ElementsAre(0, 0, 0, 255));
    EXPECT_THAT(texel(depthSized, depthPixels), ElementsAre(9, 9, 9, 9));

    depthSized.assign(depthSized.size(), 9);
    manager.processedTexture = depthSized.data();
    manager.updateProcessedTexture();
    EXPECT_THAT(texel(depthSized, depthPixels - 1), ElementsAre(0, 0, 0, 255));
    EXPECT_THAT(texel(depthSized, depthPixels), ElementsAre(9, 9, 9, 9));
}

TEST_F(CameraManagerOutputs, ReadoutWithoutAProjectionMap) {
    EXPECT_EQ(manager.getVariableReadout(), "\n//////main:\n"
                                            "xRes 64\n"
                                            "yRes 48\n"
                                            "dataLength 3072\n"
                                            "xResColor 32\n"
                                            "yResColor 24\n"
                                            "\n//////blobManager:\n"
                                            "maxDiffNear 200\n"
                                            "maxDiffFar 30\n"
                                            "nearNoiseCutoff 0\n"
                                            "farLimit 2400\n"
                                            "blobLineAssocLimitU 32\n"
                                            "blobLineAssocLimitV 11\n"
                                            "flatnessRadius 4\n"
                                            "flatnessThreshold 27\n"
                                            "biasStrength 45\n"
                                            "minBlobSize 11\n"
                                            "minBlobSpace 3\n"
                                            "allowedBlobNoiseGap 3\n"
                                            "oneMeter 1000\n"
                                            "\n//////touchMgr:\n"
                                            "confidenceThreshold: 2\n"
                                            "borderClipTop: 0\n"
                                            "borderClipBottom: 48\n"
                                            "borderClipLeft: 0\n"
                                            "borderClipRight: 64\n"
                                            "\n//////projection map:\n"
                                            "none\n");
}

TEST_F(CameraManagerOutputs, ReadoutWithAProjectionMapRepeatsTheDepthWidth) {
    manager.setProjectionMap(support::doublingMap(0), 0);
    const std::string text = manager.getVariableReadout();
    const std::string end = "\n//////projection map:\nxRes 64\n";
    ASSERT_GE(text.size(), end.size());
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

TEST_F(CameraManagerOutputs, ReadoutNumbersAreUnsigned) {
    manager.colorResX = 4294967295U;
    EXPECT_THAT(manager.getVariableReadout(), testing::HasSubstr("xResColor 4294967295\n"));
}

} // namespace
