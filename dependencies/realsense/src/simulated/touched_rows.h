// Which columns of each row are covered by something that moves. Pictures start from a background
// made once, so only these columns are drawn and afterwards restored.
#pragma once

#include "simulated/capsule.h"

#include <algorithm>
#include <vector>

namespace camera::simulated {

class TouchedRows {
  public:
    struct Columns {
        int first;
        int end;
    };

    TouchedRows(int width, int height)
        : width_(width), rows_(static_cast<std::size_t>(height), Columns{width, 0}) {}

    void add(const PixelBox& box) {
        for (int row = box.top; row < box.bottom; ++row) {
            Columns& columns = rows_[static_cast<std::size_t>(row)];
            columns.first = std::min(columns.first, box.left);
            columns.end = std::max(columns.end, box.right);
        }
    }
    // first is at or past end where nothing is covered.
    Columns operator[](int row) const { return rows_[static_cast<std::size_t>(row)]; }
    void clear() { std::fill(rows_.begin(), rows_.end(), Columns{width_, 0}); }

  private:
    int width_;
    std::vector<Columns> rows_;
};

} // namespace camera::simulated
