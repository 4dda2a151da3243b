// The camera server's pipeline: one camera, the detection that runs on its depth frames, the
// calibration, and the images and touches that a server program sends.
//
// A server program calls init(), then update(frame) in a loop paced by the camera, then destroy().
// init() and destroy() lock `mtx`; everything else takes no lock and belongs to the one loop
// thread. Sizes are pixels; depth is in the camera's own units (see getCameraOneMeterScale).
#pragma once

#include "foundation/Vector3.h"
#include "foundation/qvrApi.h"
#include "serverClient/frameProtocol.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace json11 {
class Json;
}

namespace QVR {

class ImageDownsampler;
class blobManager;
class calibrationBlock;
class calibrationCell;
class hardwareCamera;
class touchManager;

class QVR_API cameraManager {
  public:
    // Creates the singleton: reads "touch.json" and "touch_projectionMap.json", opens the camera.
    // A camera or file that is missing is logged and leaves an instance all the same. A second
    // call only warns. Blocks while the camera starts.
    static void init();
    // Stops the camera and destroys the singleton; without one it only warns. Never while
    // update() runs.
    static void destroy();
    // The singleton, or null.
    static cameraManager* get();

    // Opens the camera and applies the documents as init() does. With a singleton already there,
    // the object stays without a camera and logs the violation.
    cameraManager();
    ~cameraManager();
    cameraManager(const cameraManager&) = delete;
    cameraManager& operator=(const cameraManager&) = delete;

    // Applies the text of a calibration document. Opens the camera with the document's sizes and
    // frame rate unless it streams already; a streaming camera is never restarted.
    // Returns 0; -1 without a camera object; -2 for an empty text; -3 for invalid JSON.
    int setCalibrationData(const std::string& text);

    // Reads "touch_projectionMap.json" and applies its map number `mode`. False when the file or
    // the map cannot be had.
    bool loadProjectionMapFromFile(int mode);
    // Applies map number `mode` of a projection map document. An empty text removes the map and is
    // a success. False (logged) when the map cannot be read.
    bool setProjectionMap(const std::string& text, int mode);

    // Sizes the three buffers, and the detection once it is configured, from the resolutions;
    // contents become 0. An image beyond 256 MiB, or with a side beyond 65535 pixels, gets no
    // buffer, so that its frames fail.
    void resetBuffers();

    // Depth units in one metre; -1 while no device is open.
    float getCameraOneMeterScale();

    // One frame: waits for the camera, detects and tracks, fills `frame`. The update without an
    // argument keeps the frame to itself. Pointers in `frame` are good until the next update;
    // use the colour and depth images only when the result is 0, for a camera that delivers
    // another size than announced is found out with its image at hand.
    // Returns 0; 1 when the frame failed (touches and processed image are then those of the last
    // good one); -5 without an instance.
    static int update();
    static int update(networkFrameData& frame);

    // The acquisition and detection of update(). Returns 0; -1 without a streaming camera; -2
    // and -3 when the depth or the colour frame is missing or has another size than its buffer;
    // -4 after an exception, which is logged.
    int internalUpdate(const unsigned char*& color, const unsigned short*& depth);

    // Describes the frames for clients, except protocol number and byte-order marker. Returns the
    // payload bytes of one frame. Without an open device `oneMeterValue` is 0.
    int getNetworkFrameInfo(ProtocolHeader& header);

    // Convert the buffers into the host's textures; nothing happens where a texture is null.
    // Depth goes into red (low byte) and green (high byte), processed into grey.
    void updateColorTexture();
    void updateDepthTexture();
    void updateProcessedTexture();

    // Starts or stops the streams. True when the camera is in the wanted state afterwards.
    bool toggleCamera(bool on);
    bool isCameraStreaming();

    // Ignores what is farther than `meters` from the camera.
    void setFarClip(float meters);

    // Takes a camera-space point through the distortion map and, when there is one, the
    // projection map, in place.
    void applyCalibrationToCoord(Vector3& p);

    // Rewinds the touch manager's list of numbers to the current touches.
    void prepareTouchCollection();
    // Whether touches are reported in calibrated coordinates (the default) or in camera space.
    void setOutputCalibratedTouches(bool on);

    // See hardwareCamera::getCameraInfo; "" without a camera object.
    std::string getCameraInfoJson();
    // Sizes and settings as text for diagnosis, one value a line.
    std::string getVariableReadout();

    // Any thread; see Logger.
    static void log(std::string message);
    static void log(std::string message, float value);

    // RGBA images of the host, 4 bytes a pixel: colour-sized, depth-sized, depth-sized. A server
    // program sets those it wants filled and keeps them alive; null ones cost nothing.
    unsigned char* colorTexture = nullptr;
    unsigned char* depthTexture = nullptr;
    unsigned char* processedTexture = nullptr;

    int port = 27016;
    unsigned int depthResX = 640;
    unsigned int depthResY = 480;
    unsigned int depthPixelCount = 307200;
    unsigned int colorResX = 640;
    unsigned int colorResY = 480;
    int fps = 60;
    std::unique_ptr<hardwareCamera> camera;
    std::unique_ptr<blobManager> blobs;
    std::unique_ptr<touchManager> touches;
    std::unique_ptr<calibrationBlock> distortionMap;
    std::unique_ptr<calibrationCell> projectionMap; // null until a map is set
    std::vector<std::uint16_t> depthBuffer;
    std::vector<std::uint8_t> processedBuffer;
    std::vector<std::uint8_t> colorBuffer; // RGB
    // Set one to send depth images of its target size; its source size is the depth resolution.
    std::unique_ptr<ImageDownsampler> downsampler;

    static bool serverSendDepth;
    static bool serverSendTouch;
    static bool serverAutoClose; // the server program ends when its last client has gone
    static bool debug;
    static float touchLerp; // share of the way that a smoothed touch moves each frame, 0 to 1
    static bool serverSendColor;
    static bool serverSendProcessed;
    static bool processedTextureDebug; // shows detection marks in the processed texture
    static Vector3 calibratedCoord;
    static cameraManager* _instance;

  private:
    void openFallbackCamera();
    void openCamera(int framesPerSecond, json11::Json& settings);
    void readStreamSettings(const json11::Json& document);
    void configureDetection(float oneMeter);
    const unsigned short* depthToSend(const unsigned short* depthFrame);
    void copyForTextures(const unsigned short* depthFrame, const unsigned char* color);

    bool detectionConfigured = false;
};

} // namespace QVR

// Guards the camera manager's creation and destruction.
extern "C" QVR_API std::mutex mtx;
