// The camera server's command line. Input: one argument a line.
#include "Options.h"
#include "ServerError.h"
#include "foundation/utils.h"
#include "fuzzing.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> lines = QVR::utils::split(text.c_str(), '\n');
    std::vector<const char*> arguments{"qvr-server"};
    for (const std::string& line : lines) {
        arguments.push_back(line.c_str());
    }
    try {
        const std::optional<server::Options> options =
            server::parseOptions(static_cast<int>(arguments.size()), arguments.data());
        if (options) {
            fuzzing::require(options->clientTimeout.count() > 0, "clients have some time");
            fuzzing::require(options->maxClients >= 1, "there may be a client");
            fuzzing::require(!options->statsInterval || options->statsInterval->count() > 0,
                             "time passes between reports");
        }
    } catch (const server::ServerError& problem) {
        fuzzing::require(problem.code() == server::exitBadOption, "a bad option is called one");
    }
    return 0;
}
