// A camera server's header and frames, as the client and the host behind it take them.
//
// Input: switches, the size of the pieces in which bytes arrive, then the bytes.
#include "client/ClientManager.h"
#include "client/plugin.h"
#include "fuzzing.h"
#include "scriptedNetwork.h"
#include "support/TemporaryVolume.h"

#include <vector>

namespace {

// Images that are accepted and large cost time and show nothing that smaller ones do not.
constexpr std::uint32_t largeImage = 1U << 16;

bool isLarge(std::uint32_t x, std::uint32_t y, std::uint32_t channels, std::uint32_t bytes) {
    const std::uint32_t size = x * y * channels * bytes;
    return size > largeImage && size <= std::uint32_t{QVR::ClientManager::maxImageBytes};
}

bool announcesLargeImages(const std::string& stream) {
    QVR::ProtocolHeader header;
    std::memcpy(&header, stream.data(), std::min(stream.size(), sizeof header));
    return isLarge(header.colorX, header.colorY, header.colorChannels, header.colorDepth) ||
           isLarge(header.depthX, header.depthY, header.depthChannels, header.depthDepth) ||
           isLarge(header.processedX, header.processedY, header.processedChannels,
                   header.processedDepth);
}

// What a host has to provide for an image: four bytes a pixel, or the image as it comes. Empty
// for an image that nobody could show.
std::vector<unsigned char> textureFor(std::uint32_t x, std::uint32_t y, std::uint32_t channels,
                                      std::uint32_t bytes) {
    const std::uint32_t pixels = x * y;
    const std::uint32_t size = pixels * channels * bytes;
    const std::uint32_t most = std::max(pixels, size);
    return std::vector<unsigned char>(most <= largeImage ? std::size_t{4} * most : 0);
}

unsigned char* orNull(std::vector<unsigned char>& texture) {
    return texture.empty() ? nullptr : texture.data();
}

void showFrame() {
    prepareTouchCollection();
    // One slot past the end where it is near: a header may announce any number.
    const int slots = std::clamp(getTouchPoolSize(), 0, 40) + 1;
    for (int value = 0; value < 3 * slots; ++value) {
        getTouchData();
    }
    updateColorTexture();
    updateDepthTexture();
    updateProcessedTexture();
    applyCalibrationToCoord(1.0F, 2.0F, 300.0F);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const support::TemporaryVolume emptyVolume;
    fuzzing::swallowMessages();
    fuzzing::Input input(data, size);
    const unsigned switches = input.byte();
    fuzzing::Network& network = fuzzing::network();
    network = {};
    network.breaks = (switches & 1U) != 0;
    network.piece = input.byte();
    network.bytes = input.rest();
    if (announcesLargeImages(network.bytes)) {
        return 0;
    }
    printDebug((switches & 2U) != 0);
    QVR::ClientManager::convertImageBuffersTo8bit4channel = (switches & 4U) == 0;

    initClientWithCustomServer("camera", 27016);
    const QVR::ProtocolHeader& header = QVR::ClientManager::Get()->header;
    auto color = textureFor(header.colorX, header.colorY, header.colorChannels, header.colorDepth);
    auto depth = textureFor(header.depthX, header.depthY, header.depthChannels, header.depthDepth);
    auto processed = textureFor(header.processedX, header.processedY, header.processedChannels,
                                header.processedDepth);
    setColorTexture(orNull(color));
    setDepthTexture(orNull(depth));
    setProcessedTexture(orNull(processed));
    for (int frame = 0; frame < 3; ++frame) {
        const int result = update();
        fuzzing::require(result == 0 || result == -101 || result == -3,
                         "update gives a known code");
        showFrame();
    }
    shutDown();
    return 0;
}
