// One frame: from the camera's pictures to the record that a server program sends.
#include "calibration/calibrationBlock.h"
#include "calibration/calibrationCell.h"
#include "camera/cWandManager.h"
#include "camera/cameraManager.h"
#include "camera/hardwareCamera.h"
#include "detection/ImageDownsampler.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"
#include "foundation/numbers.h"
#include "foundation/utils.h"

#include <algorithm>
#include <exception>

#include <librealsense/rs.hpp>

namespace QVR {

namespace {

template <typename Buffer>
bool hasSize(long long count, const Buffer& buffer) {
    return count >= 0 && static_cast<unsigned long long>(count) == buffer.size();
}

} // namespace

int cameraManager::update() {
    static networkFrameData frame;
    return update(frame);
}

int cameraManager::update(networkFrameData& frame) {
    frame = networkFrameData();
    cameraManager* manager = _instance;
    if (manager == nullptr) {
        return -5;
    }
    cWandManager::update();
    const int result = manager->internalUpdate(frame.color, frame.depth);
    if (!serverSendColor) {
        frame.color = nullptr;
    }
    if (!serverSendDepth) {
        frame.depth = nullptr;
    }
    // A failed frame still carries touches and marks: the server keeps sending.
    if (serverSendProcessed && !manager->blobs->mask.empty()) {
        frame.processed = manager->blobs->mask.data();
    }
    if (serverSendTouch) {
        manager->touches->getTouches(&frame.touches);
    }
    return result != 0 ? 1 : 0;
}

int cameraManager::internalUpdate(const unsigned char*& color, const unsigned short*& depth) {
    if (!camera || !camera->isStreaming()) {
        return -1;
    }
    const unsigned short* depthFrame = nullptr;
    try {
        rs_error* error = nullptr;
        rs_wait_for_frames(camera->device, &error);
        rs::error::handle(error);

        // A camera that delivers another size than the buffers have stops the frame here rather
        // than overrun them.
        long long depthCount = -1;
        depthFrame = camera->getDepthFrame(depthCount);
        if (depthFrame == nullptr || !hasSize(depthCount, depthBuffer)) {
            return -2;
        }
        long long colorBytes = -1;
        color = static_cast<const unsigned char*>(camera->getColorFrame(colorBytes));
        if (color == nullptr || !hasSize(colorBytes, colorBuffer)) {
            return -3;
        }
        blobs->processFrame(depthFrame);
        blobs->extractBlobs(depthFrame);
        blobs->updateTouches(touches.get());
    } catch (const std::exception& e) {
        log("cameraManager::internalUpdate() e: ");
        log(e.what());
        return -4;
    }
    depth = depthToSend(depthFrame);
    copyForTextures(depthFrame, color);
    return 0;
}

// A downsampler made for another size would read past the frame: then there is no image to send.
const unsigned short* cameraManager::depthToSend(const unsigned short* depthFrame) {
    if (!downsampler) {
        return depthFrame;
    }
    const bool fits =
        std::uint64_t{downsampler->sourceWidth} * downsampler->sourceHeight <= depthBuffer.size();
    return fits ? downsampler->downSample16bitImage(depthFrame) : nullptr;
}

// The camera's pictures die with the next wait; only what a host shows is worth a copy.
void cameraManager::copyForTextures(const unsigned short* depthFrame, const unsigned char* color) {
    if (depthTexture != nullptr) {
        std::copy_n(depthFrame, depthBuffer.size(), depthBuffer.begin());
    }
    if (processedTexture != nullptr) {
        const std::size_t marks = std::min(blobs->mask.size(), processedBuffer.size());
        std::copy_n(blobs->mask.begin(), marks, processedBuffer.begin());
    }
    if (colorTexture != nullptr) {
        std::copy_n(color, colorBuffer.size(), colorBuffer.begin());
    }
}

int cameraManager::getNetworkFrameInfo(ProtocolHeader& header) {
    const bool open = camera && camera->device != nullptr;
    header.oneMeterValue =
        open ? static_cast<std::uint32_t>(truncateToInt(getCameraOneMeterScale())) : 0;

    header.colorX = colorResX;
    header.colorY = colorResY;
    header.depthX = downsampler ? downsampler->targetWidth : depthResX;
    header.depthY = downsampler ? downsampler->targetHeight : depthResY;
    header.processedX = depthResX;
    header.processedY = depthResY;

    header.colorChannels = serverSendColor ? 3 : 0;
    header.colorDepth = serverSendColor ? 1 : 0;
    header.depthChannels = serverSendDepth ? 1 : 0;
    header.depthDepth = serverSendDepth ? 2 : 0;
    header.processedChannels = serverSendProcessed ? 1 : 0;
    header.processedDepth = serverSendProcessed ? 1 : 0;
    header.touchCount = serverSendTouch ? 10 : 0;
    return static_cast<int>(utils::getNetworkFrameSize(header));
}

bool cameraManager::toggleCamera(bool on) {
    if (!camera) {
        return false;
    }
    const bool streaming = camera->isStreaming();
    if (on && !streaming) {
        return camera->start();
    }
    if (!on && streaming) {
        return camera->stop();
    }
    return true;
}

bool cameraManager::isCameraStreaming() {
    return camera && camera->isStreaming();
}

void cameraManager::setFarClip(float meters) {
    blobs->setFarClipping(meters);
}

void cameraManager::applyCalibrationToCoord(Vector3& p) {
    distortionMap->calibrateVector(p);
    if (projectionMap) {
        projectionMap->normalizePoint(p);
        projectionMap->transformPoint(p);
    }
}

void cameraManager::prepareTouchCollection() {
    touches->prepareTouchCollection();
}

void cameraManager::setOutputCalibratedTouches(bool on) {
    touches->outputCalibratedTouches = on;
}

} // namespace QVR
