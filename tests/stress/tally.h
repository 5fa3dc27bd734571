// SPDX-License-Identifier: Apache-2.0
// What happened, counted, and what must not happen.

#pragma once

#include <cstddef>

namespace headsetmgmt::stress {

/// What is counted beside the calls.
enum class Counter : std::size_t {
    line,               ///< a log line
    fetch,              ///< a document requested
    report,             ///< a report posted
    setting,            ///< a setting sent to a device
    upgrade,            ///< an upgrade requested
    exception,          ///< thrown by the host
    document,           ///< a document handed out to the accessories that waited for it
    run,                ///< a configuration run ended, with or without a document
    stop,               ///< the library stopped
    probe_setting,      ///< a setting sent to the probe
    probe_report,       ///< the probe's report posted
    number_of_counters  ///< not a counter
};

/// Counts one. Any thread; puts threads into no order, which would hide races.
void note(Counter counter);

/// How many there were.
unsigned long count_of(Counter counter);

/// Something happened that must not: says so, and the program will fail. Any thread.
__attribute__((format(printf, 1, 2))) void fail(const char* format, ...);

/// Whether `fail` was called.
bool has_failed();

}  // namespace headsetmgmt::stress
