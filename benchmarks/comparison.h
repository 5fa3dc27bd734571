// SPDX-License-Identifier: Apache-2.0
// Ours beside the least that anyone could do for the same result.

#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include <benchmark/benchmark.h>

namespace headsetmgmt::benchmarks {

inline double median_of(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Runs `ours` and `floor` by turns, so that whatever else the machine does meets both. Each
/// answers how many seconds of processor time it took for each of its results. Reports the
/// medians, in nanoseconds.
template <typename Ours, typename Floor>
void compare(benchmark::State& state, Ours ours, Floor floor) {
    std::vector<double> our_times;
    std::vector<double> floor_times;
    for ([[maybe_unused]] auto _ : state) {
        our_times.push_back(ours());
        floor_times.push_back(floor());
        state.SetIterationTime(our_times.back());
    }
    constexpr double nanoseconds = 1e9;
    state.counters["ours"] = median_of(our_times) * nanoseconds;
    state.counters["floor"] = median_of(floor_times) * nanoseconds;
}

}  // namespace headsetmgmt::benchmarks
