#include "extrinsics.h"

namespace camera {
namespace {

// Infrared pictures come from the depth sensor. The colour sensor is the origin of all others.
bool hasDepthPose(rs_stream stream) {
    switch (stream) {
    case RS_STREAM_DEPTH:
    case RS_STREAM_INFRARED:
    case RS_STREAM_POINTS:
    case RS_STREAM_COLOR_ALIGNED_TO_DEPTH:
    case RS_STREAM_INFRARED2_ALIGNED_TO_DEPTH:
        return true;
    default:
        return false;
    }
}

} // namespace

rs_extrinsics extrinsicsBetween(rs_stream from, rs_stream to, const rs_extrinsics& depthToColor) {
    if (hasDepthPose(from) == hasDepthPose(to)) {
        return {{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};
    }
    return hasDepthPose(from) ? depthToColor : inverted(depthToColor);
}

rs_extrinsics inverted(const rs_extrinsics& pose) {
    rs_extrinsics inverse{};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            inverse.rotation[column * 3 + row] = pose.rotation[row * 3 + column];
            inverse.translation[row] -= pose.rotation[row * 3 + column] * pose.translation[column];
        }
    }
    return inverse;
}

} // namespace camera
