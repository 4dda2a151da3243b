// The smallest camera server's worth of calls: set up, one frame, what a client would be told.
#include "camera/cameraManager.h"
#include "detection/blobManager.h"
#include "foundation/utils.h"
#include "serverClient/frameProtocol.h"

#include <cstdio>

int main() {
    QVR::cameraManager::init();
    QVR::networkFrameData frame;
    const int result = QVR::cameraManager::update(frame);

    QVR::ProtocolHeader header;
    const int bytes = QVR::cameraManager::get()->getNetworkFrameInfo(header);
    std::printf("update %d, %d bytes a frame, cut %d\n%s", result, bytes,
                int(QVR::cameraManager::get()->blobs->cutoffDepth),
                QVR::utils::headerToString(header).c_str());
    const bool complete = result == 0 && frame.touches != nullptr && frame.depth != nullptr;
    QVR::cameraManager::destroy();
    return complete ? 0 : 1;
}
