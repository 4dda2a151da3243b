// Settings that ask for another mode than the user's.
#pragma once

#include "cameraTool/Mode.h"
#include "common/PrivateVolume.h"

#include <optional>

namespace cameraTool {

// While one exists, the pipeline finds the settings documents that it would have found, with the
// sizes and the rate of `mode` where that is not open. Throws ServerError for a document that
// cannot be used.
class ModeSettings {
  public:
    explicit ModeSettings(const Mode& mode);

  private:
    std::optional<programs::PrivateVolume> volume_;
};

} // namespace cameraTool
