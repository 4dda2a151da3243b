#include "demo/Findings.h"

#include "common/nearestPairs.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <set>
#include <utility>

namespace demo {

namespace {

// A touch further from every finger than a finger is wide belongs to none.
constexpr double farthestMatch = 40; // millimetres
constexpr double toleratedGhosts = 0.02;

struct Match {
    const ServerTouch* touch = nullptr;
    const Finger* finger = nullptr;
    double distance = 0; // millimetres on the display
};

double displayDistance(const ServerTouch& touch, const Finger& finger) {
    return std::hypot(static_cast<double>(touch.touch.position[0]) - finger.display[0],
                      static_cast<double>(touch.touch.position[1]) - finger.display[1]);
}

double pixelDistance(const ServerTouch& touch, const Finger& finger) {
    return std::hypot(touch.pixel[0] - finger.pixel[0], touch.pixel[1] - finger.pixel[1]);
}

// Touches joined with touching fingers.
std::vector<Match> matchesIn(const ServerFrame& frame) {
    const auto distance = [&](std::size_t touch, std::size_t finger) {
        return frame.truth[finger].touching
                   ? displayDistance(frame.touches[touch], frame.truth[finger])
                   : std::numeric_limits<double>::infinity();
    };
    std::vector<Match> matches;
    for (const programs::NearestPair& pair : programs::nearestPairs(
             frame.touches.size(), frame.truth.size(), farthestMatch, distance)) {
        matches.push_back({&frame.touches[pair.first], &frame.truth[pair.second], pair.distance});
    }
    return matches;
}

std::size_t ghostsIn(const ServerFrame& frame) {
    return static_cast<std::size_t>(
        std::count_if(frame.touches.begin(), frame.touches.end(), [&](const ServerTouch& touch) {
            return std::none_of(frame.truth.begin(), frame.truth.end(), [&](const Finger& finger) {
                return displayDistance(touch, finger) <= farthestMatch;
            });
        }));
}

void countTouches(const std::vector<HostFrame>& host, Findings& findings) {
    std::set<int> down;
    double first = 0;
    double last = 0;
    for (const HostFrame& frame : host) {
        std::set<int> now;
        for (const Touch& touch : frame.touches) {
            now.insert(touch.slot);
            findings.touchDowns += down.count(touch.slot) == 0 ? 1 : 0;
        }
        findings.mostAtOnce = std::max(findings.mostAtOnce, now.size());
        down = std::move(now);
        if (frame.result >= 0) {
            (findings.frames == 0 ? first : last) = frame.time;
            ++findings.frames;
        }
    }
    if (findings.frames > 1 && last > first) {
        findings.frameRate = static_cast<double>(findings.frames - 1) / (last - first);
    }
}

// Follows every finger through the frames that the host listened to.
class ContactCount {
  public:
    explicit ContactCount(Findings& findings) : findings_(findings) {}

    void frame(const ServerFrame& frame, const std::set<int>& reported) {
        std::map<int, Contact> going;
        for (const Finger& finger : frame.truth) {
            if (!finger.touching) {
                continue;
            }
            Contact contact;
            if (const auto known = contacts_.find(finger.id); known != contacts_.end()) {
                contact = known->second;
                contacts_.erase(known);
            }
            ++contact.frames;
            contact.reported = contact.reported || reported.count(finger.id) != 0;
            going[finger.id] = contact;
        }
        finish();
        contacts_ = std::move(going);
    }

    // The contacts that have not gone on are over.
    void finish() {
        for (const auto& [id, contact] : contacts_) {
            if (contact.frames >= shortestContact) {
                ++findings_.contacts;
                findings_.missed += contact.reported ? 0 : 1;
            }
        }
        contacts_.clear();
    }

  private:
    struct Contact {
        std::size_t frames = 0;
        bool reported = false;
    };

    Findings& findings_;
    std::map<int, Contact> contacts_;
};

} // namespace

Findings judge(const std::vector<HostFrame>& host, const std::vector<ServerFrame>& server) {
    Findings findings;
    countTouches(host, findings);
    const Alignment alignment = align(host, server);
    findings.strangers = alignment.strangers;
    findings.truthKnown = std::any_of(server.begin(), server.end(),
                                      [](const ServerFrame& frame) { return frame.truthKnown; });
    if (!findings.truthKnown) {
        return findings;
    }
    std::vector<double> pixels;
    std::vector<double> millimeters;
    ContactCount contacts(findings);
    auto pair = alignment.pairs.begin();
    for (std::size_t i = alignment.firstHeard; i < alignment.endHeard; ++i) {
        std::set<int> reported;
        if (pair != alignment.pairs.end() && pair->server == i) {
            ++pair;
            for (const Match& match : matchesIn(server[i])) {
                pixels.push_back(pixelDistance(*match.touch, *match.finger));
                millimeters.push_back(match.distance);
                reported.insert(match.finger->id);
            }
            findings.ghosts += ghostsIn(server[i]);
        }
        contacts.frame(server[i], reported);
    }
    contacts.finish();
    findings.compared = millimeters.size();
    findings.pixels = programs::figuresOf(std::move(pixels));
    findings.millimeters = programs::figuresOf(std::move(millimeters));
    return findings;
}

std::vector<std::string> problemsOf(const Findings& findings, double tolerance) {
    std::vector<std::string> problems;
    if (findings.frames == 0) {
        return {"no frames arrived at the host"};
    }
    if (findings.strangers > 0) {
        problems.push_back(std::to_string(findings.strangers) +
                           " frames held touches that the server never sent");
    }
    if (findings.touchDowns == 0) {
        problems.emplace_back("no touches were found");
    }
    if (!findings.truthKnown) {
        return problems;
    }
    if (findings.missed > 0) {
        problems.push_back("touches are missing: " + std::to_string(findings.missed) + " of " +
                           std::to_string(findings.contacts) +
                           " times that a finger touched were never reported");
    }
    if (findings.compared > 0 && !(findings.millimeters.mean <= tolerance)) {
        char text[120];
        std::snprintf(text, sizeof text,
                      "touches are off by %.2f mm on average; at most %g mm are tolerated",
                      findings.millimeters.mean, tolerance);
        problems.emplace_back(text);
    }
    if (static_cast<double>(findings.ghosts) >
        toleratedGhosts * static_cast<double>(findings.compared)) {
        problems.push_back(std::to_string(findings.ghosts) +
                           " times a touch was reported where no finger is");
    }
    return problems;
}

} // namespace demo
