// A plug-in without camera or network: the port chooses what happens.
//
//   port 1  no server answers
//   port 2  frames with three fingers that circle over the surface, then lift for a while
//   port 3  one frame, then the server stalls: update blocks until a signal interrupts it
//   port 5  the first update gets a header it does not understand
//   port 6  as 2, in depth pixels with touches only: no picture streams
//   above 100  after every tenth frame an update gives 100 - port instead, -101 for port 201
//
// An update after a failed one goes on when the host has asked for headers to be read again.
// Registering a log callback begins the script anew.
// Calibration: display = ((column - 20) / 2, (row - 10) / 2, depth / 8).
#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <string>
#include <thread>

#include <poll.h>

#define PLUGIN extern "C" __attribute__((visibility("default")))

namespace {

constexpr int width = 320;
constexpr int height = 240;
constexpr int colorWidth = 480;
constexpr int colorHeight = 270;
constexpr int slots = 10;

void (*logCallback)(const char*) = nullptr;
bool exists = false;
bool readsHeaders = false;
bool failed = false;
unsigned port = 2;
int frame = 0;
int readIndex = -1;
std::array<float, 3 * slots> values;
std::array<float, 3> calibrated;
unsigned char* color = nullptr;
unsigned char* depth = nullptr;
unsigned char* processed = nullptr;

struct Finger {
    float column, row;
    int length;
};

std::array<Finger, 3> fingers() {
    const float turn = static_cast<float>(frame) * 0.06f;
    return {{{160 + 90 * std::cos(turn), 110 + 60 * std::sin(turn), 200},
             {160 + 60 * std::cos(turn * 1.4f + 2), 120 + 70 * std::sin(turn * 0.8f), 180},
             {200 + 70 * std::cos(4 - turn), 100 + 50 * std::sin(turn * 1.2f + 4), 190}}};
}

bool touching() {
    return frame % 400 < 330;
}

std::array<float, 3> display(float x, float y, float z) {
    return {(x - 20) / 2, (y - 10) / 2, z / 8};
}

unsigned short depthAt(int column, int row) {
    const auto c = static_cast<float>(column);
    const auto r = static_cast<float>(row);
    if (column < 6) {
        return 0;
    }
    float value = 5600 + 0.8f * c;
    for (const Finger& finger : fingers()) {
        const float across = std::fabs(c - finger.column);
        if (across < 9 && r > finger.row - 8) {
            const float along = (r - finger.row) / 2;
            value = 4800 + across * across - along;
        }
    }
    return static_cast<unsigned short>(value);
}

bool marked(int column, int row) {
    for (const Finger& finger : fingers()) {
        if (touching() && std::hypot(static_cast<float>(column) - finger.column,
                                     static_cast<float>(row) - finger.row) < 8) {
            return true;
        }
    }
    return false;
}

void say(const char* text) {
    if (logCallback != nullptr) {
        logCallback(text);
    }
}

} // namespace

PLUGIN void registerDebugCallback(void (*callback)(const char*)) {
    logCallback = callback;
    exists = false;
    readsHeaders = false;
}
PLUGIN void printDebug(bool) {}
PLUGIN void init() {
    exists = true;
    failed = false;
    frame = 0;
}
PLUGIN void initClientWithCustomServer(const char*, unsigned number) {
    init();
    port = number;
}
PLUGIN void setReceiveTimeout(int) {}
PLUGIN void setReconnectReadsHeader(bool on) {
    readsHeaders = on;
}
PLUGIN void shutDown() {
    exists = false;
}
PLUGIN int update() {
    if (!exists) {
        return -100;
    }
    if (port == 1) {
        say("Unable to connect to server");
        return -2;
    }
    if (port == 3 && frame == 1) {
        poll(nullptr, 0, -1);
        return -101;
    }
    if (port == 5 && !failed) {
        say("Wrong protocol version. Client 2 Server 1\n");
        failed = true;
        return -3;
    }
    if (port > 100 && frame > 0 && frame % 10 == 0 && !failed) {
        failed = true;
        return 100 - static_cast<int>(port);
    }
    if (failed && !readsHeaders) {
        return -101;
    }
    failed = port == 5;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ++frame;
    return 0;
}
PLUGIN bool hasDepthCamera() {
    return exists;
}
PLUGIN int getDimX() {
    return exists ? width : -1;
}
PLUGIN int getDimY() {
    return exists ? height : -1;
}
PLUGIN int getColorDimX() {
    return exists ? colorWidth : -1;
}
PLUGIN int getColorDimY() {
    return exists ? colorHeight : -1;
}
PLUGIN int getTouchPoolSize() {
    return exists ? slots : -1;
}
PLUGIN bool prepareTouchCollection() {
    values.fill(-1);
    std::size_t slot = 1;
    for (const Finger& finger : fingers()) {
        if (touching()) {
            const std::array<float, 3> position =
                port == 6 ? std::array{finger.column, finger.row, 4800.0f}
                          : display(finger.column, finger.row, 4800);
            std::copy(position.begin(), position.end(),
                      values.begin() + 3 * static_cast<int>(slot));
        }
        slot += 2;
    }
    readIndex = -1;
    return true;
}
PLUGIN float getTouchData() {
    ++readIndex;
    return readIndex < static_cast<int>(values.size()) ? values[static_cast<std::size_t>(readIndex)]
                                                       : -9999;
}
PLUGIN bool setColorTexture(unsigned char* pixels) {
    color = pixels;
    return true;
}
PLUGIN bool setDepthTexture(unsigned char* pixels) {
    depth = pixels;
    return true;
}
PLUGIN bool setProcessedTexture(unsigned char* pixels) {
    processed = pixels;
    return true;
}
PLUGIN bool updateColorTexture() {
    for (int i = 0; port != 6 && i < colorWidth * colorHeight; ++i) {
        const unsigned char pixel[4] = {static_cast<unsigned char>(i % colorWidth / 2),
                                        static_cast<unsigned char>(i / colorWidth / 2), 90, 255};
        std::memcpy(color + 4 * i, pixel, 4);
    }
    return true;
}
PLUGIN bool updateDepthTexture() {
    for (int i = 0; port != 6 && i < width * height; ++i) {
        const unsigned short value = depthAt(i % width, i / width);
        const unsigned char pixel[4] = {static_cast<unsigned char>(value & 255),
                                        static_cast<unsigned char>(value >> 8), 0, 255};
        std::memcpy(depth + 4 * i, pixel, 4);
    }
    return true;
}
PLUGIN bool updateProcessedTexture() {
    for (int i = 0; port != 6 && i < width * height; ++i) {
        const auto value = static_cast<unsigned char>(marked(i % width, i / width) ? 14 : 0);
        const unsigned char pixel[4] = {value, value, value, 255};
        std::memcpy(processed + 4 * i, pixel, 4);
    }
    return true;
}
PLUGIN void applyCalibrationToCoord(float x, float y, float z) {
    calibrated = display(x, y, z);
}
PLUGIN float getCalibratedX() {
    return calibrated[0];
}
PLUGIN float getCalibratedY() {
    return calibrated[1];
}
PLUGIN float getCalibratedZ() {
    return calibrated[2];
}
PLUGIN void setCalibration(const char*) {}
PLUGIN bool setProjectionMapping(const char*, int) {
    return true;
}
PLUGIN bool loadProjectionMap(int number) {
    say(("WARNING: asked for projection map " + std::to_string(number)).c_str());
    return true;
}
PLUGIN int checkSettings(const char*, bool, void (*)(const char*)) {
    return 0;
}
PLUGIN void logInternalVariables() {}
PLUGIN const char* getCameraInfo() {
    return nullptr;
}
PLUGIN void setTouchLerp(float) {}
PLUGIN void outputCalibratedTouches(bool) {}
