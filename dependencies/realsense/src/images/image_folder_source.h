// A camera that plays a recording, or any folder of depth images, over and over or once.
#pragma once

#include "frame_source.h"
#include "images/image_folder.h"
#include "images/recording.h"
#include "source_options.h"

#include <cstddef>
#include <optional>

namespace camera {

// images:DIR with the keys scale (metres in one depth unit, 0.000125), fps (30, or whatever rate a
// program asks for), hold (frames for which each picture stays, 1), fx, fy (476), ppx, ppy (the
// middle), loop (on or off) and pace (on or off). A recording has its own scale, rate, lenses and
// pose instead of these, save where a key is given. An image in which nothing is measured is
// skipped, as any camera's empty pictures are.
class ImageFolderSource : public FrameSource {
  public:
    explicit ImageFolderSource(const SourceOptions& options);

    std::string name() const override { return "Image folder"; }
    std::string serial() const override { return folderName_; }
    std::string firmware() const override { return "1.0.0.0"; }

    float depthScale() const override { return depthScale_; }
    // Pictures of no recording were taken from one place.
    rs_extrinsics depthToColor() const override;

    std::vector<rs_mode_range> modes(rs_stream stream) const override;
    CameraGeometry configure(const StreamRequest& depth, const StreamRequest& color) override;
    bool paced() const override { return paced_; }
    std::unique_ptr<FrameArrivals> start(EnabledStreams enabled, int framerate,
                                         Clock& clock) override;
    void render(std::uint64_t number, std::span<std::uint16_t> depth,
                std::span<std::uint8_t> color) override;
    rs_scene_truth truth(std::uint64_t number) const override;

  private:
    std::size_t indexOf(std::uint64_t number) const;
    ImageSize colorSizeFor(const StreamRequest& color) const;

    std::string folderName_;
    std::optional<Recording> recording_;
    ImageFolder folder_;
    float depthScale_;
    int framerate_; // 0: as the program asks
    int hold_;
    rs_intrinsics depthLens_;
    bool loops_;
    bool paced_;
    ImageSize colorSize_;
};

} // namespace camera
