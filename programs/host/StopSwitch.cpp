#include "host/StopSwitch.h"

#include <chrono>
#include <csignal>
#include <utility>

namespace host {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto tickTime = std::chrono::milliseconds(33);
constexpr int interruptSignal = SIGUSR1;

volatile std::sig_atomic_t signalled = 0;

extern "C" void noteSignal(int) {
    signalled = 1;
}
extern "C" void interruptOnly(int) {}

// No SA_RESTART: a receive without a time limit has to return.
void handle(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

sigset_t signalsOfTheTicker() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGWINCH, SIGTSTP, SIGCONT}) {
        sigaddset(&signals, signal);
    }
    return signals;
}

} // namespace

StopSwitch::StopSwitch(std::optional<double> seconds, std::function<bool()> tick)
    : tick_(std::move(tick)), seconds_(seconds), loopThread_(pthread_self()) {
    signalled = 0;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        handle(signal, &noteSignal);
    }
    handle(interruptSignal, &interruptOnly);
    const sigset_t signals = signalsOfTheTicker();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    thread_ = std::thread([this] { run(); });
}

StopSwitch::~StopSwitch() {
    finish();
}

void StopSwitch::pause(double seconds) {
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (!stopAsked() && Clock::now() < end) {
        std::unique_lock lock(mutex_);
        wake_.wait_until(lock, std::chrono::time_point_cast<Clock::duration>(end),
                         [this] { return stopAsked(); });
    }
}

void StopSwitch::finish() {
    finished_.store(true);
    if (thread_.joinable()) {
        thread_.join();
    }
}

void StopSwitch::run() {
    const sigset_t signals = signalsOfTheTicker();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    const auto start = Clock::now();
    while (!finished_.load()) {
        const std::chrono::duration<double> elapsed = Clock::now() - start;
        if (!tick_() || signalled != 0 || (seconds_ && elapsed.count() >= *seconds_)) {
            const std::lock_guard lock(mutex_);
            stop_.store(true);
        }
        if (stopAsked()) {
            wake_.notify_all();
            pthread_kill(loopThread_, interruptSignal);
        }
        std::this_thread::sleep_for(tickTime);
    }
}

} // namespace host
