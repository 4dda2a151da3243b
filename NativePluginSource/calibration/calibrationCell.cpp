#include "calibration/calibrationCell.h"

#include "foundation/Logger.h"
#include "foundation/SettingsSection.h"
#include "foundation/utils.h"

#include <string_view>

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

// What a document must contain to be taken is part of the file format as devices in the field have
// it: these two corners are not asked for, so files that lack them keep working.
bool mayBeMissing(std::string_view corner) {
    return corner == "Xyz" || corner == "XyZ";
}

constexpr std::array boundNames{"Xmin", "Xmax", "Ymin", "Ymax", "Zmin", "Zmax"};
constexpr std::array axes{"x", "y", "z"};

constexpr const char* noMap = "nothing of this map";

// Looks at every one, also after the first that is missing: whoever has the document explained
// wants to hear of all.
bool hasRequiredNumbers(const SettingsSection& map) {
    bool all = true;
    for (const char* bound : boundNames) {
        all = map.hasNumber(bound, noMap) && all;
    }
    const SettingsSection corners = map.section("calibration");
    for (const char* corner : cornerNames) {
        const SettingsSection position = corners.section(corner);
        const bool optional = mayBeMissing(corner);
        for (const char* axis : axes) {
            all = (position.hasNumber(axis, optional ? "0" : noMap) || optional) && all;
        }
    }
    return all;
}

Vector3 readPosition(const SettingsSection& position) {
    return {position.number("x", 0.0), position.number("y", 0.0), position.number("z", 0.0)};
}

void tellFlatAxis(const SettingsSection& map, const char* lower, const char* upper, double at) {
    map.tell(lower, SettingsSection::textOf(at) + " for " + upper + ", too",
             "the lower side of the map for every position");
}

void tellFlatAxes(const SettingsSection& map, const aabbCellCoord& box) {
    if (box.xLower == box.xUpper) {
        tellFlatAxis(map, "Xmin", "Xmax", box.xLower);
    }
    if (box.yLower == box.yUpper) {
        tellFlatAxis(map, "Ymin", "Ymax", box.yLower);
    }
    if (box.zLower == box.zUpper) {
        tellFlatAxis(map, "Zmin", "Zmax", box.zLower);
    }
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

    const SettingsSection settings(document);
    const SettingsSection map = settings.neededSection("map" + std::to_string(mapNumber), noMap);
    if (!map.isThere() || !hasRequiredNumbers(map)) {
        return false;
    }
    const aabbCellCoord box{
        map.number("Zmin", 0.0), map.number("Zmax", 0.0), map.number("Ymin", 0.0),
        map.number("Ymax", 0.0), map.number("Xmin", 0.0), map.number("Xmax", 0.0),
    };
    tellFlatAxes(map, box);
    const SettingsSection corners = map.section("calibration");
    cellCoord measured;
    for (std::size_t corner = 0; corner < cornerNames.size(); ++corner) {
        measured.corners[corner] = readPosition(corners.section(cornerNames[corner]));
    }
    return set(box, measured);
}

void calibrationCell::normalizePoint(Vector3& point) const {
    point.x = utils::inverseLerp(bounds.xLower, bounds.xUpper, point.x);
    point.y = utils::inverseLerp(bounds.yLower, bounds.yUpper, point.y);
    point.z = utils::inverseLerp(bounds.zLower, bounds.zUpper, point.z);
}

void calibrationCell::transformPoint(Vector3& point) const {
    const auto [x, y, z] = point;
    const auto interpolate = [&, u = x, v = y, w = z](double Vector3::*axis) {
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
