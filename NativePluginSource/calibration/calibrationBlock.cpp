#include "calibration/calibrationBlock.h"

#include "foundation/Logger.h"
#include "foundation/SettingsSection.h"
#include "foundation/jsonValues.h"
#include "foundation/numbers.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include <json11.hpp>

namespace QVR {

namespace {

constexpr unsigned inactive = ~0u;

// Whether the sizes make a grid of at least one cell whose positions an int can count, and are
// those of `count` positions. Files come from outside: the sizes may be anything.
bool gridHolds(int sizeX, int sizeY, int sizeZ, std::size_t count) {
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    if (sizeX < 2 || sizeY < 2 || sizeZ < 2) {
        return false;
    }
    const std::int64_t layer = std::int64_t{sizeX} * sizeY;
    if (layer > most || layer * sizeZ > most) {
        return false;
    }
    return static_cast<std::uint64_t>(layer * sizeZ) == count;
}

constexpr SettingRange imageSizes{1.0, 65535.0};
constexpr SettingRange vertexCounts{2.0};
constexpr const char* noGrid = "no distortion grid: positions pass uncorrected";

int clipDepth(double meters, float depthScale) {
    return truncateToInt(meters * static_cast<double>(depthScale));
}

void deactivate(calibrationBlock& block) {
    block.cellsX = inactive;
    block.cellsY = inactive;
    block.cellsZ = inactive;
    block.cells.clear();
}

} // namespace

int calibrationBlock::importCellCalibration(std::string jsonText, float depthScale) {
    if (jsonText.empty()) {
        Logger::Log("WARNING: Could not read touch calibration because it appears to be empty.");
        return -1;
    }
    std::string error = "noError";
    json11::Json document = json11::Json::parse(jsonText, error);
    if (error != "noError") {
        Logger::Log("ERROR: There was a problem in parsing the calibration file contents: " +
                    error);
        return -2;
    }
    return importCellCalibration(document, depthScale);
}

int calibrationBlock::importCellCalibration(json11::Json& document, float depthScale) {
    const SettingsSection settings(document);
    if (document.is_null()) {
        return -3;
    }
    // Everything is looked at before the first fault ends the import: whoever has the document
    // explained wants to hear of all that is wrong with it.
    const bool hasWidth = settings.hasNumber("depthResX", noGrid);
    const bool hasHeight = settings.hasNumber("depthResY", noGrid);
    const bool hasNear = settings.hasNumber("nearClipMeters", noGrid);
    const bool hasFar = settings.hasNumber("farClipMeters", noGrid);
    const SettingsSection grid = settings.neededSection("calibration", noGrid);
    const int sizeX = grid.whole("sizeX", 0, vertexCounts);
    const int sizeY = grid.whole("sizeY", 0, vertexCounts);
    const int sizeZ = grid.whole("sizeZ", 0, vertexCounts);
    const json11::Json::array& numbers = grid.numbers("verts");
    if (!hasWidth) {
        Logger::Log("Warning: Did not find resX value in calibration data.");
        return -4;
    }
    if (!hasHeight) {
        Logger::Log("Warning: Did not find resY value in calibration data.");
        return -5;
    }
    if (!hasNear) {
        Logger::Log("Warning: Did not find nearClipMeters value in calibration data.");
        return -6;
    }
    if (!hasFar) {
        Logger::Log("Warning: Did not find farClipMeters value in calibration data.");
        return -7;
    }

    const double nearMeters = settings.number("nearClipMeters", 0.0);
    const double farMeters = settings.number("farClipMeters", 8000.0);
    const int nearClip = clipDepth(nearMeters, depthScale);
    const int farClip = clipDepth(farMeters, depthScale);
    if (nearClip >= farClip || nearClip < 0 || farClip < 0) {
        Logger::Log("Error: Could not determine near and far Z. Are both the camera and "
                    "calibration file accessible?\nOtherwise, check the (sanity of the) depth clip "
                    "values in the calibration file.\nFound values: near=" +
                    std::to_string(nearClip) + " far=" + std::to_string(farClip));
        settings.tell("nearClipMeters",
                      SettingsSection::textOf(nearMeters) + " beside a farClipMeters of " +
                          SettingsSection::textOf(farMeters),
                      noGrid);
        return -8;
    }

    if (numbers.size() % 3 != 0) {
        rejectGrid();
    } else {
        std::vector<Vector3> vertices;
        vertices.reserve(numbers.size() / 3);
        for (std::size_t i = 0; i < numbers.size(); i += 3) {
            vertices.push_back({numberValue(numbers[i], 0.0), numberValue(numbers[i + 1], 0.0),
                                numberValue(numbers[i + 2], 0.0)});
        }
        importCellCalibration(settings.whole("depthResX", 640, imageSizes),
                              settings.whole("depthResY", 480, imageSizes), nearClip, farClip,
                              sizeX, sizeY, sizeZ, vertices);
    }
    if (cellsX == inactive && grid.isThere()) {
        settings.tell("calibration",
                      "sizes " + std::to_string(sizeX) + ", " + std::to_string(sizeY) + ", " +
                          std::to_string(sizeZ) + " and " + std::to_string(numbers.size()) +
                          " numbers in verts, which do not fit",
                      noGrid);
    }
    return 0;
}

void calibrationBlock::importCellCalibration(int imageWidth, int imageHeight, int nearClip,
                                             int farClip, int sizeX, int sizeY, int sizeZ,
                                             const std::vector<Vector3>& vertices) {
    if (!gridHolds(sizeX, sizeY, sizeZ, vertices.size())) {
        rejectGrid();
        return;
    }
    const auto countX = static_cast<unsigned>(sizeX - 1);
    const auto countY = static_cast<unsigned>(sizeY - 1);
    const auto countZ = static_cast<unsigned>(sizeZ - 1);
    // Inactive until there is memory for the cells: a grid without them would mark every touch as
    // unusable.
    deactivate(*this);
    cells.reserve(std::size_t{countX} * countY * countZ);
    cellsX = countX;
    cellsY = countY;
    cellsZ = countZ;
    width = imageWidth;
    height = imageHeight;
    nearZ = nearClip;
    farZ = farClip;
    cellSizeX = width / cellsX;
    cellSizeY = height / cellsY;
    cellSizeZ = static_cast<double>(std::int64_t{farClip} - nearClip) / cellsZ;

    const auto vertex = [&](unsigned i, unsigned j, unsigned k) {
        return vertices[getIndex(i, j, k, static_cast<unsigned>(sizeX),
                                 static_cast<unsigned>(sizeY))];
    };
    for (unsigned k = 0; k < cellsZ; ++k) {
        for (unsigned j = 0; j < cellsY; ++j) {
            for (unsigned i = 0; i < cellsX; ++i) {
                const aabbCellCoord box{
                    k * cellSizeZ + nearZ, (k + 1) * cellSizeZ + nearZ,
                    j * cellSizeY,         (j + 1) * cellSizeY,
                    i * cellSizeX,         (i + 1) * cellSizeX,
                };
                const cellCoord measured{{
                    vertex(i, j, k),
                    vertex(i + 1, j, k),
                    vertex(i + 1, j + 1, k),
                    vertex(i, j + 1, k),
                    vertex(i, j + 1, k + 1),
                    vertex(i + 1, j + 1, k + 1),
                    vertex(i + 1, j, k + 1),
                    vertex(i, j, k + 1),
                }};
                cells.emplace_back().set(box, measured);
            }
        }
    }
}

unsigned calibrationBlock::getIndex(unsigned x, unsigned y, unsigned z, unsigned sizeX,
                                    unsigned sizeY) {
    return (z * sizeY + y) * sizeX + x;
}

int calibrationBlock::getCellIndex(unsigned x, unsigned y, unsigned z) const {
    const unsigned index = getIndex(x, y, z, cellsX, cellsY);
    return index < cells.size() ? static_cast<int>(index) : -1;
}

calibrationCell* calibrationBlock::getCell(unsigned x, unsigned y, unsigned z) {
    const int index = getCellIndex(x, y, z);
    return index >= 0 ? &cells[static_cast<std::size_t>(index)] : nullptr;
}

calibrationCell* calibrationBlock::getCell(double x, double y, double z) {
    const int index = findCell(x, y, z);
    return index >= 0 ? &cells[static_cast<std::size_t>(index)] : nullptr;
}

void calibrationBlock::calibrateVector(Vector3& point) const {
    if (cellsX == inactive) {
        return;
    }
    const int index = findCell(point.x, point.y, point.z);
    if (index < 0) {
        point = {-1.0, -1.0, -1.0};
        return;
    }
    const calibrationCell& cell = cells[static_cast<std::size_t>(index)];
    cell.normalizePoint(point);
    cell.transformPoint(point);
}

int calibrationBlock::findCell(double x, double y, double z) const {
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(z)) {
        return -1;
    }
    const double depth = z - nearZ;
    if (x < 0.0 || y < 0.0 || depth < 0.0 || x > width || y > height || depth > farZ - nearZ) {
        return -1;
    }
    // Not checked axis by axis: on an upper face the coordinate is one past the last cell and the
    // index runs on into the next row.
    return getCellIndex(static_cast<unsigned>(truncateToInt(x / cellSizeX)),
                        static_cast<unsigned>(truncateToInt(y / cellSizeY)),
                        static_cast<unsigned>(truncateToInt(depth / cellSizeZ)));
}

void calibrationBlock::rejectGrid() {
    deactivate(*this);
    Logger::Log(
        "Error importing calibration! Size of the calibration block does not match data size!");
}

} // namespace QVR
