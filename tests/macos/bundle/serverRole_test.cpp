// The camera pipeline, as a server program runs it, in the library for Linux and in the bundle for
// macOS: the same frames of the simulated camera must give the same touches and pictures.
#include "macos/bundle/Transcript.h"
#include "serverClient/frameProtocol.h"
#include "support/ScopedEnvironment.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using support::ScopedEnvironment;
using testing::Contains;
using testing::ElementsAreArray;

// The functions of cameraManager that take and return no texts.
class Pipeline {
  public:
    explicit Pipeline(Plugin& plugin)
        : header_(plugin.function<int(void*, QVR::ProtocolHeader&)>(
              name("19getNetworkFrameInfoERNS_14ProtocolHeaderE"))),
          update_(plugin.function<int(QVR::networkFrameData&)>(
              name("6updateERNS_16networkFrameDataE"))),
          destroy_(plugin.function<void()>(name("7destroyEv"))) {
        plugin.function<void()>(name("4initEv"))();
        manager_ = plugin.function<void*()>(name("3getEv"))();
    }
    ~Pipeline() { destroy_(); }
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    QVR::ProtocolHeader header() const {
        QVR::ProtocolHeader header;
        header_(manager_, header);
        return header;
    }
    int update(QVR::networkFrameData& frame) const { return update_(frame); }

  private:
    static std::string name(const std::string& member) { return "_ZN3QVR13cameraManager" + member; }

    int (*header_)(void*, QVR::ProtocolHeader&);
    int (*update_)(QVR::networkFrameData&);
    void (*destroy_)();
    void* manager_ = nullptr;
};

void addPicture(Transcript& transcript, const char* name, const void* pixels, std::size_t size) {
    if (pixels == nullptr) {
        transcript.add(name, std::string("none"));
    } else {
        transcript.addBytes(name, pixels, size);
    }
}

std::vector<std::string> run(Plugin& plugin, int frames) {
    plugin.setVolumes({EXAMPLES "/simulated"});
    Transcript transcript(plugin);
    {
        const Pipeline pipeline(plugin);
        const QVR::ProtocolHeader header = pipeline.header();
        transcript.addBytes("header", &header, sizeof header);
        const std::size_t depthPixels = std::size_t{header.depthX} * header.depthY;
        const std::size_t colorPixels = std::size_t{header.colorX} * header.colorY;
        for (int number = 0; number < frames; ++number) {
            QVR::networkFrameData frame;
            const int result = pipeline.update(frame);
            transcript.add("update", result);
            if (frame.touches != nullptr) {
                for (std::uint32_t slot = 0; slot < header.touchCount; ++slot) {
                    transcript.add("active", frame.touches[slot].active);
                    transcript.addBytes("touch", &frame.touches[slot], sizeof(QVR::NetworkTouch));
                }
            }
            addPicture(transcript, "processed", frame.processed, depthPixels);
            if (result == 0) {
                addPicture(transcript, "depth", frame.depth, 2 * depthPixels);
                addPicture(transcript, "color", frame.color, 3 * colorPixels);
            }
        }
    }
    return transcript.lines();
}

// What the Linux one did, for a look at it.
std::vector<std::string> runBoth(const char* camera, int frames) {
    const ScopedEnvironment variable("QVR_CAMERA", camera);
    const std::vector<std::string> onLinux = run(linuxPlugin(), frames);
    EXPECT_THAT(run(macosPlugin(), frames), ElementsAreArray(onLinux));
    return onLinux;
}

} // namespace

TEST(ServerRole, FindsTheSameTouchesInTheSameFrames) {
    const std::vector<std::string> lines = runBoth("simulated:pace=off,fingers=7,seed=11", 150);
    EXPECT_THAT(lines, Contains("update 0").Times(150));
    EXPECT_THAT(lines, Contains("active 1").Times(testing::Gt(100)));
}

TEST(ServerRole, FindsTheSameTouchesOfATiltedHand) {
    const std::vector<std::string> lines =
        runBoth("simulated:pace=off,scene=dragging,fingers=3,noise=4,tilt=5,bend=10", 60);
    EXPECT_THAT(lines, Contains("update 0").Times(60));
    EXPECT_THAT(lines, Contains("active 1"));
}

// The camera's failures are exceptions within the pipeline. Each breaks for longer than the test.
class ServerRoleOnABrokenCamera : public testing::TestWithParam<const char*> {};

TEST_P(ServerRoleOnABrokenCamera, LosesTheSameFrames) {
    const std::string camera = std::string("simulated:pace=off,lasting=1000,fault=") + GetParam();
    const std::vector<std::string> lines = runBoth(camera.c_str(), 12);
    EXPECT_THAT(lines, Contains("update 0").Times(testing::Ge(4)));
    EXPECT_THAT(lines, Contains("update 1"));
}

INSTANTIATE_TEST_SUITE_P(Faults, ServerRoleOnABrokenCamera,
                         testing::Values("vanish@5", "fail@5", "shrink@5"));
