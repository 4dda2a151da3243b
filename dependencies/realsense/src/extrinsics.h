// Poses between the streams of a camera with one depth and one colour sensor.
#pragma once

#include <librealsense/rs.h>

namespace camera {

// The transform of points from stream `from` to stream `to`. A stream made from another has the
// pose of the one whose geometry it is in. Equal poses give exactly the identity.
rs_extrinsics extrinsicsBetween(rs_stream from, rs_stream to, const rs_extrinsics& depthToColor);

// The transform back: the transposed rotation and the translation undone in it.
rs_extrinsics inverted(const rs_extrinsics& pose);

} // namespace camera
