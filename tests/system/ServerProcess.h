// The real qvr-server, started on a folder of settings of its own and ended by its process id.
#pragma once

#include "support/TemporaryFolder.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace support {

class ServerProcess {
  public:
    // `volume`: the folder in which QVR_calibration is looked for. QVR_CAMERA is unset.
    ServerProcess(const std::string& volume, const std::vector<std::string>& arguments);
    // Kills a server that still runs.
    ~ServerProcess();
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    // The port in its line "listening on ADDRESS:PORT"; throws with what it said instead when
    // the line does not come within 20 seconds.
    std::uint16_t waitForPort();

    pid_t id() const { return pid_; }
    void signal(int number) const;

    // Its exit code; nothing when it does not end within 20 seconds, or ends by a signal.
    std::optional<int> waitForEnd();
    bool running();
    // Whether it ended by this signal instead of by itself.
    bool endedBy(int signal);

    std::string output() const; // so far
    std::string errors() const;

  private:
    TemporaryFolder folder_;
    pid_t pid_ = -1;
    std::optional<int> status_;
};

} // namespace support
