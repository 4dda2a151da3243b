// The current picture of a native stream and the one that is being made.
#pragma once

#include "stale_memory.h"

#include <cstddef>
#include <memory>
#include <span>
#include <utility>

namespace camera {

// Two buffers in turn. A picture is good until the next one becomes current; in a build with
// AddressSanitizer a read after that is reported.
template <class Sample>
class PictureBuffer {
  public:
    // Both buffers anew, full of zeros. The older pictures are gone.
    void allocate(std::size_t count) {
        release();
        count_ = count;
        current_ = std::make_unique<Sample[]>(count);
        spare_ = std::make_unique<Sample[]>(count);
        markStale(spare());
    }

    void release() {
        current_.reset();
        spare_.reset();
        count_ = 0;
    }

    // Null when nothing is allocated.
    const Sample* data() const { return current_.get(); }
    std::span<const Sample> current() const { return {current_.get(), count_}; }

    // Room for the next picture, with whatever an older one left there.
    std::span<Sample> open() {
        markUsable(spare());
        return spare();
    }
    // Makes that picture the current one, or drops it.
    void close(bool publish) {
        if (publish) {
            std::swap(current_, spare_);
        }
        markStale(spare());
    }

  private:
    std::span<Sample> spare() { return {spare_.get(), count_}; }

    std::unique_ptr<Sample[]> current_;
    std::unique_ptr<Sample[]> spare_;
    std::size_t count_ = 0;
};

} // namespace camera
