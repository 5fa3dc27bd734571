// SPDX-License-Identifier: Apache-2.0
// What happened, counted, and what must not happen.

#include "stress/tally.h"

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace headsetmgmt::stress {

namespace {

std::array<std::atomic<unsigned long>, static_cast<std::size_t>(Counter::number_of_counters)>
    counts{};
std::atomic<unsigned long> failures{0};

}  // namespace

void note(Counter counter) {
    counts[static_cast<std::size_t>(counter)].fetch_add(1, std::memory_order_relaxed);
}

unsigned long count_of(Counter counter) {
    return counts[static_cast<std::size_t>(counter)].load(std::memory_order_relaxed);
}

void fail(const char* format, ...) {
    // The first few say what is wrong; the rest would say it again.
    constexpr unsigned long most = 20;
    if (failures.fetch_add(1) >= most) {
        return;
    }
    char text[500];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    std::fprintf(stderr, "stress: %s\n", text);
}

bool has_failed() {
    return failures != 0;
}

}  // namespace headsetmgmt::stress
