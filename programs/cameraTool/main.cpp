// qvr-camera: which cameras there are, what they are, and what they see.

#include "cameraTool/CameraList.h"
#include "cameraTool/OpenCamera.h"
#include "cameraTool/Options.h"
#include "cameraTool/cameraInformation.h"
#include "cameraTool/recordCamera.h"
#include "cameraTool/snapshot.h"
#include "foundation/Logger.h"
#include "server/CameraSource.h"
#include "server/ServerError.h"
#include "server/ServerLog.h"

#include <csignal>
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

void record(const Options& options, const std::string& source) {
    recordCamera({source, options.out, options.mode, options.seconds, options.frames, false});
}

void convert(const Options& options, const std::string& source) {
    if (!options.frames && !ends(source)) {
        throw server::ServerError(server::exitBadOption,
                                  "'" + source +
                                      "' has no end; say how much of it is wanted with "
                                      "--frames N");
    }
    recordCamera({source, options.out, ownMode(), std::nullopt, options.frames, true});
}

void run(const Options& options) {
    QVR::Logger::RegisterDebugCallback(&server::ServerLog::receivePipelineMessage);
    server::ServerLog::setPipelineQuiet(true);
    server::Options source;
    source.camera = options.command == Command::convert ? playedOnce(options.in) : options.camera;
    server::selectCameraSource(source);
    switch (options.command) {
    case Command::list: {
        const CameraList list = listCameras(server::cameraSource(source));
        return print(options.json ? jsonOf(list) : textOf(list));
    }
    case Command::info:
        return print(cameraInformation(OpenCamera(options.mode), options.raw));
    case Command::snapshot: {
        OpenCamera camera(options.mode);
        return print(takeSnapshot(camera, options.frame, options.out));
    }
    case Command::record:
        return record(options, server::cameraSource(source));
    case Command::convert:
        return convert(options, *source.camera);
    }
}

int report(const char* message, int code) {
    std::fprintf(stderr, "qvr-camera: %s\n", message);
    return code;
}

} // namespace

int main(int argc, char** argv) {
    // A limit on the size of files is met like a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
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
