// Textures of images that end early, in every form.
#include "foundation/textureConversion.h"
#include "foundation/textureForms.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

class TextureConversion : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        const QVR::TextureForm* const form = QVR::findTextureForm(GetParam());
        if (form == nullptr) {
            GTEST_SKIP() << "this processor has no form " << GetParam();
        }
        QVR::forceTextureForm(form);
        ASSERT_STREQ(QVR::activeTextureForm().name, GetParam());
    }
    void TearDown() override { QVR::forceTextureForm(nullptr); }
};

TEST_P(TextureConversion, WritesNothingForNoPixels) {
    const unsigned char samples[] = {1, 2, 3};
    const unsigned short depth[] = {1};
    unsigned char texture = 9;
    QVR::colorToRgba(samples, 0, &texture);
    QVR::maskToRgba(samples, 0, &texture);
    QVR::depthToRgba(depth, 0, &texture);
    EXPECT_EQ(texture, 9);
}

TEST_P(TextureConversion, ShowsNoSamplesAsBlack) {
    std::vector<unsigned char> texture(8, 9);
    const std::vector<unsigned char> black{0, 0, 0, 255, 0, 0, 0, 255};
    QVR::colorToRgba({}, 2, texture.data());
    EXPECT_EQ(texture, black);
    texture.assign(8, 9);
    QVR::depthToRgba({}, 2, texture.data());
    EXPECT_EQ(texture, black);
    texture.assign(8, 9);
    QVR::maskToRgba({}, 2, texture.data());
    EXPECT_EQ(texture, black);
}

TEST_P(TextureConversion, TakesWhatAColourImageLacksAsZero) {
    for (std::size_t pixels = 1; pixels <= 70; ++pixels) {
        std::vector<unsigned char> rgb(3 * pixels);
        for (std::size_t index = 0; index < rgb.size(); ++index) {
            rgb[index] = static_cast<unsigned char>(index * 7 + 1);
        }
        for (std::size_t known = 0; known <= rgb.size(); ++known) {
            const std::vector<unsigned char> samples(rgb.begin(),
                                                     rgb.begin() + static_cast<long>(known));
            std::vector<unsigned char> texture(4 * pixels, 9);
            QVR::colorToRgba(samples, pixels, texture.data());
            for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
                for (std::size_t channel = 0; channel < 3; ++channel) {
                    const std::size_t index = 3 * pixel + channel;
                    ASSERT_EQ(texture[4 * pixel + channel], index < known ? rgb[index] : 0);
                }
                ASSERT_EQ(texture[4 * pixel + 3], 255);
            }
        }
    }
}

TEST_P(TextureConversion, TakesWhatADepthImageOrAMaskLacksAsZero) {
    for (std::size_t known = 0; known <= 70; ++known) {
        const std::vector<unsigned short> depth(known, 0x1234);
        const std::vector<unsigned char> mask(known, 0x56);
        std::vector<unsigned char> depthTexture(4 * 70, 9);
        std::vector<unsigned char> maskTexture(4 * 70, 9);
        QVR::depthToRgba(depth, 70, depthTexture.data());
        QVR::maskToRgba(mask, 70, maskTexture.data());
        for (std::size_t pixel = 0; pixel < 70; ++pixel) {
            const bool shown = pixel < known;
            const unsigned char* const texel = depthTexture.data() + 4 * pixel;
            ASSERT_EQ(texel[0], shown ? 0x34 : 0);
            ASSERT_EQ(texel[1], shown ? 0x12 : 0);
            ASSERT_EQ(texel[2], 0);
            ASSERT_EQ(texel[3], 255);
            const unsigned char* const grey = maskTexture.data() + 4 * pixel;
            ASSERT_EQ(grey[0], shown ? 0x56 : 0);
            ASSERT_EQ(grey[1], shown ? 0x56 : 0);
            ASSERT_EQ(grey[2], shown ? 0x56 : 0);
            ASSERT_EQ(grey[3], 255);
        }
    }
}

TEST_P(TextureConversion, LeavesOutSamplesBeyondTheLastPixel) {
    const std::vector<unsigned char> bytes(300, 7);
    const std::vector<unsigned short> depth(100, 7);
    std::vector<unsigned char> texture(8, 9);
    QVR::colorToRgba(bytes, 1, texture.data());
    QVR::depthToRgba(depth, 1, texture.data());
    QVR::maskToRgba(bytes, 1, texture.data());
    EXPECT_EQ(texture, (std::vector<unsigned char>{7, 7, 7, 255, 9, 9, 9, 9}));
}

INSTANTIATE_TEST_SUITE_P(Each, TextureConversion, testing::Values("plain", "ssse3", "avx2"),
                         [](const auto& form) { return std::string(form.param); });

} // namespace
