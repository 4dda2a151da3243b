// Depth cameras as the operating system sees them, whether or not the camera library reaches them.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cameraTool {

enum class Access {
    open,    // this user may read and write it
    denied,  // it is another user's
    missing, // it is not there, as in a container that was not given it
};

struct UsbCamera {
    std::string name;
    std::string serial;         // "" when it tells none
    std::filesystem::path node; // the device file that counts: the first that is not open
    Access access = Access::open;
};

// The vendor's number and those of the cameras that are known, whatever they call themselves; the
// rule for udev has the same.
constexpr std::string_view realsenseVendor = "8086";
std::span<const std::string_view> realsenseProducts();

// The RealSense cameras below `root`, which is "/" but for tests: devices of the vendor that call
// themselves so or have a known number. Empty on systems without /sys.
std::vector<UsbCamera> usbCameras(const std::filesystem::path& root = "/");

} // namespace cameraTool
