// Ending cleanly on SIGINT and SIGTERM.

#include "program/termination.h"

#include <pthread.h>
#include <utility>

namespace headsetmgmt::program {

Termination::Termination(std::function<void()> on_signal) {
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    // The waiter's own wake-up call: the program is done.
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    waiter = std::thread([this, callback = std::move(on_signal)] {
        bool told = false;
        while (!done) {
            int signal = 0;
            sigwait(&signals, &signal);
            if (signal != SIGUSR1 && !told) {
                told = true;
                callback();
            }
        }
    });
}

Termination::~Termination() {
    done = true;
    pthread_kill(waiter.native_handle(), SIGUSR1);
    waiter.join();
}

}  // namespace headsetmgmt::program
