// Figures in columns.
#pragma once

#include <string>
#include <vector>

namespace evaluate {

// Columns are as wide as their widest entry; the first is aligned to the left, the others to the
// right.
class TextTable {
  public:
    void row(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    std::string text() const;

  private:
    std::vector<std::vector<std::string>> rows_;
};

// "-" for what is not a number.
std::string decimal(double value, int digits);

} // namespace evaluate
