// Marks the functions of the C interface; everything else stays inside the library.
#pragma once

#define QVR_CAMERA_EXPORT __attribute__((visibility("default")))
