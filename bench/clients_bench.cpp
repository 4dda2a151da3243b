// A frame on its way from the camera's thread through the server's network half to every client.
#include "cases.h"
#include "server/RawClient.h"
#include "server/RunningBroadcaster.h"

#include <array>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace bench {

namespace {

constexpr std::array<std::size_t, 5> clientCounts{1, 2, 4, 8, 16};

QVR::ProtocolHeader touchesOnly() {
    QVR::ProtocolHeader header;
    header.protocolID = 1;
    header.oneMeterValue = 8000;
    header.touchCount = 10;
    return header;
}

QVR::ProtocolHeader allStreams() {
    QVR::ProtocolHeader header = touchesOnly();
    header.depthX = header.processedX = header.colorX = 640;
    header.depthY = header.processedY = header.colorY = 480;
    header.depthChannels = header.processedChannels = header.processedDepth = 1;
    header.depthDepth = 2;
    header.colorChannels = 3;
    header.colorDepth = 1;
    return header;
}

// One frame at a time: published, then read by one client after the other.
void serveCase(benchmark::State& state, std::size_t count, const QVR::ProtocolHeader& header,
               const std::string& limit) {
    support::RunningBroadcaster server;
    // So slow a camera that no frame is repeated in a pause of the measurement.
    server.announce(header, std::chrono::seconds(100));
    std::vector<support::RawClient> clients;
    for (std::size_t i = 0; i < count; ++i) {
        clients.emplace_back(server.port());
        clients.back().readHeader();
    }
    if (!server.hasClients(count)) {
        state.SkipWithError("a client is missing");
    }
    support::Bytes bytes(clients.front().frameBytes());
    for (auto step : state) {
        server::FrameRef frame = server.broadcaster.acquire();
        if (!frame) {
            state.SkipWithError("no free frame");
            break;
        }
        server.broadcaster.publish(std::move(frame));
        for (support::RawClient& client : clients) {
            client.readFrame(bytes);
        }
    }
    if (server.broadcaster.counters().skippedFrames != 0) {
        state.SkipWithError("frames were skipped");
    }
    state.SetLabel(limit);
}

void add(const std::string& streams, const QVR::ProtocolHeader& header) {
    for (const std::size_t count : clientCounts) {
        const std::string name = "clients/" + std::to_string(count) + "/" + streams;
        const std::string limit = count == 1 ? "" : "clients/1/" + streams;
        benchmark::RegisterBenchmark(name.c_str(), serveCase, count, header, limit)->UseRealTime();
    }
}

} // namespace

// In wall time: sender and receivers work at the same time.
void registerClients() {
    add("touches", touchesOnly());
    add("allStreams", allStreams());
}

} // namespace bench
