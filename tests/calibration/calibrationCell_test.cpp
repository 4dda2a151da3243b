// One cell: its bounds, its interpolation and its reading of a projection map document.
#include "calibration/calibrationCell.h"
#include "calibrationFixtures.h"
#include "support/LogCapture.h"

#include <cmath>

#include <gtest/gtest.h>

using namespace calibrationFixtures;
using json11::Json;
using QVR::aabbCellCoord;
using QVR::calibrationCell;
using QVR::cellCoord;
using support::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const aabbCellCoord box{100, 400, 10, 50, -20, 60};

cellCoord randomCorners(unsigned seed) {
    RandomPoints random(seed);
    cellCoord result;
    for (Vector3& corner : result.corners) {
        corner = random.point(-100, 100);
    }
    return result;
}

Vector3 transformed(const calibrationCell& cell, Vector3 point) {
    cell.transformPoint(point);
    return point;
}

Vector3 mapped(const calibrationCell& cell, Vector3 point) {
    cell.normalizePoint(point);
    cell.transformPoint(point);
    return point;
}

std::string documentOf(const Json::object& maps) {
    return Json(maps).dump();
}

Json::object without(Json::object map, const std::string& corner) {
    Json::object positions = map["calibration"].object_items();
    positions.erase(corner);
    map["calibration"] = positions;
    return map;
}

Json::object without(Json::object map, const std::string& corner, const std::string& axis) {
    Json::object positions = map["calibration"].object_items();
    Json::object position = positions[corner].object_items();
    position.erase(axis);
    positions[corner] = position;
    map["calibration"] = positions;
    return map;
}

} // namespace

TEST(CellBounds, StandInTheOrderZYXLowerBeforeUpper) {
    EXPECT_EQ(box.zLower, 100);
    EXPECT_EQ(box.zUpper, 400);
    EXPECT_EQ(box.yLower, 10);
    EXPECT_EQ(box.yUpper, 50);
    EXPECT_EQ(box.xLower, -20);
    EXPECT_EQ(box.xUpper, 60);
}

TEST(CalibrationCell, StartsInvalidAndZero) {
    const calibrationCell cell;
    EXPECT_FALSE(cell.valid);
    for (const Vector3* coefficient :
         {&cell.A, &cell.B, &cell.C, &cell.D, &cell.E, &cell.F, &cell.G, &cell.H}) {
        EXPECT_THAT(*coefficient, IsPoint(0, 0, 0));
    }
    EXPECT_THAT(mapped(cell, {1, 2, 3}), IsPoint(0, 0, 0));
}

TEST(CalibrationCell, TakesBoundsAndBecomesValid) {
    calibrationCell cell;
    EXPECT_TRUE(cell.set(box, randomCorners(1)));
    EXPECT_TRUE(cell.valid);
    EXPECT_EQ(cell.bounds.zLower, 100);
    EXPECT_EQ(cell.bounds.xUpper, 60);
}

TEST(CalibrationCell, DerivesItsCoefficients) {
    cellCoord measured;
    for (std::size_t i = 0; i < 8; ++i) {
        // A power of two per corner shows which corners a coefficient is made of.
        measured.corners[i] = {double(1 << i), 0, -double(1 << i)};
    }
    calibrationCell cell;
    cell.set(box, measured);
    const double c0 = 1, c1 = 2, c2 = 4, c3 = 8, c4 = 16, c5 = 32, c6 = 64, c7 = 128;
    EXPECT_THAT(cell.A, IsPoint(c0, 0, -c0));
    EXPECT_THAT(cell.B, IsPoint(c1 - c0, 0, -(c1 - c0)));
    EXPECT_THAT(cell.C, IsPoint(c3 - c0, 0, -(c3 - c0)));
    EXPECT_THAT(cell.D, IsPoint(c7 - c0, 0, -(c7 - c0)));
    EXPECT_EQ(cell.E.x, c2 - c1 - c3 + c0);
    EXPECT_EQ(cell.F.x, c4 - c3 - c7 + c0);
    EXPECT_EQ(cell.G.x, c6 - c1 - c7 + c0);
    EXPECT_EQ(cell.H.x, c5 + c1 + c3 + c7 - c6 - c4 - c2 - c0);
    EXPECT_EQ(cell.H.z, -cell.H.x);
}

TEST(CalibrationCell, GivesEachCornerItsPosition) {
    const cellCoord measured = randomCorners(2);
    calibrationCell cell;
    cell.set(box, measured);
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Vector3 corner{double(corners[i].x), double(corners[i].y), double(corners[i].z)};
        EXPECT_THAT(transformed(cell, corner), IsNear(measured.corners[i], 1e-11))
            << corners[i].name;
    }
}

TEST(CalibrationCell, InterpolatesTrilinearly) {
    RandomPoints random(3);
    for (unsigned seed = 0; seed < 500; ++seed) {
        const cellCoord measured = randomCorners(seed);
        calibrationCell cell;
        cell.set(box, measured);
        const Vector3 point = random.point(-1, 2);
        EXPECT_THAT(transformed(cell, point),
                    IsNear(interpolate(measured.corners, point.x, point.y, point.z), 1e-9));
    }
}

// Host and server map a touch to the same bits: terms are added from first to last, and factors
// multiplied from left to right.
TEST(CalibrationCell, EvaluatesInAFixedOrder) {
    RandomPoints random(9);
    for (unsigned seed = 0; seed < 200; ++seed) {
        const cellCoord measured = randomCorners(seed);
        calibrationCell cell;
        cell.set(box, measured);
        const Vector3 point = random.point(-1, 2);
        const Vector3 actual = transformed(cell, point);
        for (double Vector3::*axis : {&Vector3::x, &Vector3::y, &Vector3::z}) {
            const auto c = [&](std::size_t i) { return measured.corners[i].*axis; };
            const double a = c(0);
            const double b = c(1) - c(0);
            const double d = c(7) - c(0);
            const double e = c(2) - c(1) - c(3) + c(0);
            const double f = c(4) - c(3) - c(7) + c(0);
            const double g = c(6) - c(1) - c(7) + c(0);
            const double h = c(5) + c(1) + c(3) + c(7) - c(6) - c(4) - c(2) - c(0);
            const double u = point.x, v = point.y, w = point.z;
            EXPECT_EQ(actual.*axis, a + b * u + (c(3) - c(0)) * v + d * w + e * u * v + f * v * w +
                                        g * u * w + h * u * v * w);
        }
    }
}

TEST(CalibrationCell, TransformsEvenWhenInvalid) {
    calibrationCell cell;
    cell.set(box, randomCorners(4));
    const Vector3 expected = transformed(cell, {0.5, 0.25, 0.75});
    cell.valid = false;
    EXPECT_THAT(transformed(cell, {0.5, 0.25, 0.75}), IsPoint(expected.x, expected.y, expected.z));
}

TEST(CalibrationCell, NormalisesEachAxisWithItsOwnBounds) {
    calibrationCell cell;
    cell.set(box, randomCorners(5));
    Vector3 point{0, 20, 175};
    cell.normalizePoint(point);
    EXPECT_THAT(point, IsPoint(0.25, 0.25, 0.25));
    point = {140, -30, 1000};
    cell.normalizePoint(point);
    EXPECT_THAT(point, IsPoint(2, -1, 3));
}

TEST(CalibrationCell, NormalisesToZeroAlongAnAxisWithoutExtent) {
    calibrationCell cell;
    cell.set({5, 5, 5, 5, 5, 5}, randomCorners(6));
    Vector3 point{1, 5, 9};
    cell.normalizePoint(point);
    EXPECT_THAT(point, IsPoint(0, 0, 0));
}

TEST(CalibrationCell, ContainsItsBounds) {
    calibrationCell cell;
    cell.set(box, randomCorners(7));
    EXPECT_TRUE(cell.pointTest({0, 20, 200}));
    for (const Vector3& corner : cornersOf(box).corners) {
        EXPECT_TRUE(cell.pointTest(corner));
    }
}

TEST(CalibrationCell, DoesNotContainWhatLiesBeyondOneBound) {
    calibrationCell cell;
    cell.set(box, randomCorners(8));
    EXPECT_FALSE(cell.pointTest({-20.001, 20, 200}));
    EXPECT_FALSE(cell.pointTest({60.001, 20, 200}));
    EXPECT_FALSE(cell.pointTest({0, 9.999, 200}));
    EXPECT_FALSE(cell.pointTest({0, 50.001, 200}));
    EXPECT_FALSE(cell.pointTest({0, 20, 99.999}));
    EXPECT_FALSE(cell.pointTest({0, 20, 400.001}));
    EXPECT_FALSE(cell.pointTest({std::nan(""), 20, 200}));
}

class ProjectionMapDocument : public testing::Test {
  protected:
    ProjectionMapDocument() { cell.set(box, earlier); }

    void expectEarlierMap() {
        EXPECT_EQ(cell.bounds.xUpper, box.xUpper);
        EXPECT_THAT(cell.A,
                    IsPoint(earlier.corners[0].x, earlier.corners[0].y, earlier.corners[0].z));
    }

    const aabbCellCoord newBox{1, 2, 3, 5, 7, 11};
    const cellCoord measured = randomCorners(21);
    const Json::object map = projectionMap(newBox, measured);
    const cellCoord earlier = randomCorners(20);
    calibrationCell cell;
    const LogCapture log;
};

TEST_F(ProjectionMapDocument, FillsBoundsAndCornersByName) {
    EXPECT_TRUE(cell.set(documentOf({{"map0", map}}), 0));
    EXPECT_THAT(LogCapture::messages(), IsEmpty());
    EXPECT_EQ(cell.bounds.zLower, 1);
    EXPECT_EQ(cell.bounds.zUpper, 2);
    EXPECT_EQ(cell.bounds.yLower, 3);
    EXPECT_EQ(cell.bounds.yUpper, 5);
    EXPECT_EQ(cell.bounds.xLower, 7);
    EXPECT_EQ(cell.bounds.xUpper, 11);
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Vector3 corner{double(corners[i].x), double(corners[i].y), double(corners[i].z)};
        EXPECT_THAT(transformed(cell, corner), IsNear(measured.corners[i], 1e-11))
            << corners[i].name;
    }
}

TEST_F(ProjectionMapDocument, BecomesValidWithTheFirstMap) {
    calibrationCell fresh;
    EXPECT_FALSE(fresh.set(documentOf({{"map0", map}}), 1));
    EXPECT_FALSE(fresh.valid);
    EXPECT_TRUE(fresh.set(documentOf({{"map0", map}}), 0));
    EXPECT_TRUE(fresh.valid);
}

TEST_F(ProjectionMapDocument, IsTheIdentityWhenTheCornersAreTheBoxItself) {
    ASSERT_TRUE(cell.set(documentOf({{"map0", projectionMap(box, cornersOf(box))}}), 0));
    RandomPoints random(22);
    for (int i = 0; i < 100; ++i) {
        const Vector3 point{random.number(-20, 60), random.number(10, 50), random.number(100, 400)};
        EXPECT_THAT(mapped(cell, point), IsNear(point, 1e-10));
    }
}

TEST_F(ProjectionMapDocument, PicksTheMapByNumber) {
    const cellCoord other = randomCorners(23);
    const std::string text = documentOf({{"map0", map},
                                         {"map1", projectionMap(newBox, other)},
                                         {"map-1", projectionMap(newBox, earlier)},
                                         {"map12", projectionMap(box, measured)}});
    const auto firstCorner = [&](int number) {
        EXPECT_TRUE(cell.set(text, number)) << number;
        return cell.A;
    };
    EXPECT_EQ(firstCorner(0).x, measured.corners[0].x);
    EXPECT_EQ(firstCorner(1).x, other.corners[0].x);
    EXPECT_EQ(firstCorner(-1).x, earlier.corners[0].x);
    EXPECT_EQ(firstCorner(12).x, measured.corners[0].x);
    EXPECT_EQ(cell.bounds.xUpper, box.xUpper);
}

TEST_F(ProjectionMapDocument, IsRefusedSilentlyWithoutTheMap) {
    const std::string text = documentOf({{"map0", map}, {"map1", map}});
    EXPECT_FALSE(cell.set(text, 2));
    EXPECT_FALSE(cell.set(text, -1));
    EXPECT_FALSE(cell.set("null", 0));
    EXPECT_FALSE(cell.set("[]", 0));
    EXPECT_FALSE(cell.set("{\"map0\": 5}", 0));
    EXPECT_THAT(LogCapture::messages(), IsEmpty());
    expectEarlierMap();
}

TEST_F(ProjectionMapDocument, NeedsEveryBound) {
    for (const char* bound : {"Xmin", "Xmax", "Ymin", "Ymax", "Zmin", "Zmax"}) {
        Json::object incomplete = map;
        incomplete.erase(bound);
        EXPECT_FALSE(cell.set(documentOf({{"map0", incomplete}}), 0)) << bound;
        incomplete[bound] = "1";
        EXPECT_FALSE(cell.set(documentOf({{"map0", incomplete}}), 0)) << bound;
    }
    EXPECT_THAT(LogCapture::messages(), IsEmpty());
    expectEarlierMap();
}

TEST_F(ProjectionMapDocument, NeedsEveryAxisOfTheSixTestedCorners) {
    for (const char* corner : {"xyz", "XYz", "xYz", "xYZ", "XYZ", "xyZ"}) {
        EXPECT_FALSE(cell.set(documentOf({{"map0", without(map, corner)}}), 0)) << corner;
        for (const char* axis : {"x", "y", "z"}) {
            EXPECT_FALSE(cell.set(documentOf({{"map0", without(map, corner, axis)}}), 0))
                << corner << ' ' << axis;
        }
    }
    EXPECT_THAT(LogCapture::messages(), IsEmpty());
    expectEarlierMap();
}

TEST_F(ProjectionMapDocument, ReadsTheTwoUntestedCornersAsZeroWhenMissing) {
    EXPECT_TRUE(cell.set(documentOf({{"map0", without(map, "Xyz")}}), 0));
    EXPECT_THAT(transformed(cell, {1, 0, 0}), IsNear(Vector3{}, 1e-11));
    EXPECT_THAT(transformed(cell, {1, 0, 1}), IsNear(measured.corners[6], 1e-11));

    EXPECT_TRUE(cell.set(documentOf({{"map0", without(map, "XyZ")}}), 0));
    EXPECT_THAT(transformed(cell, {1, 0, 1}), IsNear(Vector3{}, 1e-11));
    EXPECT_THAT(transformed(cell, {1, 0, 0}), IsNear(measured.corners[1], 1e-11));
    EXPECT_THAT(LogCapture::messages(), IsEmpty());
}

TEST_F(ProjectionMapDocument, ReadsSingleMissingAxesOfTheUntestedCornersAsZero) {
    EXPECT_TRUE(cell.set(documentOf({{"map0", without(map, "Xyz", "y")}}), 0));
    const Vector3 expected{measured.corners[1].x, 0, measured.corners[1].z};
    EXPECT_THAT(transformed(cell, {1, 0, 0}), IsNear(expected, 1e-11));
}

TEST_F(ProjectionMapDocument, IgnoresOtherKeys) {
    Json::object more = map;
    more["comment"] = "measured by hand";
    EXPECT_TRUE(cell.set(documentOf({{"map0", more}, {"version", 3}}), 0));
}

TEST_F(ProjectionMapDocument, IsRefusedWhenEmpty) {
    EXPECT_FALSE(cell.set("", 0));
    EXPECT_THAT(LogCapture::messages(),
                ElementsAre("WARNING: Could not set touch mapping calibration. The json string "
                            "was empty."));
    expectEarlierMap();
}

TEST_F(ProjectionMapDocument, IsRefusedWithComments) {
    EXPECT_FALSE(cell.set("/* by hand */ " + documentOf({{"map0", map}}), 0));
    EXPECT_EQ(LogCapture::messages().size(), 2u);
    expectEarlierMap();
}

TEST_F(ProjectionMapDocument, IsRefusedWithReasonAndInputWhenItIsNoJson) {
    const std::string text = "{\"map0\": %d,\n}";
    std::string reason;
    Json::parse(text, reason);
    ASSERT_FALSE(reason.empty());
    EXPECT_FALSE(cell.set(text, 0));
    EXPECT_THAT(
        LogCapture::messages(),
        ElementsAre("ERROR: There was a problem in parsing the touch mapping calibration: " +
                        reason,
                    "Here was the raw input:\n\n" + text));
    expectEarlierMap();
}
