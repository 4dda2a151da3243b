#include "sdk/camera_mode.h"

#include "sdk/sdk_codes.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace camera::sdk {
namespace {

using Profile = rs2::video_stream_profile;

std::vector<Profile> profilesOf(const SdkDevice& device, rs_stream stream, rs_format format) {
    std::vector<Profile> profiles;
    const rs2::sensor* const sensor = device.sensorOf(streamCode(stream));
    if (!sensor) {
        return profiles;
    }
    for (const rs2::stream_profile& profile : sensor->get_stream_profiles()) {
        if (profile.stream_type() == streamCode(stream) && profile.format() == formatCode(format)) {
            // What is no video has no such extension and comes out empty.
            if (const auto video = profile.as<Profile>()) {
                profiles.push_back(video);
            }
        }
    }
    return profiles;
}

bool fits(const Profile& profile, const StreamRequest& request) {
    const auto open = [](int asked, int there) { return asked == 0 || asked == there; };
    return open(request.width, profile.width()) && open(request.height, profile.height()) &&
           open(request.framerate, profile.fps());
}

std::vector<Profile> fitting(const std::vector<Profile>& profiles, const StreamRequest& request) {
    std::vector<Profile> result;
    std::copy_if(profiles.begin(), profiles.end(), std::back_inserter(result),
                 [&](const Profile& profile) { return fits(profile, request); });
    return result;
}

// How far a profile is from the usual one.
auto strangeness(const Profile& profile) {
    return std::tuple(std::abs(profile.fps() - 30),
                      std::abs(profile.width() - 640) + std::abs(profile.height() - 480));
}

std::vector<rs_stream_mode> modesOf(const std::vector<Profile>& profiles) {
    std::set<std::tuple<int, int, int>> sorted;
    for (const Profile& profile : profiles) {
        sorted.insert({profile.width(), profile.height(), profile.fps()});
    }
    std::vector<rs_stream_mode> modes;
    for (const auto& [width, height, fps] : sorted) {
        modes.push_back({width, height, fps});
    }
    return modes;
}

std::string listOf(const std::vector<Profile>& profiles) {
    std::string list;
    for (const auto& [width, height, fps] : modesOf(profiles)) {
        list += (list.empty() ? "" : ", ") + std::to_string(width) + "x" + std::to_string(height) +
                " at " + std::to_string(fps);
    }
    return list.empty() ? "nothing" : list;
}

std::vector<Profile> usableProfilesOf(const SdkDevice& device, rs_stream stream) {
    return profilesOf(device, stream, stream == RS_STREAM_DEPTH ? RS_FORMAT_Z16 : RS_FORMAT_RGB8);
}

} // namespace

std::vector<rs_stream_mode> availableModes(const SdkDevice& device, rs_stream stream) {
    return modesOf(usableProfilesOf(device, stream));
}

CameraMode chooseMode(const SdkDevice& device, const StreamRequest& depth,
                      const StreamRequest& color) {
    const auto depthProfiles = usableProfilesOf(device, RS_STREAM_DEPTH);
    const auto colorProfiles = usableProfilesOf(device, RS_STREAM_COLOR);
    const auto depthChoice = fitting(depthProfiles, depth);
    const auto colorChoice = fitting(colorProfiles, color);
    const Profile* bestDepth = nullptr;
    const Profile* bestColor = nullptr;
    for (const Profile& one : depthChoice) {
        if (colorProfiles.empty() && (!bestDepth || strangeness(one) < strangeness(*bestDepth))) {
            bestDepth = &one;
        }
        for (const Profile& other : colorChoice) {
            const auto pair = [](const Profile& d, const Profile& c) {
                return std::tuple(strangeness(d), strangeness(c));
            };
            if (one.fps() == other.fps() &&
                (!bestDepth || pair(one, other) < pair(*bestDepth, *bestColor))) {
                bestDepth = &one;
                bestColor = &other;
            }
        }
    }
    if (!bestDepth) {
        throw std::runtime_error("the camera has no such mode; it has depth " +
                                 listOf(depthProfiles) + ", colour " + listOf(colorProfiles) +
                                 " frames a second, both at one rate");
    }
    return {*bestDepth, bestColor ? std::optional(*bestColor) : std::nullopt};
}

} // namespace camera::sdk
