#include "images/recording.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace camera {
namespace {

using nlohmann::json;

constexpr std::string_view format = "qvr-recording";
constexpr int version = 1;
constexpr int longestSide = 16384;
constexpr std::size_t longestLine = std::size_t{64} * 1024;
constexpr std::size_t longestDescription = std::size_t{1024} * 1024;
constexpr std::uint64_t mostPictures = 100'000'000; // eight digits

// In the order of the codes.
constexpr std::array<std::string_view, RS_DISTORTION_COUNT> distortionNames = {
    "none", "modified-brown-conrady", "inverse-brown-conrady", "ftheta"};

[[noreturn]] void fail(const std::filesystem::path& file, const std::string& problem) {
    throw std::runtime_error("recording " + file.string() + ": " + problem);
}

// The object's value of that name; what is wrong with it is told by its name.
class Reader {
  public:
    Reader(const std::filesystem::path& file, const json& object, std::string where = "")
        : file_(file), object_(object), where_(std::move(where)) {
        if (!object_.is_object()) {
            reject("", "an object");
        }
    }

    const json& at(const std::string& key) const {
        const auto found = object_.find(key);
        if (found == object_.end()) {
            reject(key, "there");
        }
        return *found;
    }
    Reader object(const std::string& key) const { return {file_, at(key), where_ + key + "."}; }
    std::uint64_t whole(const std::string& key, std::uint64_t least, std::uint64_t most) const {
        const json& value = at(key);
        if (!value.is_number_unsigned() || value.get<std::uint64_t>() < least ||
            value.get<std::uint64_t>() > most) {
            reject(key,
                   "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
        }
        return value.get<std::uint64_t>();
    }
    float real(const std::string& key, float least, float most) const {
        return real(key, at(key), least, most);
    }
    template <std::size_t count>
    void reals(const std::string& key, float (&numbers)[count]) const {
        const json& values = at(key);
        if (!values.is_array() || values.size() != count) {
            reject(key, "a list of " + std::to_string(count) + " numbers");
        }
        for (std::size_t i = 0; i < count; ++i) {
            numbers[i] = real(key, values[i], -1e6f, 1e6f);
        }
    }
    [[noreturn]] void reject(const std::string& key, const std::string& expected) const {
        fail(file_, "\"" + where_ + key + "\" is not " + expected);
    }

  private:
    float real(const std::string& key, const json& value, float least, float most) const {
        const double number = value.is_number() ? value.get<double>() : std::nan("");
        if (!(number >= least && number <= most)) {
            reject(key, "a number from " + std::to_string(least) + " to " + std::to_string(most));
        }
        return static_cast<float>(number);
    }

    const std::filesystem::path& file_;
    const json& object_;
    std::string where_;
};

rs_intrinsics lensFrom(const Reader& reader) {
    rs_intrinsics lens{};
    lens.width = static_cast<int>(reader.whole("width", 1, longestSide));
    lens.height = static_cast<int>(reader.whole("height", 1, longestSide));
    lens.fx = reader.real("fx", 1e-3f, 1e6f);
    lens.fy = reader.real("fy", 1e-3f, 1e6f);
    lens.ppx = reader.real("ppx", -1e6f, 1e6f);
    lens.ppy = reader.real("ppy", -1e6f, 1e6f);
    const json& model = reader.at("distortion");
    for (std::size_t code = 0; code < distortionNames.size(); ++code) {
        if (model == distortionNames[code]) {
            lens.model = static_cast<rs_distortion>(code);
            reader.reals("coefficients", lens.coeffs);
            return lens;
        }
    }
    reader.reject("distortion", "the name of a lens model");
}

Recording descriptionFrom(const std::filesystem::path& file, const std::string& text) {
    const json document = json::parse(text, nullptr, false);
    if (document.is_discarded()) {
        fail(file, "no valid JSON");
    }
    const Reader reader(file, document);
    if (reader.at("format") != format) {
        reader.reject("format", "\"" + std::string(format) + "\"");
    }
    if (reader.at("version") != version) {
        fail(file,
             "is of another version than " + std::to_string(version) + ", the one known here");
    }
    Recording recording;
    recording.framerate = static_cast<int>(reader.whole("fps", 1, 1000));
    recording.depthScale = reader.real("depthScale", 1e-9f, 1.0f);
    recording.depth = lensFrom(reader.object("depth"));
    recording.color = lensFrom(reader.object("color"));
    const Reader pose = reader.object("depthToColor");
    pose.reals("rotation", recording.depthToColor.rotation);
    pose.reals("translation", recording.depthToColor.translation);
    return recording;
}

std::filesystem::path picture(const std::filesystem::path& folder, const char* kind,
                              std::uint64_t number) {
    std::array<char, 40> name;
    std::snprintf(name.data(), name.size(), "%s_%08llu.png", kind,
                  static_cast<unsigned long long>(number));
    return folder / name.data();
}

void addFrames(const std::filesystem::path& folder, Recording& recording) {
    const std::filesystem::path file = folder / "frames.jsonl";
    std::ifstream stream(file, std::ios::binary);
    std::vector<char> line(longestLine);
    for (int number = 1; stream.getline(line.data(), longestLine) && !stream.eof(); ++number) {
        const std::string place = "line " + std::to_string(number) + ": ";
        const json document = json::parse(line.data(), nullptr, false);
        if (!document.is_object()) {
            fail(file, place + "no JSON object");
        }
        const Reader reader(file, document, place);
        const std::uint64_t pictures = reader.whole("picture", 0, mostPictures - 1);
        const json& time = reader.at("time");
        if (!time.is_number()) {
            reader.reject("time", "a number");
        }
        recording.frames.push_back(
            {picture(folder, "depth", pictures), picture(folder, "color", pictures),
             reader.whole("frame", 0, std::numeric_limits<std::uint64_t>::max()),
             time.get<double>()});
    }
    if (stream.is_open() && !stream.eof()) {
        fail(file, "a line is too long");
    }
    if (recording.frames.empty()) {
        fail(file, "no frame was recorded");
    }
}

} // namespace

std::optional<Recording> readRecording(const std::filesystem::path& folder) {
    const std::filesystem::path file = folder / "recording.json";
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        return std::nullopt;
    }
    std::string text(longestDescription, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    Recording recording = descriptionFrom(file, text);
    addFrames(folder, recording);
    return recording;
}

} // namespace camera
