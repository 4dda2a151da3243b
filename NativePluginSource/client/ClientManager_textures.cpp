// The latest images, written into the host's texture buffers.
#include "calibration/calibrationManager.h"
#include "client/ClientManager.h"
#include "detection/ImageDownsampler.h"
#include "foundation/textureConversion.h"

#include <cstring>
#include <span>

namespace QVR {

namespace {

template <typename Sample>
using Conversion = void (*)(std::span<const Sample>, std::size_t, unsigned char*);

template <typename Sample>
void writeTexture(const std::unique_ptr<Sample[]>& samples, std::int32_t count,
                  std::uint32_t pixels, Conversion<Sample> toRgba, unsigned char* texture) {
    if (texture == nullptr || count <= 0) {
        return;
    }
    const std::span<const Sample> image(samples.get(), static_cast<std::size_t>(count));
    if (ClientManager::convertImageBuffersTo8bit4channel) {
        toRgba(image, pixels, texture);
    } else {
        std::memcpy(texture, image.data(), image.size_bytes());
    }
}

} // namespace

void ClientManager::updateColorTexture() {
    writeTexture(colorBytes_, colorByteCount_, colorPixelCount_, colorToRgba, colorTexture);
}

void ClientManager::updateDepthTexture() {
    writeTexture(depthValues_, depthValueCount_, depthPixelCount_, depthToRgba, depthTexture);
}

void ClientManager::updateProcessedTexture() {
    writeTexture(processedBytes_, processedByteCount_, processedPixelCount_, maskToRgba,
                 processedTexture);
}

} // namespace QVR
