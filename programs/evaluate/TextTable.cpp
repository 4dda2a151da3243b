#include "evaluate/TextTable.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace evaluate {

std::string TextTable::text() const {
    std::vector<std::size_t> widths;
    for (const std::vector<std::string>& cells : rows_) {
        widths.resize(std::max(widths.size(), cells.size()));
        for (std::size_t i = 0; i < cells.size(); ++i) {
            widths[i] = std::max(widths[i], cells[i].size());
        }
    }
    std::string text;
    for (const std::vector<std::string>& cells : rows_) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::string padding(widths[i] - cells[i].size(), ' ');
            if (i == 0) {
                text += cells[i] + (cells.size() > 1 ? padding : "");
            } else {
                text += "  " + padding + cells[i];
            }
        }
        text.erase(text.find_last_not_of(' ') + 1);
        text += "\n";
    }
    return text;
}

std::string decimal(double value, int digits) {
    if (!std::isfinite(value)) {
        return "-";
    }
    char text[400];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

} // namespace evaluate
