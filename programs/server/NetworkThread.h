// The one thread that runs the network's events, and the signals that end the server.
#pragma once

#include <exception>
#include <thread>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>

namespace server {

class StopRequest;

// Runs from construction to join(). SIGINT, SIGTERM and SIGHUP request the stop, the last one
// unless it was ignored before, as nohup has it. A camera that does not
// return from its wait cannot keep the process: when the thread still runs a few seconds after
// the signal, it ends the process with the exit code of a clean end.
class NetworkThread {
  public:
    NetworkThread(boost::asio::io_context& context, StopRequest& stop);
    ~NetworkThread();
    NetworkThread(const NetworkThread&) = delete;
    NetworkThread& operator=(const NetworkThread&) = delete;

    // Ends the thread; throws what made it fail, if anything did (the stop was requested then).
    void join();

  private:
    void run();
    void waitForSignal();

    boost::asio::io_context& context_;
    StopRequest& stop_;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work_;
    boost::asio::signal_set signals_;
    boost::asio::steady_timer grace_;
    std::exception_ptr failure_;
    std::thread thread_;
};

} // namespace server
