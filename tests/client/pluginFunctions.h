/* The C functions of a plug-in that was loaded, by the names of the header and with its types. */
#ifndef QVR_TESTS_CLIENT_PLUGIN_FUNCTIONS_H
#define QVR_TESTS_CLIENT_PLUGIN_FUNCTIONS_H

#include "client/plugin.h"

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

struct PluginFunctions {
    void (*registerDebugCallback)(void (*callback)(const char*));
    void (*printDebug)(bool on);
    void (*init)(void);
    void (*initClientWithCustomServer)(const char* ip, unsigned int port);
    void (*shutDown)(void);
    void (*setReceiveTimeout)(int milliseconds);
    void (*setReconnectReadsHeader)(bool on);
    int (*update)(void);
    bool (*hasDepthCamera)(void);
    int (*getDimX)(void);
    int (*getDimY)(void);
    int (*getColorDimX)(void);
    int (*getColorDimY)(void);
    int (*getTouchPoolSize)(void);
    bool (*prepareTouchCollection)(void);
    float (*getTouchData)(void);
    bool (*setColorTexture)(unsigned char* buffer);
    bool (*setDepthTexture)(unsigned char* buffer);
    bool (*setProcessedTexture)(unsigned char* buffer);
    bool (*updateColorTexture)(void);
    bool (*updateDepthTexture)(void);
    bool (*updateProcessedTexture)(void);
    void (*applyCalibrationToCoord)(float x, float y, float z);
    float (*getCalibratedX)(void);
    float (*getCalibratedY)(void);
    float (*getCalibratedZ)(void);
    void (*setCalibration)(const char* json);
    bool (*setProjectionMapping)(const char* json, int number);
    bool (*loadProjectionMap)(int number);
    int (*checkSettings)(const char* folder, bool asServer, void (*report)(const char* line));
    void (*logInternalVariables)(void);
    const char* (*getCameraInfo)(void);
    void (*setTouchLerp)(float lerp);
    void (*outputCalibratedTouches)(bool on);
};

/* `find` gives the address of a name in `library`, or null. False when one is missing, which is
 * said on standard error. */
bool findPluginFunctions(struct PluginFunctions* functions,
                         void* (*find)(void* library, const char* name), void* library);

#ifdef __cplusplus
}
#endif

#endif
