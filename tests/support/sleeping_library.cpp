// SPDX-License-Identifier: Apache-2.0
// A shared library that sleeps and reads the clock, for the test of the virtual clock.

#include <ctime>
#include <unistd.h>

extern "C" {

std::time_t library_time() {
    return std::time(nullptr);
}

void library_sleep(useconds_t duration) {
    usleep(duration);
}

}  // extern "C"
