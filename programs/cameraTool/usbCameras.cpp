#include "cameraTool/usbCameras.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace cameraTool {

namespace fs = std::filesystem;

namespace {

// F200, SR300 and the D400 family.
constexpr std::array<std::string_view, 17> products = {
    "0a66", "0aa5", "0ad0", "0ad1", "0ad2", "0ad3", "0ad4", "0ad5", "0ad6",
    "0af6", "0afe", "0aff", "0b00", "0b01", "0b03", "0b07", "0b0c"};

// The first line of an attribute file; "" when there is none.
std::string attribute(const fs::path& device, const char* name) {
    std::ifstream file(device / name);
    std::string line;
    std::getline(file, line);
    return line;
}

bool isRealsense(const fs::path& device) {
    if (attribute(device, "idVendor") != realsenseVendor) {
        return false;
    }
    const std::string product = attribute(device, "idProduct");
    return std::find(products.begin(), products.end(), product) != products.end() ||
           attribute(device, "product").find("RealSense") != std::string::npos;
}

// As the kernel names device files: bus and device in three digits.
std::string threeDigits(const std::string& number) {
    return std::string(3 - std::min<std::size_t>(3, number.size()), '0') + number;
}

fs::path usbNode(const fs::path& root, const fs::path& device) {
    return root / "dev/bus/usb" / threeDigits(attribute(device, "busnum")) /
           threeDigits(attribute(device, "devnum"));
}

// Pictures come through the video devices of the camera's interfaces.
std::vector<fs::path> videoNodes(const fs::path& root, const fs::path& device) {
    std::vector<fs::path> nodes;
    std::error_code ignored;
    for (const fs::directory_entry& interface : fs::directory_iterator(device, ignored)) {
        for (const fs::directory_entry& video :
             fs::directory_iterator(interface.path() / "video4linux", ignored)) {
            nodes.push_back(root / "dev" / video.path().filename());
        }
    }
    std::sort(nodes.begin(), nodes.end());
    return nodes;
}

Access accessTo(const fs::path& node) {
    if (::faccessat(AT_FDCWD, node.c_str(), R_OK | W_OK, AT_EACCESS) == 0) {
        return Access::open;
    }
    return errno == ENOENT ? Access::missing : Access::denied;
}

UsbCamera cameraAt(const fs::path& root, const fs::path& device) {
    UsbCamera camera;
    camera.name = attribute(device, "product");
    if (camera.name.empty()) {
        camera.name = "RealSense camera " + attribute(device, "idProduct");
    }
    camera.serial = attribute(device, "serial");
    camera.node = usbNode(root, device);
    camera.access = accessTo(camera.node);
    for (const fs::path& node : videoNodes(root, device)) {
        if (camera.access != Access::open) {
            break;
        }
        camera.node = node;
        camera.access = accessTo(node);
    }
    return camera;
}

} // namespace

std::span<const std::string_view> realsenseProducts() {
    return products;
}

std::vector<UsbCamera> usbCameras(const fs::path& root) {
    std::vector<fs::path> devices;
    std::error_code ignored;
    for (const fs::directory_entry& entry :
         fs::directory_iterator(root / "sys/bus/usb/devices", ignored)) {
        if (isRealsense(entry.path())) {
            devices.push_back(entry.path());
        }
    }
    std::sort(devices.begin(), devices.end());
    std::vector<UsbCamera> cameras;
    std::transform(devices.begin(), devices.end(), std::back_inserter(cameras),
                   [&](const fs::path& device) { return cameraAt(root, device); });
    return cameras;
}

} // namespace cameraTool
