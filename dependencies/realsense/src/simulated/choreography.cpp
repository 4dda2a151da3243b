#include "simulated/choreography.h"

#include "simulated/hash.h"
#include "simulated/scene_geometry.h"

#include <algorithm>
#include <cmath>

namespace camera::simulated {
namespace {

constexpr double turn = 2.0 * 3.14159265358979323846;

// How far a finger that does not touch keeps away from where it would rest.
constexpr double lifted = 32.0;

// A hand this far down is outside the picture.
constexpr double away = 260.0;

constexpr std::array<Vector, 2> handHomes{{{76.0, -8.0, 0.0}, {-76.0, -8.0, 0.0}}};

// Fingertips around the right hand's position; the left hand mirrors them. More than 24 mm apart
// in x, so that neighbours stay apart in the picture.
constexpr std::array<Vector, 5> slotOffsets{{{-13.0, -3.0, 0.0},
                                             {13.0, -7.0, 0.0},
                                             {39.0, 0.0, 0.0},
                                             {-39.0, 2.0, 0.0},
                                             {-54.0, 27.0, 0.0}}};

// From 0 to 1 and back within [start, end], each way taking `transition` seconds.
double pulse(double start, double end, double transition, double t) {
    return smoothStep(start, start + transition, t) - smoothStep(end - transition, end, t);
}

double swing(double period, double phase, double t) {
    return std::sin(turn * (t / period + phase));
}

// A number from 0 to 1 that is a finger's own.
double share(std::uint64_t seed, int finger, std::uint64_t purpose) {
    const std::uint64_t bits = hash(seed, purpose * 64 + static_cast<std::uint64_t>(finger));
    return static_cast<double>(bits >> 40) / 16777216.0;
}

struct Motion {
    std::array<Vector, 2> hands{}; // away from home
    std::vector<double> pressed;   // by finger: 0 is lifted, 1 rests in the touch volume
};

// Comes in, presses, taps finger by finger, draws circles, changes sides, rests, leaves.
Motion demo(int fingerCount, double seconds) {
    constexpr double length = 16.0;
    const double t = std::fmod(seconds, length);
    Motion motion;
    for (std::size_t hand = 0; hand < 2; ++hand) {
        const double side = hand == 0 ? 1.0 : -1.0;
        const double late = hand == 0 ? 0.0 : 0.25;
        Vector& offset = motion.hands[hand];
        const double there = smoothStep(late, 0.6 + late, t) - smoothStep(15.2, 15.9, t);
        offset.y = away * (1.0 - there);

        const double circling = pulse(4.6, 8.4, 0.6, t);
        offset.x += circling * 20.0 * std::sin(turn * (t - 4.6) / 1.9);
        offset.y += circling * 16.0 * (1.0 - std::cos(turn * (t - 4.6) / 1.9)) * 0.5;

        // One hand passes above the other and they come back the same way.
        const double passing = pulse(8.6, 13.4, 0.7, t);
        const double across = pulse(9.2, 12.8, 1.6, t);
        offset.x -= side * across * 2.0 * handHomes[0].x;
        offset.y += side * passing * -27.0;
    }
    for (int finger = 0; finger < fingerCount; ++finger) {
        const double own = 0.09 * finger;
        double pressed = pulse(0.55 + own, 15.2, 0.16, t);
        for (int tap = 0; tap < 3; ++tap) {
            const double start = 1.9 + 0.8 * tap + 0.07 * finger;
            pressed -= pulse(start, start + 0.42, 0.16, t);
        }
        motion.pressed.push_back(std::max(0.0, pressed));
    }
    return motion;
}

Motion tapping(int fingerCount, std::uint64_t seed, double seconds) {
    Motion motion;
    for (int finger = 0; finger < fingerCount; ++finger) {
        const double period = 0.9 + 0.3 * share(seed, finger, 1);
        const double t = std::fmod(seconds + period * share(seed, finger, 2), period);
        motion.pressed.push_back(pulse(0.0, 0.6, 0.15, t));
    }
    return motion;
}

// To and fro along a straight line at one speed. A single hand has the width of the picture.
Motion stroking(int fingerCount, double speed, double seconds) {
    const double stroke = fingerCount > 1 ? 60.0 : 220.0;
    const double way = std::fmod(1000.0 * speed * seconds, 2.0 * stroke);
    Motion motion;
    for (Vector& hand : motion.hands)
        hand.x = std::abs(way - stroke) - 0.5 * stroke - (fingerCount > 1 ? 0.0 : 70.0);
    motion.pressed.assign(static_cast<std::size_t>(fingerCount), 1.0);
    return motion;
}

Motion dragging(int fingerCount, double speed, double seconds) {
    if (speed > 0.0)
        return stroking(fingerCount, speed, seconds);
    Motion motion;
    motion.hands[0] = {10.0 * swing(3.1, 0.0, seconds), 20.0 * swing(2.3, 0.1, seconds), 0.0};
    motion.hands[1] = {10.0 * swing(2.7, 0.3, seconds), 20.0 * swing(3.4, 0.0, seconds), 0.0};
    motion.pressed.assign(static_cast<std::size_t>(fingerCount), 1.0);
    return motion;
}

// Both hands on the same height swap sides, through one another.
Motion crossing(int fingerCount, double seconds) {
    Motion motion;
    const double across = handHomes[0].x * (1.0 - std::cos(turn * seconds / 6.0));
    motion.hands[0].x = -across;
    motion.hands[1].x = across;
    motion.pressed.assign(static_cast<std::size_t>(fingerCount), 1.0);
    return motion;
}

// Digits of `index` mirrored at the point: places in [0, 1) that keep filling the largest gap.
double radicalInverse(int index, int base) {
    double result = 0.0;
    double weight = 1.0;
    for (; index > 0; index /= base) {
        weight /= base;
        result += weight * (index % base);
    }
    return result;
}

// Has the right hand's first finger point at a pixel of the usual picture, `depth` away; with the
// others it would not fit there.
Vector handPointingAt(double column, double row, double depth) {
    const rs_intrinsics camera = depthIntrinsics(640, 480);
    const double scale = depth / static_cast<double>(camera.fx);
    const Vector tip{(column - static_cast<double>(camera.ppx)) * scale,
                     (row - static_cast<double>(camera.ppy)) * scale, depth - restDepth};
    return tip - slotOffsets[0] - handHomes[0];
}

// The place of that number among many that fill the picture evenly; each seed has its own.
Vector placeInPicture(int number, std::uint64_t seed, double depth) {
    const auto part = [&](int base, std::uint64_t purpose) {
        const double value = radicalInverse(number + 1, base) + share(seed, 0, purpose);
        return value - std::floor(value);
    };
    return handPointingAt(40.0 + 560.0 * part(2, 5), 40.0 + 400.0 * part(3, 6), depth);
}

// One finger taps at one place after the other, all over the picture.
Motion everywhere(std::uint64_t seed, double seconds) {
    constexpr double period = 0.8;
    const int number = static_cast<int>(seconds / period);
    const double t = seconds - period * number;
    const Vector from = placeInPicture(number, seed, restDepth);
    const Vector to = placeInPicture(number + 1, seed, restDepth);
    Motion motion;
    motion.hands[0] = mix(from, to, smoothStep(0.55, period, t));
    motion.pressed.push_back(pulse(0.0, 0.5, 0.15, t));
    return motion;
}

// One finger, sixty times a second somewhere else in the touch volume.
Motion calibration(std::uint64_t seed, double seconds) {
    const int number = static_cast<int>(60.0 * seconds + 0.5);
    const double depth = nearClip + 4.0 + (farClip - nearClip - 5.0) * radicalInverse(number, 5);
    Motion motion;
    motion.hands[0] = placeInPicture(number, seed, depth);
    motion.pressed.push_back(1.0);
    return motion;
}

Motion still(int fingerCount) {
    Motion motion;
    motion.pressed.assign(static_cast<std::size_t>(fingerCount), 1.0);
    return motion;
}

Motion motionOf(const Story& story, int fingerCount, double seconds) {
    switch (story.scene) {
    case Scene::Demo:
        return demo(fingerCount, seconds);
    case Scene::Tapping:
        return tapping(fingerCount, story.seed, seconds);
    case Scene::Dragging:
        return dragging(fingerCount, story.speed, seconds);
    case Scene::Crossing:
        return crossing(fingerCount, seconds);
    case Scene::Everywhere:
        return everywhere(story.seed, seconds);
    case Scene::Calibration:
        return calibration(story.seed, seconds);
    case Scene::Resting:
    case Scene::Ten:
    case Scene::Flat:
    case Scene::Empty:
        break;
    }
    return still(fingerCount);
}

int fingersOf(const Story& story) {
    switch (story.scene) {
    case Scene::Ten:
        return 10;
    case Scene::Empty:
        return 0;
    case Scene::Everywhere:
    case Scene::Calibration:
        return 1;
    default:
        return story.fingers;
    }
}

} // namespace

std::optional<Scene> sceneNamed(std::string_view name) {
    const auto found = std::find(sceneNames.begin(), sceneNames.end(), name);
    if (found == sceneNames.end())
        return std::nullopt;
    return static_cast<Scene>(found - sceneNames.begin());
}

ScenePose poseAt(const Story& story, double seconds) {
    const std::uint64_t seed = story.seed;
    const int fingerCount = fingersOf(story);
    const Motion motion = motionOf(story, fingerCount, seconds);

    ScenePose pose;
    for (std::size_t hand = 0; hand < 2; ++hand) {
        pose.hands[hand].present = fingerCount > static_cast<int>(hand);
        pose.hands[hand].position = handHomes[hand] + motion.hands[hand];
        pose.hands[hand].lyingFlat = story.scene == Scene::Flat;
    }
    for (int id = 0; id < fingerCount; ++id) {
        FingerPose finger;
        finger.hand = id % 2;
        finger.slot = id / 2;
        Vector offset = slotOffsets[static_cast<std::size_t>(finger.slot)];
        if (finger.hand == 1)
            offset.x = -offset.x;
        // No one holds a finger quite still.
        const double phase = share(seed, id, 3);
        const Vector tremor{0.15 * swing(0.37, phase, seconds), 0.15 * swing(0.29, phase, seconds),
                            0.2 * swing(0.41, phase, seconds)};
        const double depth = restDepth + 2.0 * (share(seed, id, 4) - 0.5) +
                             lifted * (1.0 - motion.pressed[static_cast<std::size_t>(id)]);
        const Vector& hand = pose.hands[static_cast<std::size_t>(finger.hand)].position;
        finger.tip = hand + offset + tremor + Vector{0.0, 0.0, depth};
        finger.tip.z += story.lean * finger.tip.x;
        pose.fingers.push_back(finger);
    }
    return pose;
}

} // namespace camera::simulated
