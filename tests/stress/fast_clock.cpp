// SPDX-License-Identifier: Apache-2.0
// The clock of the program and of the library that it loads: a hundred times as fast as the real
// one.
//
// The library's worker looks at its queue every 50 milliseconds, and holds a fetch back for up to a
// minute while an accessory's facts are not known. The linker takes these definitions for the whole
// program, the shared library included, so that such a minute passes within 600 milliseconds and
// many of them fit between two stops. Both are fast by the same measure: the library finds that its
// sleeps last as long as it asked for. The program's own limits are read from
// `std::chrono::steady_clock`, which stays as it is.

#include <cstdint>
#include <time.h>
#include <unistd.h>

namespace {

constexpr int speed = 100;
constexpr std::int64_t nanoseconds_per_second = 1000000000;
constexpr std::int64_t nanoseconds_per_microsecond = 1000;

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int usleep(useconds_t duration) {
    const std::int64_t nanoseconds = duration * nanoseconds_per_microsecond / speed;
    timespec left = {};
    left.tv_sec = nanoseconds / nanoseconds_per_second;
    left.tv_nsec = static_cast<long>(nanoseconds % nanoseconds_per_second);
    return clock_nanosleep(CLOCK_MONOTONIC, 0, &left, nullptr) == 0 ? 0 : -1;
}

__attribute__((visibility("default"))) time_t time(time_t* result) noexcept {
    timespec real = {};
    clock_gettime(CLOCK_MONOTONIC, &real);
    const time_t now = real.tv_sec * speed + real.tv_nsec / (nanoseconds_per_second / speed);
    if (result != nullptr) {
        *result = now;
    }
    return now;
}

}  // extern "C"
