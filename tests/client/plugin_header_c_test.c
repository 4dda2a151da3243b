/* The C interface is plain C: this file is compiled as C11 without extensions, and it fails to
 * compile when a function's type changes. */
#include "client/plugin.h"
/* Twice, as hosts do. */
#include "client/plugin.h"

#define EXPECT_TYPE(function, type)                                                                \
    _Static_assert(_Generic(&function, type : 1, default : 0), #function " has another type")

EXPECT_TYPE(registerDebugCallback, void (*)(void (*)(const char*)));
EXPECT_TYPE(printDebug, void (*)(bool));
EXPECT_TYPE(init, void (*)(void));
EXPECT_TYPE(initClientWithCustomServer, void (*)(const char*, unsigned int));
EXPECT_TYPE(shutDown, void (*)(void));
EXPECT_TYPE(setReceiveTimeout, void (*)(int));
EXPECT_TYPE(setReconnectReadsHeader, void (*)(bool));
EXPECT_TYPE(update, int (*)(void));
EXPECT_TYPE(hasDepthCamera, bool (*)(void));
EXPECT_TYPE(getDimX, int (*)(void));
EXPECT_TYPE(getDimY, int (*)(void));
EXPECT_TYPE(getColorDimX, int (*)(void));
EXPECT_TYPE(getColorDimY, int (*)(void));
EXPECT_TYPE(getTouchPoolSize, int (*)(void));
EXPECT_TYPE(prepareTouchCollection, bool (*)(void));
EXPECT_TYPE(getTouchData, float (*)(void));
EXPECT_TYPE(setColorTexture, bool (*)(unsigned char*));
EXPECT_TYPE(setDepthTexture, bool (*)(unsigned char*));
EXPECT_TYPE(setProcessedTexture, bool (*)(unsigned char*));
EXPECT_TYPE(updateColorTexture, bool (*)(void));
EXPECT_TYPE(updateDepthTexture, bool (*)(void));
EXPECT_TYPE(updateProcessedTexture, bool (*)(void));
EXPECT_TYPE(applyCalibrationToCoord, void (*)(float, float, float));
EXPECT_TYPE(getCalibratedX, float (*)(void));
EXPECT_TYPE(getCalibratedY, float (*)(void));
EXPECT_TYPE(getCalibratedZ, float (*)(void));
EXPECT_TYPE(setCalibration, void (*)(const char*));
EXPECT_TYPE(setProjectionMapping, bool (*)(const char*, int));
EXPECT_TYPE(loadProjectionMap, bool (*)(int));
EXPECT_TYPE(checkSettings, int (*)(const char*, bool, void (*)(const char*)));
EXPECT_TYPE(logInternalVariables, void (*)(void));
EXPECT_TYPE(getCameraInfo, const char* (*)(void));
EXPECT_TYPE(setTouchLerp, void (*)(float));
EXPECT_TYPE(outputCalibratedTouches, void (*)(bool));

_Static_assert(QVR_UPDATE_OK == 0, "hosts test for 0");
_Static_assert(QVR_UPDATE_NOT_READY == -1, "kept for hosts");
_Static_assert(QVR_UPDATE_NO_CONNECTION == -2, "kept for hosts");
_Static_assert(QVR_UPDATE_NO_HEADER == -3, "kept for hosts");
_Static_assert(QVR_UPDATE_NO_CLIENT == -100, "kept for hosts");
_Static_assert(QVR_UPDATE_NO_FRAME == -101, "kept for hosts");
