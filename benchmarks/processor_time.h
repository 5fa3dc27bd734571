// SPDX-License-Identifier: Apache-2.0
// The clock of the benchmarks: what the calling thread has had of a processor.
//
// Other programs on the machine do not count, and neither does waiting for another thread.

#pragma once

#include <time.h>

namespace headsetmgmt::benchmarks {

/// Seconds of processor time that the calling thread has used so far.
inline double processor_seconds() {
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// How many such seconds `work` takes.
template <typename Work>
double processor_seconds_of(Work work) {
    const double begin = processor_seconds();
    work();
    return processor_seconds() - begin;
}

}  // namespace headsetmgmt::benchmarks
