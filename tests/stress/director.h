// SPDX-License-Identifier: Apache-2.0
// The stops: at rest, where what the library left behind is counted, and during calls.

#pragma once

#include "stress/footprint.h"
#include "stress/host_threads.h"

namespace headsetmgmt::stress {

/// Stops and starts the library while others use it. One thread.
class Director {
public:
    /// Keeps `the_threads`, which are in their meeting. Before the library's first start.
    explicit Director(HostThreads& the_threads);

    /// Starts the library for the first time and ends the threads' meeting.
    void begin();

    /// Has all threads wait, checks that the library still works or leaves tasks in its queue,
    /// stops it, checks what it left behind, starts it and lets the threads go on.
    void stop_at_rest();

    /// Stops the library and starts it again; everybody goes on calling.
    void stop_amid_calls();

    /// The same from all threads at once, again and again for a moment.
    void stop_from_all_threads();

    unsigned int stops_at_rest() const { return stops; }

    /// What was held after the first stop at rest, and after the latest.
    const Footprint& first() const { return first_footprint; }
    const Footprint& latest() const { return latest_footprint; }

private:
    void compare();

    HostThreads& threads;
    unsigned int stops = 0;  // at rest
    Footprint before_start;  // all threads are the program's own
    Footprint first_footprint{};
    Footprint latest_footprint{};
};

}  // namespace headsetmgmt::stress
