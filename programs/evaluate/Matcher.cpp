#include "evaluate/Matcher.h"

#include "common/nearestPairs.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace evaluate {

namespace {

constexpr double nowhere = std::numeric_limits<double>::infinity();

double flatDistance(const Point3& a, const Point3& b) {
    return std::hypot(a[0] - b[0], a[1] - b[1]);
}

double distanceToSegment(const Point3& point, const Point3& from, const Point3& to) {
    const double x = to[0] - from[0];
    const double y = to[1] - from[1];
    const double square = x * x + y * y;
    const double along =
        square > 0.0 ? ((point[0] - from[0]) * x + (point[1] - from[1]) * y) / square : 0.0;
    const double share = std::clamp(along, 0.0, 1.0);
    return std::hypot(from[0] + share * x - point[0], from[1] + share * y - point[1]);
}

std::vector<int> fingersWithBlob(const FrameRecord& frame) {
    const auto distance = [&](std::size_t blob, std::size_t finger) {
        return frame.fingers[finger].touching
                   ? flatDistance(frame.blobs[blob].measured, frame.fingers[finger].measured)
                   : nowhere;
    };
    std::vector<int> ids;
    for (const programs::NearestPair& pair : programs::nearestPairs(
             frame.blobs.size(), frame.fingers.size(), farthestBlobMatch, distance)) {
        ids.push_back(frame.fingers[pair.second].id);
    }
    return ids;
}

} // namespace

double Matcher::distanceTo(const Trail& trail, const Point3& point) {
    double best = nowhere;
    for (std::size_t i = 0; i < trail.places.size(); ++i) {
        best = std::min(best, flatDistance(point, trail.places[i].second));
        if (i > 0 && trail.places[i].first == trail.places[i - 1].first + 1) {
            best = std::min(
                best, distanceToSegment(point, trail.places[i - 1].second, trail.places[i].second));
        }
    }
    return best;
}

void Matcher::follow(const FrameRecord& frame) {
    for (const TrueFinger& finger : frame.fingers) {
        Trail& trail = trails_[finger.id];
        trail.finger = finger;
        if (finger.touching) {
            trail.places.emplace_back(number_, finger.display);
        }
    }
    for (auto& [id, trail] : trails_) {
        while (!trail.places.empty() && trail.places.front().first + memory < number_) {
            trail.places.pop_front();
        }
    }
}

JudgedFrame Matcher::judge(const FrameRecord& frame) {
    follow(frame);
    ++number_;
    std::vector<const Trail*> trails;
    for (const auto& [id, trail] : trails_) {
        trails.push_back(&trail);
    }
    const auto distance = [&](std::size_t touch, std::size_t trail) {
        return distanceTo(*trails[trail], frame.touches[touch].display);
    };
    JudgedFrame judged;
    judged.fingers = frame.fingers;
    judged.withBlob = fingersWithBlob(frame);
    std::vector<bool> matched(frame.touches.size(), false);
    for (const programs::NearestPair& pair :
         programs::nearestPairs(frame.touches.size(), trails.size(), farthestMatch, distance)) {
        matched[pair.first] = true;
        judged.matches.push_back(
            {frame.touches[pair.first], trails[pair.second]->finger, pair.distance});
    }
    for (std::size_t touch = 0; touch < frame.touches.size(); ++touch) {
        if (matched[touch]) {
            continue;
        }
        bool ofFinger = false;
        for (std::size_t trail = 0; trail < trails.size(); ++trail) {
            ofFinger = ofFinger || distance(touch, trail) <= farthestMatch;
        }
        (ofFinger ? judged.splits : judged.strays).push_back(frame.touches[touch]);
    }
    return judged;
}

} // namespace evaluate
