#include "client/pluginFunctions.h"

#include <stddef.h>
#include <stdio.h>
#include <string.h>

/* ISO C has no conversion from an object pointer to a function pointer; the bytes are the same. */
static bool keep(void* symbol, const char* name, void* function, size_t size) {
    if (symbol == NULL || size != sizeof symbol) {
        fprintf(stderr, "no %s in the plug-in\n", name);
        return false;
    }
    memcpy(function, &symbol, size);
    return true;
}

#define FIND(name) keep(find(library, #name), #name, &functions->name, sizeof functions->name)

bool findPluginFunctions(struct PluginFunctions* functions,
                         void* (*find)(void* library, const char* name), void* library) {
    bool all = true;
    all = FIND(registerDebugCallback) && all;
    all = FIND(printDebug) && all;
    all = FIND(init) && all;
    all = FIND(initClientWithCustomServer) && all;
    all = FIND(shutDown) && all;
    all = FIND(setReceiveTimeout) && all;
    all = FIND(setReconnectReadsHeader) && all;
    all = FIND(update) && all;
    all = FIND(hasDepthCamera) && all;
    all = FIND(getDimX) && all;
    all = FIND(getDimY) && all;
    all = FIND(getColorDimX) && all;
    all = FIND(getColorDimY) && all;
    all = FIND(getTouchPoolSize) && all;
    all = FIND(prepareTouchCollection) && all;
    all = FIND(getTouchData) && all;
    all = FIND(setColorTexture) && all;
    all = FIND(setDepthTexture) && all;
    all = FIND(setProcessedTexture) && all;
    all = FIND(updateColorTexture) && all;
    all = FIND(updateDepthTexture) && all;
    all = FIND(updateProcessedTexture) && all;
    all = FIND(applyCalibrationToCoord) && all;
    all = FIND(getCalibratedX) && all;
    all = FIND(getCalibratedY) && all;
    all = FIND(getCalibratedZ) && all;
    all = FIND(setCalibration) && all;
    all = FIND(setProjectionMapping) && all;
    all = FIND(loadProjectionMap) && all;
    all = FIND(checkSettings) && all;
    all = FIND(logInternalVariables) && all;
    all = FIND(getCameraInfo) && all;
    all = FIND(setTouchLerp) && all;
    all = FIND(outputCalibratedTouches) && all;
    return all;
}
