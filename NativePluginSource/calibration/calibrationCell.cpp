#include "calibration/calibrationCell.h"

#include "foundation/Logger.h"
#include "foundation/jsonValues.h"
#include "foundation/utils.h"

#include <json11.hpp>

namespace QVR {

namespace {

Vector3 operator+(const Vector3& a, const Vector3& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

Vector3 operator-(const Vector3& a, const Vector3& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

// In the order of cellCoord.
constexpr std::array cornerNames{"xyz", "Xyz", "XYz", "xYz", "xYZ", "XYZ", "XyZ", "xyZ"};

// What a document must contain to be taken. The list is part of the file format as devices in the
// field have it: "Xyz" and "XyZ" are not asked for, so files that lack them keep working.
constexpr std::array requiredBounds{"Xmin", "Xmax", "Ymin", "Ymax", "Zmin", "Zmax"};
constexpr std::array requiredCorners{"xyz", "XYz", "xYz", "xYZ", "XYZ", "xYz", "xYz", "xyZ"};
constexpr std::array axes{"x", "y", "z"};

bool hasRequiredNumbers(const json11::Json& map) {
    for (const char* bound : requiredBounds) {
        if (!map[bound].is_number()) {
            return false;
        }
    }
    for (const char* corner : requiredCorners) {
        const json11::Json& position = map["calibration"][corner];
        for (const char* axis : axes) {
            if (!position[axis].is_number()) {
                return false;
            }
        }
    }
    return true;
}

Vector3 readPosition(const json11::Json& position) {
    return {numberValue(position["x"], 0.0), numberValue(position["y"], 0.0),
            numberValue(position["z"], 0.0)};
}

} // namespace

bool calibrationCell::set(const aabbCellCoord& cellBounds, const cellCoord& measured) {
    bounds = cellBounds;
    valid = true;
    const auto& c = measured.corners;
    A = c[0];
    B = c[1] - c[0];
    C = c[3] - c[0];
    D = c[7] - c[0];
    E = c[2] - c[1] - c[3] + c[0];
    F = c[4] - c[3] - c[7] + c[0];
    G = c[6] - c[1] - c[7] + c[0];
    H = c[5] + c[1] + c[3] + c[7] - c[6] - c[4] - c[2] - c[0];
    return true;
}

bool calibrationCell::set(const std::string& jsonText, int mapNumber) {
    if (jsonText.empty()) {
        Logger::Log("WARNING: Could not set touch mapping calibration. The json string was empty.");
        return false;
    }
    std::string error = "noError";
    const json11::Json document = json11::Json::parse(jsonText, error);
    if (error != "noError") {
        Logger::Log("ERROR: There was a problem in parsing the touch mapping calibration: " +
                    error);
        Logger::Log("Here was the raw input:\n\n" + jsonText);
        return false;
    }

    const json11::Json& map = document["map" + std::to_string(mapNumber)];
    if (!hasRequiredNumbers(map)) {
        return false;
    }
    const aabbCellCoord box{
        numberValue(map["Zmin"], 0.0), numberValue(map["Zmax"], 0.0), numberValue(map["Ymin"], 0.0),
        numberValue(map["Ymax"], 0.0), numberValue(map["Xmin"], 0.0), numberValue(map["Xmax"], 0.0),
    };
    cellCoord measured;
    for (std::size_t corner = 0; corner < cornerNames.size(); ++corner) {
        measured.corners[corner] = readPosition(map["calibration"][cornerNames[corner]]);
    }
    return set(box, measured);
}

void calibrationCell::normalizePoint(Vector3& point) const {
    point.x = utils::inverseLerp(bounds.xLower, bounds.xUpper, point.x);
    point.y = utils::inverseLerp(bounds.yLower, bounds.yUpper, point.y);
    point.z = utils::inverseLerp(bounds.zLower, bounds.zUpper, point.z);
}

void calibrationCell::transformPoint(Vector3& point) const {
    const auto [u, v, w] = point;
    const auto interpolate = [&, u = u, v = v, w = w](double Vector3::*axis) {
        return A.*axis + B.*axis * u + C.*axis * v + D.*axis * w + E.*axis * u * v +
               F.*axis * v * w + G.*axis * u * w + H.*axis * u * v * w;
    };
    point = {interpolate(&Vector3::x), interpolate(&Vector3::y), interpolate(&Vector3::z)};
}

bool calibrationCell::pointTest(Vector3 point) const {
    return bounds.xLower <= point.x && point.x <= bounds.xUpper && //
           bounds.yLower <= point.y && point.y <= bounds.yUpper && //
           bounds.zLower <= point.z && point.z <= bounds.zUpper;
}

} // namespace QVR
