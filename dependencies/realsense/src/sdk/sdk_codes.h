// RealSense SDK 2's codes for those of the C interface. The numbers look alike and are shifted, so
// each is written out and tested: a wrong option is accepted by a camera without complaint.
#pragma once

#include <optional>

#include <librealsense/rs.h>
#include <librealsense2/rs.h>

namespace camera::sdk {

// The option of the same meaning; nothing where the SDK has none.
std::optional<rs2_option> optionCode(rs_option option);

// Whether an option belongs to the colour sensor; the others belong to the depth sensor.
bool isColorControl(rs_option option);

// ANY for a stream that the SDK does not have.
rs2_stream streamCode(rs_stream stream);
// Formats alone have the same numbers.
rs2_format formatCode(rs_format format);

// The layout is the same, the lens models nearly: one of the SDK's that the SDK itself neither
// projects nor deprojects with is none here, and coefficients without a model are zero, because
// recordings come with any numbers there.
rs_intrinsics intrinsicsFrom(const rs2_intrinsics& lens);
rs_extrinsics extrinsicsFrom(const rs2_extrinsics& pose);

} // namespace camera::sdk
