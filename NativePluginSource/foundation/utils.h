// Names and lookup of the calibration files, whole-file reading, and the few numeric functions
// that calibration and detection share.
#pragma once

#include "foundation/qvrApi.h"

#include <cstddef>
#include <string>
#include <vector>

namespace QVR {

struct ProtocolHeader;

class QVR_API utils {
  public:
    static const std::string distortionMapFileName;  // "touch.json"
    static const std::string projectionMapFileName;  // "touch_projectionMap.json"
    static const std::string clientSettingsFileName; // "touch_client.json"
    static const std::string calibrationFileDir;     // "QVR_calibration"

    // Relative to a volume's root: the folder, "/", the name.
    static const std::string distortionMapFilePath;
    static const std::string projectionMapFilePath;
    static const std::string clientSettingsFilePath;

    // The first mounted volume's readable copy of the file at `relativePath`, as volume + "/" +
    // relativePath; the argument itself when no volume has one. Any thread.
    static std::string findFilePath(std::string relativePath);

    // The whole file, or "" when it cannot be read, is a folder, pipe or device, or is larger than
    // 64 MiB. Logs nothing. Any thread.
    static std::string readFileContent(const std::string& path);

    // The pieces of `text`, not null, between delimiters, empty ones included; an empty text is
    // one empty piece.
    static std::vector<std::string> split(const char* text, char delimiter);

    // Where `value` lies between a (0) and b (1), unclamped; 0 when a equals b.
    static double inverseLerp(double a, double b, double value);

    // min(upper, max(lower, value)); NaN passes through max, and upper wins over lower.
    static float clip(float value, float lower, float upper);

    // `value` bounded to 0..1; NaN passes through.
    static double clamp01(double value);

    // Bytes of one frame's payload as `header` announces it. Each image's product wraps in
    // 32 bits, the sum is 64 bits wide. Defined with the frame protocol.
    static std::size_t getNetworkFrameSize(const ProtocolHeader& header);

    // The header's fields as text, one line each. Defined with the frame protocol.
    static std::string headerToString(ProtocolHeader& header);
};

} // namespace QVR
