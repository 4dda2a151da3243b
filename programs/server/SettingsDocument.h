// The calibration document as far as the server program itself reads it.
#pragma once

#include <string>

#include <json11.hpp>

namespace server {

struct SettingsDocument {
    std::string path;   // where it is, or where it would have been
    json11::Json value; // an object; null when there is no document

    // Finds and reads "touch.json" as the pipeline does. A missing document is none, and fine.
    // Throws ServerError (exitBadSettings) when it is there and is no JSON object: going on with
    // defaults would look like a camera that finds no fingers.
    static SettingsDocument read();
};

} // namespace server
