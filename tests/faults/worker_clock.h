// The worker's pauses, which a host without memory of its own to give can begin and end.
//
// A program that is linked with this has a `usleep` and a `time` of its own, which allocate
// nothing: so the worker runs only where the host lets it, and each run is like every other.

#pragma once

namespace headsetmgmt::test_support {

/// There is one worker at a time. For the host's one thread.
class WorkerClock {
public:
    /// Has the worker pause from now on, until it is told otherwise.
    static void hold();

    /// Waits until the worker pauses. It is there, and was told to.
    static void wait_until_paused();

    /// Lets the worker go on to its next pause.
    static void run_worker();

    /// From now on, the worker never pauses.
    static void let_go();

    /// Whether two threads ever paused at the same time: a worker was left behind.
    static bool had_two_workers();

private:
    WorkerClock() = delete;
};

}  // namespace headsetmgmt::test_support
