// SPDX-License-Identifier: Apache-2.0
// Waiting and waiting times.

#include <cstdlib>
#include <ctime>
#include <limits>
#include <unistd.h>

#include "headsetmgmt/utilities.h"

void sleep_for(unsigned int seconds) {
    constexpr unsigned int microseconds_per_second = 1000000;
    usleep(seconds * microseconds_per_second);
}

unsigned int get_seconds_to_wait(unsigned int base, unsigned int spread) {
    std::srand(static_cast<unsigned int>(std::time(nullptr)));
    const auto draw = static_cast<unsigned int>(std::rand());
    if (spread == std::numeric_limits<unsigned int>::max()) {
        return base + draw;  // every draw is within the spread
    }
    return base + draw % (spread + 1);
}
