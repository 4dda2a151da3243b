#include "images/sources.h"

#include <stdexcept>

#include <gtest/gtest.h>

namespace {

TEST(ImagesWithoutPng, SayWhatTheBuildIsWithout) {
    std::string message;
    try {
        camera::openImages(camera::SourceOptions("images", "folder", {}));
    } catch (const std::runtime_error& error) {
        message = error.what();
    }
    EXPECT_EQ(message, "camera source \"images\" needs libpng, which this build is without. "
                       "Configure anew with -DQVR_IMAGE_SOURCE=ON");
}

} // namespace
