// A frame of the pipeline, with everything a server and a host may want of it, allocates nothing
// once everything is sized.
#include "camera/cameraManager.h"
#include "detection/ImageDownsampler.h"
#include "server/CameraFixture.h"
#include "support/countedAllocations.h"

#include <memory>
#include <vector>

#include <gtest/gtest.h>

using QVR::cameraManager;

namespace {

class FrameAllocations : public support::CameraFixture {
  protected:
    FrameAllocations() {
        writeDocument(R"("depthResX": 160, "depthResY": 120,)"
                      R"( "colorResX": 160, "colorResY": 120)");
    }
    ~FrameAllocations() override { cameraManager::destroy(); }
};

TEST_F(FrameAllocations, FrameAllocatesNothing) {
    camera.finger = true;
    cameraManager::init();
    cameraManager& manager = *cameraManager::get();
    ASSERT_TRUE(manager.isCameraStreaming());
    cameraManager::serverSendColor = true;
    cameraManager::serverSendProcessed = true;
    manager.downsampler = std::make_unique<QVR::ImageDownsampler>(160, 120, 80, 60);
    std::vector<unsigned char> color(4 * 160 * 120);
    std::vector<unsigned char> depth(color.size());
    std::vector<unsigned char> processed(color.size());
    manager.colorTexture = color.data();
    manager.depthTexture = depth.data();
    manager.processedTexture = processed.data();
    cameraManager::processedTextureDebug = true;
    QVR::networkFrameData frame;
    QVR::ProtocolHeader header;
    ASSERT_EQ(cameraManager::update(frame), 0);

    const int before = countedAllocations();
    int failures = 0;
    for (int i = 0; i < 10; ++i) {
        failures += cameraManager::update(frame);
        manager.getNetworkFrameInfo(header);
        manager.updateColorTexture();
        manager.updateDepthTexture();
        manager.updateProcessedTexture();
        manager.prepareTouchCollection();
    }
    const int after = countedAllocations();
    cameraManager::processedTextureDebug = false;

    EXPECT_EQ(after, before);
    EXPECT_GT(before, 0);
    EXPECT_EQ(failures, 0);
    // All of it has run: a touch, and three textures with their pictures of it.
    EXPECT_EQ(frame.touches[0].active, 1);
    const std::size_t finger =
        4U * (support::FakeCamera::fingerRow * 160U + support::FakeCamera::fingerColumn);
    EXPECT_EQ(color[finger], 0x40);
    EXPECT_EQ(depth[finger], support::FakeCamera::fingerDepth);
    EXPECT_EQ(processed[finger], 16);
    EXPECT_EQ(frame.depth[support::FakeCamera::fingerRow / 2 * 80 +
                          support::FakeCamera::fingerColumn / 2],
              support::FakeCamera::fingerDepth);
}

} // namespace
