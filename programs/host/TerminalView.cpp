#include "host/TerminalView.h"

#include "host/TerminalScreen.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>
#include <vector>

namespace host {

namespace {

using Ink = TerminalScreen::Ink;

constexpr int tableWidth = 46;
constexpr int leastSurfaceWidth = 40;

std::string format(const char* pattern, double value) {
    char text[64];
    std::snprintf(text, sizeof text, pattern, value);
    return text;
}

std::string ageText(double seconds) {
    return seconds < 1 ? format("%.0f ms", seconds * 1000) : format("%.1f s", seconds);
}

// The cell of `value` between two ends that lie at the cells `first` and `last`.
int cellOf(double value, double low, double high, int first, int last) {
    const double share = std::clamp((value - low) / (high - low), 0.0, 1.0);
    return first + static_cast<int>(std::lround(share * (last - first)));
}

} // namespace

std::unique_ptr<TerminalView> TerminalView::open(std::optional<Extents> surface,
                                                 std::string& problem) {
    std::unique_ptr<TerminalScreen> screen = TerminalScreen::open(problem);
    if (!screen) {
        return nullptr;
    }
    std::unique_ptr<TerminalView> view(new TerminalView(std::move(screen)));
    if (surface) {
        view->surface_.fix(*surface);
    }
    return view;
}

TerminalView::TerminalView(std::unique_ptr<TerminalScreen> screen)
    : screen_(std::move(screen)), shown_(std::chrono::steady_clock::now()) {}

TerminalView::~TerminalView() = default;

void TerminalView::show(const HostState& state) {
    const std::lock_guard lock(mutex_);
    state_ = state;
    shown_ = std::chrono::steady_clock::now();
    surface_.startFrom(state.depthWidth, state.depthHeight);
    for (const Touch& touch : state.touches) {
        surface_.see(touch.x, touch.y);
    }
}

bool TerminalView::tick() {
    for (int key = screen_->key(); key != 0; key = screen_->key()) {
        if (key == 'q' || key == 'Q') {
            return false;
        }
        if (key == 't') {
            trails_ = !trails_;
        }
    }
    draw(current());
    return true;
}

HostState TerminalView::current() const {
    const std::lock_guard lock(mutex_);
    HostState state = state_;
    const std::chrono::duration<double> since = std::chrono::steady_clock::now() - shown_;
    state.now += since.count();
    return state;
}

void TerminalView::draw(const HostState& state) {
    const int rows = screen_->rows();
    const int columns = screen_->columns();
    screen_->begin();
    drawStatus(state);
    const int bottom = rows - 2;
    const bool table = columns >= leastSurfaceWidth + tableWidth;
    const int right = table ? columns - tableWidth - 1 : columns - 1;
    if (bottom - 1 >= 4 && right >= 12) {
        screen_->box(1, 0, bottom, right);
        drawSurface(state, 2, bottom - 1, 1, right - 1);
        drawNotice(state, 2, bottom - 1, 1, right - 1);
        if (table) {
            drawTable(state, 1, bottom, right + 2);
        }
    }
    const std::string keys = " q leave   t trails ";
    screen_->text(rows - 1, 0, keys, Ink::faint);
    screen_->text(rows - 1, static_cast<int>(keys.size()) + 2, state.message, Ink::normal);
    screen_->end();
}

void TerminalView::drawStatus(const HostState& state) {
    const int columns = screen_->columns();
    screen_->text(0, 0, std::string(static_cast<std::size_t>(columns), ' '), Ink::bar);
    std::string left = " QVR touch   ";
    switch (state.connection) {
    case Connection::waiting:
        left += "waiting for a server";
        break;
    case Connection::connected:
        left += "connected to " + state.server;
        break;
    case Connection::lost:
        left += "connection lost";
        break;
    }
    const std::string touches =
        std::to_string(state.live.size()) + (state.live.size() == 1 ? " touch " : " touches ");
    const std::string rate = state.connection == Connection::connected
                                 ? format("%.1f frames/s   ", state.frameRate)
                                 : std::string();
    const std::string age = state.frames > 0
                                ? "last frame " + ageText(state.now - state.lastFrame) + " ago   "
                                : std::string();
    screen_->text(0, 0, left, Ink::bar);
    // As much as fits, the most important last to go.
    for (const std::string& right : {rate + age + touches, rate + touches, touches}) {
        const int start = columns - static_cast<int>(right.size());
        if (start > static_cast<int>(left.size()) + 1) {
            screen_->text(0, start, right, Ink::bar);
            return;
        }
    }
}

void TerminalView::drawSurface(const HostState& state, int top, int bottom, int left, int right) {
    Extents extents;
    {
        const std::lock_guard lock(mutex_);
        extents = surface_.extents();
    }
    const std::string upper =
        " " + format("%g", extents.left) + ", " + format("%g", extents.top) + " ";
    const std::string lower =
        " " + format("%g", extents.right) + ", " + format("%g", extents.bottom) + " ";
    screen_->text(top - 1, left + 1, upper, Ink::faint);
    screen_->text(bottom + 1, std::max(left, right - static_cast<int>(lower.size())), lower,
                  Ink::faint);

    const auto column = [&](float x) {
        return cellOf(x, extents.left, extents.right, left, right);
    };
    const auto row = [&](float y) { return cellOf(y, extents.top, extents.bottom, top, bottom); };
    for (const LiveTouch& live : state.live) {
        for (std::size_t i = 0; trails_ && i < live.trail.size(); ++i) {
            if (std::isfinite(live.trail[i][0]) && std::isfinite(live.trail[i][1])) {
                screen_->text(row(live.trail[i][1]), column(live.trail[i][0]),
                              screen_->unicode() ? "\u00b7" : ".", Ink::touch, live.touch.slot);
            }
        }
    }
    for (const LiveTouch& live : state.live) {
        if (!std::isfinite(live.touch.x) || !std::isfinite(live.touch.y)) {
            continue;
        }
        const std::string mark = "(" + std::to_string(live.touch.slot) + ")";
        const int start = std::clamp(column(live.touch.x) - 1, left,
                                     std::max(left, right + 1 - static_cast<int>(mark.size())));
        screen_->text(row(live.touch.y), start, mark, Ink::touch, live.touch.slot);
    }
}

void TerminalView::drawNotice(const HostState& state, int top, int bottom, int left, int right) {
    std::vector<std::string> lines;
    if (state.connection == Connection::waiting) {
        lines = {"No camera server answers at", state.server, "",
                 "Start one in another terminal:", "qvr-server --camera simulated"};
    } else if (state.connection == Connection::lost) {
        lines = {"The connection was lost.", "Trying again ..."};
    }
    int row = (top + bottom - static_cast<int>(lines.size())) / 2;
    for (const std::string& line : lines) {
        const int start = std::max(left, (left + right - static_cast<int>(line.size())) / 2);
        const std::size_t room = static_cast<std::size_t>(std::max(0, right + 1 - start));
        if (row >= top && row <= bottom) {
            screen_->text(row, start, line.substr(0, room), Ink::bad);
        }
        ++row;
    }
}

void TerminalView::drawTable(const HostState& state, int top, int bottom, int left) {
    screen_->text(top, left, "slot        x         y         z       age", Ink::faint);
    int row = top + 1;
    for (const LiveTouch& live : state.live) {
        if (row > bottom) {
            return;
        }
        char line[128];
        std::snprintf(line, sizeof line, "%4d %9.1f %9.1f %9.1f %9s", live.touch.slot,
                      static_cast<double>(live.touch.x), static_cast<double>(live.touch.y),
                      static_cast<double>(live.touch.z), ageText(state.now - live.since).c_str());
        screen_->text(row++, left, line, Ink::touch, live.touch.slot);
    }
    if (state.live.empty() && state.connection == Connection::connected) {
        screen_->text(row, left, "nothing touches the surface", Ink::faint);
    }
    const std::string totals = std::to_string(state.frames) + " frames, " +
                               std::to_string(state.downCount) + " touches so far";
    screen_->text(bottom, left, totals, Ink::faint);
}

} // namespace host
