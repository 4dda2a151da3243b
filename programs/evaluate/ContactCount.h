// Follows every finger from touching down to leaving.
#pragma once

#include "evaluate/Matcher.h"
#include "evaluate/Tally.h"

#include <cstddef>
#include <map>
#include <optional>

namespace evaluate {

// A finger that touches for fewer frames may be over before it is believed.
inline constexpr std::size_t shortestContact = 5;

class ContactCount {
  public:
    explicit ContactCount(Tally& tally) : tally_(tally) {}

    void frame(const JudgedFrame& frame);
    // The contacts that are still going are over.
    void finish();

  private:
    struct Contact {
        std::size_t frames = 0;
        std::optional<std::size_t> seen;     // on which of its frames, from 1
        std::optional<std::size_t> reported; // likewise
        std::optional<int> slot;             // the last one it was reported under
        bool reportedLast = false;           // in its last frame
        std::size_t broken = 0;
        std::size_t switches = 0;
    };

    static void follow(Contact& contact, bool seen, std::optional<int> slot);
    void close(const Contact& contact);

    Tally& tally_;
    std::map<int, Contact> contacts_;
};

} // namespace evaluate
