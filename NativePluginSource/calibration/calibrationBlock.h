// The distortion map: a regular grid of cells over what the depth camera measures, which corrects
// a position (x and y in depth-image pixels, z in depth units) for this very device.
#pragma once

#include "calibration/calibrationCell.h"
#include "foundation/Vector3.h"
#include "foundation/qvrApi.h"

#include <string>
#include <vector>

namespace json11 {
class Json;
}

namespace QVR {

// One thread at a time: an import replaces what every other call reads.
class QVR_API calibrationBlock {
  public:
    // Reads the grid from the calibration document. `depthScale` is the number of depth units in
    // a metre; it turns the document's clip distances into depth units. Results:
    //    0  document read; a grid that does not fit its own sizes is logged and leaves the block
    //       inactive
    //   -1  the text is empty                     -5  "depthResY" is missing or no number
    //   -2  the text is no JSON                   -6  the same for "nearClipMeters"
    //   -3  the document is null                  -7  the same for "farClipMeters"
    //   -4  "depthResX" is missing or no number   -8  near not below far, or one is negative
    // All but -3 are logged, and all but 0 keep the grid that was there.
    int importCellCalibration(std::string jsonText, float depthScale);
    int importCellCalibration(json11::Json& document, float depthScale);

    // Builds the grid from sizeX x sizeY x sizeZ measured positions, x fastest, then y, then z,
    // that lie evenly over x 0..width, y 0..height and z nearZ..farZ. Anything but at least two
    // positions along each axis, as many as the sizes say, is logged and leaves the block
    // inactive. So does std::bad_alloc, which is thrown when there is no memory for the cells.
    void importCellCalibration(int imageWidth, int imageHeight, int nearClip, int farClip,
                               int sizeX, int sizeY, int sizeZ,
                               const std::vector<Vector3>& vertices);

    // Place of (x, y, z) in an array of sizeX x sizeY x any, x fastest.
    static unsigned getIndex(unsigned x, unsigned y, unsigned z, unsigned sizeX, unsigned sizeY);

    // Place of the cell with these cell coordinates; -1 when there are not that many cells.
    int getCellIndex(unsigned x, unsigned y, unsigned z) const;

    // The cell with these cell coordinates, or null. Valid until the next import.
    calibrationCell* getCell(unsigned x, unsigned y, unsigned z);

    // The cell that contains this position, or null outside the grid. A position exactly on the
    // upper x face gets the first cell of the next row, one exactly on the upper y face the first
    // row of the next layer; there is none after the last. Valid until the next import.
    calibrationCell* getCell(double x, double y, double z);

    // Corrects a position in place. Outside the grid it becomes (-1, -1, -1); an inactive block
    // leaves it as it is. Allocates nothing.
    void calibrateVector(Vector3& point) const;

    // Cells along each axis; all ones while no grid is there.
    unsigned cellsX = ~0u;
    unsigned cellsY = ~0u;
    unsigned cellsZ = ~0u;

    // Extent of one cell.
    double cellSizeX = 0.0;
    double cellSizeY = 0.0;
    double cellSizeZ = 0.0;

    // Extent of the grid.
    double width = 0.0;
    double height = 0.0;
    double nearZ = 0.0;
    double farZ = 0.0;

    std::vector<calibrationCell> cells; // x fastest, then y, then z

  private:
    int findCell(double x, double y, double z) const;
    void rejectGrid();
};

} // namespace QVR
