#include "host/PlainView.h"

namespace host {

namespace {

const char* nameOf(TouchChange::Kind kind) {
    switch (kind) {
    case TouchChange::Kind::down:
        return "down";
    case TouchChange::Kind::move:
        return "move";
    case TouchChange::Kind::up:
        return "up";
    }
    return "";
}

std::string describe(const TouchChange& change) {
    char text[160];
    std::snprintf(text, sizeof text, "%-4s  slot %d  x %.3f  y %.3f  z %.3f", nameOf(change.kind),
                  change.touch.slot, static_cast<double>(change.touch.x),
                  static_cast<double>(change.touch.y), static_cast<double>(change.touch.z));
    return text;
}

std::string describe(const HostState& state) {
    switch (state.connection) {
    case Connection::waiting:
        return "waiting for a camera server at " + state.server +
               "; start one with qvr-server (--camera simulated needs no camera)";
    case Connection::connected:
        return "connected to " + state.server;
    case Connection::lost:
        return "connection lost, trying again";
    }
    return "";
}

} // namespace

void PlainView::show(const HostState& state) {
    const bool news = !started_ || state.connection != connection_;
    started_ = true;
    connection_ = state.connection;
    if (news && connection_ == Connection::connected) {
        line(state.now, describe(state));
    }
    for (const TouchChange& change : state.changes) {
        line(state.now, describe(change));
    }
    if (news && connection_ != Connection::connected) {
        line(state.now, describe(state));
    }
    if (state.message != message_) {
        message_ = state.message;
        if (!message_.empty()) {
            line(state.now, message_);
        }
    }
}

void PlainView::line(double now, const std::string& text) {
    std::fprintf(output_, "%9.3f s  %s\n", now, text.c_str());
    std::fflush(output_);
}

} // namespace host
