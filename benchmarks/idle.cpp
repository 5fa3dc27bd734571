// What a started library that has nothing to do takes of a processor core: its worker wakes twenty
// times a second and looks.
//
// Usage: idle [SECONDS]

#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <time.h>

#include "headsetmgmt/phone/flat_interface.h"

namespace {

double seconds_of(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

rusage usage_so_far() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage;
}

void wait(long seconds) {
    const timespec duration = {seconds, 0};
    nanosleep(&duration, nullptr);
}

}  // namespace

int main(int count, char** arguments) {
    const long seconds = count > 1 ? std::strtol(arguments[1], nullptr, 10) : 60;
    if (!create_headset_mgmt(nullptr) || !start_headset_mgmt("", "", "")) {
        std::fputs("idle: not started\n", stderr);
        return 1;
    }
    wait(1);
    const rusage before = usage_so_far();
    wait(seconds);
    const rusage after = usage_so_far();

    const double used = seconds_of(after.ru_utime) + seconds_of(after.ru_stime) -
                        seconds_of(before.ru_utime) - seconds_of(before.ru_stime);
    const auto wake_ups = static_cast<double>(after.ru_nvcsw - before.ru_nvcsw - 1);
    const auto waited = static_cast<double>(seconds);
    std::printf("idle for %ld s: %.1f wake-ups a second, %.4f %% of a core\n", seconds,
                wake_ups / waited, used / waited * 100);
    stop_headset_mgmt();
    return 0;
}
