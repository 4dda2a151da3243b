// The camera server: opens the camera, finds touches, streams them to every host that connects.

#include "Broadcaster.h"
#include "CameraLoop.h"
#include "CameraRecording.h"
#include "CameraSource.h"
#include "NetworkThread.h"
#include "Options.h"
#include "ServerError.h"
#include "ServerLog.h"
#include "SettingsDocument.h"
#include "StopRequest.h"
#include "TouchLog.h"
#include "client/plugin.h"
#include "foundation/Logger.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <optional>
#include <string>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace asio = boost::asio;
using namespace server;

namespace {

// A client that lags keeps a frame of its own, some megabytes, until it leaves. The C library would
// soon hold on to such memory, more of it with every crowd of laggards.
void giveFreedFramesBack() {
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
#endif
}

std::uint16_t chosenPort(const Options& options, int documentPort) {
    if (options.port)
        return *options.port;
    if (documentPort < 0 || documentPort > 65535)
        throw ServerError(exitBadSettings, "\"port\" in touch.json is " +
                                               std::to_string(documentPort) +
                                               "; it must be 0 to 65535");
    return static_cast<std::uint16_t>(documentPort);
}

BroadcasterSettings networkSettings(const Options& options, int documentPort) {
    BroadcasterSettings settings;
    settings.endpoint = {asio::ip::make_address(options.bindAddress),
                         chosenPort(options, documentPort)};
    settings.allowed = options.allowed;
    settings.maxClients = options.maxClients;
    settings.clientTimeout = options.clientTimeout;
    settings.cameraTimeout = CameraLoop::cameraTimeout;
    return settings;
}

void report(const std::string& text, Broadcaster::Weight weight) {
    switch (weight) {
    case Broadcaster::Weight::detail:
        return ServerLog::detail(text);
    case Broadcaster::Weight::provoked:
        return ServerLog::noticeSparingly(text);
    case Broadcaster::Weight::notice:
        return ServerLog::notice(text);
    }
}

void listenTo(std::optional<Broadcaster>& broadcaster, asio::io_context& context,
              const BroadcasterSettings& settings) {
    try {
        broadcaster.emplace(context, settings, report);
    } catch (const boost::system::system_error& error) {
        throw ServerError(exitCannotListen,
                          "cannot listen on " + settings.endpoint.address().to_string() +
                              ", port " + std::to_string(settings.endpoint.port()) + ": " +
                              error.code().message() +
                              ". Choose another with --port or --bind, or end the program that "
                              "has it");
    }
    std::cout << "listening on " << broadcaster->endpoint() << std::endl;
}

void serve(const Options& options) {
    ServerLog::setVerbose(options.verbose);
    QVR::Logger::RegisterDebugCallback(&ServerLog::receivePipelineMessage);
    SettingsDocument::read();
    selectCameraSource(options);
    std::optional<TouchLog> touchLog;
    if (options.touchLog)
        touchLog.emplace(*options.touchLog);
    std::optional<CameraRecording> recording;
    if (options.record)
        recording.emplace(*options.record, options.recordEvery);

    // The thread is ended first, then what it works on.
    StopRequest stop;
    asio::io_context context;
    std::optional<Broadcaster> broadcaster;
    NetworkThread network(context, stop);
    CameraLoop camera(options, stop, touchLog ? &*touchLog : nullptr,
                      recording ? &*recording : nullptr);

    camera.open();
    listenTo(broadcaster, context, networkSettings(options, camera.port()));
    camera.run(*broadcaster);
    // While the network thread still hears signals: a camera may hang in its stop, too.
    camera.close();
    network.join();
    // A slow disk is no camera that does not answer, so not before.
    recording.reset();
}

int check(const std::string& folder) {
    const auto print = [](const char* line) { std::puts(line); };
    return checkSettings(folder.c_str(), true, print) == 0 ? exitFine : exitUnexpected;
}

} // namespace

int main(int argc, char** argv) {
    // A reader of our output that goes away is no reason to stop serving touches.
    std::signal(SIGPIPE, SIG_IGN);
    // A limit on the size of files is met like a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    giveFreedFramesBack();
    try {
        const std::optional<Options> options = parseOptions(argc, argv);
        if (options && options->check)
            return check(*options->check);
        if (options)
            serve(*options);
        return exitFine;
    } catch (const ServerError& error) {
        ServerLog::notice(error.what());
        return error.code();
    } catch (const std::exception& error) {
        ServerLog::notice("unexpected failure: " + std::string(error.what()));
        return exitUnexpected;
    }
}
