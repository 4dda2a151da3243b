#include "source_uri.h"

#include "images/sources.h"
#include "sdk/sources.h"
#include "simulated/simulated_source.h"
#include "stream_device.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace camera {
namespace {

bool isKey(std::string_view text) {
    const auto isLetter = [](char c) { return c >= 'a' && c <= 'z'; };
    return !text.empty() && std::all_of(text.begin(), text.end(), isLetter);
}

// Where the key of "key=value" ends, or npos when `item` is not of that form.
std::size_t keyEnd(std::string_view item) {
    const std::size_t end = item.find('=');
    return end != std::string_view::npos && isKey(item.substr(0, end)) ? end
                                                                       : std::string_view::npos;
}

std::vector<std::string_view> splitAtCommas(std::string_view text) {
    std::vector<std::string_view> items;
    while (true) {
        const std::size_t comma = text.find(',');
        items.push_back(text.substr(0, comma));
        if (comma == std::string_view::npos) {
            return items;
        }
        text.remove_prefix(comma + 1);
    }
}

} // namespace

SourceOptions parseSourceUri(std::string_view uri) {
    const std::size_t colon = uri.find(':');
    const std::string scheme(uri.substr(0, colon));
    if (colon == std::string_view::npos) {
        return {scheme, "", {}};
    }
    std::string positional;
    SourceOptions::Values values;
    bool first = true;
    for (std::string_view item : splitAtCommas(uri.substr(colon + 1))) {
        const std::size_t end = keyEnd(item);
        if (end != std::string_view::npos) {
            values.emplace_back(item.substr(0, end), item.substr(end + 1));
        } else if (values.empty()) {
            positional += (first ? "" : ",") + std::string(item);
        } else {
            throw std::runtime_error("camera source \"" + scheme + "\": \"" + std::string(item) +
                                     "\" is not of the form key=value");
        }
        first = false;
    }
    return {scheme, positional, std::move(values)};
}

SourceOpener sourceOpener(const std::string& uri) {
    const SourceOptions options = parseSourceUri(uri);
    if (options.scheme() == "simulated") {
        return simulatedSourceOpener(options);
    }
    if (options.scheme() == "images") {
        return [options] { return openImages(options); };
    }
    if (options.scheme() == "realsense") {
        return [options] { return openRealsense(options); };
    }
    if (options.scheme() == "bag") {
        return [options] { return openBag(options); };
    }
    throw std::runtime_error(
        "unknown camera source \"" + options.scheme() +
        "\"; accepted: simulated, images:DIR, realsense, realsense:SERIAL, bag:FILE");
}

std::unique_ptr<FrameSource> makeSource(const std::string& uri) {
    return sourceOpener(uri)();
}

std::vector<std::unique_ptr<Device>> defaultDevices() {
    std::vector<std::unique_ptr<FrameSource>> sources;
    const char* const uri = std::getenv("QVR_CAMERA");
    if (uri && *uri) {
        sources.push_back(makeSource(uri));
    } else {
        sources = connectedSources();
    }
    std::vector<std::unique_ptr<Device>> devices;
    for (auto& source : sources) {
        if (source) {
            devices.push_back(std::make_unique<StreamDevice>(std::move(source)));
        }
    }
    return devices;
}

} // namespace camera
