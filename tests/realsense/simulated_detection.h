// Plays a simulated scene through the real detection with the settings that ship with it, and
// keeps account of what came out against what is true.
#pragma once

#include "calibration/calibrationManager.h"
#include "detection/blobManager.h"
#include "detection/touchManager.h"
#include "realsense/simulated_scene.h"
#include "simulated/scene_geometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <json11.hpp>

namespace simulated_tests {

inline std::string fileContent(const std::string& path) {
    std::ifstream in(path);
    if (!in)
        throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline std::string shippedFile(const std::string& name) {
    return fileContent(std::string(QVR_EXAMPLES_DIR) + "/simulated/QVR_calibration/" + name);
}

// The detection of the camera pipeline, as its camera manager puts it together.
class Detection {
  public:
    Detection(const std::string& touchJson, int width, int height) {
        std::string error;
        json11::Json document = json11::Json::parse(touchJson, error);
        if (document.is_null())
            throw std::runtime_error(error);
        blobs.setConfig(8000.0f, static_cast<unsigned>(width), static_cast<unsigned>(height));
        blobs.loadJson(document);
        touches.outputCalibratedTouches = false;
        touches.loadSettings(document, width, height);
    }

    // Positions of the reported touches: pixel and depth units.
    std::vector<QVR::Vector3> detect(const std::vector<std::uint16_t>& depth) {
        blobs.processFrame(depth.data());
        blobs.extractBlobs(depth.data());
        blobs.updateTouches(&touches);
        const QVR::NetworkTouch* records = nullptr;
        touches.getTouches(&records);
        std::vector<QVR::Vector3> reported;
        for (int i = 0; i < 10; ++i)
            if (records[i].active == 1)
                reported.push_back({records[i].x, records[i].y, records[i].z});
        return reported;
    }

    int blobCount() const {
        return static_cast<int>(std::count_if(blobs.blobs.begin(), blobs.blobs.end(),
                                              [](const auto& blob) { return blob.valid; }));
    }

    QVR::blobManager blobs;
    QVR::touchManager touches;
};

inline QVR::calibrationManager shippedCalibration() {
    QVR::calibrationManager calibration;
    if (calibration.distortionMap.importCellCalibration(shippedFile("touch.json"), 8000.0f) != 0 ||
        !calibration.importProjectionMap(shippedFile("touch_projectionMap.json"), 0))
        throw std::runtime_error("the shipped calibration is not accepted");
    return calibration;
}

struct Account {
    int frames = 0;
    int settledFrames = 0;       // in which every finger has touched, or not touched, for a while
    int settledWithAllBlobs = 0; // of these: as many blobs as fingers that touch
    int contacts = 0;            // times a finger touched for more than three frames
    int contactsReported = 0;    // of these: seen by the host
    int reports = 0;             // touches reported, over all frames
    int strays = 0;              // of these: none of a finger that touches or just did
    double meanPixelError = 0.0;
    double worstPixelError = 0.0;
    double meanDisplayError = 0.0; // millimetres along the display
    double meanHeightError = 0.0;  // millimetres in front of it, reported minus true
};

inline Account play(const std::string& keys, int frames) {
    constexpr int settling = 6;
    constexpr double near = 25.0; // pixels; fingers are farther apart than twice that, or merge
    Scene scene(keys);
    Detection detection(shippedFile("touch.json"), scene.width(), scene.height());
    const QVR::calibrationManager calibration = shippedCalibration();

    struct Finger {
        int since = 0; // frames in the present state
        bool touching = false;
        bool reported = false;
    };
    std::map<int, Finger> fingers;
    Account account;
    const auto endOfContact = [&](const Finger& finger) {
        if (finger.touching && finger.since > 3) {
            ++account.contacts;
            account.contactsReported += finger.reported ? 1 : 0;
        }
    };
    for (int frame = 0; frame < frames; ++frame) {
        const auto depth = scene.depth(static_cast<std::uint64_t>(frame));
        const rs_scene_truth truth = scene.truth(static_cast<std::uint64_t>(frame));
        const auto reported = detection.detect(depth);
        int touching = 0;
        bool settled = true;
        for (int i = 0; i < truth.finger_count; ++i) {
            Finger& finger = fingers[truth.fingers[i].id];
            const bool now = truth.fingers[i].touching == 1;
            if (now != finger.touching) {
                endOfContact(finger);
                finger = {0, now, false};
            }
            ++finger.since;
            touching += now ? 1 : 0;
            settled = settled && finger.since > settling;
        }
        ++account.frames;
        if (settled) {
            ++account.settledFrames;
            account.settledWithAllBlobs += detection.blobCount() == touching ? 1 : 0;
        }
        for (const QVR::Vector3& touch : reported) {
            ++account.reports;
            const rs_scene_finger* best = nullptr;
            double error = near;
            for (int i = 0; i < truth.finger_count; ++i) {
                const rs_scene_finger& finger = truth.fingers[i];
                const double distance = std::hypot(touch.x - static_cast<double>(finger.pixel[0]),
                                                   touch.y - static_cast<double>(finger.pixel[1]));
                const bool touches = finger.touching == 1 || fingers[finger.id].since <= settling;
                if (touches && distance < error) {
                    best = &finger;
                    error = distance;
                }
            }
            if (!best) {
                ++account.strays;
                continue;
            }
            fingers[best->id].reported = true;
            QVR::Vector3 position = touch;
            calibration.calibrateVector(position);
            account.meanPixelError += error;
            account.worstPixelError = std::max(account.worstPixelError, error);
            account.meanDisplayError +=
                std::hypot(position.x - static_cast<double>(best->display[0]),
                           position.y - static_cast<double>(best->display[1]));
            account.meanHeightError += position.z - static_cast<double>(best->display[2]);
        }
    }
    for (const auto& [id, finger] : fingers)
        endOfContact(finger);
    const int matched = std::max(1, account.reports - account.strays);
    account.meanPixelError /= matched;
    account.meanDisplayError /= matched;
    account.meanHeightError /= matched;
    return account;
}

} // namespace simulated_tests
