// qvr-camera: which cameras there are, what they are, and what they see.

#include "cameraTool/CameraList.h"
#include "cameraTool/OpenCamera.h"
#include "cameraTool/Options.h"
#include "cameraTool/cameraInformation.h"
#include "cameraTool/snapshot.h"
#include "foundation/Logger.h"
#include "server/CameraSource.h"
#include "server/ServerError.h"
#include "server/ServerLog.h"

#include <cstdio>
#include <exception>
#include <optional>
#include <string>

namespace {

using namespace cameraTool;

void print(const std::string& text) {
    if (std::fputs(text.c_str(), stdout) == EOF || std::fflush(stdout) == EOF) {
        throw server::ServerError(server::exitUnexpected, "cannot write to standard output");
    }
}

void run(const Options& options) {
    QVR::Logger::RegisterDebugCallback(&server::ServerLog::receivePipelineMessage);
    server::ServerLog::setPipelineQuiet(true);
    server::Options source;
    source.camera = options.camera;
    server::selectCameraSource(source);
    if (options.command == Command::list) {
        const CameraList list = listCameras(server::cameraSource(source));
        print(options.json ? jsonOf(list) : textOf(list));
        return;
    }
    OpenCamera camera(options.mode);
    print(options.command == Command::info ? cameraInformation(camera, options.raw)
                                           : takeSnapshot(camera, options.frame, options.out));
}

int report(const char* message, int code) {
    std::fprintf(stderr, "qvr-camera: %s\n", message);
    return code;
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (const std::optional<Options> options = parseOptions(argc, argv)) {
            run(*options);
        }
        return server::exitFine;
    } catch (const server::ServerError& error) {
        return report(error.what(), error.code());
    } catch (const std::exception& error) {
        return report(error.what(), server::exitUnexpected);
    }
}
