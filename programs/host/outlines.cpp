#include "host/outlines.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace host {

namespace {

// Directions along pixel edges, in clockwise order: right, down, left, up.
constexpr std::array<std::array<int, 2>, 4> steps = {{{1, 0}, {0, 1}, {-1, 0}, {0, -1}}};

class Edges {
  public:
    explicit Edges(const programs::GrayImage& mask)
        : columns_(mask.width + 1), rows_(mask.height + 1),
          leaving_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_), 0) {
        const auto marked = [&](int column, int row) {
            return mask.contains(column, row) && mask.at(column, row) != 0;
        };
        for (int row = 0; row < mask.height; ++row) {
            for (int column = 0; column < mask.width; ++column) {
                if (!marked(column, row)) {
                    continue;
                }
                // Marked pixels lie to the right of the walking direction.
                add(!marked(column, row - 1), column, row, 0);
                add(!marked(column + 1, row), column + 1, row, 1);
                add(!marked(column, row + 1), column + 1, row + 1, 2);
                add(!marked(column - 1, row), column, row + 1, 3);
            }
        }
    }

    std::vector<std::vector<Point>> takeLoops() {
        std::vector<std::vector<Point>> loops;
        for (int y = 0; y < rows_; ++y) {
            for (int x = 0; x < columns_; ++x) {
                for (int direction = 0; direction < 4; ++direction) {
                    if (has(x, y, direction)) {
                        loops.push_back(walk(x, y, direction));
                    }
                }
            }
        }
        return loops;
    }

  private:
    std::uint8_t& at(int x, int y) {
        return leaving_[static_cast<std::size_t>(y) * static_cast<std::size_t>(columns_) +
                        static_cast<std::size_t>(x)];
    }
    bool has(int x, int y, int direction) { return (at(x, y) >> direction & 1) != 0; }
    void add(bool edge, int x, int y, int direction) {
        if (edge) {
            at(x, y) = static_cast<std::uint8_t>(at(x, y) | 1 << direction);
        }
    }

    // Follows the edges from here until none is left, turning right where there is a choice, so
    // that it stays with its own region. Every edge is used once.
    std::vector<Point> walk(int x, int y, int direction) {
        std::vector<Point> loop;
        int last = -1;
        while (true) {
            if (direction != last) {
                loop.push_back({static_cast<float>(x), static_cast<float>(y)});
            }
            at(x, y) = static_cast<std::uint8_t>(at(x, y) & ~(1 << direction));
            last = direction;
            x += steps[static_cast<std::size_t>(direction)][0];
            y += steps[static_cast<std::size_t>(direction)][1];
            const int right = (direction + 1) % 4;
            const int left = (direction + 3) % 4;
            if (has(x, y, right)) {
                direction = right;
            } else if (has(x, y, direction)) {
                continue;
            } else if (has(x, y, left)) {
                direction = left;
            } else {
                return loop;
            }
        }
    }

    int columns_;
    int rows_;
    std::vector<std::uint8_t> leaving_; // a bit for each direction in which an edge leaves
};

} // namespace

std::vector<std::vector<Point>> findOutlines(const programs::GrayImage& mask) {
    return Edges(mask).takeLoops();
}

float enclosedArea(const std::vector<Point>& loop) {
    float doubled = 0;
    for (std::size_t i = 0; i < loop.size(); ++i) {
        const Point& a = loop[i];
        const Point& b = loop[(i + 1) % loop.size()];
        doubled += a.x * b.y - b.x * a.y;
    }
    return doubled / 2;
}

std::vector<Point> smoothed(const std::vector<Point>& loop, int rounds) {
    std::vector<Point> points = loop;
    for (int round = 0; round < rounds; ++round) {
        std::vector<Point> cut;
        for (std::size_t i = 0; i < points.size(); ++i) {
            const Point& a = points[i];
            const Point& b = points[(i + 1) % points.size()];
            cut.push_back({0.75f * a.x + 0.25f * b.x, 0.75f * a.y + 0.25f * b.y});
            cut.push_back({0.25f * a.x + 0.75f * b.x, 0.25f * a.y + 0.75f * b.y});
        }
        points = std::move(cut);
    }
    return points;
}

} // namespace host
