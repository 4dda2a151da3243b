#include "cameraTool/ModeSettings.h"

#include "foundation/utils.h"
#include "server/SettingsDocument.h"

#include <map>
#include <string>
#include <utility>

#include <json11.hpp>

namespace cameraTool {

using json11::Json;
using QVR::utils;

namespace {

void replace(Json::object& object, const char* key, int value) {
    if (value != 0) {
        object[key] = value;
    }
}

std::string documentFor(const Mode& mode, const Json& before) {
    Json::object document = before.object_items();
    replace(document, "depthResX", mode.depthWidth);
    replace(document, "depthResY", mode.depthHeight);
    replace(document, "colorResX", mode.colorWidth);
    replace(document, "colorResY", mode.colorHeight);
    Json::object streaming = document["streaming"].object_items();
    replace(streaming, "fps", mode.fps);
    document["streaming"] = std::move(streaming);
    return Json(document).dump();
}

} // namespace

ModeSettings::ModeSettings(const Mode& mode) {
    if (mode.isOpen()) {
        return;
    }
    std::map<std::string, std::string> documents;
    for (const std::string& place : {utils::projectionMapFilePath, utils::clientSettingsFilePath}) {
        documents[place] = utils::readFileContent(utils::findFilePath(place));
    }
    documents[utils::distortionMapFilePath] =
        documentFor(mode, server::SettingsDocument::read().value);
    volume_.emplace(documents);
}

} // namespace cameraTool
