#include "simulated/faults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace camera::simulated {
namespace {

constexpr std::array<std::pair<std::string_view, FaultKind>, 4> kinds = {{
    {"vanish", FaultKind::Vanish},
    {"stall", FaultKind::Stall},
    {"shrink", FaultKind::Shrink},
    {"fail", FaultKind::Fail},
}};

constexpr double usualLength = 2.0; // seconds
constexpr double longestLength = 86400.0;

std::optional<std::pair<FaultKind, std::uint64_t>> faultFrom(std::string_view text) {
    const std::size_t at = text.find('@');
    if (at == std::string_view::npos)
        return std::nullopt;
    const auto kind = std::find_if(kinds.begin(), kinds.end(), [&](const auto& entry) {
        return entry.first == text.substr(0, at);
    });
    std::uint64_t frame = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data() + at + 1, end, frame);
    if (kind == kinds.end() || result.ec != std::errc() || result.ptr != end)
        return std::nullopt;
    return std::pair(kind->second, frame);
}

StreamRequest halfOf(const rs_intrinsics& image, int framerate) {
    return {image.width / 2, image.height / 2, framerate};
}

class FaultySource final : public FrameSource {
  public:
    FaultySource(std::unique_ptr<FrameSource> whole, std::shared_ptr<FaultCourse> course)
        : whole_(std::move(whole)), course_(std::move(course)),
          small_(course_->lasts(FaultKind::Shrink)) {}

    std::string name() const override { return whole_->name(); }
    std::string serial() const override { return whole_->serial(); }
    std::string firmware() const override { return whole_->firmware(); }
    float depthScale() const override { return whole_->depthScale(); }
    rs_extrinsics depthToColor() const override { return whole_->depthToColor(); }
    bool paced() const override { return whole_->paced(); }
    rs_scene_truth truth(std::uint64_t number) const override { return whole_->truth(number); }

    std::vector<rs_mode_range> modes(rs_stream stream) const override {
        return whole_->modes(stream);
    }

    CameraGeometry configure(const StreamRequest& depth, const StreamRequest& color) override {
        const CameraGeometry asked = whole_->configure(depth, color);
        if (!small_)
            return asked;
        return whole_->configure(halfOf(asked.depth, asked.framerate),
                                 halfOf(asked.color, asked.framerate));
    }

    void render(std::uint64_t number, std::span<std::uint16_t> depth,
                std::span<std::uint8_t> color) override {
        if (gone_ || (small_ && !course_->lasts(FaultKind::Shrink)))
            leave();
        const auto fault = small_ ? std::nullopt : course_->nextFrame();
        if (!fault)
            whole_->render(number, depth, color);
        else if (*fault == FaultKind::Stall)
            showNothing(depth, color);
        else if (*fault == FaultKind::Fail)
            throw std::runtime_error("the frame could not be read");
        else
            leave();
    }

  private:
    // A device that went does not come back; another one is found in its place.
    [[noreturn]] void leave() {
        gone_ = true;
        throw std::runtime_error("the camera has been disconnected");
    }

    // Empty pictures are no frames to those who wait. Without a pace they would wait busily.
    void showNothing(std::span<std::uint16_t> depth, std::span<std::uint8_t> color) {
        std::fill(depth.begin(), depth.end(), std::uint16_t{0});
        std::fill(color.begin(), color.end(), std::uint8_t{0});
        if (!paced())
            course_->clock().sleepUntil(course_->clock().now() + std::chrono::milliseconds(10));
    }

    std::unique_ptr<FrameSource> whole_;
    std::shared_ptr<FaultCourse> course_;
    bool small_;
    bool gone_ = false;
};

} // namespace

FaultCourse::FaultCourse(const SourceOptions& options, Clock& clock)
    : clock_(clock),
      lasting_(std::chrono::duration_cast<Clock::Time::duration>(std::chrono::duration<double>(
          options.number("lasting", usualLength, 0.0, longestLength)))) {
    if (!options.has("fault")) {
        if (options.has("lasting"))
            throw std::runtime_error("simulated: lasting belongs to fault");
        return;
    }
    const std::string text = options.text("fault", "");
    std::string_view rest = text;
    while (true) {
        const std::size_t plus = rest.find('+');
        const auto fault = faultFrom(rest.substr(0, plus));
        if (!fault || (!faults_.empty() && fault->second <= faults_.back().frame))
            throw std::runtime_error("simulated: fault=" + text +
                                     " is none; accepted: vanish@FRAME, stall@FRAME, "
                                     "shrink@FRAME, fail@FRAME, several joined by + with "
                                     "growing frames");
        faults_.push_back({fault->first, fault->second});
        if (plus == std::string_view::npos)
            return;
        rest.remove_prefix(plus + 1);
    }
}

std::optional<FaultKind> FaultCourse::nextFrame() {
    if (begun_ > 0 && clock_.now() < end_)
        return faults_[begun_ - 1].kind;
    if (begun_ < faults_.size() && frames_ >= faults_[begun_].frame) {
        end_ = clock_.now() + lasting_;
        return faults_[begun_++].kind;
    }
    ++frames_;
    return std::nullopt;
}

bool FaultCourse::lasts(FaultKind kind) const {
    return begun_ > 0 && faults_[begun_ - 1].kind == kind && clock_.now() < end_;
}

std::unique_ptr<FrameSource> underFaults(std::unique_ptr<FrameSource> whole,
                                         std::shared_ptr<FaultCourse> course) {
    if (course->isFree())
        return whole;
    if (course->lasts(FaultKind::Vanish))
        return nullptr;
    return std::make_unique<FaultySource>(std::move(whole), std::move(course));
}

} // namespace camera::simulated
