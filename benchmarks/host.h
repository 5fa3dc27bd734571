// SPDX-License-Identifier: Apache-2.0
// The host functions of the programs that measure: they count, and do nothing else.
//
// Linked to programs that export their symbols to the shared library.

#pragma once

#include <atomic>
#include <cstddef>
#include <functional>

namespace headsetmgmt::benchmarks {

/// What the library has asked of its host and reported to it so far. Any thread.
struct Counts {
    std::atomic<std::size_t> lines{0};
    std::atomic<std::size_t> applied{0};
    std::atomic<std::size_t> fetches{0};
    std::atomic<std::size_t> posts{0};
};
extern Counts host_counts;

/// The log callback that only counts.
void count_line(int level, const char* text);

/// Called from inside each `httpRequest` for a document; set it while nothing is under way.
extern std::function<void()> on_fetch;

/// Called with the body of each post; set it while nothing is under way.
extern std::function<void(const char* body)> on_post;

/// A call of `apply_changes`: the thread's processor time in it, and how many lines came
/// before.
struct ApplyCall {
    double processor_seconds = 0;
    std::size_t lines_before = 0;
};

/// Notes the `n`th call of `apply_changes` from now; to be set while nothing is under way.
void watch_apply(std::size_t n);

/// What was noted, once that call has come.
ApplyCall watched_apply();

}  // namespace headsetmgmt::benchmarks
