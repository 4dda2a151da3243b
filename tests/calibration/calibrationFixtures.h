// Grids, boxes and documents for the calibration tests, and the plain mathematics they are held to.
#pragma once

#include "calibration/calibrationCell.h"
#include "foundation/Vector3.h"

#include <array>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <json11.hpp>

namespace QVR {

inline void PrintTo(const Vector3& v, std::ostream* out) {
    *out << '(' << v.x << ", " << v.y << ", " << v.z << ')';
}

} // namespace QVR

namespace calibrationFixtures {

using QVR::Vector3;

MATCHER_P3(IsPoint, x, y, z, "") {
    return arg.x == x && arg.y == y && arg.z == z;
}

MATCHER_P2(IsNear, expected, tolerance, "") {
    return std::abs(arg.x - expected.x) <= tolerance && std::abs(arg.y - expected.y) <= tolerance &&
           std::abs(arg.z - expected.z) <= tolerance;
}

// Unit-cube offsets of the eight corners and their names in documents, in order.
struct Corner {
    int x, y, z;
    const char* name;
};
inline constexpr std::array<Corner, 8> corners{{{0, 0, 0, "xyz"},
                                                {1, 0, 0, "Xyz"},
                                                {1, 1, 0, "XYz"},
                                                {0, 1, 0, "xYz"},
                                                {0, 1, 1, "xYZ"},
                                                {1, 1, 1, "XYZ"},
                                                {1, 0, 1, "XyZ"},
                                                {0, 0, 1, "xyZ"}}};

// Trilinear interpolation as every textbook has it: each corner weighs by the opposite volume.
inline Vector3 interpolate(const std::array<Vector3, 8>& values, double u, double v, double w) {
    Vector3 sum;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const double weight = (corners[i].x == 1 ? u : 1.0 - u) *
                              (corners[i].y == 1 ? v : 1.0 - v) * (corners[i].z == 1 ? w : 1.0 - w);
        sum.x += weight * values[i].x;
        sum.y += weight * values[i].y;
        sum.z += weight * values[i].z;
    }
    return sum;
}

inline QVR::cellCoord cornersOf(const QVR::aabbCellCoord& box) {
    QVR::cellCoord result;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        result.corners[i] = {corners[i].x == 1 ? box.xUpper : box.xLower,
                             corners[i].y == 1 ? box.yUpper : box.yLower,
                             corners[i].z == 1 ? box.zUpper : box.zLower};
    }
    return result;
}

class RandomPoints {
  public:
    explicit RandomPoints(unsigned seed) : engine_(seed) {}

    double number(double lowest, double highest) {
        return std::uniform_real_distribution<double>(lowest, highest)(engine_);
    }
    Vector3 point(double lowest, double highest) {
        return {number(lowest, highest), number(lowest, highest), number(lowest, highest)};
    }

  private:
    std::mt19937 engine_;
};

// The measured positions of a grid over x 0..width, y 0..height, z nearZ..farZ.
struct Grid {
    int width = 60;
    int height = 40;
    int nearZ = 100;
    int farZ = 400;
    int sizeX = 4;
    int sizeY = 3;
    int sizeZ = 3;
    std::vector<Vector3> vertices;

    // Each position is where it ought to be: the grid corrects nothing.
    static Grid identity(int sizeX = 4, int sizeY = 3, int sizeZ = 3) {
        Grid grid;
        grid.sizeX = sizeX;
        grid.sizeY = sizeY;
        grid.sizeZ = sizeZ;
        for (int k = 0; k < sizeZ; ++k) {
            for (int j = 0; j < sizeY; ++j) {
                for (int i = 0; i < sizeX; ++i) {
                    grid.vertices.push_back(
                        {double(grid.width) * i / (sizeX - 1),
                         double(grid.height) * j / (sizeY - 1),
                         grid.nearZ + double(grid.farZ - grid.nearZ) * k / (sizeZ - 1)});
                }
            }
        }
        return grid;
    }

    static Grid random(unsigned seed) {
        Grid grid = identity();
        RandomPoints points(seed);
        for (Vector3& vertex : grid.vertices) {
            vertex = points.point(-500, 500);
        }
        return grid;
    }

    const Vector3& at(unsigned i, unsigned j, unsigned k) const {
        return vertices[(k * unsigned(sizeY) + j) * unsigned(sizeX) + i];
    }

    template <typename Block>
    void importInto(Block& block) {
        block.importCellCalibration(width, height, nearZ, farZ, sizeX, sizeY, sizeZ, vertices);
    }

    // The calibration document that holds this grid, with clip distances for 1000 units a metre.
    json11::Json::object document() const {
        json11::Json::array verts;
        for (const Vector3& vertex : vertices) {
            verts.insert(verts.end(), {vertex.x, vertex.y, vertex.z});
        }
        return {{"depthResX", width},
                {"depthResY", height},
                {"nearClipMeters", nearZ / 1000.0},
                {"farClipMeters", farZ / 1000.0},
                {"calibration",
                 json11::Json::object{
                     {"sizeX", sizeX}, {"sizeY", sizeY}, {"sizeZ", sizeZ}, {"verts", verts}}}};
    }
};

inline const std::string sizeMessage =
    "Error importing calibration! Size of the calibration block does not match data size!";

// One map of a projection map document.
inline json11::Json::object projectionMap(const QVR::aabbCellCoord& box,
                                          const QVR::cellCoord& measured) {
    json11::Json::object positions;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Vector3& p = measured.corners[i];
        positions[corners[i].name] = json11::Json::object{{"x", p.x}, {"y", p.y}, {"z", p.z}};
    }
    return {{"Xmin", box.xLower},      {"Xmax", box.xUpper}, {"Ymin", box.yLower},
            {"Ymax", box.yUpper},      {"Zmin", box.zLower}, {"Zmax", box.zUpper},
            {"calibration", positions}};
}

} // namespace calibrationFixtures
