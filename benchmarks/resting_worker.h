// SPDX-License-Identifier: Apache-2.0
// The library's worker, whose pauses between two passes last until a benchmark wants the next pass.
//
// A program with this file has its own `usleep`, in which the worker rests: pauses cost no time and
// fall where the benchmark wants them.

#pragma once

#include <functional>

namespace headsetmgmt::benchmarks {

/// Lets a worker rest from now on; the first one that pauses is the worker.
void let_worker_rest();

/// Waits until the worker rests.
void wait_for_worker();

/// Lets the worker run all that is queued; returns when it rests again. Answers how much processor
/// time it took the worker, in seconds.
double run_worker();

/// Has the worker itself run `body` where it rests; it rests on afterwards.
void run_on_worker(const std::function<void()>& body);

/// Wakes the worker, which never rests again: before it is joined.
void wake_worker_for_good();

}  // namespace headsetmgmt::benchmarks
