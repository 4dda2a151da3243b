// A small, fixed set of frame buffers that camera and clients share by counting references.
#pragma once

#include "Frame.h"

#include <cstddef>
#include <vector>

namespace server {

// Hands out frames that nobody else holds. Its memory is fixed at construction, however many
// clients lag. Every function may be called from any thread; none blocks or allocates. Frames
// may outlive their pool.
class FramePool {
  public:
    FramePool(std::size_t frameBytes, std::size_t frameCount);

    // A free frame with whatever bytes it last had, or null when all are in use.
    FrameRef acquire();

    std::size_t freeCount() const;

  private:
    std::vector<FrameRef> frames_;
};

} // namespace server
