#include "cameraTool/advice.h"

#include "common/executablePath.h"
#include "common/shippedFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace cameraTool {

namespace {

const std::string withoutOne = "Without a camera, try --camera simulated";

std::string nameOf(const UsbCamera& camera) {
    return camera.name + (camera.serial.empty() ? "" : " (serial " + camera.serial + ")");
}

std::string textOf(const UsbCamera& camera, const std::filesystem::path& rules) {
    switch (camera.access) {
    case Access::denied:
        return nameOf(camera) + " is plugged in, but you may not open " + camera.node.string() +
               ". Let udev hand cameras to you:\n"
               "    sudo cp " +
               rules.string() +
               " /etc/udev/rules.d/\n"
               "    sudo udevadm control --reload && sudo udevadm trigger\n"
               "then unplug the camera and plug it in again";
    case Access::missing:
        return nameOf(camera) + " is plugged in, but " + camera.node.string() +
               " is not there. A container has to be given the camera's device files; elsewhere, "
               "unplug the camera and plug it in again";
    case Access::open:
        break;
    }
    return nameOf(camera) + " is plugged in and open to you, but was not found: another program "
                            "may be using it, or the camera library does not know this model";
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// The camera library passes on what system and USB library say.
bool isBusy(const std::string& problem) {
    return contains(problem, std::strerror(EBUSY)) || contains(problem, "LIBUSB_ERROR_BUSY");
}

bool isDenied(const std::string& problem) {
    return contains(problem, std::strerror(EACCES)) || contains(problem, "LIBUSB_ERROR_ACCESS");
}

} // namespace

Surroundings surroundings() {
    return {usbCameras(), programs::shippedFile("programs/cameraTool/60-qvr-camera.rules",
                                                "udev/60-qvr-camera.rules",
                                                programs::executablePath().parent_path())};
}

std::string adviceWithoutCamera(const Surroundings& here, const std::string& libraryProblem) {
    if (!libraryProblem.empty()) {
        const std::string advice = adviceOn(libraryProblem, here);
        return libraryProblem + "\n" + (advice.empty() ? withoutOne : advice);
    }
    std::string text;
    for (const UsbCamera& camera : here.plugged) {
        text += (text.empty() ? "" : "\n") + textOf(camera, here.rules);
    }
    return text.empty() ? "no depth camera is plugged in. " + withoutOne : text;
}

std::string adviceOn(const std::string& problem, const Surroundings& here) {
    if (isBusy(problem)) {
        return "Another program is using the camera, and only one can: end qvr-server, or whatever "
               "else shows its pictures";
    }
    const auto closed =
        std::find_if(here.plugged.begin(), here.plugged.end(),
                     [](const UsbCamera& camera) { return camera.access != Access::open; });
    if (closed != here.plugged.end()) {
        return textOf(*closed, here.rules);
    }
    if (isDenied(problem)) {
        return "You may not open the camera. Where it is a USB camera of this machine, let udev "
               "hand it to you: install " +
               here.rules.string() + " in /etc/udev/rules.d and plug the camera in again";
    }
    return "";
}

} // namespace cameraTool
