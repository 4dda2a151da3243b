// The real pipeline, from the camera library to the touches that a host gets, in this process.
#pragma once

#include "common/PrivateVolume.h"
#include "evaluate/FrameRecord.h"
#include "evaluate/Pinhole.h"
#include "host/Snapshot.h"

#include <string>

namespace evaluate {

// One at a time.
class Pipeline {
  public:
    // `camera` is a camera URI, `touchJson` the settings document. Throws EvaluationError:
    // exitBadOption when the camera source says no, exitBadSettings when the camera does not start
    // with these settings.
    Pipeline(const std::string& camera, const std::string& touchJson);
    ~Pipeline();
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    // Whether touches are reported in display coordinates (they are) or as they are measured.
    void setCalibrated(bool on);

    // The next frame. Throws EvaluationError (exitFailed) when there is none.
    FrameRecord next();

    double unitsPerMeter() const;
    Pinhole pinhole() const;

    // The frame that came last, for a picture.
    host::Snapshot snapshot(const FrameRecord& frame) const;

  private:
    // Messages of the pipeline stay out of the figures; the last ones are told when it fails.
    class Messages {
      public:
        Messages();
        ~Messages();
        Messages(const Messages&) = delete;
        Messages& operator=(const Messages&) = delete;
        static std::string text();
    };

    void start(const std::string& touchJson);

    Messages messages_;
    programs::PrivateVolume volume_;
    const unsigned short* depthFrame_ = nullptr;
};

} // namespace evaluate
