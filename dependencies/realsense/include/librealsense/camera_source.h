/* Camera sources beyond real hardware: an extension of the legacy interface.
 *
 * Absent from a system librealsense 1.12; programs that use it are built with
 * QVR_HAVE_CAMERA_SOURCES defined to 1 where it exists.
 */
#ifndef LIBREALSENSE_CAMERA_SOURCE_H
#define LIBREALSENSE_CAMERA_SOURCE_H

#include <librealsense/rs.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Chooses what contexts created from now on enumerate:
 *   "simulated" or "simulated:key=value,..."  a synthetic scene with known truth
 *   "images:DIR" or "images:DIR,key=value,..." a recording, or a folder of 16-bit PNG depth
 *                                             images
 *   "realsense" or "realsense:SERIAL"          a camera of RealSense SDK 2, when built with it
 *   "bag:FILE" or "bag:FILE,loop=off,pace=off" a recording of that SDK
 * Null or "" returns to the default: the environment variable QVR_CAMERA, else real hardware.
 * Fails on an unknown source, key or value, and on a folder without usable images; the message
 * says what is wrong and what is accepted. An existing context keeps its devices. */
void rs_select_camera_source(const char* uri, rs_error** error);

/* What the camera could not do as asked since the last call, one line each, for a log: an option
 * that it does not have, say, where a program had better go on without it. "" when there is
 * nothing. The text belongs to the device and is good until the next call. */
const char* rs_take_device_notices(rs_device* device, rs_error** error);

typedef struct rs_stream_mode {
    int width;     /* pixels */
    int height;    /* pixels */
    int framerate; /* frames a second */
} rs_stream_mode;

/* Every mode from `least` to `most`, each number for itself; mostly the two are one. */
typedef struct rs_mode_range {
    rs_stream_mode least;
    rs_stream_mode most;
} rs_mode_range;

/* What depth or colour can be enabled with, both at one rate: fills in as many ranges as `capacity`
 * allows, and gives how many there are. 0 for a stream that the camera does not have. */
int rs_get_stream_modes(const rs_device* device, rs_stream stream, rs_mode_range* ranges,
                        int capacity, rs_error** error);

/* What an enabled stream comes in, with everything settled that was left open. Fails as the size
 * queries do. */
void rs_get_current_mode(rs_device* device, rs_stream stream, rs_stream_mode* mode,
                         rs_error** error);

/* 1 when the last wait failed because a recording that is not played over and over has ended. */
int rs_has_ended(const rs_device* device, rs_error** error);

/* Where one simulated finger truly is. */
typedef struct rs_scene_finger {
    int id;           /* the same finger keeps its number; from 0 */
    int touching;     /* 1 while the tip is inside the touch volume and in the image */
    float pixel[2];   /* the tip in the depth image: column, row */
    float depth;      /* the tip's distance from the camera plane in depth units */
    float display[3]; /* the tip in display space: millimetres right of and below the display's
                         upper left corner, and in front of its plane */
} rs_scene_finger;

#define RS_SCENE_MAX_FINGERS 16

typedef struct rs_scene_truth {
    unsigned long long frame; /* number of the current frame, from 0; of a recording, the number
                                 that the frame had when it was recorded */
    double seconds;           /* when it came, since the recorded camera's start, if `timed` */
    int timed;                /* 1 when the source knows that */
    int known;                /* 1 when the source knows the truth of its scene */
    int finger_count;
    rs_scene_finger fingers[RS_SCENE_MAX_FINGERS];
} rs_scene_truth;

/* The truth behind the frame that the last wait made current. Sources of pictures alone fill in
 * the frame's number and time and leave `known` 0. Fails when the device is no source of ours or no
 * frame came yet. */
void rs_get_scene_truth(const rs_device* device, rs_scene_truth* truth, rs_error** error);

#ifdef __cplusplus
}
#endif

#endif
