// The one context of the process and the devices in it.
#pragma once

#include "device.h"

#include <functional>
#include <memory>
#include <vector>

struct rs_device {
    std::unique_ptr<camera::Device> camera;
};

struct rs_context {
    std::vector<std::unique_ptr<rs_device>> devices;
};

namespace camera {

// Opens the cameras that there are; throws std::runtime_error when one cannot be opened.
using Enumeration = std::function<std::vector<std::unique_ptr<Device>>()>;

// Chooses what the next first context enumerates; null is the default. An existing context keeps
// its devices. A failed creation is forgotten: with another camera chosen it is worth a new try.
void setEnumeration(Enumeration enumeration);

// Counts one more user and gives the context, made for the first of them. Making it may throw;
// because the user is counted before, every later call then gives null.
rs_context* acquireContext();

// Counts one user less; the last one takes the devices along. Throws when `context` is not the
// living one.
void releaseContext(const rs_context* context);

} // namespace camera
