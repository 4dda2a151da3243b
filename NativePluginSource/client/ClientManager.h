// The client behind the C interface: one connection to a camera server, the latest frame, and
// the calibration of points.
#pragma once

#include "foundation/Vector3.h"
#include "foundation/qvrApi.h"
#include "serverClient/frameProtocol.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace json11 {
class Json;
}

// Held while the client is created (first connection attempt included) and destroyed.
extern "C" QVR_API std::mutex clientManagerMutex;

// Result of the last exported applyCalibrationToCoord; zero at load.
extern "C" QVR_API QVR::Vector3 calibratedCoord;

namespace QVR {

class calibrationManager;
class ImageDownsampler;
class NetworkClient;

// Everything runs on the host's thread and nothing locks, except creation and destruction.
class QVR_API ClientManager {
  public:
    // header.protocolID while no header has been read.
    static constexpr std::uint32_t noHeaderYet = 9999;

    // Limits of what a header may announce.
    static constexpr std::uint32_t maxTouchCount = 65536;
    static constexpr std::int32_t maxImageBytes = 256 * 1024 * 1024;

    // Creates the one client, for the server that the settings file names; see init in plugin.h.
    static void Init();
    // The same for a given server. With a client in place nothing changes.
    static void Init(const std::string& ip, unsigned int port);
    // Closes the connection and frees the client; with none nothing happens.
    static void Destroy();

    // The client, or null. It belongs to this class and lives until Destroy.
    static ClientManager* Get();
    static bool HasInstance();

    // Receives one frame, connecting first when needed. Blocks, for receiveTimeoutMs at most when
    // that is set. 0; -100: no client; -101: the connection broke or time was over in a frame;
    // else CheckClientState's code.
    static int Update();

    // False without a client, too.
    static bool isConnected();

    // Tries to connect at once; a server that is down leaves a client that retries. Use Init.
    ClientManager(const std::string& ip, const std::string& port);
    ~ClientManager();
    ClientManager(const ClientManager&) = delete;
    ClientManager& operator=(const ClientManager&) = delete;

    // Brings the client as far as it can: connection, header (once, or on every connection; see
    // reconnectReadsHeader), calibration files. 0; -1: the network client failed to start; -2: no
    // connection; -3: no usable header.
    int CheckClientState();

    // Reads the header. 0; -1: it did not come in one piece; -2: another protocol version; -3:
    // more touches than maxTouchCount.
    int GetHeaderFromServer();

    // Receives touches, colour, depth and processed image. The first negative receive result, or
    // else the last result.
    int ProcessServerFrame();

    // Closes the connection; the next Update opens it again.
    void closeClient();

    // See prepareTouchCollection and getTouchData in plugin.h.
    void prepareTouchCollection();
    double getTouchData();

    // The latest frame's NetworkTouch records as they came, or null; header.touchCount records
    // of 28 bytes, valid until the client is destroyed or reads another header.
    unsigned char* getNetworkTouches();

    // Write the latest image into the host's buffer, when one is set and the server sends it:
    // four bytes a pixel, or as received with convertImageBuffersTo8bit4channel off.
    void updateColorTexture();
    void updateDepthTexture();
    void updateProcessedTexture();

    // Takes a point of the depth image as sent to the display, in place. Without a calibration
    // the point stays.
    void applyCalibrationToCoord(Vector3& point);

    // See setCalibrationAsString and setProjectionMapping in plugin.h.
    int setCalibrationData(const std::string& text);
    bool setProjectionMap(const std::string& text, int number);

    // Takes over the document's depth image size before and after downsampling. Sizes that are
    // missing, too small or equal change nothing; nor do those of an image larger than
    // maxImageBytes or than memory, which are logged.
    void handleMiniDepth(const json11::Json& document);

    // What follows may be set at any time and outlives the client.
    static ClientManager* _instance; // the client, or null; set once it is complete
    static bool debugLogging;        // whether progress messages are logged; off at load
    // Whether textures get four bytes a pixel, or the image as received; on at load.
    static bool convertImageBuffersTo8bit4channel;
    static bool ranSocketsInit; // kept for callers; nothing here uses it

    // The time that an update has, and the first attempt at creation: connection, header and frame
    // together, name lookup excepted. Milliseconds; 0 or less, as at load: without limit.
    static int receiveTimeoutMs;
    // Off at load: one header in a client's life. On: every new connection begins with its header
    // as the server sends it. Then the buffers take its sizes, a texture whose image is another
    // than before is forgotten, the calibration files are read again when the depth unit is
    // another, and a failed update leaves no slot with a touch.
    static bool reconnectReadsHeader;

    // The host's pixel buffers; null: not set.
    unsigned char* colorTexture = nullptr;
    unsigned char* depthTexture = nullptr;
    unsigned char* processedTexture = nullptr;

    std::string ip;                         // the server's host name or address
    std::string port;                       // its port in decimal
    NetworkClient* networkClient = nullptr; // owned; null only without memory for one
    ProtocolHeader header;                  // noHeaderYet, 2 and zeros until one has been read

  private:
    int receiveFrame();
    bool readHeader();
    bool takeHeader();
    bool makeBuffers();
    void releaseBuffers();
    void forgetOtherThan(const ProtocolHeader& before);
    void emptySlots();
    void loadCalibrationFiles();

    std::unique_ptr<unsigned char[]> touchBytes_;
    std::unique_ptr<unsigned char[]> colorBytes_;
    std::unique_ptr<unsigned short[]> depthValues_;
    std::unique_ptr<unsigned char[]> processedBytes_;

    // As the header gives them; a negative one has no buffer and makes every frame fail.
    std::int32_t touchByteCount_ = 0;
    std::int32_t colorByteCount_ = 0;
    std::int32_t depthValueCount_ = 0;
    std::int32_t processedByteCount_ = 0;

    std::uint32_t colorPixelCount_ = 0;
    std::uint32_t depthPixelCount_ = 0;
    std::uint32_t processedPixelCount_ = 0;

    bool headerDue_ = false; // the connection is new and begins with a header to be read

    std::vector<double> touchValues_; // x, y, z of every slot
    unsigned int touchReadIndex_ = 0; // of the value read last

    std::unique_ptr<calibrationManager> calibration_;
    std::unique_ptr<ImageDownsampler> downsampler_;
};

} // namespace QVR
