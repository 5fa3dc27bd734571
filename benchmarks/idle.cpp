// SPDX-License-Identifier: Apache-2.0
// What a started library that has nothing to do takes of a processor core, beside a bare thread
// that does nothing but wake as often: twenty times a second.
//
// Usage: idle [SECONDS]

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <thread>
#include <time.h>
#include <unistd.h>

#include "headsetmgmt/phone/flat_interface.h"

namespace {

/// Seconds of processor time that the process has used so far.
double process_seconds() {
    timespec now = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// How often the process has gone to sleep so far.
long sleeps() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_nvcsw;
}

void wait(long seconds) {
    const timespec duration = {seconds, 0};
    nanosleep(&duration, nullptr);
}

/// Prints what the process takes while its main thread waits.
void watch(const char* who, long seconds) {
    wait(1);
    const double used_before = process_seconds();
    const long sleeps_before = sleeps();
    wait(seconds);
    const double used = process_seconds() - used_before;
    const auto wake_ups = static_cast<double>(sleeps() - sleeps_before - 1);  // one is our own

    const auto waited = static_cast<double>(seconds);
    std::printf("| %-20s | %17.1f | %11.4f | %16.1f |\n", who, wake_ups / waited,
                used / waited * 100, used / wake_ups * 1e6);
}

void watch_bare_thread(long seconds) {
    constexpr useconds_t pause = 50000;  // microseconds, as long as the library's
    std::atomic<bool> done{false};
    std::thread thread([&done] {
        while (!done) {
            usleep(pause);
        }
    });
    watch("a bare thread", seconds);
    done = true;
    thread.join();
}

}  // namespace

int main(int count, char** arguments) {
    const long seconds = count > 1 ? std::strtol(arguments[1], nullptr, 10) : 60;
    std::printf("| %-20s | wake-ups a second | %% of a core | us for a wake-up |\n", "idle");
    std::printf("|----------------------|-------------------|-------------|------------------|\n");
    watch_bare_thread(seconds);
    if (!create_headset_mgmt(nullptr) || !start_headset_mgmt("", "", "")) {
        std::fputs("idle: not started\n", stderr);
        return 1;
    }
    watch("the library", seconds);
    stop_headset_mgmt();
    return 0;
}
