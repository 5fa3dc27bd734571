// SPDX-License-Identifier: Apache-2.0
// Ending on SIGINT and SIGTERM: cleanly, soon, or at once.

#include "program/termination.h"

#include <cstdlib>
#include <ctime>
#include <initializer_list>
#include <pthread.h>
#include <utility>

namespace headsetmgmt::program {

namespace {

constexpr int wake_up = SIGUSR1;  // for the waiting thread: the program is done

sigset_t set_of(std::initializer_list<int> numbers) {
    sigset_t set = {};
    sigemptyset(&set);
    for (const int number : numbers) {
        sigaddset(&set, number);
    }
    return set;
}

/// From here on a signal ends the process at once.
void restore_defaults() {
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    const sigset_t both = set_of({SIGINT, SIGTERM});
    pthread_sigmask(SIG_UNBLOCK, &both, nullptr);
}

}  // namespace

Termination::Termination(std::function<void()> on_signal, std::function<int()> on_overdue,
                         std::chrono::milliseconds patience) {
    const sigset_t all = set_of({SIGINT, SIGTERM, wake_up});
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    waiter = std::thread(
        [this, patience, end_soon = std::move(on_signal), end_now = std::move(on_overdue)] {
            if (!waits_for_signal()) {
                return;
            }
            restore_defaults();
            end_soon();
            if (!is_done_within(patience)) {
                std::_Exit(end_now());
            }
        });
}

Termination::~Termination() {
    done = true;
    pthread_kill(waiter.native_handle(), wake_up);
    waiter.join();
}

/// True when the process is asked to end, false when the program is done.
bool Termination::waits_for_signal() const {
    const sigset_t all = set_of({SIGINT, SIGTERM, wake_up});
    int signal = 0;
    do {
        sigwait(&all, &signal);
    } while (signal == wake_up && !done);
    return signal != wake_up;
}

bool Termination::is_done_within(std::chrono::milliseconds patience) const {
    using std::chrono::steady_clock;
    const sigset_t only = set_of({wake_up});
    const steady_clock::time_point end = steady_clock::now() + patience;
    while (!done) {
        const std::chrono::nanoseconds left = end - steady_clock::now();
        if (left.count() <= 0) {
            return false;
        }
        constexpr long nanoseconds_of_a_second = 1000000000;
        const timespec time = {static_cast<std::time_t>(left.count() / nanoseconds_of_a_second),
                               static_cast<long>(left.count() % nanoseconds_of_a_second)};
        sigtimedwait(&only, nullptr, &time);  // any end of it: `done` and the time decide
    }
    return true;
}

}  // namespace headsetmgmt::program
