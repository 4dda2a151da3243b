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
static unsigned char* makeColorTexture(void) {
    const int width = getColorDimX();
    const int height = getColorDimY();
    unsigned char* texture = NULL;
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
    int attempts = 0;

    registerDebugCallback(printMessage);
    connectToServer(argc, argv);

    while (frame < frames && attempts < 20) {
        /* Blocks until the next frame is there, so this loop runs at the camera's pace. A host
         * with a loop of its own calls it once per turn. */
        const int result = update();
        if (result != QVR_UPDATE_OK) {
            /* Start anew: only a new instance reads the header that a server sends first. */
            fprintf(stderr, "no frame (%d)\n", result);
            shutDown();
            free(colorTexture);
            colorTexture = NULL;
            nanosleep(&pause, NULL);
            connectToServer(argc, argv);
            ++attempts;
            continue;
        }
        attempts = 0;
        ++frame;
        if (colorTexture == NULL) {
            colorTexture = makeColorTexture();
        }
        updateColorTexture();
        printTouches(frame);
    }

    shutDown();
    free(colorTexture);
    printf("%ld frames\n", frame);
    return frame == frames ? EXIT_SUCCESS : EXIT_FAILURE;
}
