#include "NetworkThread.h"

#include "ServerError.h"
#include "ServerLog.h"
#include "StopRequest.h"

#include <chrono>
#include <csignal>
#include <cstdlib>

namespace server {

using boost::system::error_code;

namespace {

constexpr std::chrono::seconds cameraGrace{3};

bool isIgnored(int signal) {
    struct sigaction current = {};
    return ::sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_IGN;
}

} // namespace

NetworkThread::NetworkThread(boost::asio::io_context& context, StopRequest& stop)
    : context_(context), stop_(stop), work_(context.get_executor()),
      signals_(context, SIGINT, SIGTERM), grace_(context) {
    if (!isIgnored(SIGHUP))
        signals_.add(SIGHUP);
    waitForSignal();
    thread_ = std::thread([this] { run(); });
}

NetworkThread::~NetworkThread() {
    context_.stop();
    if (thread_.joinable())
        thread_.join();
}

void NetworkThread::join() {
    context_.stop();
    thread_.join();
    if (failure_)
        std::rethrow_exception(failure_);
}

void NetworkThread::run() {
    try {
        context_.run();
    } catch (...) {
        failure_ = std::current_exception();
        stop_.request();
    }
}

void NetworkThread::waitForSignal() {
    signals_.async_wait([this](const error_code& error, int) {
        if (error)
            return;
        stop_.request();
        grace_.expires_after(cameraGrace);
        grace_.async_wait([](const error_code& cancelled) {
            if (cancelled)
                return;
            ServerLog::notice("WARNING: the camera does not answer; leaving without it");
            std::_Exit(exitFine);
        });
    });
}

} // namespace server
