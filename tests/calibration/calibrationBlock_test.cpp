// The grid itself: its layout, its look-ups and its correction.
#include "calibration/calibrationBlock.h"
#include "calibrationFixtures.h"
#include "camera/FailingAllocation.h"
#include "support/LogCapture.h"

#include <cmath>
#include <limits>
#include <new>

#include <gtest/gtest.h>

using namespace calibrationFixtures;
using QVR::calibrationBlock;
using QVR::calibrationCell;
using support::LogCapture;
using testing::ElementsAre;

namespace {

constexpr unsigned inactive = 0xFFFFFFFFu;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

calibrationBlock blockOf(Grid grid) {
    calibrationBlock block;
    grid.importInto(block);
    return block;
}

Vector3 corrected(const calibrationBlock& block, Vector3 point) {
    block.calibrateVector(point);
    return point;
}

void expectInactive(calibrationBlock& block) {
    EXPECT_EQ(block.cellsX, inactive);
    EXPECT_EQ(block.cellsY, inactive);
    EXPECT_EQ(block.cellsZ, inactive);
    EXPECT_EQ(block.getCellIndex(0, 0, 0), -1);
    EXPECT_EQ(block.getCell(0u, 0u, 0u), nullptr);
    EXPECT_EQ(block.getCell(30.0, 20.0, 200.0), nullptr);
    EXPECT_EQ(block.getCell(0.0, 0.0, 0.0), nullptr);
    EXPECT_THAT(corrected(block, {30, 20, 200}), IsPoint(30, 20, 200));
    EXPECT_THAT(corrected(block, {-5, 1e9, -1}), IsPoint(-5, 1e9, -1));
}

} // namespace

TEST(CalibrationBlock, IsInactiveAfterConstruction) {
    calibrationBlock block;
    EXPECT_TRUE(block.cells.empty());
    expectInactive(block);
}

TEST(CalibrationBlock, KeepsTheExtentsOfGridAndCells) {
    const calibrationBlock block = blockOf(Grid::identity());
    EXPECT_EQ(block.cellsX, 3u);
    EXPECT_EQ(block.cellsY, 2u);
    EXPECT_EQ(block.cellsZ, 2u);
    EXPECT_EQ(block.cells.size(), 12u);
    EXPECT_EQ(block.width, 60.0);
    EXPECT_EQ(block.height, 40.0);
    EXPECT_EQ(block.nearZ, 100.0);
    EXPECT_EQ(block.farZ, 400.0);
    EXPECT_EQ(block.cellSizeX, 20.0);
    EXPECT_EQ(block.cellSizeY, 20.0);
    EXPECT_EQ(block.cellSizeZ, 150.0);
}

TEST(CalibrationBlock, BoundsItsCellsWithOnlyZOffset) {
    calibrationBlock block = blockOf(Grid::random(1));
    for (unsigned k = 0; k < 2; ++k) {
        for (unsigned j = 0; j < 2; ++j) {
            for (unsigned i = 0; i < 3; ++i) {
                const calibrationCell* cell = block.getCell(i, j, k);
                ASSERT_NE(cell, nullptr);
                EXPECT_TRUE(cell->valid);
                EXPECT_EQ(cell->bounds.xLower, 20.0 * i);
                EXPECT_EQ(cell->bounds.xUpper, 20.0 * (i + 1));
                EXPECT_EQ(cell->bounds.yLower, 20.0 * j);
                EXPECT_EQ(cell->bounds.yUpper, 20.0 * (j + 1));
                EXPECT_EQ(cell->bounds.zLower, 100.0 + 150.0 * k);
                EXPECT_EQ(cell->bounds.zUpper, 100.0 + 150.0 * (k + 1));
            }
        }
    }
}

TEST(CalibrationBlock, GivesEachCellItsEightPositions) {
    const Grid grid = Grid::random(2);
    calibrationBlock block = blockOf(grid);
    for (unsigned k = 0; k < 2; ++k) {
        for (unsigned j = 0; j < 2; ++j) {
            for (unsigned i = 0; i < 3; ++i) {
                for (const Corner& corner : corners) {
                    Vector3 point{double(corner.x), double(corner.y), double(corner.z)};
                    block.getCell(i, j, k)->transformPoint(point);
                    const Vector3& measured = grid.at(
                        i + unsigned(corner.x), j + unsigned(corner.y), k + unsigned(corner.z));
                    EXPECT_THAT(point, IsNear(measured, 1e-9)) << i << j << k << corner.name;
                }
            }
        }
    }
}

TEST(CalibrationBlock, IndexesXFastest) {
    EXPECT_EQ(calibrationBlock::getIndex(0, 0, 0, 4, 3), 0u);
    EXPECT_EQ(calibrationBlock::getIndex(1, 0, 0, 4, 3), 1u);
    EXPECT_EQ(calibrationBlock::getIndex(0, 1, 0, 4, 3), 4u);
    EXPECT_EQ(calibrationBlock::getIndex(0, 0, 1, 4, 3), 12u);
    EXPECT_EQ(calibrationBlock::getIndex(3, 2, 2, 4, 3), 35u);
    EXPECT_EQ(calibrationBlock::getIndex(5, 2, 1, 4, 3), 25u);
}

TEST(CalibrationBlock, IndexesItsCells) {
    calibrationBlock block = blockOf(Grid::identity());
    EXPECT_EQ(block.getCellIndex(0, 0, 0), 0);
    EXPECT_EQ(block.getCellIndex(2, 1, 0), 5);
    EXPECT_EQ(block.getCellIndex(0, 0, 1), 6);
    EXPECT_EQ(block.getCellIndex(2, 1, 1), 11);
    EXPECT_EQ(block.getCell(2u, 1u, 1u), &block.cells[11]);
}

TEST(CalibrationBlock, RunsOnIntoTheNextRowForCellCoordinatesPastARow) {
    calibrationBlock block = blockOf(Grid::identity());
    EXPECT_EQ(block.getCellIndex(3, 0, 0), 3);
    EXPECT_EQ(block.getCell(3u, 0u, 0u), &block.cells[3]);
}

TEST(CalibrationBlock, HasNoCellPastTheLast) {
    calibrationBlock block = blockOf(Grid::identity());
    EXPECT_EQ(block.getCellIndex(3, 1, 1), -1);
    EXPECT_EQ(block.getCellIndex(0, 0, 2), -1);
    EXPECT_EQ(block.getCellIndex(inactive, 0, 0), -1);
    EXPECT_EQ(block.getCell(3u, 1u, 1u), nullptr);
}

TEST(CalibrationBlock, FindsTheCellThatContainsAPosition) {
    calibrationBlock block = blockOf(Grid::identity());
    EXPECT_EQ(block.getCell(0.0, 0.0, 100.0), &block.cells[0]);
    EXPECT_EQ(block.getCell(19.99, 19.99, 249.99), &block.cells[0]);
    EXPECT_EQ(block.getCell(20.0, 0.0, 100.0), &block.cells[1]);
    EXPECT_EQ(block.getCell(0.0, 20.0, 100.0), &block.cells[3]);
    EXPECT_EQ(block.getCell(0.0, 0.0, 250.0), &block.cells[6]);
    EXPECT_EQ(block.getCell(59.99, 39.99, 399.99), &block.cells[11]);
}

TEST(CalibrationBlock, FindsForEveryInnerPositionACellWhoseBoundsHoldIt) {
    calibrationBlock block = blockOf(Grid::identity());
    RandomPoints random(3);
    for (int i = 0; i < 10000; ++i) {
        const Vector3 point{random.number(0, 60), random.number(0, 40), random.number(100, 400)};
        const calibrationCell* cell = block.getCell(point.x, point.y, point.z);
        ASSERT_NE(cell, nullptr);
        EXPECT_TRUE(cell->pointTest(point));
    }
}

TEST(CalibrationBlock, FindsNoCellOutside) {
    calibrationBlock block = blockOf(Grid::identity());
    for (const Vector3& outside :
         {Vector3{-0.001, 5, 200}, Vector3{5, -0.001, 200}, Vector3{5, 5, 99.999},
          Vector3{60.001, 5, 200}, Vector3{5, 40.001, 200}, Vector3{5, 5, 400.001}}) {
        EXPECT_EQ(block.getCell(outside.x, outside.y, outside.z), nullptr);
        EXPECT_THAT(corrected(block, outside), IsPoint(-1, -1, -1));
    }
}

TEST(CalibrationBlock, FindsNoCellForPositionsThatAreNotFinite) {
    calibrationBlock block = blockOf(Grid::identity());
    for (const double value : {infinity, -infinity, notANumber}) {
        EXPECT_EQ(block.getCell(value, 5.0, 200.0), nullptr) << value;
        EXPECT_EQ(block.getCell(5.0, value, 200.0), nullptr) << value;
        EXPECT_EQ(block.getCell(5.0, 5.0, value), nullptr) << value;
        EXPECT_THAT(corrected(block, {value, 5, 200}), IsPoint(-1, -1, -1));
    }
}

TEST(CalibrationBlock, FindsNoCellWhereNotFiniteIndicesWrapIntoTheGrid) {
    // Half of 2^32 vanishes from an index when it is doubled, or added to itself.
    calibrationBlock even = blockOf(Grid::identity(3, 3, 3));
    EXPECT_EQ(even.getCell(5.0, notANumber, 200.0), nullptr);
    EXPECT_EQ(even.getCell(5.0, 5.0, notANumber), nullptr);
    calibrationBlock odd = blockOf(Grid::identity(4, 3, 3));
    EXPECT_EQ(odd.getCell(notANumber, notANumber, 200.0), nullptr);
}

TEST(CalibrationBlock, LooksUpTheRightEdgeInTheNextRow) {
    calibrationBlock block = blockOf(Grid::random(4));
    EXPECT_EQ(block.getCell(60.0, 5.0, 200.0), &block.cells[3]);
    EXPECT_EQ(block.getCell(60.0, 25.0, 200.0), &block.cells[6]);
    Vector3 expected{60, 5, 200};
    block.cells[3].normalizePoint(expected);
    block.cells[3].transformPoint(expected);
    EXPECT_THAT(corrected(block, {60, 5, 200}), IsPoint(expected.x, expected.y, expected.z));
}

TEST(CalibrationBlock, LooksUpTheLowerEdgeInTheNextLayer) {
    calibrationBlock block = blockOf(Grid::identity());
    EXPECT_EQ(block.getCell(5.0, 40.0, 200.0), &block.cells[6]);
    EXPECT_EQ(block.getCell(45.0, 40.0, 200.0), &block.cells[8]);
}

TEST(CalibrationBlock, FindsNoCellOnTheEdgesAtTheVeryEnd) {
    calibrationBlock block = blockOf(Grid::identity());
    EXPECT_EQ(block.getCell(60.0, 25.0, 300.0), nullptr);
    EXPECT_EQ(block.getCell(5.0, 40.0, 300.0), nullptr);
    EXPECT_EQ(block.getCell(5.0, 5.0, 400.0), nullptr);
    EXPECT_THAT(corrected(block, {60, 40, 400}), IsPoint(-1, -1, -1));
}

TEST(CalibrationBlock, KeepsTheUpperFacesWhereTheDivisionFallsShort) {
    ASSERT_LT(3.0 / (3.0 / 59), 59.0);
    Grid deep = Grid::identity(2, 2, 60);
    deep.nearZ = 100;
    deep.farZ = 103;
    calibrationBlock block = blockOf(deep);
    EXPECT_EQ(block.getCell(5.0, 5.0, 103.0), &block.cells[58]);
    EXPECT_EQ(block.getCell(5.0, 5.0, 103.001), nullptr);
    Grid wide = Grid::identity(60, 2, 2);
    wide.width = 3;
    block = blockOf(wide);
    EXPECT_EQ(block.getCell(3.0, 5.0, 200.0), &block.cells[58]);
}

TEST(CalibrationBlock, IsInactiveWhenThereIsNoMemoryForItsCells) {
    calibrationBlock block = blockOf(Grid::identity(2, 2, 2));
    Grid larger = Grid::identity(3, 3, 3);
    support::refuseNextAllocationOf(8 * sizeof(calibrationCell));
    EXPECT_THROW(larger.importInto(block), std::bad_alloc);
    EXPECT_EQ(block.cellsX, inactive);
    EXPECT_EQ(block.cellsY, inactive);
    EXPECT_EQ(block.cellsZ, inactive);
    EXPECT_TRUE(block.cells.empty());
    EXPECT_THAT(corrected(block, {1000, 5, 200}), IsPoint(1000, 5, 200));

    larger.importInto(block);
    EXPECT_EQ(block.cells.size(), 8u);
}

TEST(CalibrationBlock, LeavesInnerPointsWhereTheyAreWhenNothingIsBent) {
    for (const Grid& grid : {Grid::identity(2, 2, 2), Grid::identity(4, 3, 3)}) {
        const calibrationBlock block = blockOf(grid);
        RandomPoints random(5);
        for (int i = 0; i < 1000; ++i) {
            const Vector3 point{random.number(0, 60), random.number(0, 40),
                                random.number(100, 400)};
            EXPECT_THAT(corrected(block, point), IsNear(point, 1e-10));
        }
    }
}

TEST(CalibrationBlock, InterpolatesBetweenTheMeasuredPositions) {
    const Grid grid = Grid::random(6);
    const calibrationBlock block = blockOf(grid);
    RandomPoints random(7);
    for (int n = 0; n < 2000; ++n) {
        const Vector3 point{random.number(0, 60), random.number(0, 40), random.number(100, 400)};
        const auto i = unsigned(point.x / 20), j = unsigned(point.y / 20),
                   k = unsigned((point.z - 100) / 150);
        std::array<Vector3, 8> measured;
        for (std::size_t c = 0; c < corners.size(); ++c) {
            measured[c] = grid.at(i + unsigned(corners[c].x), j + unsigned(corners[c].y),
                                  k + unsigned(corners[c].z));
        }
        const Vector3 expected =
            interpolate(measured, point.x / 20 - i, point.y / 20 - j, (point.z - 100) / 150 - k);
        EXPECT_THAT(corrected(block, point), IsNear(expected, 1e-8));
    }
}

TEST(CalibrationBlock, ReplacesTheWholeGrid) {
    calibrationBlock block = blockOf(Grid::random(8));
    Grid smaller = Grid::identity(2, 2, 2);
    smaller.importInto(block);
    EXPECT_EQ(block.cells.size(), 1u);
    EXPECT_EQ(block.cellsX, 1u);
    EXPECT_EQ(block.cellSizeX, 60.0);
    EXPECT_THAT(corrected(block, {30, 20, 250}), IsPoint(30, 20, 250));
}

TEST(CalibrationBlock, TakesANegativeNearAndTheWidestRange) {
    Grid grid = Grid::identity(2, 2, 2);
    grid.nearZ = std::numeric_limits<int>::min();
    grid.farZ = std::numeric_limits<int>::max();
    const calibrationBlock block = blockOf(grid);
    EXPECT_EQ(block.cellSizeZ, 4294967295.0);
}

TEST(CalibrationBlock, StaysDefinedWithoutExtent) {
    Grid grid = Grid::identity(2, 2, 2);
    grid.width = 0;
    grid.height = 0;
    grid.farZ = grid.nearZ;
    const calibrationBlock block = blockOf(grid);
    EXPECT_EQ(block.cellsX, 1u);
    EXPECT_THAT(corrected(block, {1, 0, 100}), IsPoint(-1, -1, -1));
    EXPECT_TRUE(std::isfinite(corrected(block, {0, 0, 100}).x));
}

class CalibrationBlockSizes : public testing::Test {
  protected:
    void expectRejected(int sizeX, int sizeY, int sizeZ, std::size_t vertices) {
        calibrationBlock block = blockOf(Grid::random(9));
        const LogCapture log;
        block.importCellCalibration(60, 40, 100, 400, sizeX, sizeY, sizeZ,
                                    std::vector<Vector3>(vertices));
        EXPECT_THAT(LogCapture::messages(), ElementsAre(sizeMessage))
            << sizeX << ' ' << sizeY << ' ' << sizeZ;
        expectInactive(block);
    }
};

TEST_F(CalibrationBlockSizes, RejectAnotherNumberOfPositions) {
    expectRejected(4, 3, 3, 35);
    expectRejected(4, 3, 3, 37);
    expectRejected(4, 3, 3, 0);
}

TEST_F(CalibrationBlockSizes, RejectAGridWithoutAWholeCell) {
    expectRejected(1, 3, 3, 9);
    expectRejected(3, 1, 3, 9);
    expectRejected(3, 3, 1, 9);
    expectRejected(0, 0, 0, 0);
    expectRejected(0, 3, 3, 0);
    expectRejected(1, 1, 1, 1);
}

TEST_F(CalibrationBlockSizes, RejectNegativeSizes) {
    expectRejected(-2, -2, 2, 8);
    expectRejected(-1, -1, 1, 1);
    expectRejected(std::numeric_limits<int>::min(), 2, 2, 0);
}

TEST_F(CalibrationBlockSizes, RejectProductsThatWrapAround) {
    expectRejected(65536, 65536, 2, 0);
    expectRejected(65536, 65537, 65536, 0);
    expectRejected(1 << 30, 1 << 30, 1 << 30, 0);
    expectRejected(641, 6700417, 2, 2); // 2^32 + 1 times two
    constexpr int largest = std::numeric_limits<int>::max();
    expectRejected(largest, largest, largest, 1);
}

TEST(CalibrationBlock, BecomesActiveAgainAfterARejectedGrid) {
    calibrationBlock block;
    {
        const LogCapture log;
        block.importCellCalibration(60, 40, 100, 400, 4, 3, 3, {});
    }
    Grid::identity().importInto(block);
    EXPECT_EQ(block.cells.size(), 12u);
    EXPECT_THAT(corrected(block, {-1, 0, 200}), IsPoint(-1, -1, -1));
}
