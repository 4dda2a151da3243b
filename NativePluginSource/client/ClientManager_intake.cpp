// Connection, header and frames: what comes in from the server.
#include "calibration/calibrationManager.h"
#include "client/ClientManager.h"
#include "client/TimeLimit.h"
#include "detection/ImageDownsampler.h"
#include "foundation/Logger.h"
#include "foundation/utils.h"
#include "serverClient/NetworkClient.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <tuple>

namespace QVR {

namespace {

constexpr std::uint32_t protocolVersion = 1;

// An image's size in bytes. The product wraps in 32 bits; read as a signed number it may come
// out negative, and such an image cannot be received.
std::int32_t imageBytes(std::uint32_t x, std::uint32_t y, std::uint32_t channels,
                        std::uint32_t bytesPerChannel) {
    return static_cast<std::int32_t>(x * y * channels * bytesPerChannel);
}

// The pixel count is bounded as well: where the byte count has wrapped it would otherwise send a
// texture conversion far past any buffer a host can have.
bool withinLimits(std::int32_t bytes, std::uint32_t pixels) {
    constexpr std::int32_t limit = ClientManager::maxImageBytes;
    return bytes <= limit && (bytes <= 0 || pixels <= static_cast<std::uint32_t>(limit));
}

template <typename Sample>
std::unique_ptr<Sample[]> makeBuffer(std::int32_t count) {
    return count > 0 ? std::make_unique<Sample[]>(static_cast<std::size_t>(count)) : nullptr;
}

char* bytesOf(void* buffer) {
    return static_cast<char*>(buffer);
}

} // namespace

int ClientManager::Update() {
    if (_instance == nullptr) {
        return -100;
    }
    const int result = _instance->receiveFrame();
    if (result < 0 && reconnectReadsHeader) {
        _instance->emptySlots();
    }
    return result;
}

int ClientManager::receiveFrame() {
    const TimeLimit limit(networkClient, receiveTimeoutMs);
    const int state = CheckClientState();
    if (state < 0) {
        if (debugLogging) {
            Logger::Log("Client manager update failed with: ", state);
        }
        return state;
    }
    const int frame = ProcessServerFrame();
    if (frame < 0) {
        closeClient();
        if (debugLogging) {
            Logger::Log("Client manager ProcessServerFrame() failed with ", frame);
        }
        return -101;
    }
    return 0;
}

int ClientManager::CheckClientState() {
    if (networkClient == nullptr || !networkClient->isInit()) {
        const int result = networkClient == nullptr ? -1 : networkClient->init();
        if (result < 0) {
            closeClient();
            Logger::Log("ERROR!  The networkClient could not initialize!  Returned: ",
                        static_cast<float>(result));
            return -1;
        }
    }
    if (!networkClient->isConnected()) {
        const int result = networkClient->connect(ip.c_str(), port.c_str());
        if (result < 0) {
            closeClient();
            Logger::Log("ERROR!  The networkClient could not connect!  Returned: ",
                        static_cast<float>(result));
            return -2;
        }
        headerDue_ = reconnectReadsHeader;
    }
    // Without the switch once per client: whatever came of the first header, later connections go
    // straight to frames.
    if (header.protocolID == noHeaderYet || headerDue_) {
        if (!readHeader()) {
            closeClient();
            if (debugLogging) {
                Logger::Log("ERROR: Failed to get header from server.");
            }
            return -3;
        }
        if (debugLogging) {
            Logger::Log("Received header:");
            Logger::Log(utils::headerToString(header));
        }
    }
    if (calibration_ == nullptr) {
        loadCalibrationFiles();
    }
    return 0;
}

bool ClientManager::readHeader() {
    const ProtocolHeader before = header;
    const std::size_t valuesBefore = touchValues_.size();
    if (!takeHeader()) {
        // A host goes by the sizes of the last header that counted.
        if (headerDue_) {
            header = before;
            touchValues_.assign(valuesBefore, -1.0);
        }
        return false;
    }
    headerDue_ = false;
    if (before.protocolID != noHeaderYet) {
        forgetOtherThan(before);
    }
    return true;
}

bool ClientManager::takeHeader() {
    // The header comes from the network: sizes that this machine cannot hold are its failure.
    try {
        return GetHeaderFromServer() >= 0 && makeBuffers();
    } catch (const std::bad_alloc&) {
        return false;
    }
}

int ClientManager::GetHeaderFromServer() {
    header.protocolID = 0;
    std::array<char, sizeof(ProtocolHeader)> bytes{};
    std::memcpy(bytes.data(), &header, sizeof header);
    const int result = networkClient->recv(bytes.data(), static_cast<int>(bytes.size()));
    std::memcpy(&header, bytes.data(), sizeof header);
    if (result < static_cast<int>(sizeof header)) {
        Logger::Log("Could not read ProtocolHeader: ", result);
        return -1;
    }
    if (header.protocolID != protocolVersion) {
        Logger::Log("Wrong protocol version. Client " + std::to_string(header.protocolID) +
                    " Server " + std::to_string(protocolVersion) + "\n");
        return -2;
    }
    if (header.touchCount > maxTouchCount) {
        return -3;
    }
    touchValues_.resize(std::size_t{3} * header.touchCount, -1.0);
    return 0;
}

bool ClientManager::makeBuffers() {
    const std::uint32_t colorPixels = header.colorX * header.colorY;
    const std::uint32_t depthPixels = header.depthX * header.depthY;
    const std::uint32_t processedPixels = header.processedX * header.processedY;
    const std::int32_t colorSize =
        imageBytes(header.colorX, header.colorY, header.colorChannels, header.colorDepth);
    const std::int32_t depthSize =
        imageBytes(header.depthX, header.depthY, header.depthChannels, header.depthDepth);
    const std::int32_t processedSize = imageBytes(header.processedX, header.processedY,
                                                  header.processedChannels, header.processedDepth);
    if (!withinLimits(colorSize, colorPixels) || !withinLimits(depthSize, depthPixels) ||
        !withinLimits(processedSize, processedPixels)) {
        return false;
    }
    // The buffers of an earlier header go first: two of the largest are not to be had together.
    releaseBuffers();
    const auto touchSize = static_cast<std::int32_t>(sizeof(NetworkTouch) * header.touchCount);
    auto touchBuffer = makeBuffer<unsigned char>(touchSize);
    auto colorBuffer = makeBuffer<unsigned char>(colorSize);
    auto depthBuffer = makeBuffer<unsigned short>(depthSize / 2);
    auto processedBuffer = makeBuffer<unsigned char>(processedSize);

    // Nothing fails from here on: counts and buffers change together.
    touchBytes_ = std::move(touchBuffer);
    colorBytes_ = std::move(colorBuffer);
    depthValues_ = std::move(depthBuffer);
    processedBytes_ = std::move(processedBuffer);
    touchByteCount_ = touchSize;
    colorByteCount_ = colorSize;
    depthValueCount_ = depthSize / 2;
    processedByteCount_ = processedSize;
    colorPixelCount_ = colorPixels;
    depthPixelCount_ = depthPixels;
    processedPixelCount_ = processedPixels;
    return true;
}

void ClientManager::releaseBuffers() {
    touchBytes_.reset();
    colorBytes_.reset();
    depthValues_.reset();
    processedBytes_.reset();
    touchByteCount_ = colorByteCount_ = depthValueCount_ = processedByteCount_ = 0;
    colorPixelCount_ = depthPixelCount_ = processedPixelCount_ = 0;
}

void ClientManager::forgetOtherThan(const ProtocolHeader& before) {
    // The host's buffers have the size of the images that it knew.
    const auto color = [](const ProtocolHeader& of) {
        return std::tie(of.colorX, of.colorY, of.colorChannels, of.colorDepth);
    };
    const auto depth = [](const ProtocolHeader& of) {
        return std::tie(of.depthX, of.depthY, of.depthChannels, of.depthDepth);
    };
    const auto processed = [](const ProtocolHeader& of) {
        return std::tie(of.processedX, of.processedY, of.processedChannels, of.processedDepth);
    };
    if (color(header) != color(before)) {
        colorTexture = nullptr;
    }
    if (depth(header) != depth(before)) {
        depthTexture = nullptr;
    }
    if (processed(header) != processed(before)) {
        processedTexture = nullptr;
    }
    // The distortion map was imported in the depth units of the other camera.
    if (header.oneMeterValue != before.oneMeterValue) {
        calibration_.reset();
    }
}

void ClientManager::emptySlots() {
    const NetworkTouch empty;
    for (std::int32_t at = 0; at < touchByteCount_; at += std::int32_t{sizeof empty}) {
        std::memcpy(touchBytes_.get() + at, &empty, sizeof empty);
    }
    std::fill(touchValues_.begin(), touchValues_.end(), -1.0);
}

int ClientManager::ProcessServerFrame() {
    const struct {
        char* buffer;
        std::int32_t bytes;
    } blocks[] = {
        {bytesOf(touchBytes_.get()), touchByteCount_},
        {bytesOf(colorBytes_.get()), colorByteCount_},
        {bytesOf(depthValues_.get()), 2 * depthValueCount_},
        {bytesOf(processedBytes_.get()), processedByteCount_},
    };
    int result = 0;
    for (const auto& block : blocks) {
        result = networkClient->recv(block.buffer, block.bytes);
        if (result < 0) {
            break;
        }
    }
    return result;
}

void ClientManager::prepareTouchCollection() {
    // A header that failed half-way leaves slots without records: they are empty.
    const std::size_t slots = touchValues_.size() / 3;
    const std::size_t records = static_cast<std::size_t>(touchByteCount_) / sizeof(NetworkTouch);
    for (std::size_t slot = 0; slot < slots; ++slot) {
        NetworkTouch touch;
        if (slot < records) {
            std::memcpy(&touch, touchBytes_.get() + slot * sizeof touch, sizeof touch);
        }
        const bool isTouch = touch.active == 1;
        double* values = touchValues_.data() + 3 * slot;
        values[0] = isTouch ? touch.x : -1.0;
        values[1] = isTouch ? touch.y : -1.0;
        values[2] = isTouch ? touch.z : -1.0;
    }
    touchReadIndex_ = static_cast<unsigned int>(-1);
}

double ClientManager::getTouchData() {
    ++touchReadIndex_;
    return touchReadIndex_ < touchValues_.size() ? touchValues_[touchReadIndex_] : -9999.0;
}

unsigned char* ClientManager::getNetworkTouches() {
    return touchBytes_.get();
}

} // namespace QVR
