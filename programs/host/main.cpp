// qvr-host: a host in the terminal.

#include "common/executablePath.h"
#include "host/HostLoop.h"
#include "host/Keeper.h"
#include "host/Options.h"
#include "host/Pictures.h"
#include "host/PlainView.h"
#include "host/Plugin.h"
#include "host/PluginMessages.h"
#include "host/StopSwitch.h"
#include "host/TerminalView.h"
#include "host/TouchLog.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include <unistd.h>

namespace {

int fail(int code, const std::string& problem) {
    std::fprintf(stderr, "qvr-host: %s\n", problem.c_str());
    return code;
}

std::unique_ptr<host::HostView> makeView(const host::Options& options) {
    if (!options.plain && isatty(STDOUT_FILENO) != 0) {
        std::string problem;
        if (auto view = host::TerminalView::open(options.surface, problem)) {
            return view;
        }
        std::fprintf(stderr, "qvr-host: %s\n", problem.c_str());
    }
    return std::make_unique<host::PlainView>(stdout);
}

int savePictures(const host::Keeper& keeper, const std::string& folder) {
    if (!keeper.best()) {
        return host::exitFine;
    }
    const host::Pictures::Report report = host::Pictures::save(*keeper.best(), folder);
    for (const std::string& path : report.written) {
        std::printf("saved %s\n", path.c_str());
    }
    for (const std::string& skipped : report.skipped) {
        std::printf("no %s\n", skipped.c_str());
    }
    return report.problem.empty() ? host::exitFine : fail(host::exitCannotWrite, report.problem);
}

int check(const host::PluginFunctions& functions, const std::string& folder) {
    const auto print = [](const char* line) { std::puts(line); };
    return functions.checkSettings(folder.c_str(), false, print) == 0 ? host::exitFine
                                                                      : host::exitToMend;
}

int run(const host::Options& options) {
    std::string problem;
    const std::unique_ptr<host::Plugin> plugin =
        options.plugin.empty()
            ? host::Plugin::loadDefault(programs::executablePath().parent_path(), problem)
            : host::Plugin::load(options.plugin, problem);
    if (!plugin) {
        return fail(host::exitNoPlugin, problem);
    }
    if (!options.check.empty()) {
        return check(plugin->functions(), options.check);
    }
    std::unique_ptr<host::TouchLog> log;
    if (!options.touchLog.empty()) {
        log = host::TouchLog::open(options.touchLog, problem);
        if (!log) {
            return fail(host::exitCannotWrite, problem);
        }
    }
    const host::PluginFunctions& functions = plugin->functions();
    host::PluginMessages::attach(functions, options.verbose);
    if (options.verbose) {
        functions.printDebug(true);
    }

    std::unique_ptr<host::Keeper> keeper;
    if (!options.saveFolder.empty()) {
        keeper = std::make_unique<host::Keeper>(functions);
    }
    host::HostState last;
    std::unique_ptr<host::HostView> view = makeView(options);
    bool connected = false;
    {
        host::StopSwitch stop(options.seconds, [&] { return view->tick(); });
        host::HostLoop loop(functions, options.loop, stop,
                            [&](const host::HostState& state, bool firstOfConnection) {
                                view->show(state);
                                if (log && state.now > 0) {
                                    log->write(state);
                                }
                                if (keeper) {
                                    keeper->consider(state, firstOfConnection);
                                }
                                last = state;
                            });
        connected = loop.run();
    }
    view.reset(); // the terminal is as it was
    host::PluginMessages::detach(functions);

    if (!connected && (options.seconds || options.loop.frames)) {
        return fail(host::exitNeverConnected,
                    "no frame came from " + last.server +
                        "; start a server with qvr-server, or name it with --server HOST:PORT");
    }
    std::printf("%llu frames, %zu touches\n", static_cast<unsigned long long>(last.frames),
                last.downCount);
    return keeper ? savePictures(*keeper, options.saveFolder) : host::exitFine;
}

} // namespace

int main(int argc, char** argv) {
    host::Options options;
    if (const std::optional<int> code = host::parseOptions(argc, argv, options)) {
        return *code;
    }
    try {
        return run(options);
    } catch (const std::exception& error) {
        return fail(1, error.what());
    }
}
