// A system's folders with USB devices in them.
#pragma once

#include "support/TemporaryFolder.h"

#include <string>

namespace camera_tool_test {

struct FakeUsb {
    // A device of that number below root; files that tell nothing are not there, as in the
    // kernel's.
    void add(const std::string& place, const std::string& vendor, const std::string& product,
             const std::string& name, const std::string& serial, int device) const {
        const std::string here = "sys/bus/usb/devices/" + place + "/";
        folder.write(here + "idVendor", vendor + "\n");
        folder.write(here + "idProduct", product + "\n");
        folder.write(here + "busnum", "2\n");
        folder.write(here + "devnum", std::to_string(device) + "\n");
        if (!name.empty()) {
            folder.write(here + "product", name + "\n");
        }
        if (!serial.empty()) {
            folder.write(here + "serial", serial + "\n");
        }
    }

    support::TemporaryFolder folder;
};

} // namespace camera_tool_test
