// Reading the grid from a calibration document: every status code, its message and its effect.
#include "calibration/calibrationBlock.h"
#include "calibrationFixtures.h"
#include "support/LogCapture.h"

#include <limits>

#include <gtest/gtest.h>

using namespace calibrationFixtures;
using json11::Json;
using QVR::calibrationBlock;
using support::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr float unitsPerMeter = 1000.0f;

std::string nearFarMessage(const std::string& nearAndFar) {
    return "Error: Could not determine near and far Z. Are both the camera and calibration file "
           "accessible?\nOtherwise, check the (sanity of the) depth clip values in the calibration "
           "file.\nFound values: " +
           nearAndFar;
}

// A block with a grid of one cell, which tells whether an import has touched it.
class CalibrationBlockImport : public testing::Test {
  protected:
    CalibrationBlockImport() { Grid::identity(2, 2, 2).importInto(block); }

    int importDocument(const Json::object& members, float scale = unitsPerMeter) {
        Json document(members);
        return block.importCellCalibration(document, scale);
    }

    int importWithout(const std::string& key) {
        Json::object members = Grid::identity().document();
        members.erase(key);
        return importDocument(members);
    }

    int importWith(const std::string& key, const Json& value) {
        Json::object members = Grid::identity().document();
        members[key] = value;
        return importDocument(members);
    }

    int importWithGrid(const std::string& key, const Json& value) {
        Json::object grid = Grid::identity().document()["calibration"].object_items();
        grid[key] = value;
        return importWith("calibration", grid);
    }

    void expectEarlierGrid() {
        EXPECT_EQ(block.cellsX, 1u);
        EXPECT_EQ(block.cells.size(), 1u);
        EXPECT_EQ(block.width, 60.0);
        EXPECT_EQ(block.nearZ, 100.0);
        EXPECT_EQ(block.farZ, 400.0);
    }

    void expectInactive() {
        EXPECT_EQ(block.cellsX, 0xFFFFFFFFu);
        EXPECT_EQ(block.cellsY, 0xFFFFFFFFu);
        EXPECT_EQ(block.cellsZ, 0xFFFFFFFFu);
        Vector3 point{30, 20, 200};
        block.calibrateVector(point);
        EXPECT_THAT(point, IsPoint(30, 20, 200));
    }

    calibrationBlock block;
    const LogCapture log;
};

} // namespace

TEST_F(CalibrationBlockImport, ReadsAWholeDocument) {
    const Grid grid = Grid::random(11);
    EXPECT_EQ(importDocument(grid.document()), 0);
    EXPECT_THAT(LogCapture::messages(), IsEmpty());
    EXPECT_EQ(block.cellsX, 3u);
    EXPECT_EQ(block.cellsY, 2u);
    EXPECT_EQ(block.cellsZ, 2u);
    EXPECT_EQ(block.width, 60.0);
    EXPECT_EQ(block.height, 40.0);
    EXPECT_EQ(block.nearZ, 100.0);
    EXPECT_EQ(block.farZ, 400.0);
    for (unsigned k = 0; k < 2; ++k) {
        for (unsigned j = 0; j < 2; ++j) {
            for (unsigned i = 0; i < 3; ++i) {
                const Vector3& vertex = grid.at(i, j, k);
                EXPECT_THAT(block.getCell(i, j, k)->A, IsPoint(vertex.x, vertex.y, vertex.z));
            }
        }
    }
}

TEST_F(CalibrationBlockImport, ReadsTheSameFromText) {
    const Grid grid = Grid::random(12);
    EXPECT_EQ(block.importCellCalibration(Json(grid.document()).dump(), unitsPerMeter), 0);
    EXPECT_THAT(LogCapture::messages(), IsEmpty());
    EXPECT_EQ(block.cells.size(), 12u);
    EXPECT_THAT(block.cells[11].A,
                IsPoint(grid.at(2, 1, 1).x, grid.at(2, 1, 1).y, grid.at(2, 1, 1).z));
}

TEST_F(CalibrationBlockImport, RefusesAnEmptyText) {
    EXPECT_EQ(block.importCellCalibration("", unitsPerMeter), -1);
    EXPECT_THAT(
        LogCapture::messages(),
        ElementsAre("WARNING: Could not read touch calibration because it appears to be empty."));
    expectEarlierGrid();
}

TEST_F(CalibrationBlockImport, RefusesATextThatIsNoJson) {
    std::string reason;
    Json::parse("{\"depthResX\": }", reason);
    ASSERT_FALSE(reason.empty());
    EXPECT_EQ(block.importCellCalibration("{\"depthResX\": }", unitsPerMeter), -2);
    EXPECT_THAT(
        LogCapture::messages(),
        ElementsAre("ERROR: There was a problem in parsing the calibration file contents: " +
                    reason));
    expectEarlierGrid();
}

TEST_F(CalibrationBlockImport, RefusesCommentsInTheText) {
    const std::string text = Json(Grid::identity().document()).dump();
    EXPECT_EQ(block.importCellCalibration("/* by hand */ " + text, unitsPerMeter), -2);
    EXPECT_EQ(block.importCellCalibration(text + " // by hand", unitsPerMeter), -2);
    expectEarlierGrid();
}

TEST_F(CalibrationBlockImport, RefusesANullDocumentSilently) {
    Json document;
    EXPECT_EQ(block.importCellCalibration(document, unitsPerMeter), -3);
    EXPECT_EQ(block.importCellCalibration("null", unitsPerMeter), -3);
    EXPECT_THAT(LogCapture::messages(), IsEmpty());
    expectEarlierGrid();
}

TEST_F(CalibrationBlockImport, RefusesADocumentWithoutWidth) {
    EXPECT_EQ(importWithout("depthResX"), -4);
    EXPECT_EQ(importWith("depthResX", "640"), -4);
    EXPECT_EQ(block.importCellCalibration("[1, 2]", unitsPerMeter), -4);
    const std::string message = "Warning: Did not find resX value in calibration data.";
    EXPECT_THAT(LogCapture::messages(), ElementsAre(message, message, message));
    expectEarlierGrid();
}

TEST_F(CalibrationBlockImport, RefusesADocumentWithoutHeight) {
    EXPECT_EQ(importWithout("depthResY"), -5);
    EXPECT_EQ(importWith("depthResY", true), -5);
    const std::string message = "Warning: Did not find resY value in calibration data.";
    EXPECT_THAT(LogCapture::messages(), ElementsAre(message, message));
    expectEarlierGrid();
}

TEST_F(CalibrationBlockImport, RefusesADocumentWithoutNearClip) {
    EXPECT_EQ(importWithout("nearClipMeters"), -6);
    EXPECT_EQ(importWith("nearClipMeters", nullptr), -6);
    const std::string message = "Warning: Did not find nearClipMeters value in calibration data.";
    EXPECT_THAT(LogCapture::messages(), ElementsAre(message, message));
    expectEarlierGrid();
}

TEST_F(CalibrationBlockImport, RefusesADocumentWithoutFarClip) {
    EXPECT_EQ(importWithout("farClipMeters"), -7);
    EXPECT_EQ(importWith("farClipMeters", Json::array{1}), -7);
    const std::string message = "Warning: Did not find farClipMeters value in calibration data.";
    EXPECT_THAT(LogCapture::messages(), ElementsAre(message, message));
    expectEarlierGrid();
}

TEST_F(CalibrationBlockImport, ReportsTheFirstMissingValueOnly) {
    EXPECT_EQ(importDocument({}), -4);
    EXPECT_EQ(importDocument({{"depthResX", 1}}), -5);
    EXPECT_EQ(importDocument({{"depthResX", 1}, {"depthResY", 1}}), -6);
    EXPECT_EQ(importDocument({{"depthResX", 1}, {"depthResY", 1}, {"nearClipMeters", 0}}), -7);
    EXPECT_EQ(LogCapture::messages().size(), 4u);
}

TEST_F(CalibrationBlockImport, RefusesANearClipBeyondTheFarOne) {
    Json::object members = Grid::identity().document();
    members["nearClipMeters"] = 0.5;
    members["farClipMeters"] = 0.2;
    EXPECT_EQ(importDocument(members), -8);
    EXPECT_THAT(LogCapture::messages(), ElementsAre(nearFarMessage("near=500 far=200")));
    expectEarlierGrid();
}

TEST_F(CalibrationBlockImport, RefusesClipDistancesThatAreEqualOnceTruncated) {
    Json::object members = Grid::identity().document();
    members["nearClipMeters"] = 0.2001;
    members["farClipMeters"] = 0.2009;
    EXPECT_EQ(importDocument(members), -8);
    EXPECT_THAT(LogCapture::messages(), ElementsAre(nearFarMessage("near=200 far=200")));
}

TEST_F(CalibrationBlockImport, RefusesNegativeClipDistances) {
    EXPECT_EQ(importWith("nearClipMeters", -0.1), -8);
    EXPECT_THAT(LogCapture::messages(), ElementsAre(nearFarMessage("near=-100 far=400")));
    expectEarlierGrid();
}

TEST_F(CalibrationBlockImport, RefusesEveryGridWithoutAUsableScale) {
    EXPECT_EQ(importDocument(Grid::identity().document(), 0.0f), -8);
    EXPECT_EQ(importDocument(Grid::identity().document(), -1000.0f), -8);
    EXPECT_EQ(importDocument(Grid::identity().document(), std::numeric_limits<float>::quiet_NaN()),
              -8);
    EXPECT_THAT(LogCapture::messages(),
                ElementsAre(nearFarMessage("near=0 far=0"), nearFarMessage("near=-100 far=-400"),
                            nearFarMessage("near=-2147483648 far=-2147483648")));
    expectEarlierGrid();
}

TEST_F(CalibrationBlockImport, RefusesAFarClipThatNoIntHolds) {
    EXPECT_EQ(importWith("farClipMeters", 1e12), -8);
    EXPECT_THAT(LogCapture::messages(), ElementsAre(nearFarMessage("near=100 far=-2147483648")));
}

TEST_F(CalibrationBlockImport, TruncatesClipDistancesToWholeUnits) {
    Json::object members = Grid::identity().document();
    members["nearClipMeters"] = 0.1009;
    members["farClipMeters"] = 0.4009;
    EXPECT_EQ(importDocument(members), 0);
    EXPECT_EQ(block.nearZ, 100.0);
    EXPECT_EQ(block.farZ, 400.0);
}

TEST_F(CalibrationBlockImport, ScalesClipDistancesInDoublePrecision) {
    // 0.251f is 0.250999987: 250 units in single precision.
    EXPECT_EQ(importWith("nearClipMeters", 0.251), 0);
    EXPECT_EQ(block.nearZ, 251.0);
    EXPECT_EQ(importWith("farClipMeters", 0.251), 0);
    EXPECT_EQ(block.farZ, 251.0);
}

TEST_F(CalibrationBlockImport, ScalesClipDistancesToTheCamerasUnits) {
    EXPECT_EQ(importDocument(Grid::identity().document(), 8000.0f), 0);
    EXPECT_EQ(block.nearZ, 800.0);
    EXPECT_EQ(block.farZ, 3200.0);
}

TEST_F(CalibrationBlockImport, TruncatesResolutions) {
    EXPECT_EQ(importWith("depthResX", 90.9), 0);
    EXPECT_EQ(block.width, 90.0);
    EXPECT_EQ(importWith("depthResY", 70.9), 0);
    EXPECT_EQ(block.height, 70.0);
}

TEST_F(CalibrationBlockImport, ReadsPositionsThatAreNoNumbersAsZero) {
    Json::array verts;
    for (int i = 1; i <= 24; ++i) {
        verts.push_back(i);
    }
    verts[0] = "1";
    verts[2] = nullptr;
    const Json::object grid{{"sizeX", 2}, {"sizeY", 2}, {"sizeZ", 2}, {"verts", verts}};
    EXPECT_EQ(importWith("calibration", grid), 0);
    EXPECT_THAT(LogCapture::messages(), IsEmpty());
    EXPECT_THAT(block.cells.at(0).A, IsPoint(0, 2, 0));
}

TEST_F(CalibrationBlockImport, SucceedsWithAnInactiveBlockWhenSizesAndPositionsDiffer) {
    EXPECT_EQ(importWithGrid("sizeX", 5), 0);
    EXPECT_THAT(LogCapture::messages(), ElementsAre(sizeMessage));
    expectInactive();
}

TEST_F(CalibrationBlockImport, RejectsPositionsThatAreNoTriples) {
    const Json::array whole = Grid::identity().document()["calibration"]["verts"].array_items();
    for (const std::size_t count : {whole.size() - 2, whole.size() - 1, whole.size() + 1}) {
        LogCapture::messages().clear();
        Json::array verts = whole;
        verts.resize(count);
        EXPECT_EQ(importWithGrid("verts", verts), 0);
        EXPECT_THAT(LogCapture::messages(), ElementsAre(sizeMessage)) << count;
        expectInactive();
    }
}

TEST_F(CalibrationBlockImport, RejectsAMissingGrid) {
    EXPECT_EQ(importWithout("calibration"), 0);
    EXPECT_EQ(importWith("calibration", "none"), 0);
    EXPECT_EQ(importWith("calibration", Json::object{}), 0);
    EXPECT_EQ(importWithGrid("verts", Json::object{}), 0);
    EXPECT_EQ(importWithGrid("sizeX", "4"), 0);
    EXPECT_EQ(importWithGrid("sizeY", "3"), 0);
    EXPECT_EQ(importWithGrid("sizeZ", "3"), 0);
    EXPECT_EQ(LogCapture::messages(), std::vector<std::string>(7, sizeMessage));
    expectInactive();
}

TEST_F(CalibrationBlockImport, RejectsHugeSizesWithoutAllocating) {
    const Json::object huge{{"sizeX", 2147483647}, {"sizeY", 2147483647}, {"sizeZ", 2147483647}};
    EXPECT_EQ(importWith("calibration", huge), 0);
    EXPECT_EQ(importWithGrid("sizeX", 1e18), 0);
    EXPECT_EQ(importWithGrid("sizeX", -1e18), 0);
    EXPECT_EQ(LogCapture::messages(), std::vector<std::string>(3, sizeMessage));
    EXPECT_EQ(block.cells.size(), 0u);
    expectInactive();
}
