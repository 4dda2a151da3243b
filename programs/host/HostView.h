// How a host shows its state. One implementation draws a live picture, one writes lines.
#pragma once

#include "host/HostState.h"

namespace host {

class HostView {
  public:
    virtual ~HostView() = default;

    // After every update of the plug-in, on the host's loop thread.
    virtual void show(const HostState& state) = 0;
    // About thirty times a second on the ticker's thread, also while an update waits for a frame.
    // Returns false when the user wants to leave.
    virtual bool tick() = 0;
};

} // namespace host
