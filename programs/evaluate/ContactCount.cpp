#include "evaluate/ContactCount.h"

#include <algorithm>

namespace evaluate {

void ContactCount::follow(Contact& contact, bool seen, std::optional<int> slot) {
    ++contact.frames;
    if (seen && !contact.seen) {
        contact.seen = contact.frames;
    }
    if (slot) {
        contact.broken += contact.reported && !contact.reportedLast ? 1 : 0;
        if (!contact.reported) {
            contact.reported = contact.frames;
        }
        contact.switches += contact.slot && *contact.slot != *slot ? 1 : 0;
        contact.slot = slot;
    }
    contact.reportedLast = slot.has_value();
}

void ContactCount::frame(const JudgedFrame& frame) {
    for (const TrueFinger& finger : frame.fingers) {
        if (!finger.touching) {
            if (const auto over = contacts_.find(finger.id); over != contacts_.end()) {
                close(over->second);
                contacts_.erase(over);
            }
            continue;
        }
        std::optional<int> slot;
        for (const TouchMatch& match : frame.matches) {
            if (match.finger.id == finger.id) {
                slot = match.touch.slot;
            }
        }
        const bool seen = std::find(frame.withBlob.begin(), frame.withBlob.end(), finger.id) !=
                          frame.withBlob.end();
        follow(contacts_[finger.id], seen, slot);
    }
}

void ContactCount::finish() {
    for (const auto& [id, contact] : contacts_) {
        close(contact);
    }
    contacts_.clear();
}

void ContactCount::close(const Contact& contact) {
    if (contact.frames < shortestContact) {
        return;
    }
    ++tally_.touchDowns;
    tally_.broken += contact.broken;
    tally_.switches += contact.switches;
    if (!contact.reported) {
        return;
    }
    ++tally_.detected;
    tally_.reportedOn.push_back(static_cast<double>(*contact.reported));
    if (contact.seen && *contact.seen <= *contact.reported) {
        tally_.reportedOnSinceSeen.push_back(
            static_cast<double>(*contact.reported - *contact.seen + 1));
    }
}

} // namespace evaluate
