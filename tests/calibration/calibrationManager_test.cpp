// Both maps together: what a touch goes through on its way to the display.
#include "calibration/calibrationManager.h"
#include "calibrationFixtures.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

using namespace calibrationFixtures;
using json11::Json;
using QVR::calibrationManager;
using support::LogCapture;

namespace {

// What the display-space tests project with: corrected camera space times ten.
const QVR::aabbCellCoord box{100, 400, 0, 40, 0, 60};

std::string timesTen(const std::string& key) {
    QVR::cellCoord measured = cornersOf(box);
    for (Vector3& corner : measured.corners) {
        corner = {corner.x * 10, corner.y * 10, corner.z * 10};
    }
    return Json(Json::object{{key, projectionMap(box, measured)}}).dump();
}

// A grid that moves every point by (1, 2, 3).
Grid shifted() {
    Grid grid = Grid::identity();
    for (Vector3& vertex : grid.vertices) {
        vertex = {vertex.x + 1, vertex.y + 2, vertex.z + 3};
    }
    return grid;
}

Vector3 calibrated(const calibrationManager& manager, Vector3 point) {
    manager.calibrateVector(point);
    return point;
}

} // namespace

TEST(CalibrationManager, StartsWithBothMapsOnAndEmpty) {
    const calibrationManager manager;
    EXPECT_TRUE(manager.useDistortionMap);
    EXPECT_TRUE(manager.useProjectionMap);
    EXPECT_EQ(manager.distortionMap.cellsX, 0xFFFFFFFFu);
    EXPECT_FALSE(manager.projectionMap.valid);
}

TEST(CalibrationManager, ProjectsEverythingToZeroBeforeAnyImport) {
    const calibrationManager manager;
    EXPECT_THAT(calibrated(manager, {30, 20, 200}), IsPoint(0, 0, 0));
    EXPECT_THAT(calibrated(manager, {-1e9, 0, 1e9}), IsPoint(0, 0, 0));
}

TEST(CalibrationManager, AppliesTheDistortionMapThenTheProjectionMap) {
    calibrationManager manager;
    shifted().importInto(manager.distortionMap);
    ASSERT_TRUE(manager.importProjectionMap(timesTen("map0"), 0));
    EXPECT_THAT(calibrated(manager, {30, 20, 200}), IsNear(Vector3{310, 220, 2030}, 1e-9));
}

TEST(CalibrationManager, AppliesOnlyWhatIsSwitchedOn) {
    calibrationManager manager;
    shifted().importInto(manager.distortionMap);
    ASSERT_TRUE(manager.importProjectionMap(timesTen("map0"), 0));
    manager.useProjectionMap = false;
    EXPECT_THAT(calibrated(manager, {30, 20, 200}), IsNear(Vector3{31, 22, 203}, 1e-9));
    manager.useDistortionMap = false;
    EXPECT_THAT(calibrated(manager, {30, 20, 200}), IsPoint(30, 20, 200));
    manager.useProjectionMap = true;
    EXPECT_THAT(calibrated(manager, {30, 20, 200}), IsNear(Vector3{300, 200, 2000}, 1e-9));
}

TEST(CalibrationManager, ProjectsWithoutAGrid) {
    calibrationManager manager;
    ASSERT_TRUE(manager.importProjectionMap(timesTen("map0"), 0));
    EXPECT_THAT(calibrated(manager, {30, 20, 200}), IsNear(Vector3{300, 200, 2000}, 1e-9));
}

TEST(CalibrationManager, ExtrapolatesOutsideTheBox) {
    calibrationManager manager;
    ASSERT_TRUE(manager.importProjectionMap(timesTen("map0"), 0));
    EXPECT_THAT(calibrated(manager, {-30, 80, 1000}), IsNear(Vector3{-300, 800, 10000}, 1e-9));
}

TEST(CalibrationManager, MapsTheBoxesOuterCornersToTheirPositions) {
    calibrationManager manager;
    ASSERT_TRUE(manager.importProjectionMap(timesTen("map0"), 0));
    EXPECT_THAT(calibrated(manager, {0, 0, 100}), IsNear(Vector3{0, 0, 1000}, 1e-9));
    EXPECT_THAT(calibrated(manager, {60, 40, 400}), IsNear(Vector3{600, 400, 4000}, 1e-9));
}

TEST(CalibrationManager, ProjectsTheMarkOfAnUnusableTouchLikeAnyPoint) {
    calibrationManager manager;
    shifted().importInto(manager.distortionMap);
    manager.useProjectionMap = false;
    EXPECT_THAT(calibrated(manager, {-5, 20, 200}), IsPoint(-1, -1, -1));
    manager.useProjectionMap = true;
    ASSERT_TRUE(manager.importProjectionMap(timesTen("map0"), 0));
    EXPECT_THAT(calibrated(manager, {-5, 20, 200}), IsNear(Vector3{-10, -10, -10}, 1e-9));
}

TEST(CalibrationManager, KeepsTheEarlierProjectionWhenAnImportFails) {
    calibrationManager manager;
    ASSERT_TRUE(manager.importProjectionMap(timesTen("map3"), 3));
    const LogCapture log;
    EXPECT_FALSE(manager.importProjectionMap(timesTen("map3"), 0));
    EXPECT_TRUE(LogCapture::messages().empty());
    EXPECT_FALSE(manager.importProjectionMap("", 3));
    EXPECT_FALSE(manager.importProjectionMap("{", 3));
    EXPECT_EQ(LogCapture::messages().size(), 3u);
    EXPECT_TRUE(manager.projectionMap.valid);
    EXPECT_THAT(calibrated(manager, {30, 20, 200}), IsNear(Vector3{300, 200, 2000}, 1e-9));
}
