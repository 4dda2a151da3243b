// What depends on the processor or the C++ library - texts of numbers, numbers that no field holds,
// sizes of integers - comes out as vectors.json has it, in every build.
#include "portability/plugin.h"
#include "support/LoopbackPeer.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryFolder.h"
#include "support/streamBytes.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json11.hpp>

namespace {

using json11::Json;
using portability::plugin;
using support::LoopbackPeer;
using testing::ElementsAreArray;

const Json& vectors(const std::string& section) {
    static const Json all = [] {
        std::ifstream file(VECTORS);
        std::string error;
        Json parsed = Json::parse({std::istreambuf_iterator<char>(file), {}}, error);
        EXPECT_EQ(error, "");
        return parsed;
    }();
    EXPECT_FALSE(all[section].array_items().empty()) << section;
    return all[section];
}

std::vector<std::string> texts(const Json& list) {
    std::vector<std::string> result;
    for (const Json& item : list.array_items()) {
        result.push_back(item.string_value());
    }
    return result;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// To the last bit, as printf's %a has it.
std::string bitsOf(float value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%a", static_cast<double>(value));
    return text.data();
}

float numberIn(const Json& text) {
    return std::strtof(text.string_value().c_str(), nullptr);
}

class Vectors : public testing::Test {
  protected:
    Vectors() {
        said().clear();
        portability::setVolumes({"/nonexistent"});
        plugin().registerDebugCallback([](const char* message) { said().emplace_back(message); });
    }
    ~Vectors() override {
        plugin().shutDown();
        plugin().registerDebugCallback(nullptr);
    }

    static std::vector<std::string>& said() {
        static std::vector<std::string> messages;
        return messages;
    }

    // A client that has received the bytes of a header and what follows.
    static void receive(const LoopbackPeer& peer) {
        plugin().initClientWithCustomServer("127.0.0.1", peer.portNumber());
    }
};

} // namespace

TEST_F(Vectors, OfFloatsInMessages) {
    for (const Json& vector : vectors("floats in messages").array_items()) {
        portability::log("value: ", numberIn(vector["value"]));
        EXPECT_EQ(said().back(), "value: " + vector["text"].string_value());
    }
}

TEST_F(Vectors, OfIntegersInMessages) {
    for (const Json& vector : vectors("integers in messages").array_items()) {
        portability::log("value ", vector["value"].int_value());
        EXPECT_EQ(said().back(), "value " + vector["text"].string_value());
    }
}

TEST_F(Vectors, OfHeaders) {
    for (const Json& vector : vectors("headers").array_items()) {
        std::array<std::uint32_t, 16> fields{};
        for (std::size_t field = 0; field < fields.size(); ++field) {
            fields.at(field) = static_cast<std::uint32_t>(vector["fields"][field].number_value());
        }
        const auto header = std::bit_cast<QVR::ProtocolHeader>(fields);
        EXPECT_THAT(linesOf(portability::textOf(header)), ElementsAreArray(texts(vector["lines"])));
    }
}

TEST_F(Vectors, OfSettingsThatNoFieldHolds) {
    for (const Json& vector : vectors("settings").array_items()) {
        const support::TemporaryFolder folder;
        folder.write(vector["file"].string_value(), vector["document"].string_value());
        static std::vector<std::string> reports;
        reports.clear();
        plugin().checkSettings(folder.path().c_str(), vector["server"].bool_value(),
                               [](const char* line) { reports.emplace_back(line); });
        reports.pop_back(); // names the folder, which is another each time
        std::erase_if(reports, [](const std::string& report) {
            return report.find(" found no") != std::string::npos; // is not there
        });
        EXPECT_THAT(reports, ElementsAreArray(texts(vector["reports"])))
            << vector["document"].string_value();
    }
}

TEST_F(Vectors, OfWhatThePipelineMakesOfThem) {
    const support::ScopedEnvironment camera("QVR_CAMERA", "simulated:pace=off");
    for (const Json& vector : vectors("readouts").array_items()) {
        EXPECT_THAT(linesOf(portability::readoutWith(vector["document"].string_value())),
                    ElementsAreArray(texts(vector["lines"])))
            << vector["document"].string_value();
    }
}

TEST_F(Vectors, OfTheCameraInformation) {
    for (const Json& vector : vectors("camera information").array_items()) {
        const support::ScopedEnvironment camera("QVR_CAMERA",
                                                vector["camera"].string_value().c_str());
        EXPECT_THAT(linesOf(portability::cameraInfo()), ElementsAreArray(texts(vector["lines"])));
    }
}

TEST_F(Vectors, OfReceivedTouches) {
    for (const Json& vector : vectors("touches").array_items()) {
        QVR::ProtocolHeader header = support::touchesOnlyHeader();
        header.touchCount = 1;
        const double sent = std::strtod(vector["sent"].string_value().c_str(), nullptr);
        const std::vector<QVR::NetworkTouch> touches = {{1, sent, sent, sent}};
        LoopbackPeer peer([&](LoopbackPeer::Line& line) {
            line.accept();
            line.send(support::bytesOf(header) + support::bytesOf(touches));
        });
        receive(peer);
        EXPECT_EQ(plugin().update(), 0);
        plugin().prepareTouchCollection();
        EXPECT_EQ(bitsOf(plugin().getTouchData()), vector["read"].string_value())
            << vector["sent"].string_value();
        plugin().shutDown();
    }
}

TEST_F(Vectors, OfCalibratedPoints) {
    QVR::ProtocolHeader header = support::touchesOnlyHeader();
    header.oneMeterValue = 8000;
    portability::setVolumes({EXAMPLES "/simulated"});
    LoopbackPeer peer([&](LoopbackPeer::Line& line) {
        line.accept();
        line.send(support::bytesOf(header));
    });
    receive(peer);
    for (const Json& vector : vectors("calibrated points").array_items()) {
        plugin().setCalibration(vector["document"].string_value().c_str());
        for (const Json& point : vector["points"].array_items()) {
            plugin().applyCalibrationToCoord(numberIn(point["x"]), numberIn(point["y"]),
                                             numberIn(point["z"]));
            const std::vector<std::string> place = {bitsOf(plugin().getCalibratedX()),
                                                    bitsOf(plugin().getCalibratedY()),
                                                    bitsOf(plugin().getCalibratedZ())};
            EXPECT_THAT(place, ElementsAreArray(texts(point["place"]))) << point.dump();
        }
    }
}
