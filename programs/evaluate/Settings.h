// The settings document under test.
#pragma once

#include "evaluate/CalibrationFit.h"

#include <filesystem>
#include <string>

#include <nlohmann/json.hpp>

namespace evaluate {

class Settings {
  public:
    // Throws EvaluationError (exitBadSettings) when the file is not there or is no document of
    // settings with the sizes and clip distances that a grid needs.
    explicit Settings(const std::filesystem::path& file);

    const std::string& path() const { return path_; }

    // The volume of the document's grid for a camera with that many depth units in a metre.
    Volume volume(double unitsPerMeter) const;

    // The document for a camera of our own choice: at `framesPerSecond`, with colour pictures as
    // small as can be, for nobody looks at them. With a grid, that one is in it.
    std::string forScene(int framesPerSecond, const Grid* grid) const;

    // The document as it stands, in whatever size the pictures have.
    std::string forPictures() const;

  private:
    std::string path_;
    nlohmann::json document_;
};

} // namespace evaluate
