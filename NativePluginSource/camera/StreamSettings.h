// What the calibration document says about the camera's streams and what is sent of them.
#pragma once

namespace json11 {
class Json;
}

namespace QVR {

struct StreamSettings {
    bool sendColor = false;
    bool sendDepth = true;
    bool sendProcessed = false;
    bool sendTouch = true;
    bool autoClose = true;
    unsigned int colorResX = 640;
    unsigned int colorResY = 480;
    unsigned int depthResX = 640;
    unsigned int depthResY = 480;
    int port = 27016;
    int fps = 60;

    // Takes over what the document says. Switches and port that it lacks stay as they are;
    // resolutions and frame rate go back to their defaults, with a warning each.
    void read(const json11::Json& document);
};

// 0: both streams as the cameras see them; 1: colour as the depth camera sees it; 2: depth as the
// colour camera sees it.
int readStreamAlignment(const json11::Json& document);

} // namespace QVR
