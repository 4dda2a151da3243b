#include "evaluate/Settings.h"

#include "evaluate/EvaluationError.h"

#include <cmath>
#include <fstream>

namespace evaluate {

namespace {

using nlohmann::json;

[[noreturn]] void reject(const std::string& path, const std::string& why) {
    throw EvaluationError(exitBadSettings, "the settings " + path + " cannot be used: " + why);
}

json object(const json& document, const char* key) {
    const auto found = document.find(key);
    return found != document.end() && found->is_object() ? *found : json::object();
}

} // namespace

Settings::Settings(const std::filesystem::path& file) : path_(file.string()) {
    std::ifstream in(file);
    if (!in) {
        reject(path_, "the file cannot be read");
    }
    try {
        document_ = json::parse(in);
    } catch (const json::exception& error) {
        reject(path_, error.what());
    }
    if (!document_.is_object()) {
        reject(path_, "it is no JSON object");
    }
    for (const char* key : {"depthResX", "depthResY", "nearClipMeters", "farClipMeters"}) {
        if (!document_.contains(key) || !document_[key].is_number()) {
            reject(path_, std::string("the number \"") + key + "\" is missing");
        }
    }
    const double nearest = document_["nearClipMeters"];
    const double farthest = document_["farClipMeters"];
    if (!(nearest >= 0.0 && nearest < farthest)) {
        reject(path_, "\"nearClipMeters\" is not below \"farClipMeters\"");
    }
}

Volume Settings::volume(double unitsPerMeter) const {
    return {document_["depthResX"], document_["depthResY"],
            std::trunc(document_["nearClipMeters"].get<double>() * unitsPerMeter),
            std::trunc(document_["farClipMeters"].get<double>() * unitsPerMeter)};
}

std::string Settings::forScene(int framesPerSecond, const Grid* grid) const {
    json result = document_;
    result["colorResX"] = 64;
    result["colorResY"] = 48;
    json streaming = object(result, "streaming");
    streaming["touch"] = true;
    streaming["fps"] = framesPerSecond;
    streaming["streamAlignment"] = 0;
    result["streaming"] = streaming;
    if (grid != nullptr) {
        json vertices = json::array();
        for (const Point3& vertex : grid->vertices) {
            for (const double value : vertex) {
                vertices.push_back(value);
            }
        }
        result["calibration"] = {{"sizeX", grid->sizeX},
                                 {"sizeY", grid->sizeY},
                                 {"sizeZ", grid->sizeZ},
                                 {"verts", vertices}};
    }
    return result.dump();
}

std::string Settings::forPictures() const {
    json result = document_;
    result["depthResX"] = 0;
    result["depthResY"] = 0;
    result["colorResX"] = 0;
    result["colorResY"] = 0;
    json streaming = object(result, "streaming");
    streaming["touch"] = true;
    streaming["streamAlignment"] = 0;
    result["streaming"] = streaming;
    return result.dump();
}

} // namespace evaluate
