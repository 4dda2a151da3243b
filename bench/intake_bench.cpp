// A client's frame from a server on loopback, beside a bare receive loop of the same bytes.
#include "cases.h"
#include "client/ClientManager.h"
#include "foundation/Logger.h"
#include "foundation/utils.h"
#include "support/LoopbackPeer.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace bench {

namespace {

const char* const bareName = "bareReceive/7142680";

void ignoreMessage(const char*) {}

// Touches, 1920 x 1080 colour, 640 x 480 depth and mask: 7,142,680 bytes a frame.
QVR::ProtocolHeader fullHeader() {
    QVR::ProtocolHeader header;
    header.protocolID = 1;
    header.oneMeterValue = 8000;
    header.depthX = header.processedX = 640;
    header.depthY = header.processedY = 480;
    header.depthChannels = header.processedChannels = 1;
    header.depthDepth = 2;
    header.processedDepth = 1;
    header.colorX = 1920;
    header.colorY = 1080;
    header.colorChannels = 3;
    header.colorDepth = 1;
    header.touchCount = 10;
    return header;
}

// Sends the header, then frames until the client closes.
support::LoopbackPeer::Script endlessServer() {
    const QVR::ProtocolHeader header = fullHeader();
    std::string headerBytes(sizeof header, '\0');
    std::memcpy(headerBytes.data(), &header, sizeof header);
    const std::string frame(QVR::utils::getNetworkFrameSize(header), '\7');
    return [headerBytes, frame](support::LoopbackPeer::Line& line) {
        line.accept();
        line.send(headerBytes);
        for (;;) {
            line.send(frame);
        }
    };
}

int connectTo(unsigned int port) {
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    if (connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

bool receiveAll(int descriptor, char* target, std::size_t size) {
    std::size_t received = 0;
    while (received < size) {
        const ssize_t piece = recv(descriptor, target + received, size - received, 0);
        if (piece <= 0) {
            return false;
        }
        received += static_cast<std::size_t>(piece);
    }
    return true;
}

void countBytes(benchmark::State& state) {
    state.SetBytesProcessed(
        state.iterations() *
        static_cast<std::int64_t>(QVR::utils::getNetworkFrameSize(fullHeader())));
}

void bareCase(benchmark::State& state) {
    support::LoopbackPeer server(endlessServer());
    const int descriptor = connectTo(server.portNumber());
    std::vector<char> frame(QVR::utils::getNetworkFrameSize(fullHeader()));
    if (!receiveAll(descriptor, frame.data(), sizeof(QVR::ProtocolHeader))) {
        state.SkipWithError("no header");
    }
    for (auto step : state) {
        if (!receiveAll(descriptor, frame.data(), frame.size())) {
            state.SkipWithError("the frame broke off");
            break;
        }
    }
    close(descriptor);
    countBytes(state);
}

void intakeCase(benchmark::State& state) {
    QVR::Logger::RegisterDebugCallback(ignoreMessage);
    support::LoopbackPeer server(endlessServer());
    {
        QVR::ClientManager client("127.0.0.1", server.port());
        if (client.CheckClientState() != 0) {
            state.SkipWithError("no connection");
        }
        for (auto step : state) {
            if (client.ProcessServerFrame() < 0) {
                state.SkipWithError("the frame broke off");
                break;
            }
        }
    }
    QVR::Logger::RegisterDebugCallback(nullptr);
    state.SetLabel(bareName);
    countBytes(state);
}

} // namespace

// In wall time: the receiver waits for the sender's thread.
void registerIntake() {
    benchmark::RegisterBenchmark(bareName, bareCase)->UseRealTime();
    benchmark::RegisterBenchmark("clientIntake/7142680", intakeCase)->UseRealTime();
}

} // namespace bench
