// A frame through detection and tracking allocates nothing once everything is sized.
#include "detection/ImageDownsampler.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"
#include "detectionVariants.h"
#include "literalDetection.h"
#include "support/countedAllocations.h"

#include <gtest/gtest.h>

namespace {

using FrameAllocations = literal::EveryForm;

INSTANTIATE_TEST_SUITE_P(All, FrameAllocations, ::testing::ValuesIn(literal::kernelNames),
                         literal::formName);

TEST_P(FrameAllocations, FrameAllocatesNothing) {
    literal::Image image(640, 480, 2400);
    for (std::uint32_t y = 100; y < 200; ++y) {
        for (std::uint32_t x = 300; x < 330; ++x) {
            image.at(x, y) = 1000;
        }
    }
    QVR::blobManager blobs;
    blobs.setConfig(8000.0f, 640, 480);
    QVR::touchManager touches;
    QVR::ImageDownsampler downsampler(640, 480, 320, 240);
    const QVR::NetworkTouch* records = nullptr;

    const int before = countedAllocations();
    for (int frame = 0; frame < 3; ++frame) {
        blobs.processFrame(image.data());
        blobs.extractBlobs(image.data());
        blobs.updateTouches(&touches);
        touches.getTouches(&records);
        touches.prepareTouchCollection();
        downsampler.downSample16bitImage(image.data());
    }
    const int after = countedAllocations();

    EXPECT_EQ(after, before);
    EXPECT_GT(before, 0);
    EXPECT_EQ(records[0].active, 1);
}

} // namespace
