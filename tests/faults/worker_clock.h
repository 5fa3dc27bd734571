// SPDX-License-Identifier: Apache-2.0
// The worker's pauses, begun and ended without an allocation.
//
// A program that is linked with this has a `usleep` and a `time` of its own, which allocate
// nothing: so the worker runs only when the host lets it, and every run is alike.

#pragma once

namespace headsetmgmt::test_support {

/// There is one worker at a time. For the host's one thread.
class WorkerClock {
public:
    /// From now on the worker pauses where it would sleep, until `release`.
    static void hold();

    /// Waits until the worker pauses. There is a worker, and `hold` was called.
    static void wait_until_paused();

    /// Lets the worker go on to its next pause.
    static void run_worker();

    /// From now on, the worker never pauses.
    static void release();

    /// Whether two threads ever paused at the same time: a worker was left behind.
    static bool had_two_workers();

private:
    WorkerClock() = delete;
};

}  // namespace headsetmgmt::test_support
