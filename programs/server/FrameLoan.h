// The camera's pictures, lent to a frame.
#pragma once

#include "Frame.h"
#include "FrameLayout.h"
#include "serverClient/frameProtocol.h"

namespace server {

// Has `frame` sent from where the pipeline has its parts. Those are good until the pipeline goes
// on, so the loan is to end before: it waits until the frame is sent, up to `deadline`, and then
// copies the parts into the frame, for clients that are slower and for all that comes later.
class FrameLoan {
  public:
    FrameLoan() = default; // of nothing
    // Before the frame is published. `layout` must outlive the loan.
    FrameLoan(FrameRef frame, const FrameLayout& layout, const QVR::networkFrameData& parts,
              const FrameParts& places, Frame::Clock::time_point deadline);
    ~FrameLoan();
    FrameLoan(FrameLoan&&) noexcept = default;
    FrameLoan& operator=(FrameLoan&&) = delete;

  private:
    FrameRef frame_;
    const FrameLayout* layout_ = nullptr;
    QVR::networkFrameData parts_;
    Frame::Clock::time_point deadline_;
};

} // namespace server
