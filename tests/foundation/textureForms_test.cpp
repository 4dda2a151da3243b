// Every form of the texture conversion against the conversion written byte by byte.
#include "foundation/textureConversion.h"
#include "foundation/textureForms.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t mostPixels = 350; // more than are fetched ahead

Bytes literalColor(const unsigned char* rgb, std::size_t pixels) {
    Bytes rgba;
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        const unsigned char* in = rgb + 3 * pixel;
        rgba.insert(rgba.end(), {in[0], in[1], in[2], 255});
    }
    return rgba;
}

Bytes literalDepth(const unsigned short* depth, std::size_t pixels) {
    Bytes rgba;
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        rgba.insert(rgba.end(), {static_cast<unsigned char>(depth[pixel] & 0xFF),
                                 static_cast<unsigned char>(depth[pixel] >> 8), 0, 255});
    }
    return rgba;
}

Bytes literalMask(const unsigned char* mask, std::size_t pixels) {
    Bytes rgba;
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        rgba.insert(rgba.end(), {mask[pixel], mask[pixel], mask[pixel], 255});
    }
    return rgba;
}

// Values without a pattern, all of them different from texture to texture.
template <typename Sample>
std::vector<Sample> someSamples(std::size_t count) {
    static std::uint32_t state = 1;
    std::vector<Sample> samples(count);
    for (Sample& sample : samples) {
        state = state * 1664525U + 1013904223U;
        sample = static_cast<Sample>(state >> 16U);
    }
    return samples;
}

// Converts the samples from `offset` on to their end into a texture that begins `shift` bytes
// behind an allocation's start, and compares the texture and what lies around it.
template <typename Sample>
void expectTexture(void (*convert)(const Sample*, std::size_t, unsigned char*),
                   const std::vector<Sample>& samples, std::size_t offset, std::size_t pixels,
                   std::size_t shift, const Bytes& expected) {
    constexpr std::size_t around = 40;
    Bytes texture(shift + expected.size() + around, 9);
    convert(samples.data() + offset, pixels, texture.data() + shift);
    const auto first = texture.begin() + static_cast<std::ptrdiff_t>(shift);
    const auto end = first + static_cast<std::ptrdiff_t>(expected.size());
    const auto untouched = [](unsigned char byte) { return byte == 9; };
    ASSERT_TRUE(std::equal(first, end, expected.begin())) << pixels << " pixels, " << shift;
    ASSERT_TRUE(std::all_of(texture.begin(), first, untouched)) << pixels << " pixels, " << shift;
    ASSERT_TRUE(std::all_of(end, texture.end(), untouched)) << pixels << " pixels, " << shift;
}

class TextureForms : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        form = QVR::findTextureForm(GetParam());
        if (form == nullptr) {
            GTEST_SKIP() << "this processor has no form " << GetParam();
        }
        ASSERT_STREQ(form->name, GetParam());
    }

    const QVR::TextureForm* form = nullptr;
};

TEST_P(TextureForms, ConvertColourLikeThePlainLoop) {
    for (std::size_t pixels = 0; pixels <= mostPixels; ++pixels) {
        for (std::size_t offset = 0; offset < 4; ++offset) {
            const Bytes rgb = someSamples<unsigned char>(offset + 3 * pixels);
            const Bytes expected = literalColor(rgb.data() + offset, pixels);
            for (const std::size_t shift : {0U, 1U, 4U, 20U, 31U}) {
                expectTexture(form->colorToRgba, rgb, offset, pixels, shift, expected);
            }
        }
    }
}

TEST_P(TextureForms, ConvertDepthLikeThePlainLoop) {
    for (std::size_t pixels = 0; pixels <= mostPixels; ++pixels) {
        for (std::size_t offset = 0; offset < 4; ++offset) {
            const auto depth = someSamples<unsigned short>(offset + pixels);
            const Bytes expected = literalDepth(depth.data() + offset, pixels);
            for (const std::size_t shift : {0U, 1U, 4U, 20U, 31U}) {
                expectTexture(form->depthToRgba, depth, offset, pixels, shift, expected);
            }
        }
    }
}

TEST_P(TextureForms, ConvertMasksLikeThePlainLoop) {
    for (std::size_t pixels = 0; pixels <= mostPixels; ++pixels) {
        for (std::size_t offset = 0; offset < 4; ++offset) {
            const Bytes mask = someSamples<unsigned char>(offset + pixels);
            const Bytes expected = literalMask(mask.data() + offset, pixels);
            for (const std::size_t shift : {0U, 1U, 4U, 20U, 31U}) {
                expectTexture(form->maskToRgba, mask, offset, pixels, shift, expected);
            }
        }
    }
}

TEST_P(TextureForms, ConvertEveryDepthValue) {
    std::vector<unsigned short> depth(65536);
    for (std::size_t value = 0; value < depth.size(); ++value) {
        depth[value] = static_cast<unsigned short>(value);
    }
    expectTexture(form->depthToRgba, depth, 0, depth.size(), 0,
                  literalDepth(depth.data(), depth.size()));
}

INSTANTIATE_TEST_SUITE_P(Each, TextureForms, testing::Values("plain", "ssse3", "avx2"),
                         [](const auto& form) { return std::string(form.param); });

TEST(TextureFormChoice, KnowsThePlainFormEverywhereAndNoOtherNames) {
    EXPECT_EQ(QVR::findTextureForm("plain"), &QVR::plainTextureForm);
    EXPECT_EQ(QVR::findTextureForm("fastest"), nullptr);
    EXPECT_EQ(QVR::findTextureForm(""), nullptr);
}

TEST(TextureFormChoice, IsTheLastSupportedForm) {
    const char* expected = "plain";
    for (const QVR::VectorTextureForm& vector : QVR::vectorTextureForms()) {
        EXPECT_EQ(QVR::findTextureForm(vector.form->name),
                  vector.supported ? vector.form : nullptr);
        expected = vector.supported ? vector.form->name : expected;
    }
    EXPECT_STREQ(QVR::activeTextureForm().name, expected);
}

// Whether a conversion really runs the form that was forced.
int calls = 0;

template <typename Sample>
void countCall(const Sample*, std::size_t, unsigned char*) {
    ++calls;
}

TEST(TextureFormChoice, CanBeForced) {
    const QVR::TextureForm counting{"counting", countCall<unsigned char>, countCall<unsigned short>,
                                    countCall<unsigned char>};
    const unsigned char bytes[] = {1, 2, 3};
    const unsigned short depth[] = {1};
    unsigned char texture[] = {9, 9, 9, 9};
    calls = 0;
    QVR::forceTextureForm(&counting);
    QVR::colorToRgba(bytes, 1, texture);
    EXPECT_EQ(calls, 1);
    QVR::depthToRgba(depth, 1, texture);
    EXPECT_EQ(calls, 2);
    QVR::maskToRgba(std::span(bytes).first(1), 1, texture);
    EXPECT_EQ(calls, 3);
    EXPECT_STREQ(QVR::activeTextureForm().name, "counting");
    EXPECT_EQ(texture[3], 9);

    QVR::forceTextureForm(nullptr);
    QVR::colorToRgba(bytes, 1, texture);
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(texture[3], 255);
}

} // namespace
