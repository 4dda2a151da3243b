/* The legacy camera interface, version 1.12.1: the functions that a program of ours calls.
 *
 * Every function that can fail takes an rs_error** as its last argument. Set the slot to null
 * before the call: success leaves it untouched, failure stores a new error that the caller frees
 * with rs_free_error. A null slot ignores errors; then only the result tells.
 * No function may be called from two threads at the same time.
 */
#ifndef LIBREALSENSE_RS_H
#define LIBREALSENSE_RS_H

#define RS_API_MAJOR_VERSION 1
#define RS_API_MINOR_VERSION 12
#define RS_API_PATCH_VERSION 1
#define RS_API_VERSION                                                                             \
    (RS_API_MAJOR_VERSION * 10000 + RS_API_MINOR_VERSION * 100 + RS_API_PATCH_VERSION)

/* In C++ every int is a valid value of an enumeration, as it is in C: a code that is no stream
 * comes back as an error instead of being undefined. */
#ifdef __cplusplus
#define RS_ENUM(name) enum name : int
extern "C" {
#else
#define RS_ENUM(name) enum name
#endif

typedef RS_ENUM(rs_stream){
    RS_STREAM_DEPTH = 0, RS_STREAM_COLOR = 1, RS_STREAM_INFRARED = 2, RS_STREAM_INFRARED2 = 3,
    RS_STREAM_FISHEYE = 4,
    /* The streams below are computed from the native ones and cannot be enabled themselves. */
    RS_STREAM_POINTS = 5, RS_STREAM_RECTIFIED_COLOR = 6, RS_STREAM_COLOR_ALIGNED_TO_DEPTH = 7,
    RS_STREAM_INFRARED2_ALIGNED_TO_DEPTH = 8, RS_STREAM_DEPTH_ALIGNED_TO_COLOR = 9,
    RS_STREAM_DEPTH_ALIGNED_TO_RECTIFIED_COLOR = 10, RS_STREAM_DEPTH_ALIGNED_TO_INFRARED2 = 11,
    RS_STREAM_COUNT = 12} rs_stream;

typedef RS_ENUM(rs_format){
    RS_FORMAT_ANY = 0,    RS_FORMAT_Z16 = 1,   RS_FORMAT_DISPARITY16 = 2, RS_FORMAT_XYZ32F = 3,
    RS_FORMAT_YUYV = 4,   RS_FORMAT_RGB8 = 5,  RS_FORMAT_BGR8 = 6,        RS_FORMAT_RGBA8 = 7,
    RS_FORMAT_BGRA8 = 8,  RS_FORMAT_Y8 = 9,    RS_FORMAT_Y16 = 10,        RS_FORMAT_RAW10 = 11,
    RS_FORMAT_RAW16 = 12, RS_FORMAT_RAW8 = 13, RS_FORMAT_COUNT = 14} rs_format;

typedef RS_ENUM(rs_output_buffer_format){RS_OUTPUT_BUFFER_FORMAT_CONTINUOUS = 0,
                                         RS_OUTPUT_BUFFER_FORMAT_NATIVE = 1,
                                         RS_OUTPUT_BUFFER_FORMAT_COUNT = 2} rs_output_buffer_format;

typedef RS_ENUM(rs_source){RS_SOURCE_VIDEO = 0, RS_SOURCE_MOTION_TRACKING = 1, RS_SOURCE_ALL = 2,
                           RS_SOURCE_COUNT = 3} rs_source;

typedef RS_ENUM(rs_distortion){RS_DISTORTION_NONE = 0, RS_DISTORTION_MODIFIED_BROWN_CONRADY = 1,
                               RS_DISTORTION_INVERSE_BROWN_CONRADY = 2, RS_DISTORTION_FTHETA = 3,
                               RS_DISTORTION_COUNT = 4} rs_distortion;

/* The options that cameras of the F200 and SR300 family have beyond colour control. */
typedef RS_ENUM(rs_option){RS_OPTION_F200_LASER_POWER = 12,
                           RS_OPTION_F200_ACCURACY = 13,
                           RS_OPTION_F200_MOTION_RANGE = 14,
                           RS_OPTION_F200_FILTER_OPTION = 15,
                           RS_OPTION_F200_CONFIDENCE_THRESHOLD = 16,
                           RS_OPTION_F200_DYNAMIC_FPS = 17,
                           RS_OPTION_COUNT = 68} rs_option;

typedef struct rs_context rs_context;
typedef struct rs_device rs_device;
typedef struct rs_error rs_error;

/* How a stream's pixels relate to directions in space. 48 bytes. */
typedef struct rs_intrinsics {
    int width;           /* pixels */
    int height;          /* pixels */
    float ppx;           /* principal point, pixels from the left edge */
    float ppy;           /* principal point, pixels from the top edge */
    float fx;            /* focal length in pixel widths */
    float fy;            /* focal length in pixel heights */
    rs_distortion model; /* how `coeffs` bend the image */
    float coeffs[5];
} rs_intrinsics;

/* The pose of one stream's camera seen from another. 48 bytes. */
typedef struct rs_extrinsics {
    float rotation[9];    /* 3 x 3, column-major */
    float translation[3]; /* metres */
} rs_extrinsics;

/* One context per process, reference counted: every successful call gives the same pointer.
 * Devices are enumerated when the first one is created. May give null without an error when an
 * earlier creation in this process failed. */
rs_context* rs_create_context(int api_version, rs_error** error);
void rs_delete_context(rs_context* context, rs_error** error);

int rs_get_device_count(const rs_context* context, rs_error** error);
/* The device belongs to the context and lives until the last context is deleted. */
rs_device* rs_get_device(rs_context* context, int index, rs_error** error);

/* Texts owned by the device. */
const char* rs_get_device_name(const rs_device* device, rs_error** error);
const char* rs_get_device_serial(const rs_device* device, rs_error** error);
const char* rs_get_device_firmware_version(const rs_device* device, rs_error** error);

int rs_device_supports_option(const rs_device* device, rs_option option, rs_error** error);
/* No range check; an option that the camera model lacks is an error. */
void rs_set_device_option(rs_device* device, rs_option option, double value, rs_error** error);

/* Records a request; 0 or RS_FORMAT_ANY means any. A mode that the camera cannot deliver is
 * reported by rs_start_source or the first size or intrinsics query. */
void rs_enable_stream_ex(rs_device* device, rs_stream stream, int width, int height,
                         rs_format format, int framerate, rs_output_buffer_format output,
                         rs_error** error);
void rs_start_source(rs_device* device, rs_source source, rs_error** error);
void rs_stop_source(rs_device* device, rs_source source, rs_error** error);
int rs_is_device_streaming(const rs_device* device, rs_error** error);

/* Need the stream enabled; an aligned stream has its target's size. */
int rs_get_stream_width(const rs_device* device, rs_stream stream, rs_error** error);
int rs_get_stream_height(const rs_device* device, rs_stream stream, rs_error** error);
void rs_get_stream_intrinsics(const rs_device* device, rs_stream stream, rs_intrinsics* intrin,
                              rs_error** error);

/* Metres in one depth unit. */
float rs_get_device_depth_scale(const rs_device* device, rs_error** error);
void rs_get_device_extrinsics(const rs_device* device, rs_stream from, rs_stream to,
                              rs_extrinsics* extrin, rs_error** error);

/* Blocks until the next frame set, at most 5 seconds, then fails. Returns at once, without an
 * error, when the device is not streaming. */
void rs_wait_for_frames(rs_device* device, rs_error** error);
/* The current frame; good until the next wait or stop. Null without an error after a stop. */
const void* rs_get_frame_data(const rs_device* device, rs_stream stream, rs_error** error);

const char* rs_get_failed_function(const rs_error* error);
const char* rs_get_failed_args(const rs_error* error);
const char* rs_get_error_message(const rs_error* error);
void rs_free_error(rs_error* error);

#ifdef __cplusplus
}
#endif

#endif
