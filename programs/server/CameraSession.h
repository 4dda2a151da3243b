// The camera pipeline from its start to its end, set up as document and command line say.
#pragma once

#include "Options.h"
#include "serverClient/frameProtocol.h"

#include <chrono>
#include <cstdint>

namespace server {

struct SettingsDocument;

// While one exists, the camera manager is up and its camera streams. One at a time, on one thread.
class CameraSession {
  public:
    // Starts everything; blocks while the camera does. Throws ServerError when there is no camera,
    // it does not start, or the settings cannot be used.
    explicit CameraSession(const Options& options);
    CameraSession(const CameraSession&) = delete;
    CameraSession& operator=(const CameraSession&) = delete;

    // What clients are to be told; the same as long as the session lives.
    const QVR::ProtocolHeader& header() const { return header_; }
    std::chrono::nanoseconds framePeriod() const;
    // The document's port, or the default one.
    int port() const;

  private:
    // init() and destroy() of the camera manager.
    struct Pipeline {
        Pipeline();
        ~Pipeline();
        Pipeline(const Pipeline&) = delete;
        Pipeline& operator=(const Pipeline&) = delete;
    };

    static void requireStreaming(const Options& options);
    static void applyOptions(const Options& options);
    static void applyDocument(SettingsDocument& document);
    static void makeDownsampler(const SettingsDocument& document);

    Pipeline pipeline_;
    QVR::ProtocolHeader header_;
};

} // namespace server
