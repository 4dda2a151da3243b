#include "FrameLoan.h"

#include <utility>

namespace server {

FrameLoan::FrameLoan(FrameRef frame, const FrameLayout& layout, const QVR::networkFrameData& parts,
                     const FrameParts& places, Frame::Clock::time_point deadline)
    : frame_(std::move(frame)), layout_(&layout), parts_(parts), deadline_(deadline) {
    frame_->lend(places);
}

// Copying only when sending is done: the processors that both would share are few.
FrameLoan::~FrameLoan() {
    if (!frame_)
        return;
    frame_->waitUntilSent(deadline_);
    layout_->compose(parts_, {}, frame_->bytes());
    frame_->takeBack();
}

} // namespace server
