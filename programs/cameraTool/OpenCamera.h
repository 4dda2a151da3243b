// One camera of the selected source, from its context to its pictures.
#pragma once

#include "cameraTool/Mode.h"

#include <cstdint>
#include <memory>
#include <span>

namespace cameraTool {

// What fails is a ServerError that says what to do: exitNoCamera, or exitBadOption for a mode that
// the camera does not have. One thread; one at a time.
class OpenCamera {
  public:
    // Opens the first camera and enables depth, and colour where it has any. It does not stream
    // yet.
    explicit OpenCamera(const Mode& wanted);

    rs_device* device() const { return device_; }
    bool hasColor() const { return hasColor_; }
    rs_stream_mode mode(rs_stream stream) const;

    void start();
    // Waits for the next frame. Throws as well when a recording has ended.
    void wait();

    // The current frame's picture, of a native or an aligned stream; good until the next wait.
    std::span<const std::uint16_t> depth(rs_stream stream) const;
    std::span<const std::uint8_t> color(rs_stream stream) const;

  private:
    struct ContextDeleter {
        void operator()(rs_context* context) const { rs_delete_context(context, nullptr); }
    };

    void openContext();
    void enable(const Mode& wanted);
    std::size_t pixels(rs_stream stream) const;

    std::unique_ptr<rs_context, ContextDeleter> context_;
    rs_device* device_ = nullptr; // of the context
    bool hasColor_ = false;
};

// What the camera library says when it is asked for a connected camera; "" when it has one, or sees
// none. To be called while no source is selected.
std::string libraryProblem();

} // namespace cameraTool
