#include "c_interface.h"

#include <librealsense/camera_source.h>
#include <librealsense/rs.h>
#include <string.h>

_Static_assert(sizeof(rs_intrinsics) == 48, "size of rs_intrinsics");
_Static_assert(sizeof(rs_extrinsics) == 48, "size of rs_extrinsics");
_Static_assert(sizeof(rs_stream) == 4, "size of rs_stream");
_Static_assert(RS_API_VERSION == 11201, "version");
_Static_assert(RS_STREAM_DEPTH_ALIGNED_TO_COLOR == 9, "stream codes");
_Static_assert(RS_FORMAT_RGB8 == 5 && RS_FORMAT_COUNT == 14, "format codes");
_Static_assert(RS_OPTION_F200_FILTER_OPTION == 15, "option codes");

int checkInterfaceFromC(void) {
    rs_error* error = NULL;
    rs_get_stream_width(NULL, RS_STREAM_COLOR, &error);
    if (!error) {
        return 1;
    }
    if (strcmp(rs_get_failed_function(error), "rs_get_stream_width") != 0) {
        return 2;
    }
    if (strcmp(rs_get_failed_args(error), "device:0, stream:COLOR") != 0) {
        return 3;
    }
    rs_free_error(error);
    error = NULL;
    rs_select_camera_source("", &error);
    return error ? 4 : 0;
}
