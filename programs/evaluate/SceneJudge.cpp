#include "evaluate/SceneJudge.h"

#include <algorithm>
#include <cmath>

namespace evaluate {

namespace {

std::size_t troubleIn(const JudgedFrame& frame) {
    const auto touching = std::count_if(frame.fingers.begin(), frame.fingers.end(),
                                        [](const TrueFinger& finger) { return finger.touching; });
    const auto reported =
        std::count_if(frame.matches.begin(), frame.matches.end(),
                      [](const TouchMatch& match) { return match.finger.touching; });
    return static_cast<std::size_t>(touching - reported) + frame.splits.size() +
           frame.strays.size();
}

} // namespace

std::size_t SceneJudge::frame(const FrameRecord& frame) {
    const JudgedFrame judged = matcher_.judge(frame);
    ++tally_.frames;
    tally_.seconds += 1.0 / rate_;
    contacts_.frame(judged);
    strays_.frame(judged);
    jitter_.frame(judged);
    lag_.frame(judged);
    measureErrors(judged);
    return troubleIn(judged);
}

void SceneJudge::measureErrors(const JudgedFrame& frame) {
    for (const TouchMatch& match : frame.matches) {
        if (!match.finger.touching) {
            continue;
        }
        const Point3 measured = pinhole_.toSpace(match.touch.measured);
        const Point3 truth = pinhole_.toSpace(match.finger.measured);
        tally_.errorBefore.push_back(std::hypot(measured[0] - truth[0], measured[1] - truth[1]));
        tally_.errorAfter.push_back(std::hypot(match.touch.display[0] - match.finger.display[0],
                                               match.touch.display[1] - match.finger.display[1]));
        tally_.errorOffPath.push_back(match.offPath);
    }
}

const Tally& SceneJudge::finish() {
    contacts_.finish();
    jitter_.finish();
    return tally_;
}

} // namespace evaluate
