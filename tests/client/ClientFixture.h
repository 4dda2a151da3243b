// What the client's tests share: a volume of their own, the log, and a client that is gone in the
// end.
#pragma once

#include "client/ClientManager.h"
#include "support/LogCapture.h"
#include "support/LoopbackPeer.h"
#include "support/TemporaryVolume.h"
#include "support/streamBytes.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace client_test {

// The message of every look for a calibration file that is not there.
inline const std::string noCalibrationFile =
    "Could not read data from: QVR_calibration/touch.json\nFile appears empty.";

// A distortion map that leaves every point of 0..640, 0..480, 500..2000 where it is, at 1000
// depth units a metre. `more` goes into the document's top level.
inline std::string identityCalibration(const std::string& more = "") {
    return R"({"depthResX": 640, "depthResY": 480, "nearClipMeters": 0.5, "farClipMeters": 2, )" +
           more + R"("calibration": {"sizeX": 2, "sizeY": 2, "sizeZ": 2, "verts": [
        0, 0, 500, 640, 0, 500, 0, 480, 500, 640, 480, 500,
        0, 0, 2000, 640, 0, 2000, 0, 480, 2000, 640, 480, 2000]}})";
}

// One map that takes the box 0..640, 0..480, 0..2000 to 0..`size` on every axis.
inline std::string projectionMap(int number, const std::string& size = "1") {
    const auto corner = [&size](const std::string& name) {
        const auto place = [&size](bool upper) { return upper ? size : std::string("0"); };
        return "\"" + name + "\": {\"x\": " + place(name[0] == 'X') +
               ", \"y\": " + place(name[1] == 'Y') + ", \"z\": " + place(name[2] == 'Z') + "}";
    };
    return "\"map" + std::to_string(number) +
           R"(": {"Xmin": 0, "Xmax": 640, "Ymin": 0, "Ymax": 480, "Zmin": 0, "Zmax": 2000, )" +
           "\"calibration\": {" + corner("xyz") + ", " + corner("Xyz") + ", " + corner("XYz") +
           ", " + corner("xYz") + ", " + corner("xYZ") + ", " + corner("XYZ") + ", " +
           corner("XyZ") + ", " + corner("xyZ") + "}}";
}

class ClientFixture : public testing::Test {
  protected:
    ~ClientFixture() override {
        QVR::ClientManager::debugLogging = false;
        QVR::ClientManager::convertImageBuffersTo8bit4channel = true;
        QVR::ClientManager::receiveTimeoutMs = 0;
        QVR::ClientManager::reconnectReadsHeader = false;
        QVR::ClientManager::Destroy();
        calibratedCoord = {};
    }

    static void initWith(const support::LoopbackPeer& peer) {
        QVR::ClientManager::Init("127.0.0.1", peer.portNumber());
    }

    // A client whose server does not answer; `client().port` then leads it to another.
    static void initWithoutServer() {
        QVR::ClientManager::Init("127.0.0.1",
                                 static_cast<unsigned int>(std::stoul(support::unusedPort())));
    }

    static QVR::ClientManager& client() { return *QVR::ClientManager::Get(); }

    static const std::vector<std::string>& messages() { return support::LogCapture::messages(); }
    static void forgetMessages() { support::LogCapture::messages().clear(); }

    // The values that getTouchData gives before its first -9999.
    static std::vector<double> readTouches() {
        std::vector<double> values;
        for (double value = client().getTouchData(); value != -9999.0;
             value = client().getTouchData()) {
            values.push_back(value);
        }
        return values;
    }

    support::TemporaryVolume volume;
    support::LogCapture log;
};

} // namespace client_test
