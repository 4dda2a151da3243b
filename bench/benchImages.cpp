#include "benchImages.h"

#include "depthPng.h"

#include <random>

namespace bench {

namespace {

std::string sizeName(std::uint32_t width, std::uint32_t height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

// Noise of a few units, as the sensor has at this distance.
literal::Image fingersBefore(std::uint32_t width, std::uint32_t height, std::uint16_t surface) {
    std::mt19937 random(1);
    literal::Image image(width, height);
    const std::uint32_t spacing = width / 5;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const bool finger = x % spacing > spacing / 3 && x % spacing < spacing * 2 / 3 &&
                                y % (height / 2) > height / 8 && y % (height / 2) < height * 3 / 8;
            const std::uint32_t depth = finger ? 1000U : surface;
            image.at(x, y) = static_cast<std::uint16_t>(depth + random() % 9);
        }
    }
    return image;
}

} // namespace

Scene denseScene(std::uint32_t width, std::uint32_t height) {
    return {sizeName(width, height) + "/dense", {}, fingersBefore(width, height, 2000)};
}

Scene sparseScene(std::uint32_t width, std::uint32_t height) {
    return {sizeName(width, height) + "/sparse", {}, fingersBefore(width, height, 9000)};
}

Scene surfaceScene(std::uint32_t width, std::uint32_t height) {
    return {sizeName(width, height) + "/surface", {}, fingersBefore(width, height, 1000)};
}

std::vector<Scene> realScenes() {
    const auto image = literal::readDepthPng(std::string(QVR_REAL_IMAGES) + "/070.png");
    if (!image) {
        return {};
    }
    literal::Settings hand;
    hand.nearNoiseCutoff = 3600;
    hand.farLimit = 5120;
    hand.maxDiffNear = 360;
    hand.maxDiffFar = 300;
    hand.blobLineAssocLimitU = 16;
    hand.blobLineAssocLimitV = 3;
    hand.flatnessRadius = 3;
    hand.flatnessThreshold = 60;
    hand.minBlobSize = 8;
    hand.allowedBlobNoiseGap = 2;
    literal::Settings room = hand;
    room.nearNoiseCutoff = 560;
    room.farLimit = 12000;
    const std::string size = sizeName(image->width, image->height);
    return {{size + "/hand", hand, *image}, {size + "/room", room, *image}};
}

std::vector<Scene> allScenes() {
    std::vector<Scene> scenes = realScenes();
    scenes.push_back(sparseScene(640, 480));
    scenes.push_back(denseScene(640, 480));
    scenes.push_back(surfaceScene(640, 480));
    scenes.push_back(denseScene(1920, 1080));
    return scenes;
}

bool prepare(QVR::blobManager& manager, const Scene& scene) {
    const literal::Image& image = scene.image;
    manager.setConfig(8000.0f, image.width, image.height);
    literal::apply(scene.settings, manager);
    manager.processFrame(image.data());
    manager.extractBlobs(image.data());
    literal::Detection expected(image.width, image.height);
    expected.settings = scene.settings;
    expected.processFrame(image);
    expected.extractBlobs(image);
    bool same = manager.mask == expected.mask && manager.cutoffDepth == expected.cutoffDepth;
    for (std::size_t i = 0; i < expected.blobs.size(); ++i) {
        same = same && manager.blobs[i].valid == expected.blobs[i].valid &&
               manager.blobs[i].centerX == expected.blobs[i].centerX &&
               manager.blobs[i].centerY == expected.blobs[i].centerY;
    }
    return same;
}

} // namespace bench
