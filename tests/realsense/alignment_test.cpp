// The aligned streams against their literal definition, over scenes made to be awkward.
#include "alignment.h"
#include "support/ScriptedSource.h"
#include "support/alignmentOracle.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

using camera::Alignment;
using camera::CameraGeometry;
using namespace camera_test;

namespace {

// Two equal cameras in one place, where alignment is the identity but for the patches' extent.
CameraGeometry sameCameras(int width, int height) {
    CameraGeometry geometry;
    geometry.depth = {width, height, 2, 1, 10, 10, RS_DISTORTION_NONE, {0, 0, 0, 0, 0}};
    geometry.color = geometry.depth;
    geometry.depthToColor = {{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};
    geometry.depthScale = 0.001f;
    return geometry;
}

std::vector<std::uint16_t> depthAligned(const CameraGeometry& geometry,
                                        const std::vector<std::uint16_t>& depth) {
    std::vector<std::uint16_t> out(
        static_cast<std::size_t>(geometry.color.width * geometry.color.height), 0xabcd);
    Alignment(geometry).depthToColor(depth, out);
    return out;
}

std::vector<std::uint8_t> colorAligned(const CameraGeometry& geometry,
                                       const std::vector<std::uint16_t>& depth,
                                       const std::vector<std::uint8_t>& color) {
    std::vector<std::uint8_t> out(depth.size() * 3, 0xcd);
    Alignment(geometry).colorToDepth(depth, color, out);
    return out;
}

void expectLikeOracle(const CameraGeometry& geometry, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<std::uint16_t> depth(
        static_cast<std::size_t>(geometry.depth.width * geometry.depth.height));
    for (auto& sample : depth) {
        const auto kind = random() % 8;
        sample = static_cast<std::uint16_t>(kind == 0   ? 0
                                            : kind == 1 ? 1 + random() % 30
                                            : kind == 2 ? random() % 65536
                                                        : 300 + random() % 900);
    }
    std::vector<std::uint8_t> color(
        static_cast<std::size_t>(geometry.color.width * geometry.color.height * 3));
    for (auto& sample : color) {
        sample = static_cast<std::uint8_t>(random());
    }
    AlignmentOracle oracle(geometry);
    EXPECT_EQ(depthAligned(geometry, depth), oracle.depthToColor(depth.data()));
    EXPECT_EQ(colorAligned(geometry, depth, color),
              oracle.colorToDepth(depth.data(), color.data()));
}

TEST(Alignment, MatchesItsDefinitionOverRandomScenes) {
    for (std::uint32_t seed = 0; seed < 50; ++seed) {
        expectLikeOracle(smallGeometry(), seed);
    }
}

TEST(Alignment, MatchesItsDefinitionWithoutDistortion) {
    CameraGeometry geometry = smallGeometry();
    geometry.depth.model = RS_DISTORTION_NONE; // the coefficients then mean nothing
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        expectLikeOracle(geometry, seed);
    }
}

TEST(Alignment, MatchesItsDefinitionWhenTheColorLensDistorts) {
    CameraGeometry geometry = smallGeometry();
    geometry.color.model = RS_DISTORTION_MODIFIED_BROWN_CONRADY;
    const float coefficients[5] = {0.12f, -0.07f, 0.03f, -0.02f, 0.04f};
    std::copy(std::begin(coefficients), std::end(coefficients), geometry.color.coeffs);
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        expectLikeOracle(geometry, seed);
    }
}

TEST(Alignment, BendsTheColorLensAsItsModelSays) {
    CameraGeometry geometry = sameCameras(40, 30);
    geometry.color.model = RS_DISTORTION_MODIFIED_BROWN_CONRADY;
    const float coefficients[5] = {0.25f, 0, 0, 0.125f, 0};
    std::copy(std::begin(coefficients), std::end(coefficients), geometry.color.coeffs);
    std::vector<std::uint16_t> depth(40 * 30);
    depth[1 * 40 + 12] = 1000;
    // One corner is the ray (0.95, -0.05): stretched by 1.22625 to (1.16494, -0.06131), then
    // shifted by (0.45240, -0.01786), which is position (18.17, 0.21). The other, (1.05, 0.05),
    // comes to (1.92713, 0.08519), position (21.27, 1.85).
    const auto aligned = depthAligned(geometry, depth);
    for (int row = 0; row < 30; ++row) {
        for (int column = 0; column < 40; ++column) {
            const bool covered = row <= 2 && column >= 18 && column <= 21;
            EXPECT_EQ(aligned[static_cast<std::size_t>(row * 40 + column)], covered ? 1000 : 0)
                << column << " " << row;
        }
    }
}

TEST(Alignment, MatchesItsDefinitionWhenColorIsCoarserThanDepth) {
    CameraGeometry geometry = smallGeometry();
    geometry.depth.width = 64;
    geometry.depth.height = 48;
    geometry.depth.fx = geometry.depth.fy = 55;
    geometry.depth.ppx = 31;
    geometry.depth.ppy = 24;
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        expectLikeOracle(geometry, seed);
    }
}

TEST(Alignment, CoversTheRectangleOfAPixelsCorners) {
    const CameraGeometry geometry = sameCameras(5, 3);
    std::vector<std::uint16_t> depth(15);
    depth[1 * 5 + 2] = 1000;
    // The corners of pixel (2, 1) lie half a pixel off; adding a half makes them (2, 1), (3, 2).
    const std::vector<std::uint16_t> expected{0, 0, 0,    0,    0, //
                                              0, 0, 1000, 1000, 0, //
                                              0, 0, 1000, 1000, 0};
    EXPECT_EQ(depthAligned(geometry, depth), expected);
}

TEST(Alignment, KeepsTheNearerOfTwoSamples) {
    const CameraGeometry geometry = sameCameras(5, 3);
    std::vector<std::uint16_t> depth(15);
    depth[1 * 5 + 1] = 900;
    depth[1 * 5 + 2] = 1000;
    auto aligned = depthAligned(geometry, depth);
    EXPECT_EQ(aligned[1 * 5 + 2], 900);
    EXPECT_EQ(aligned[1 * 5 + 3], 1000);
    std::swap(depth[1 * 5 + 1], depth[1 * 5 + 2]);
    aligned = depthAligned(geometry, depth);
    EXPECT_EQ(aligned[1 * 5 + 1], 1000);
    EXPECT_EQ(aligned[1 * 5 + 2], 900);
}

TEST(Alignment, LeavesOutPixelsThatReachBeyondTheColorImage) {
    const CameraGeometry geometry = sameCameras(5, 3);
    std::vector<std::uint16_t> depth(15, 1000);
    const auto aligned = depthAligned(geometry, depth);
    std::vector<std::uint8_t> color(45, 200);
    const auto colors = colorAligned(geometry, depth, color);
    for (std::size_t i = 0; i < depth.size(); ++i) {
        // The last column's and last row's lower right corners fall outside.
        const bool inside = i % 5 < 4 && i / 5 < 2;
        EXPECT_EQ(colors[i * 3], inside ? 200 : 0) << i;
    }
    EXPECT_EQ(aligned, depth) << "neighbours cover the border";
}

TEST(Alignment, GivesADepthPixelTheLastColorItCovers) {
    const CameraGeometry geometry = sameCameras(5, 3);
    std::vector<std::uint16_t> depth(15);
    depth[0] = 1000;
    std::vector<std::uint8_t> color(45);
    for (std::size_t i = 0; i < color.size(); ++i) {
        color[i] = static_cast<std::uint8_t>(i + 1);
    }
    const auto colors = colorAligned(geometry, depth, color);
    EXPECT_EQ(colors[0], color[(1 * 5 + 1) * 3]);
    EXPECT_EQ(colors[1], color[(1 * 5 + 1) * 3 + 1]);
    EXPECT_EQ(colors[2], color[(1 * 5 + 1) * 3 + 2]);
    EXPECT_TRUE(std::all_of(colors.begin() + 3, colors.end(), [](int c) { return c == 0; }));
}

TEST(Alignment, TruncatesTowardZeroAtTheUpperLeftBorder) {
    CameraGeometry geometry = sameCameras(5, 3);
    std::vector<std::uint16_t> depth(15);
    depth[0] = 1000;
    // The upper left corner comes to -1.25 + 0.5 = -0.75, which truncates to pixel 0.
    geometry.color.ppx -= 0.75f;
    EXPECT_EQ(depthAligned(geometry, depth)[0], 1000);
    // Half a pixel further it is -1.25, which is outside.
    geometry.color.ppx -= 0.5f;
    EXPECT_EQ(depthAligned(geometry, depth), std::vector<std::uint16_t>(15));
}

TEST(Alignment, SurvivesPointsInAndBehindTheColorCamera) {
    CameraGeometry geometry = sameCameras(5, 3);
    geometry.depthToColor.translation[2] = -1.0f;
    for (const int sample : {1000, 500, 1, 65535}) {
        const std::vector<std::uint16_t> depth(15, static_cast<std::uint16_t>(sample));
        AlignmentOracle oracle(geometry);
        EXPECT_EQ(depthAligned(geometry, depth), oracle.depthToColor(depth.data())) << sample;
    }
}

TEST(Alignment, FollowsOnlyLensModelsThatItCanInvert) {
    CameraGeometry geometry = sameCameras(5, 3);
    geometry.color.coeffs[0] = 0.1f;
    EXPECT_NO_THROW(Alignment{geometry}) << "no model, no distortion";
    for (const auto model : {RS_DISTORTION_INVERSE_BROWN_CONRADY, RS_DISTORTION_FTHETA}) {
        geometry.color.model = model;
        EXPECT_THROW(Alignment{geometry}, std::runtime_error);
    }
    geometry.color.model = RS_DISTORTION_MODIFIED_BROWN_CONRADY;
    EXPECT_NO_THROW(Alignment{geometry});
    geometry.color.model = RS_DISTORTION_INVERSE_BROWN_CONRADY;
    geometry.color.coeffs[0] = 0.0f;
    EXPECT_NO_THROW(Alignment{geometry}) << "coefficients of zero distort nothing";
    geometry.depth.coeffs[4] = 0.1f;
    for (const auto model : {RS_DISTORTION_MODIFIED_BROWN_CONRADY, RS_DISTORTION_FTHETA}) {
        geometry.depth.model = model;
        EXPECT_THROW(Alignment{geometry}, std::runtime_error);
    }
    geometry.depth.model = RS_DISTORTION_INVERSE_BROWN_CONRADY;
    EXPECT_NO_THROW(Alignment{geometry});
}

} // namespace
