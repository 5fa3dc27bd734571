// Ending cleanly on SIGINT and SIGTERM.

#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

namespace headsetmgmt::program {

/// Runs `on_signal`, once, on a thread of its own when the process is asked to end. Made before any
/// other thread, so that all leave the signals to it.
class Termination {
public:
    explicit Termination(std::function<void()> on_signal);
    ~Termination();

    Termination(const Termination&) = delete;
    Termination& operator=(const Termination&) = delete;

private:
    sigset_t signals = {};
    std::atomic<bool> done{false};
    std::thread waiter;
};

}  // namespace headsetmgmt::program
