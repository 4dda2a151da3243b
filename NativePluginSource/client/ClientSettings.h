// Where the camera server is and how its connection is kept, as the client's settings file has it.
#pragma once

#include <string>

namespace QVR {

struct ClientSettings {
    std::string ip = "localhost";
    int port = 27016;
    int receiveTimeoutMs = 0;          // see ClientManager
    bool reconnectReadsHeader = false; // see ClientManager

    // Takes over what the text of "touch_client.json" says. One that is empty or no JSON changes
    // nothing, nor does one that lacks all but the address, which it always sets.
    void read(const std::string& text);
};

} // namespace QVR
