// Whether what clients received is what the camera saw.
#pragma once

#include "system/soak/FrameMark.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace soak {

struct Verdict {
    std::uint64_t good = 0; // frames that equal a frame of the reference, in its order
    // Without touches, as in a camera's silence: its last images again, or blank before the first.
    std::uint64_t withoutCamera = 0;
    std::uint64_t torn = 0;         // images that the camera never saw
    std::uint64_t outOfOrder = 0;   // an older frame after a newer one, or the same one twice
    std::uint64_t wrongTouches = 0; // other touches than belong to the images

    bool isFine() const { return torn == 0 && outOfOrder == 0 && wrongTouches == 0; }
};

class Judge {
  public:
    // `reference`: every frame of the camera from the first one on; `blank`: one in which nothing
    // is seen. Throws std::runtime_error when two of the frames have the same images, for then a
    // frame could pass for another.
    Judge(const std::vector<FrameMark>& reference, const FrameMark& blank);

    void judge(const Visit& visit);
    const Verdict& verdict() const { return verdict_; }

  private:
    const std::vector<FrameMark>& reference_;
    std::unordered_map<std::uint64_t, std::size_t> numbers_; // by hash of the images
    FrameMark blank_;
    Verdict verdict_;
};

} // namespace soak
