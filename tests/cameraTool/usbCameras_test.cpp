// Which cameras the system sees, and whether this user may open them.
#include "cameraTool/FakeUsb.h"
#include "cameraTool/usbCameras.h"

#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace cameraTool;
using camera_tool_test::FakeUsb;
namespace fs = std::filesystem;

// Root may open everything, so the tests of rights are those of another user.
class OrdinaryUser {
  public:
    OrdinaryUser() {
        if (::geteuid() == 0 && ::seteuid(65534) != 0) {
            ADD_FAILURE() << "cannot become another user";
        }
    }
    ~OrdinaryUser() {
        if (::geteuid() != ::getuid() && ::seteuid(::getuid()) != 0) {
            ADD_FAILURE() << "cannot become root again";
        }
    }
};

class UsbCameras : public testing::Test {
  protected:
    UsbCameras() { fs::permissions(usb.folder.path(), fs::perms{0755}); }

    void addNode(const std::string& path, mode_t mode) const {
        const std::string node = usb.folder.write(path, "");
        ASSERT_EQ(::chmod(node.c_str(), mode), 0);
    }
    std::vector<UsbCamera> found() const {
        const OrdinaryUser user;
        return usbCameras(usb.folder.path());
    }

    FakeUsb usb;
};

TEST_F(UsbCameras, AreFoundByVendorAndNameOrNumber) {
    usb.add("1-1", "8086", "0b48", "Intel(R) RealSense(TM) Depth Camera", "117", 4);
    usb.add("1-2", "8086", "0aa5", "", "", 5);
    usb.add("1-3", "8086", "0001", "Bluetooth", "", 6);
    usb.add("1-4", "046d", "0aa5", "RealSense of another maker", "", 7);
    usb.folder.write("sys/bus/usb/devices/1-1:1.0/bInterfaceClass", "0e\n");
    const auto cameras = found();
    ASSERT_EQ(cameras.size(), 2U);
    EXPECT_EQ(cameras[0].name, "Intel(R) RealSense(TM) Depth Camera");
    EXPECT_EQ(cameras[0].serial, "117");
    EXPECT_EQ(cameras[1].name, "RealSense camera 0aa5");
    EXPECT_EQ(cameras[1].serial, "");
}

TEST_F(UsbCameras, AreNoneOnASystemThatHasNoSuchFolder) {
    EXPECT_TRUE(found().empty());
}

TEST_F(UsbCameras, AreMissingWithoutTheirDeviceFile) {
    usb.add("1-1", "8086", "0aa5", "", "", 12);
    const auto cameras = found();
    ASSERT_EQ(cameras.size(), 1U);
    EXPECT_EQ(cameras[0].access, Access::missing);
    EXPECT_EQ(cameras[0].node, usb.folder.file("dev/bus/usb/002/012"));
}

TEST_F(UsbCameras, AreDeniedToAnotherUser) {
    usb.add("1-1", "8086", "0aa5", "", "", 12);
    for (const mode_t mode : {0600, 0000, 0644, 0622}) {
        addNode("dev/bus/usb/002/012", mode);
        if (::geteuid() == 0 || mode == 0000) {
            EXPECT_EQ(found().at(0).access, Access::denied) << std::oct << mode;
        }
    }
    addNode("dev/bus/usb/002/012", 0666);
    EXPECT_EQ(found().at(0).access, Access::open);
}

TEST_F(UsbCameras, AreAsOpenAsTheirVideoDevices) {
    usb.add("1-1", "8086", "0aa5", "", "", 12);
    addNode("dev/bus/usb/002/012", 0666);
    usb.folder.write("sys/bus/usb/devices/1-1/1-1:1.0/video4linux/video3/name", "");
    usb.folder.write("sys/bus/usb/devices/1-1/1-1:1.2/video4linux/video4/name", "");
    addNode("dev/video3", 0666);
    addNode("dev/video4", 0000);
    EXPECT_EQ(found().at(0).access, Access::denied);
    EXPECT_EQ(found().at(0).node, usb.folder.file("dev/video4"));
    addNode("dev/video4", 0666);
    EXPECT_EQ(found().at(0).access, Access::open);
}

} // namespace
