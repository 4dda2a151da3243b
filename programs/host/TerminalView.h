// A live picture of the touch surface in the terminal.
#pragma once

#include "host/HostView.h"
#include "host/SurfaceExtents.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace host {

class TerminalScreen;

class TerminalView : public HostView {
  public:
    // Takes over the terminal on standard output until the view is destroyed. Null when curses
    // does not know the terminal; `problem` then says so.
    static std::unique_ptr<TerminalView> open(std::optional<Extents> surface, std::string& problem);
    ~TerminalView() override;
    TerminalView(const TerminalView&) = delete;
    TerminalView& operator=(const TerminalView&) = delete;

    void show(const HostState& state) override;
    bool tick() override;

  private:
    explicit TerminalView(std::unique_ptr<TerminalScreen> screen);
    HostState current() const;
    void draw(const HostState& state);
    void drawStatus(const HostState& state);
    void drawSurface(const HostState& state, int top, int bottom, int left, int right);
    void drawNotice(const HostState& state, int top, int bottom, int left, int right);
    void drawTable(const HostState& state, int top, int bottom, int left);

    std::unique_ptr<TerminalScreen> screen_;
    mutable std::mutex mutex_; // guards what `show` writes
    HostState state_;
    SurfaceExtents surface_;
    std::chrono::steady_clock::time_point shown_;
    bool trails_ = true;
};

} // namespace host
