// SPDX-License-Identifier: Apache-2.0
// Ending on SIGINT and SIGTERM: cleanly, soon, or at once.

#pragma once

#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

namespace headsetmgmt::program {

/// Waits, on a thread of its own, for the process to be asked to end. Made before any other thread
/// that does not block SIGINT, SIGTERM and SIGUSR1 itself, so that all leave the signals to it.
///
/// The first signal asks for a clean end. A second one ends the process at once, as that signal
/// does by default. When there is neither a clean end nor a second signal within `patience`, the
/// process ends all the same.
class Termination {
public:
    static constexpr std::chrono::milliseconds default_patience_{2500};

    /// `on_signal` is called at the first signal, `on_overdue` when the end is overdue: the process
    /// ends with the exit code that it returns. Both are called on the waiting thread.
    Termination(std::function<void()> on_signal, std::function<int()> on_overdue,
                std::chrono::milliseconds patience = default_patience_);
    ~Termination();

    Termination(const Termination&) = delete;
    Termination& operator=(const Termination&) = delete;

private:
    bool waits_for_signal() const;
    bool is_done_within(std::chrono::milliseconds patience) const;

    std::atomic<bool> done{false};
    std::thread waiter;
};

}  // namespace headsetmgmt::program
