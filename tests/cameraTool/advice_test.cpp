// What is said to do when a camera cannot be used.
#include "cameraTool/advice.h"

#include <cerrno>
#include <cstring>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace cameraTool;
using testing::HasSubstr;

Surroundings with(Access access) {
    return {{{"SR300", "117", "/dev/bus/usb/002/004", access}}, "/usr/share/cameras.rules"};
}
const Surroundings nothing{{}, "/usr/share/cameras.rules"};

const std::string install = "SR300 (serial 117) is plugged in, but you may not open "
                            "/dev/bus/usb/002/004. Let udev hand cameras to you:\n"
                            "    sudo cp /usr/share/cameras.rules /etc/udev/rules.d/\n"
                            "    sudo udevadm control --reload && sudo udevadm trigger\n"
                            "then unplug the camera and plug it in again";

TEST(Advice, IsToTakeTheSimulatedCameraWhenNoneIsPluggedIn) {
    EXPECT_EQ(adviceWithoutCamera(nothing, ""),
              "no depth camera is plugged in. Without a camera, try --camera simulated");
}

TEST(Advice, IsToInstallTheRuleWhenTheCameraIsAnothersOwn) {
    EXPECT_EQ(adviceWithoutCamera(with(Access::denied), ""), install);
    EXPECT_EQ(adviceOn("failed to set power state", with(Access::denied)), install);
}

TEST(Advice, IsToHandTheDeviceInWhenItIsMissing) {
    EXPECT_EQ(adviceWithoutCamera(with(Access::missing), ""),
              "SR300 (serial 117) is plugged in, but /dev/bus/usb/002/004 is not there. A "
              "container has to be given the camera's device files; elsewhere, unplug the camera "
              "and plug it in again");
}

TEST(Advice, NamesOtherReasonsForACameraThatIsOpenAndNotFound) {
    EXPECT_EQ(adviceWithoutCamera(with(Access::open), ""),
              "SR300 (serial 117) is plugged in and open to you, but was not found: another "
              "program may be using it, or the camera library does not know this model");
}

TEST(Advice, PassesOnWhatTheLibrarySays) {
    EXPECT_EQ(adviceWithoutCamera(nothing, "build me with the SDK"),
              "build me with the SDK\nWithout a camera, try --camera simulated");
}

TEST(Advice, IsToEndTheOtherProgramWhenTheCameraIsBusy) {
    const std::string system = std::string("Last Error: ") + std::strerror(EBUSY);
    for (const std::string& problem :
         {system, std::string("libusb_claim_interface(...) returned LIBUSB_ERROR_BUSY")}) {
        EXPECT_EQ(adviceOn(problem, with(Access::open)),
                  "Another program is using the camera, and only one can: end qvr-server, or "
                  "whatever else shows its pictures");
    }
}

TEST(Advice, IsTheRuleAsWellWhereOnlyTheLibraryKnowsOfTheCamera) {
    const std::string system = std::string("Cannot open '/dev/video0 ") + std::strerror(EACCES);
    for (const std::string& problem :
         {system, std::string("libusb_open(...) returned LIBUSB_ERROR_ACCESS")}) {
        EXPECT_THAT(adviceOn(problem, nothing), HasSubstr("install /usr/share/cameras.rules in "));
    }
}

TEST(Advice, IsNoneOnWhatNobodyKnows) {
    EXPECT_EQ(adviceOn("the lens has fallen out", with(Access::open)), "");
}

} // namespace
