// Number conversions that must give the same value on every compiler and processor.
#pragma once

namespace QVR {

// `value` truncated toward zero. What no int can hold (NaN included) becomes the smallest int,
// which is what the conversion instruction of 64-bit x86 gives; the bare cast is undefined there.
int truncateToInt(double value);

// Depth units in one metre, from a camera's depth scale (metres in one unit). Single precision
// makes 1 / 0.001 come out as 999.99994, yet the camera means 1000: a quotient that is within
// single-precision rounding of a whole number is that number.
float unitsPerMeter(float depthScale);

} // namespace QVR
