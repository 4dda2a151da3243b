/* A whole host: connects to a camera server and prints the touches of every frame.
 *
 *     minimal_host [HOST PORT [FRAMES]]
 *
 * Without arguments the server is the one in the settings file, or localhost:27016. Build with
 *     cc minimal_host.c $(pkg-config --cflags --libs qvr-touch) -o minimal_host
 */
#include "client/plugin.h"

#include <stdio.h>
#include <stdlib.h>
#include <time.h>

static void printMessage(const char* message) {
    fprintf(stderr, "qvr: %s\n", message);
}

/* Prints the slots that hold a finger. Every slot is three values, whether it is taken or not. */
static void printTouches(long frame) {
    const int slots = getTouchPoolSize();
    int slot;
    prepareTouchCollection();
    for (slot = 0; slot < slots; ++slot) {
        const float x = getTouchData();
        const float y = getTouchData();
        const float z = getTouchData();
        if (x != -1.0f || y != -1.0f || z != -1.0f) {
            printf("frame %ld: slot %d at %.3f, %.3f, height %.3f\n", frame, slot, (double)x,
                   (double)y, (double)z);
        }
    }
}

/* A colour texture of the server's size, or null when it has no colour camera. The host's
 * graphics would upload it after every updateColorTexture. */
static unsigned char* renewColorTexture(unsigned char* texture) {
    const int width = getColorDimX();
    const int height = getColorDimY();
    free(texture);
    texture = NULL;
    if (width > 0 && height > 0) {
        texture = malloc((size_t)4 * (size_t)width * (size_t)height);
    }
    setColorTexture(texture);
    return texture;
}

static void connectToServer(int argc, char** argv) {
    if (argc > 2) {
        initClientWithCustomServer(argv[1], (unsigned int)strtoul(argv[2], NULL, 10));
    } else {
        init();
    }
}

int main(int argc, char** argv) {
    const long frames = argc > 3 ? strtol(argv[3], NULL, 10) : 300;
    const struct timespec pause = {0, 500 * 1000 * 1000};
    unsigned char* colorTexture = NULL;
    long frame = 0;
    int failures = 0;
    int connected = 0;

    registerDebugCallback(printMessage);
    /* A server that stalls must not freeze this program, and one that was restarted, perhaps with
     * another camera, is to be found again. */
    setReceiveTimeout(2000);
    setReconnectReadsHeader(true);
    connectToServer(argc, argv);

    while (frame < frames && failures < 20) {
        /* Blocks until the next frame is there, so this loop runs at the camera's pace. A host
         * with a loop of its own calls it once per turn. */
        const int result = update();
        if (result != QVR_UPDATE_OK) {
            /* No touch is down any more. The next update connects again. */
            fprintf(stderr, "no frame (%d)\n", result);
            connected = 0;
            nanosleep(&pause, NULL);
            ++failures;
            continue;
        }
        failures = 0;
        ++frame;
        if (!connected) {
            connected = 1;
            colorTexture = renewColorTexture(colorTexture);
        }
        updateColorTexture();
        printTouches(frame);
    }

    shutDown();
    free(colorTexture);
    printf("%ld frames\n", frame);
    return frame == frames ? EXIT_SUCCESS : EXIT_FAILURE;
}
