// What a host shows and what a person reads: textures and texts.
#include "calibration/calibrationBlock.h"
#include "calibration/calibrationCell.h"
#include "camera/cameraManager.h"
#include "camera/hardwareCamera.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"
#include "foundation/textureConversion.h"

#include <algorithm>

namespace QVR {

namespace {

// The host's texture has the resolution's pixels, and a buffer whose sizes were not reset since the
// resolution changed may have fewer: neither is passed.
std::size_t texelCount(std::uint64_t texturePixels, std::size_t bufferPixels) {
    return static_cast<std::size_t>(std::min<std::uint64_t>(texturePixels, bufferPixels));
}

// Makes a mark visible without hiding the value under it.
void showMark(unsigned char* texel, std::uint8_t mark) {
    if (mark == 150) {
        texel[1] = 255;
    } else if (mark != 0) {
        texel[2] = static_cast<unsigned char>(std::min(255, texel[2] + 150));
    }
}

std::string readoutLine(const char* label, unsigned int value) {
    return label + std::to_string(value) + "\n";
}

} // namespace

void cameraManager::updateColorTexture() {
    if (colorTexture != nullptr) {
        const std::uint64_t pixels = std::uint64_t{colorResX} * colorResY;
        colorToRgba(colorBuffer, texelCount(pixels, colorBuffer.size() / 3), colorTexture);
    }
}

void cameraManager::updateDepthTexture() {
    if (depthTexture != nullptr) {
        depthToRgba(depthBuffer, texelCount(depthPixelCount, depthBuffer.size()), depthTexture);
    }
}

void cameraManager::updateProcessedTexture() {
    if (processedTexture == nullptr) {
        return;
    }
    const std::size_t count = texelCount(depthPixelCount, processedBuffer.size());
    maskToRgba(processedBuffer, count, processedTexture);
    if (processedTextureDebug) {
        const std::vector<std::uint8_t>& marks = blobs->mask;
        for (std::size_t i = 0; i < std::min(marks.size(), count); ++i) {
            showMark(processedTexture + 4 * i, marks[i]);
        }
    }
}

std::string cameraManager::getCameraInfoJson() {
    return camera ? camera->getCameraInfo() : std::string();
}

std::string cameraManager::getVariableReadout() {
    std::string text = "\n//////main:\n";
    text += readoutLine("xRes ", depthResX);
    text += readoutLine("yRes ", depthResY);
    text += readoutLine("dataLength ", depthPixelCount);
    text += readoutLine("xResColor ", colorResX);
    text += readoutLine("yResColor ", colorResY);
    text += blobs->getVariableReadout();
    text += touches->getVariableReadout();
    text += "\n//////projection map:\n";
    // The map has no size of its own to show; the depth width says that there is one.
    text += projectionMap ? readoutLine("xRes ", depthResX) : "none\n";
    return text;
}

} // namespace QVR
