// A network client that notes its calls and gives what the test has set.
#pragma once

#include "serverClient/NetworkClient.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace client_test {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
class FakeNetworkClient final : public QVR::NetworkClient {
  public:
    int init() override { return note("init", initResult); }
    int connect(const char* host, const char* port) override {
        return note("connect " + std::string(host) + " " + port, connectResult);
    }
    int send(const char*, int) override { return note("send", 0); }
    int close() override { return note("close", 0); }
    int recv(char*, int length) override {
        int result = length;
        if (!recvResults.empty()) {
            result = recvResults.front();
            recvResults.pop_front();
        }
        return note("recv " + std::to_string(length), result);
    }
    int cleanup() override { return note("cleanup", 0); }
    int sendInt(int) override { return note("sendInt", 0); }
    int rcvInt(int*) override { return note("rcvInt", 0); }
    bool isInit() override { return initialised; }
    bool isConnected() override { return connected; }
    void setDeadline(std::optional<Clock::time_point> deadline) override {
        calls.emplace_back(deadline ? "deadline" : "no deadline");
    }

    int initResult = 0;
    int connectResult = 0;
    std::deque<int> recvResults; // then the length asked for
    bool initialised = true;
    bool connected = true;
    std::vector<std::string> calls;

  private:
    int note(const std::string& call, int result) {
        calls.push_back(call);
        return result;
    }
};
#pragma GCC diagnostic pop

} // namespace client_test
