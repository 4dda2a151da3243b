#include "system/soak/Verdict.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace soak {

Judge::Judge(const std::vector<FrameMark>& reference, const FrameMark& blank)
    : reference_(reference), blank_(blank) {
    for (std::size_t number = 0; number < reference.size(); ++number)
        if (!numbers_.emplace(reference[number].images, number).second)
            throw std::runtime_error("frame " + std::to_string(number) + " looks like frame " +
                                     std::to_string(numbers_[reference[number].images]));
}

void Judge::judge(const Visit& visit) {
    std::size_t next = 0; // the earliest frame that may come now
    for (const FrameMark& mark : visit) {
        if (next == 0 && mark == blank_) {
            ++verdict_.withoutCamera;
            continue;
        }
        const auto found = numbers_.find(mark.images);
        if (found == numbers_.end()) {
            ++verdict_.torn;
            continue;
        }
        const std::size_t number = found->second;
        const bool again = number + 1 == next;
        if (number >= next && mark == reference_[number])
            ++verdict_.good;
        else if ((number >= next || again) && mark.touches == blank_.touches)
            ++verdict_.withoutCamera;
        else if (number < next)
            ++verdict_.outOfOrder;
        else
            ++verdict_.wrongTouches;
        next = std::max(next, number + 1);
    }
}

} // namespace soak
