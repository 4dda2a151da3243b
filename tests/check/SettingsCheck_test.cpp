#include "check/SettingsCheck.h"
#include "client/ClientManager.h"
#include "foundation/Logger.h"
#include "foundation/utils.h"
#include "support/LogCapture.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json11.hpp>
#include <unistd.h>

using json11::Json;
using QVR::Role;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Lines = std::vector<std::string>;

namespace {

const std::string touch = "QVR_calibration/touch.json";
const std::string client = "QVR_calibration/touch_client.json";
const std::string map = "QVR_calibration/touch_projectionMap.json";

// A document in which nothing is to mend, with changes: each replaces what is at the path of its
// keys, or takes it away when it is null.
class Document {
  public:
    explicit Document(const std::string& name) {
        const std::string path = std::string(QVR_EXAMPLES_DIR) + "/simulated/" + name;
        std::string error;
        root_ = Json::parse(QVR::utils::readFileContent(path), error);
        EXPECT_EQ(error, "") << path;
    }

    Document& set(const std::vector<std::string>& path, const Json& value) {
        root_ = changed(root_, path, 0, value);
        return *this;
    }
    Document& remove(const std::vector<std::string>& path) { return set(path, Json()); }
    std::string text() const { return root_.dump(); }

  private:
    static Json changed(const Json& object, const std::vector<std::string>& path, std::size_t level,
                        const Json& value) {
        Json::object members = object.object_items();
        const std::string& key = path[level];
        if (level + 1 < path.size()) {
            members[key] = changed(members[key], path, level + 1, value);
        } else if (value.is_null()) {
            members.erase(key);
        } else {
            members[key] = value;
        }
        return Json(members);
    }

    Json root_;
};

class SettingsCheck : public testing::Test {
  protected:
    void SetUp() override {
        for (const std::string& name : {touch, client, map}) {
            folder.write(name, Document(name).text());
        }
        folder.write("touch_projectionMap.json", Document("touch_projectionMap.json").text());
    }

    // All lines but the last one, which sums up.
    Lines check(Role role) {
        Lines lines;
        count = QVR::SettingsCheck(folder.path(), role, [&lines](const std::string& line) {
                    lines.push_back(line);
                }).run();
        summary = lines.back();
        lines.pop_back();
        return lines;
    }
    // Those that are to be mended.
    Lines findings(Role role) {
        Lines lines = check(role);
        std::erase_if(lines, [](const std::string& line) {
            return line.find(": note: ") != std::string::npos;
        });
        EXPECT_EQ(count, static_cast<int>(lines.size()));
        return lines;
    }
    // What the server says about a changed "touch.json", without the file's name.
    Lines serverFindings(const Document& document) {
        folder.write(touch, document.text());
        Lines lines = findings(Role::server);
        for (std::string& line : lines) {
            EXPECT_THAT(line, StartsWith(touch + ": "));
            line.erase(0, touch.size() + 2);
        }
        return lines;
    }
    // What comes of one changed value for the server.
    Lines changed(const std::vector<std::string>& path, const Json& value) {
        return serverFindings(Document(touch).set(path, value));
    }
    Lines missing(const std::vector<std::string>& path) {
        return serverFindings(Document(touch).remove(path));
    }

    support::TemporaryFolder folder;
    // Copies on the volumes of the machine that runs the tests are none of their business.
    support::ScopedEnvironment volumes{"QVR_VOLUMES", nullptr};
    int count = 0;
    std::string summary;
};

const std::string detection = "touchDetection.forwardFacing.";

std::vector<std::string> inDetection(const std::string& key) {
    return {"touchDetection", "forwardFacing", key};
}

} // namespace

TEST_F(SettingsCheck, FindsNothingToMendInTheSimulatedExample) {
    EXPECT_THAT(findings(Role::server), IsEmpty());
    EXPECT_EQ(summary, folder.path() + ": nothing to mend");
    EXPECT_THAT(findings(Role::host), IsEmpty());
    EXPECT_EQ(summary, folder.path() + ": nothing to mend");
}

TEST_F(SettingsCheck, FindsNothingToMendInTheHandExampleOfTheServer) {
    QVR::SettingsCheck check(std::string(QVR_EXAMPLES_DIR) + "/hand", Role::server,
                             [](const std::string&) {});
    EXPECT_EQ(check.run(), 0);
}

TEST_F(SettingsCheck, SumsUp) {
    folder.write(client, R"({"ip": "localhost", "port": "27016"})");
    check(Role::host);
    EXPECT_EQ(summary, folder.path() + ": 1 setting to mend");
    folder.write(client, R"({"ip": 1, "port": "27016"})");
    check(Role::host);
    EXPECT_EQ(summary, folder.path() + ": 2 settings to mend");
}

// --- files ---

TEST_F(SettingsCheck, SaysWhatIsUsedInsteadOfMissingFiles) {
    std::filesystem::remove_all(folder.path());
    EXPECT_THAT(check(Role::server),
                ElementsAre(touch + ": found no such file, using no distortion grid, and streams "
                                    "of 640 x 480 at 60 frames a second",
                            map + ": note: found no such file, using no projection map: touches "
                                  "are sent in camera space"));
    EXPECT_EQ(count, 1);
    EXPECT_THAT(check(Role::host),
                ElementsAre(client + ": note: found no such file, using localhost, port 27016",
                            touch + ": found no such file, using no distortion grid: positions "
                                    "pass uncorrected",
                            "touch_projectionMap.json: found no such file, using none: every point "
                            "that is calibrated becomes (0, 0, 0)",
                            map + ": note: found no such file, using none when loadProjectionMap "
                                  "asks for it"));
    EXPECT_EQ(count, 2);
}

TEST_F(SettingsCheck, NamesTheCopyOfAnotherVolumeThatTakesAMissingFilesPlace) {
    const support::TemporaryFolder other;
    const std::string copy = other.write(touch, Document(touch).text());
    const support::ScopedEnvironment roots("QVR_VOLUMES", other.path().c_str());
    std::filesystem::remove(folder.file(touch));
    EXPECT_THAT(findings(Role::server), ElementsAre(touch + ": found no such file, using " + copy));
}

TEST_F(SettingsCheck, TellsAnEmptyFileFromAMissingOne) {
    folder.write(client, "");
    EXPECT_THAT(findings(Role::host),
                ElementsAre(client + ": found a file that is empty or cannot be read, using "
                                     "localhost, port 27016"));
}

TEST_F(SettingsCheck, TellsAFileThatCannotBeRead) {
    if (geteuid() == 0) {
        std::filesystem::remove(folder.file(touch));
        std::filesystem::create_directory(folder.file(touch)); // which not even root reads
    } else {
        std::filesystem::permissions(folder.file(touch), std::filesystem::perms::none);
    }
    const support::ScopedEnvironment roots("QVR_VOLUMES", "/nowhere");
    EXPECT_THAT(findings(Role::server),
                ElementsAre(StartsWith(touch + ": found a file that is empty or cannot be read, "
                                               "using no distortion grid")));
}

TEST_F(SettingsCheck, SaysWhereADocumentIsNoJson) {
    for (const std::string& name : {touch, client, map}) {
        folder.write(name, "{\n\"depthResX\": 640,\n}");
    }
    EXPECT_THAT(findings(Role::server),
                ElementsAre(StartsWith(touch + ": found no JSON, parse error at line 3, column 1"),
                            StartsWith(map + ": found no JSON, parse error at line 3, column 1")));
    EXPECT_THAT(findings(Role::server),
                Contains(EndsWith(", using nothing: the server does not start")));
    EXPECT_THAT(findings(Role::host), Contains(EndsWith("(byte 21), using localhost, port 27016")));
}

TEST_F(SettingsCheck, TellsADocumentThatIsNoObject) {
    folder.write(touch, "[1, 2]");
    EXPECT_THAT(findings(Role::server),
                Contains(touch + ": found a list, using none of its settings"));
    folder.write(touch, "null");
    EXPECT_THAT(findings(Role::server),
                Contains(touch + ": found null, using none of its settings"));
    EXPECT_THAT(findings(Role::host),
                ElementsAre(touch + ": found null, using none of its settings"));
}

// --- values ---

TEST_F(SettingsCheck, TellsValuesOfAnotherType) {
    EXPECT_THAT(changed({"streaming", "fps"}, "30"),
                ElementsAre("streaming.fps: found \"30\", using 60"));
    EXPECT_THAT(changed({"streaming", "port"}, true),
                ElementsAre("streaming.port: found true, using 27016"));
    EXPECT_THAT(changed({"streaming", "touch"}, "no"),
                ElementsAre("streaming.touch: found \"no\", using true"));
    EXPECT_THAT(changed({"streaming", "color"}, Json::object{}),
                ElementsAre("streaming.color: found an object, using false"));
    EXPECT_THAT(changed({"colorResX"}, Json::array{640}),
                ElementsAre("colorResX: found a list, using 640"));
    EXPECT_THAT(changed({"streaming"}, 5),
                Contains("streaming: found 5, using none of its settings"));
    EXPECT_THAT(changed(inDetection("minBlobSize"), "9"),
                ElementsAre(detection + "minBlobSize: found \"9\", using 11"));
}

TEST_F(SettingsCheck, AcceptsNumbersForSwitches) {
    EXPECT_THAT(changed({"streaming", "touch"}, 0), IsEmpty());
    EXPECT_THAT(changed({"streaming", "touch"}, 1), IsEmpty());
}

TEST_F(SettingsCheck, TellsMissingValuesThatThePipelineWarnsAbout) {
    EXPECT_THAT(missing({"colorResY"}), ElementsAre("colorResY: found nothing, using 480"));
    EXPECT_THAT(missing({"streaming", "fps"}),
                ElementsAre("streaming.fps: found nothing, using 60"));
    EXPECT_THAT(missing({"touchDetection", "confidenceThreshold"}),
                ElementsAre("touchDetection.confidenceThreshold: found nothing, using 2"));
    EXPECT_THAT(missing(inDetection("flatnessRadius")),
                ElementsAre(detection + "flatnessRadius: found nothing, using 4"));
}

TEST_F(SettingsCheck, LeavesOutMissingValuesThatHaveAQuietDefault) {
    for (const char* key :
         {"color", "depth", "processed", "touch", "autoClose", "port", "streamAlignment"}) {
        EXPECT_THAT(missing({"streaming", key}), IsEmpty()) << key;
    }
}

TEST_F(SettingsCheck, TellsWhatAMissingSizeOrClipCosts) {
    const std::string noGrid = "found nothing, using no distortion grid: positions pass "
                               "uncorrected";
    EXPECT_THAT(missing({"depthResX"}),
                ElementsAre("depthResX: found nothing, using 640", "depthResX: " + noGrid));
    EXPECT_THAT(missing({"nearClipMeters"}),
                ElementsAre("nearClipMeters: " + noGrid, "nearClipMeters: found nothing, using "
                                                         "0.07"));
    EXPECT_THAT(missing({"farClipMeters"}),
                ElementsAre("farClipMeters: " + noGrid, "farClipMeters: found nothing, using 0.3"));
    EXPECT_THAT(missing({"calibration"}), ElementsAre("calibration: " + noGrid));
}

TEST_F(SettingsCheck, TellsEveryMissingValueAtOnce) {
    folder.write(touch, "{}");
    const Lines lines = findings(Role::host);
    for (const char* key : {"depthResX", "depthResY", "nearClipMeters", "farClipMeters"}) {
        EXPECT_THAT(lines, Contains(touch + ": " + key +
                                    ": found nothing, using no distortion grid: positions pass "
                                    "uncorrected"));
    }
}

TEST_F(SettingsCheck, TellsFractionsThatAreDropped) {
    EXPECT_THAT(changed({"streaming", "fps"}, 30.5),
                ElementsAre("streaming.fps: found 30.5, using 30"));
}

TEST_F(SettingsCheck, TellsNumbersThatMakeNoSense) {
    EXPECT_THAT(changed({"streaming", "port"}, 70000),
                ElementsAre("streaming.port: found 70000, which is not from 0 to 65535, using "
                            "70000"));
    EXPECT_THAT(changed({"streaming", "fps"}, 0),
                ElementsAre("streaming.fps: found 0, which is not from 1 to 1000, using 0"));
    EXPECT_THAT(changed({"streaming", "streamAlignment"}, 3),
                ElementsAre("streaming.streamAlignment: found 3, which is not from 0 to 2, using "
                            "3"));
    EXPECT_THAT(changed({"colorResX"}, -5),
                ElementsAre("colorResX: found -5, which is not from 1 to 65535, using 4294967291"));
    EXPECT_THAT(changed(inDetection("biasStrength"), 0),
                ElementsAre(detection + "biasStrength: found 0, which is less than 1, using 0"));
    EXPECT_THAT(changed({"touchDetection", "confidenceThreshold"}, -1),
                ElementsAre("touchDetection.confidenceThreshold: found -1, which is less than 0, "
                            "using -1"));
}

TEST_F(SettingsCheck, TellsNumbersOfWhichTheFieldKeepsApart) {
    EXPECT_THAT(changed(inDetection("maxDiffNear"), 70000),
                ElementsAre(detection + "maxDiffNear: found 70000, using 4464"));
    EXPECT_THAT(changed(inDetection("minBlobSize"), -1),
                ElementsAre(detection + "minBlobSize: found -1, using 4294967295"));
    EXPECT_THAT(changed(inDetection("flatnessRadius"), 1e12),
                ElementsAre(detection + "flatnessRadius: found 1000000000000, using 2147483648"));
}

TEST_F(SettingsCheck, TellsDistancesThatDepthsCannotHold) {
    EXPECT_THAT(changed({"farClipMeters"}, 70),
                ElementsAre("farClipMeters: found a distance of 70000 depth units, using 4464"));
}

// --- what contradicts itself ---

TEST_F(SettingsCheck, TellsANearClipThatIsNotNearer) {
    const Lines expected{"nearClipMeters: found 0.5 beside a farClipMeters of 0.2, using no "
                         "distortion grid: positions pass uncorrected"};
    EXPECT_EQ(
        serverFindings(Document(touch).set({"nearClipMeters"}, 0.5).set({"farClipMeters"}, 0.2)),
        expected);
    EXPECT_THAT(findings(Role::host), ElementsAre(touch + ": " + expected.front()));
}

TEST_F(SettingsCheck, TellsANegativeClip) {
    EXPECT_THAT(changed({"nearClipMeters"}, -0.5),
                Contains(StartsWith("nearClipMeters: found -0.5, which is less than 0")));
}

TEST_F(SettingsCheck, TellsANoiseGapAboveTheBlobSpace) {
    EXPECT_THAT(serverFindings(Document(touch)
                                   .set(inDetection("allowedBlobNoiseGap"), 4)
                                   .set(inDetection("minBlobSpace"), 3)),
                ElementsAre(detection + "allowedBlobNoiseGap: found 4, above a minBlobSpace of 3, "
                                        "using both, which finds blobs badly"));
}

TEST_F(SettingsCheck, TellsMarginsThatLeaveNothing) {
    EXPECT_THAT(missing(inDetection("borderClipRight")),
                ElementsAre(detection + "borderClipRight: found nothing, using 640",
                            HasSubstr("to 0 pixels, using them, which reports no touch")));
    EXPECT_THAT(changed(inDetection("borderClipTop"), 480),
                ElementsAre(StartsWith(detection + "borderClipBottom: found bounds of 480 to ")));
}

TEST_F(SettingsCheck, TellsAGridThatDoesNotFitItsSizes) {
    const std::string ending = ", which do not fit, using no distortion grid: positions pass "
                               "uncorrected";
    const Json three(Json::array{1, 2, 3});
    EXPECT_THAT(serverFindings(Document(touch)
                                   .set({"calibration", "sizeX"}, 2)
                                   .set({"calibration", "sizeY"}, 2)
                                   .set({"calibration", "sizeZ"}, 2)
                                   .set({"calibration", "verts"}, three)),
                ElementsAre("calibration: found sizes 2, 2, 2 and 3 numbers in verts" + ending));
    EXPECT_THAT(changed({"calibration", "verts"}, Json(Json::array{1, 2, 3, 4})),
                ElementsAre(HasSubstr("and 4 numbers in verts" + ending)));
    EXPECT_THAT(changed({"calibration", "sizeZ"}, 1),
                ElementsAre("calibration.sizeZ: found 1, which is less than 2, using 1",
                            HasSubstr(ending)));
    EXPECT_THAT(changed({"calibration", "verts"}, "none"),
                ElementsAre("calibration.verts: found \"none\", using an empty list",
                            HasSubstr("and 0 numbers in verts" + ending)));
}

TEST_F(SettingsCheck, TellsGridPositionsThatAreNoNumbers) {
    Json::array numbers(24, Json(1));
    numbers[3] = "x";
    numbers[7] = nullptr;
    EXPECT_THAT(serverFindings(Document(touch)
                                   .set({"calibration", "sizeX"}, 2)
                                   .set({"calibration", "sizeY"}, 2)
                                   .set({"calibration", "sizeZ"}, 2)
                                   .set({"calibration", "verts"}, numbers)),
                ElementsAre("calibration.verts: found 2 items that are no numbers, using 0 for "
                            "each"));
}

TEST_F(SettingsCheck, TellsDownsamplingThatIsHalfApplied) {
    EXPECT_THAT(serverFindings(
                    Document(touch).set({"downsampleDepthX"}, 320).set({"downsampleDepthY"}, 240)),
                IsEmpty());
    EXPECT_THAT(
        serverFindings(Document(touch).set({"downsampleDepthX"}, 2).set({"downsampleDepthY"}, 240)),
        ElementsAre("downsampleDepthX: found sizes of 2 x 240, using the full size"));
    EXPECT_THAT(serverFindings(Document(touch).set({"downsampleDepthX"}, 320)),
                ElementsAre("downsampleDepthY: found nothing, using the full size in the server "
                            "and 0 in hosts"));
}

// --- keys ---

TEST_F(SettingsCheck, NamesUnknownKeysWithTheNearestKnownOne) {
    EXPECT_THAT(changed({"streaming", "colour"}, true),
                ElementsAre("streaming.colour: found a key that is not known; the nearest is "
                            "streaming.color, using nothing of it"));
    EXPECT_THAT(changed({"fps"}, 30),
                ElementsAre("fps: found a key that is not known; the nearest is streaming.fps, "
                            "using nothing of it"));
    folder.write(client, R"({"ip": "localhost", "prot": 1})");
    EXPECT_THAT(findings(Role::host),
                Contains(client + ": prot: found a key that is not known; the nearest is port, "
                                  "using nothing of it"));
}

TEST_F(SettingsCheck, KnowsTheKeysBehindAFault) {
    EXPECT_THAT(
        serverFindings(Document(touch).set({"nearClipMeters"}, 0.5).set({"farClipMeters"}, 0.2)),
        Not(Contains(HasSubstr("not known"))));
    folder.write(map, Document(map).remove({"map0", "Xmin"}).text());
    EXPECT_THAT(findings(Role::server), Not(Contains(HasSubstr("not known"))));
}

TEST_F(SettingsCheck, TellsKeysThatAreGivenTwice) {
    folder.write(client, R"({"ip": "a", "port": 1, "ip": "b"})");
    EXPECT_THAT(findings(Role::host),
                ElementsAre(client + ": ip: found more than one value, using the last one"));
}

TEST_F(SettingsCheck, NotesWhatTheRoleDoesNotRead) {
    const Lines host = check(Role::host);
    EXPECT_THAT(host, Contains(AllOf(StartsWith(touch + ": note: read by the server only: "),
                                     HasSubstr("colorResX"), HasSubstr("streaming"),
                                     HasSubstr("touchDetection"), Not(HasSubstr("depthResX")),
                                     Not(HasSubstr("calibration,")))));
    const Lines server = check(Role::server);
    EXPECT_THAT(server, Contains(client + ": note: read by hosts only"));
    EXPECT_THAT(server, Contains("touch_projectionMap.json: note: read by hosts only"));
    EXPECT_EQ(count, 0);
}

// --- the other documents ---

TEST_F(SettingsCheck, TellsAnAddressWithoutHostOrPort) {
    folder.write(client, R"({"port": "27016"})");
    EXPECT_THAT(findings(Role::host),
                ElementsAre(client + ": ip: found nothing, using an empty text",
                            client + ": port: found \"27016\", using 27016"));
    folder.write(client, R"({"ip": "", "port": 70000})");
    EXPECT_THAT(findings(Role::host),
                ElementsAre(client + ": ip: found \"\", using an empty text",
                            client + ": port: found 70000, which is not from 1 to 65535, using "
                                     "70000"));
}

TEST_F(SettingsCheck, TellsHowAConnectionIsNotKept) {
    folder.write(client,
                 R"({"ip": "a", "port": 1, "receiveTimeoutMs": 1000, "reconnectReadsHeader": 1})");
    EXPECT_THAT(findings(Role::host),
                ElementsAre(client + ": receiveTimeoutMs: found 1000, using it, which breaks "
                                     "connections whose camera is silent for a moment",
                            client + ": reconnectReadsHeader: found 1, using false"));
    folder.write(client, R"({"ip": "a", "receiveTimeoutMs": -1, "reconnectReadsHeader": true})");
    EXPECT_THAT(findings(Role::host),
                ElementsAre(client + ": receiveTimeoutMs: found -1, which is less than 0, using "
                                     "-1"));
    folder.write(client, R"({"ip": "a", "receiveTimeoutMs": 1001})");
    EXPECT_THAT(findings(Role::host), IsEmpty());
}

TEST_F(SettingsCheck, TellsEveryGapInAProjectionMap) {
    folder.write(map, Document(map)
                          .remove({"map0", "Zmax"})
                          .set({"map0", "calibration", "XYZ", "z"}, "1")
                          .remove({"map0", "calibration", "Xyz", "x"})
                          .text());
    EXPECT_THAT(findings(Role::server),
                ElementsAre(map + ": map0.Zmax: found nothing, using nothing of this map",
                            map + ": map0.calibration.Xyz.x: found nothing, using 0",
                            map + ": map0.calibration.XYZ.z: found \"1\", using nothing of this "
                                  "map"));
}

TEST_F(SettingsCheck, TellsAMissingMapAndAMisspeltOne) {
    folder.write(map, R"({"Map0": {}, "map01": {}, "map1": 5})");
    const std::string nearest = ": found a key that is not known; the nearest is map0, using "
                                "nothing of it";
    EXPECT_THAT(findings(Role::server),
                ElementsAre(map + ": map0: found nothing, using nothing of this map",
                            map + ": map1: found 5, using nothing of this map",
                            map + ": Map0" + nearest, map + ": map01" + nearest));
}

TEST_F(SettingsCheck, TellsAFlatProjectionBox) {
    for (const std::string axis : {"X", "Y", "Z"}) {
        folder.write(
            map,
            Document(map).set({"map0", axis + "min"}, 5).set({"map0", axis + "max"}, 5).text());
        EXPECT_THAT(findings(Role::server),
                    ElementsAre(map + ": map0." + axis + "min: found 5 for " + axis +
                                "max, too, using the lower side of the map for every position"));
    }
}

// --- manners ---

TEST_F(SettingsCheck, ExplainsWhateverThePipelineWarnsAbout) {
    static bool warned;
    for (const std::vector<std::string>& path : {std::vector<std::string>{"depthResX"},
                                                 {"depthResY"},
                                                 {"colorResX"},
                                                 {"colorResY"},
                                                 {"nearClipMeters"},
                                                 {"farClipMeters"},
                                                 {"streaming"},
                                                 {"streaming", "fps"},
                                                 {"touchDetection"},
                                                 {"touchDetection", "confidenceThreshold"},
                                                 {"touchDetection", "forwardFacing"},
                                                 inDetection("borderClipTop"),
                                                 inDetection("borderClipLeft"),
                                                 inDetection("biasStrength"),
                                                 {"calibration"},
                                                 {"calibration", "sizeX"},
                                                 {"calibration", "verts"}}) {
        for (const Json& value : {Json(), Json(-1), Json("x"), Json(Json::object{})}) {
            const std::string text = Document(touch).set(path, value).text();
            warned = false;
            QVR::Logger::RegisterDebugCallback([](const char*) { warned = true; });
            for (const QVR::SettingsDocument& document : settingsDocuments(Role::server)) {
                if (document.path == touch) {
                    document.ownReader(text);
                }
            }
            QVR::Logger::RegisterDebugCallback(nullptr);
            folder.write(touch, text);
            if (warned) {
                EXPECT_THAT(findings(Role::server), Not(IsEmpty())) << text;
            }
        }
    }
}

TEST_F(SettingsCheck, LogsNothingAndGivesTheLogBack) {
    folder.write(touch, "{}");
    const support::LogCapture log;
    check(Role::server);
    EXPECT_THAT(support::LogCapture::messages(), IsEmpty());
    QVR::Logger::Log("after");
    EXPECT_THAT(support::LogCapture::messages(), ElementsAre("after"));
}

TEST_F(SettingsCheck, WritesNothingThatATerminalWouldObey) {
    folder.write(client, "{\"ip\": \"a\", \"\\u001b[2J\\n\": 1}");
    const Lines lines = findings(Role::host);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines.front(), StartsWith(client + ": ?[2J?: found a key"));
}

TEST_F(SettingsCheck, QuotesLongTextsInPart) {
    EXPECT_THAT(changed({"streaming", "fps"}, std::string(100000, 'x')),
                ElementsAre("streaming.fps: found \"" + std::string(40, 'x') + "...\", using 60"));
}
