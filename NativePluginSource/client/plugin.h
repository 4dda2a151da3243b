/* The C interface of the plug-in: touch input from a depth camera, for a host application.
 *
 * A host includes this header and links the library, or loads the library and looks the
 * functions up by these names. They serve the client side: the library connects to a camera
 * server, receives one frame per update and answers questions about the latest frame.
 *
 * A host's life:  registerDebugCallback, init;  then per host frame: update,
 * prepareTouchCollection, getTouchData, update...Texture;  at the end: shutDown.
 *
 * Words
 *   slot        One of the fixed places that a touch can have. A finger keeps its slot while it
 *               stays on the surface. getTouchPoolSize says how many slots there are.
 *   touch       A finger in its slot: x, y, z. x and y lie on the display, z stands off it, in
 *               the unit of the server's calibration; from a server that sends raw touches, x and
 *               y are depth image pixels and z is in depth units. An empty slot is -1, -1, -1.
 *   frame       What the server sends at a time: all slots, then the images that it offers. An
 *               update receives exactly one.
 *   depth unit  The step of the camera's 16-bit depth samples, 1000 or 8000 to a metre on common
 *               cameras. 0 is no measurement.
 *   texture     An image of the latest frame in the host's own memory: rows top to bottom
 *               without padding, four bytes a pixel.
 *   calibration The way from camera space (depth pixels, depth units) to the display: a
 *               distortion map, then a projection map.
 *
 * Threads and time. Call everything from one thread, the host's; no function may run while
 * shutDown does. init, initClientWithCustomServer and update block as each one says, and
 * loadProjectionMap reads a file; all others return at once. Nothing throws: a failure inside
 * becomes a log line and the value that the function gives when there is no client.
 *
 * "No client" below means before init or after shutDown. A client exists from init on even when
 * the server cannot be reached: update keeps trying.
 */
#ifndef QVR_CLIENT_PLUGIN_H
#define QVR_CLIENT_PLUGIN_H

#include "foundation/qvrApi.h"

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Messages ---- */

/* Sends the library's messages to `callback` instead of standard output; null sends them to
 * standard output again. May be called at any time, also before init, and stays in force across
 * shutDown. The text is valid during the call only and has no line ending. The callback runs on
 * the thread that calls the library, must stay callable until replaced, and must not call init,
 * initClientWithCustomServer or shutDown. */
QVR_API void registerDebugCallback(void (*callback)(const char* message));

/* Switches progress messages on or off (off at load) and logs "Set debugging to ON" or "...OFF".
 * Errors are logged either way. */
QVR_API void printDebug(bool on);

/* ---- Life ---- */

/* Makes the client with the address in "QVR_calibration/touch_client.json" on a mounted volume,
 * or with "localhost" port 27016 when there is no such file. The file may set the two switches
 * below as well. Blocks through one connection attempt and, when the server answers, until its
 * header has arrived. Does nothing when a client exists already. */
QVR_API void init(void);

/* The same with a given server: `ip` is a host name or address, `port` its port. Reads no
 * settings file. Null counts as an empty name. */
QVR_API void initClientWithCustomServer(const char* ip, unsigned int port);

/* Closes the connection and frees the client; pointers handed in by set...Texture are forgotten.
 * Harmless without a client; init may follow. */
QVR_API void shutDown(void);

/* ---- When the server fails ----
 *
 * Two switches, both off at load. Hosts are advised to set both before init. They may be called
 * at any time and stay in force across shutDown. */

/* The time that an update has, in milliseconds: connection, header and frame together, only the
 * lookup of a host name comes on top. The first attempt in init has as much. When it is over, the
 * connection is closed and the update fails. Choose it well above the server's frame interval and
 * above a second, after which qvr-server fills in for a camera that is silent. 0 or less: an
 * update waits without end. */
QVR_API void setReceiveTimeout(int milliseconds);

/* Whether a client that connects again begins with the header that the server sends then. With it
 * the update after a failed one goes on by itself, even when the server has come back with other
 * sizes; ask for the sizes and set the textures after the first success. A texture whose image
 * has changed in size is forgotten, never written; the calibration files are read again when the
 * depth unit has changed; and after a failed update all slots are empty. */
QVR_API void setReconnectReadsHeader(bool on);

/* What update returns. */
enum QvrUpdateResult {
    QVR_UPDATE_OK = 0,             /* a whole frame has arrived; see update for the exception */
    QVR_UPDATE_NOT_READY = -1,     /* the network client could not start */
    QVR_UPDATE_NO_CONNECTION = -2, /* the server cannot be reached */
    QVR_UPDATE_NO_HEADER = -3,     /* the server's description of its stream is missing, of
                                      another protocol version, or beyond the limits */
    QVR_UPDATE_NO_CLIENT = -100,   /* before init or after shutDown */
    QVR_UPDATE_NO_FRAME = -101     /* the connection broke, or the time-out passed, while a frame
                                      was received */
};

/* Receives the next frame; connects first when there is no connection. Blocks until the frame is
 * whole (the server's frame interval, when the host is the faster one) or the attempt has
 * failed; the connection attempt has the system's time-out. Returns an enum QvrUpdateResult.
 * After a failure the next update connects anew. Without setReconnectReadsHeader this helps by
 * itself only after QVR_UPDATE_NO_CONNECTION: the client then takes in one header in its life,
 * while a server sends one on every connection. So after QVR_UPDATE_NO_FRAME the new connection's
 * header would be taken for the start of a frame, and after QVR_UPDATE_NO_HEADER updates return
 * QVR_UPDATE_OK at once without receiving anything. Call shutDown and init first in both cases. */
QVR_API int update(void);

/* True when a client exists, connected or not. */
QVR_API bool hasDepthCamera(void);

/* ---- What the server sends ---- */

/* Width and height of the depth image and of the colour image, in pixels; 0 before the first
 * contact with a server, -1 with no client. The server fills them in even when it does not send
 * the image. */
QVR_API int getDimX(void);
QVR_API int getDimY(void);
QVR_API int getColorDimX(void);
QVR_API int getColorDimY(void);

/* The number of touch slots; 0 before the first contact with a server, -1 with no client. */
QVR_API int getTouchPoolSize(void);

/* ---- Touches ---- */

/* Puts the slots of the latest frame in a list and goes to its beginning. False with no client,
 * else true. */
QVR_API bool prepareTouchCollection(void);

/* The next value of the list: x, y, z of slot 0, then of slot 1, and so on; three values a slot,
 * -1 each for an empty slot. -9999 past the end and with no client. Call prepareTouchCollection
 * first in every frame: before the very first time the list begins at its second value. */
QVR_API float getTouchData(void);

/* ---- Textures ----
 *
 * The buffers are the host's and must stay valid until replaced, set to null, or shutDown. Each
 * holds 4 bytes for every pixel of its image:
 *
 *   colour     4 * getColorDimX() * getColorDimY() bytes: red, green, blue, 255
 *   depth      4 * getDimX() * getDimY() bytes: low byte and high byte of the depth, 0, 255
 *   processed  4 bytes for every pixel of the camera's own depth image, which is larger than
 *              getDimX() by getDimY() when the server sends a downsampled one: the detection's
 *              mask three times, 255; the mask is 0, or 1 to 16 where a pixel may belong to a
 *              finger, so a host brightens it for people to see
 */

/* Says where the texture is to be written; null: nowhere. False with no client, else true. */
QVR_API bool setColorTexture(unsigned char* buffer);
QVR_API bool setDepthTexture(unsigned char* buffer);
QVR_API bool setProcessedTexture(unsigned char* buffer);

/* Writes the image of the latest frame into the buffer that was set; leaves the buffer alone
 * when the server does not send that image. False with no client, else true. */
QVR_API bool updateColorTexture(void);
QVR_API bool updateDepthTexture(void);
QVR_API bool updateProcessedTexture(void);

/* ---- Calibration ---- */

/* Takes a point of the depth image (x and y in pixels of the image as sent, z in depth units) to
 * the display. The result is read with getCalibratedX, Y and Z. Without a client or without a
 * calibration the result is the point itself. */
QVR_API void applyCalibrationToCoord(float x, float y, float z);

/* The result of the last applyCalibrationToCoord; 0 at load. Survives shutDown. */
QVR_API float getCalibratedX(void);
QVR_API float getCalibratedY(void);
QVR_API float getCalibratedZ(void);

/* Replaces the distortion map by that of a calibration document ("touch.json" as text), and the
 * sizes by which downsampled depth pixels are taken back to full resolution. Problems are logged.
 * Null counts as an empty text. */
QVR_API void setCalibration(const char* json);

/* Replaces the projection map by map number `number` of a projection map document as text. False
 * with no client, before a calibration has been loaded, and when the text is no JSON or lacks the
 * map; the map in force then stays. Null counts as an empty text. */
QVR_API bool setProjectionMapping(const char* json, int number);

/* The same with the document "QVR_calibration/touch_projectionMap.json" of a mounted volume;
 * false as well when there is none. */
QVR_API bool loadProjectionMap(int number);

/* ---- Settings ---- */

/* Reads the settings documents of `folder`, which stands for the root of a volume, as a client
 * would, or as a camera server would with `asServer`, and hands `report` a line for each value
 * that a person should mend, as in
 *
 *     QVR_calibration/touch.json: streaming.fps: found 30.5, using 30
 *
 * "file: note: ..." for what is worth knowing, and a last line that sums up. Returns how many
 * there are to mend; -1, which is logged, when it cannot check. The text is valid during the call
 * only. Changes nothing, needs no client, and logs nothing else. */
QVR_API int checkSettings(const char* folder, bool asServer, void (*report)(const char* line));

/* ---- Only beside a camera ----
 *
 * Kept so that one host fits both sides. In the client each logs
 * "WARNING: <name>() is not available in the client version." and does nothing more. */

QVR_API void logInternalVariables(void);
QVR_API const char* getCameraInfo(void); /* null */
QVR_API void setTouchLerp(float lerp);
QVR_API void outputCalibratedTouches(bool on);

#ifdef __cplusplus
} /* extern "C" */

#include <string>

/* setCalibration for C++ callers, with its outcome. 0: loaded, or no client; -1: empty text; -2:
 * no JSON; -3 to -8: the document lacks its size (-4, -5) or its clip distances (-6, -7), or
 * these make no sense (-8); -10: no calibration has been loaded that could be replaced, or a
 * failure inside. */
QVR_API int setCalibrationAsString(std::string json);
#endif

#endif
