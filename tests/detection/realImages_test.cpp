// Detection on depth images of a real hand, where a folder of them is at hand.
#include "depthPng.h"
#include "detectionComparison.h"
#include "detectionVariants.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

const std::filesystem::path folder = QVR_REAL_IMAGES;

class RealImages : public literal::EveryForm {
  protected:
    void SetUp() override {
        EveryForm::SetUp();
        if (IsSkipped()) {
            return;
        }
        std::vector<std::string> paths;
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
            if (entry.path().extension() == ".png") {
                paths.push_back(entry.path().string());
            }
        }
        if (paths.empty()) {
            GTEST_SKIP() << "no images in " << folder;
        }
        std::sort(paths.begin(), paths.end());
        for (const std::string& path : paths) {
            const std::optional<literal::Image> image = literal::readDepthPng(path);
            ASSERT_TRUE(image.has_value()) << path;
            images.push_back(*image);
        }
    }

    // Runs all images as one sequence and gives the number of blobs with a centre.
    std::size_t compareSequence(const literal::Settings& settings) {
        QVR::blobManager product;
        product.setConfig(8000.0f, images[0].width, images[0].height);
        literal::apply(settings, product);
        literal::Detection expected(images[0].width, images[0].height);
        expected.settings = settings;
        std::size_t centers = 0;
        for (const literal::Image& image : images) {
            expected.processFrame(image);
            expected.extractBlobs(image);
            product.processFrame(image.data());
            product.extractBlobs(image.data());
            EXPECT_TRUE(literal::sameDetection(expected, product));
            for (const QVR::cImageBlob& blob : product.blobs) {
                centers += blob.valid ? 1U : 0U;
            }
        }
        return centers;
    }

    std::vector<literal::Image> images;
};

INSTANTIATE_TEST_SUITE_P(All, RealImages, ::testing::ValuesIn(literal::kernelNames),
                         literal::formName);

literal::Settings handSettings() {
    literal::Settings settings;
    settings.nearNoiseCutoff = 3600;
    settings.farLimit = 5120;
    settings.maxDiffNear = 360;
    settings.maxDiffFar = 300;
    settings.blobLineAssocLimitU = 16;
    settings.blobLineAssocLimitV = 3;
    settings.flatnessRadius = 3;
    settings.flatnessThreshold = 60;
    settings.minBlobSize = 8;
    settings.allowedBlobNoiseGap = 2;
    return settings;
}

TEST_P(RealImages, HandEqualsTheLiteralAlgorithm) {
    // Most of the five stretched fingers of eight images come out as blobs of their own.
    EXPECT_GE(compareSequence(handSettings()), 24U);
}

TEST_P(RealImages, WholeSceneEqualsTheLiteralAlgorithm) {
    literal::Settings settings;
    settings.nearNoiseCutoff = 560;
    settings.farLimit = 12000;
    settings.maxDiffNear = 5000;
    settings.maxDiffFar = 5000;
    EXPECT_GT(compareSequence(settings), 0U);
    settings.flatnessRadius = 12;
    settings.flatnessThreshold = 400;
    EXPECT_GT(compareSequence(settings), 0U);
}

TEST_P(RealImages, DefaultsEqualTheLiteralAlgorithm) {
    compareSequence(literal::Settings());
}

} // namespace
