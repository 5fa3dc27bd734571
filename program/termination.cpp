// Ending on SIGINT and SIGTERM: cleanly, soon, or at once.

#include "program/termination.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <initializer_list>
#include <pthread.h>
#include <utility>

#include "program/exit_codes.h"

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

Termination::Termination(std::function<void()> on_signal, std::function<void()> on_overdue,
                         std::chrono::seconds patience) {
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
                end_now();
                std::_Exit(exit_failed);
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

bool Termination::is_done_within(std::chrono::seconds patience) const {
    const sigset_t only = set_of({wake_up});
    const timespec time = {static_cast<std::time_t>(patience.count()), 0};
    while (!done && (sigtimedwait(&only, nullptr, &time) != -1 || errno == EINTR)) {
    }
    return done;
}

}  // namespace headsetmgmt::program
