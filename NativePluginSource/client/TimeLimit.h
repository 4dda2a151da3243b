// How long the network may keep the host waiting.
#pragma once

#include "serverClient/NetworkClient.h"

#include <chrono>

namespace QVR {

// While this lives, connecting and receiving end in time: all together within `milliseconds` from
// its beginning. 0 or less is no limit, and a null client has none.
class TimeLimit {
  public:
    TimeLimit(NetworkClient* client, int milliseconds)
        : client_(milliseconds > 0 ? client : nullptr) {
        if (client_ != nullptr) {
            client_->setDeadline(NetworkClient::Clock::now() +
                                 std::chrono::milliseconds(milliseconds));
        }
    }
    ~TimeLimit() {
        if (client_ != nullptr) {
            client_->setDeadline(std::nullopt);
        }
    }
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;

  private:
    NetworkClient* client_;
};

} // namespace QVR
