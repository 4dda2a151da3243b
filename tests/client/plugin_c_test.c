/* Loads the built plug-in as a host does and drives it through its C functions alone, against a
 * server that this program runs itself.
 *
 *     plugin_c_test PLUGIN
 */
#include "client/pluginFunctions.h"
#include "client/pluginLibrary.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

static int failures = 0;

#define CHECK(condition)                                                                           \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition);                \
            ++failures;                                                                            \
        }                                                                                          \
    } while (0)

static struct PluginFunctions plugin;

static char lastMessage[1024];
static int messageCount = 0;

static void keepMessage(const char* message) {
    snprintf(lastMessage, sizeof lastMessage, "%s", message);
    ++messageCount;
}

/* ---- The server: one client, a header, one frame, and the end ---- */

static int listener;

static size_t append(unsigned char* stream, size_t at, const void* bytes, size_t size) {
    memcpy(stream + at, bytes, size);
    return at + size;
}

static void* serve(void* unused) {
    /* protocol, byte order, units per metre; depth and processed 2 x 1, colour 1 x 2; 2 slots */
    const uint32_t header[16] = {1, 0x01020304, 1000, 2, 1, 1, 2, 2, 1, 1, 1, 1, 2, 3, 1, 2};
    const int32_t active[2] = {0, 1};
    const double places[2][3] = {{-1, -1, -1}, {0.25, 0.5, 0.125}};
    const uint16_t depth[2] = {0x1234, 0xFFFE};
    unsigned char stream[256];
    size_t size = 0;
    size_t sent = 0;
    int slot;
    const int connection = accept(listener, NULL, NULL);

    size = append(stream, size, header, sizeof header);
    for (slot = 0; slot < 2; ++slot) {
        size = append(stream, size, &active[slot], sizeof active[slot]);
        size = append(stream, size, places[slot], sizeof places[slot]);
    }
    size = append(stream, size, "abcdef", 6);
    size = append(stream, size, depth, sizeof depth);
    size = append(stream, size, "yz", 2);
    while (sent < size) {
        const ssize_t piece = send(connection, stream + sent, size - sent, 0);
        if (piece <= 0) {
            break;
        }
        sent += (size_t)piece;
    }
    close(connection);
    return unused;
}

static unsigned int startServer(pthread_t* thread) {
    struct sockaddr_in address;
    socklen_t size = sizeof address;
    memset(&address, 0, sizeof address);
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    listener = socket(AF_INET, SOCK_STREAM, 0);
    if (listener < 0 || bind(listener, (struct sockaddr*)&address, size) != 0 ||
        listen(listener, 1) != 0 || getsockname(listener, (struct sockaddr*)&address, &size) != 0 ||
        pthread_create(thread, NULL, serve, NULL) != 0) {
        perror("server");
        exit(EXIT_FAILURE);
    }
    return ntohs(address.sin_port);
}

/* ---- The host ---- */

static void askWithoutClient(void) {
    unsigned char buffer = 0;
    CHECK(!plugin.hasDepthCamera());
    CHECK(plugin.getDimX() == -1);
    CHECK(plugin.getDimY() == -1);
    CHECK(plugin.getColorDimX() == -1);
    CHECK(plugin.getColorDimY() == -1);
    CHECK(plugin.getTouchPoolSize() == -1);
    CHECK(plugin.update() == QVR_UPDATE_NO_CLIENT);
    CHECK(!plugin.prepareTouchCollection());
    CHECK(plugin.getTouchData() == -9999.0f);
    CHECK(!plugin.setColorTexture(&buffer));
    CHECK(!plugin.setDepthTexture(&buffer));
    CHECK(!plugin.setProcessedTexture(&buffer));
    CHECK(!plugin.updateColorTexture());
    CHECK(!plugin.updateDepthTexture());
    CHECK(!plugin.updateProcessedTexture());
    CHECK(!plugin.setProjectionMapping("{}", 0));
    plugin.setCalibration("{}");
    plugin.applyCalibrationToCoord(1.5f, 2.5f, 3.5f);
    CHECK(plugin.getCalibratedX() == 1.5f);
    CHECK(plugin.getCalibratedY() == 2.5f);
    CHECK(plugin.getCalibratedZ() == 3.5f);
}

static void askForWhatOnlyACameraHas(void) {
    plugin.logInternalVariables();
    CHECK(strcmp(lastMessage,
                 "WARNING: logInternalVariables() is not available in the client version.") == 0);
    CHECK(plugin.getCameraInfo() == NULL);
    CHECK(strcmp(lastMessage, "WARNING: getCameraInfo() is not available in the client version.") ==
          0);
    plugin.setTouchLerp(0.5f);
    CHECK(strcmp(lastMessage, "WARNING: setTouchLerp() is not available in the client version.") ==
          0);
    plugin.outputCalibratedTouches(true);
    CHECK(strcmp(lastMessage,
                 "WARNING: outputCalibratedTouches() is not available in the client version.") ==
          0);
}

static void receiveOneFrame(void) {
    const unsigned char expectedColor[8] = {'a', 'b', 'c', 255, 'd', 'e', 'f', 255};
    const unsigned char expectedDepth[8] = {0x34, 0x12, 0, 255, 0xFE, 0xFF, 0, 255};
    const unsigned char expectedProcessed[8] = {'y', 'y', 'y', 255, 'z', 'z', 'z', 255};
    unsigned char color[8];
    unsigned char depth[8];
    unsigned char processed[8];
    int call;

    CHECK(plugin.hasDepthCamera());
    CHECK(plugin.getDimX() == 2);
    CHECK(plugin.getDimY() == 1);
    CHECK(plugin.getColorDimX() == 1);
    CHECK(plugin.getColorDimY() == 2);
    CHECK(plugin.getTouchPoolSize() == 2);
    CHECK(plugin.setColorTexture(color));
    CHECK(plugin.setDepthTexture(depth));
    CHECK(plugin.setProcessedTexture(processed));

    CHECK(plugin.update() == QVR_UPDATE_OK);
    CHECK(plugin.prepareTouchCollection());
    for (call = 0; call < 3; ++call) {
        CHECK(plugin.getTouchData() == -1.0f);
    }
    CHECK(plugin.getTouchData() == 0.25f);
    CHECK(plugin.getTouchData() == 0.5f);
    CHECK(plugin.getTouchData() == 0.125f);
    CHECK(plugin.getTouchData() == -9999.0f);
    CHECK(plugin.updateColorTexture());
    CHECK(plugin.updateDepthTexture());
    CHECK(plugin.updateProcessedTexture());
    CHECK(memcmp(color, expectedColor, sizeof color) == 0);
    CHECK(memcmp(depth, expectedDepth, sizeof depth) == 0);
    CHECK(memcmp(processed, expectedProcessed, sizeof processed) == 0);

    CHECK(plugin.update() == QVR_UPDATE_NO_FRAME);
}

int main(int argc, char** argv) {
    pthread_t server;
    unsigned int port;
    void* library;

    /* No settings and no calibration of this machine. */
    setenv("QVR_VOLUMES", "/nonexistent", 1);
    library = argc > 1 ? loadPlugin(argv[1]) : NULL;
    if (library == NULL || !findPluginFunctions(&plugin, findInPlugin, library)) {
        fprintf(stderr, "no plug-in to test\n");
        return EXIT_FAILURE;
    }

    plugin.registerDebugCallback(keepMessage);
    plugin.printDebug(true);
    CHECK(strcmp(lastMessage, "Set debugging to ON") == 0);
    askWithoutClient();
    askForWhatOnlyACameraHas();
    CHECK(!plugin.loadProjectionMap(0));

    port = startServer(&server);
    plugin.initClientWithCustomServer("127.0.0.1", port);
    CHECK(strcmp(lastMessage, "Client manager instantiated.") == 0);
    receiveOneFrame();
    pthread_join(server, NULL);
    close(listener);
    CHECK(plugin.update() == QVR_UPDATE_NO_CONNECTION);

    plugin.shutDown();
    CHECK(strcmp(lastMessage, "Done shutting down ClientManager.") == 0);
    plugin.shutDown();
    CHECK(strcmp(lastMessage, "WARNING: Depth plugin has already been destroyed!") == 0);
    CHECK(!plugin.hasDepthCamera());
    plugin.printDebug(false);
    plugin.registerDebugCallback(NULL);
    CHECK(messageCount > 0);

    unloadPlugin(library);
    if (failures == 0) {
        puts("the plug-in works through its C functions");
    }
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
