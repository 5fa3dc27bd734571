// SPDX-License-Identifier: Apache-2.0
// The eleven functions of the flat interface, called at random.

#pragma once

#include <array>
#include <chrono>

namespace headsetmgmt::stress {

/// Calls any of the eleven functions with any arguments. Any thread, also from inside a host
/// function or the log callback.
void call_at_random();

/// Starts, stops or creates the library, as chance has it. Any thread.
void start_or_stop_at_random();

/// Starts the library; what it answers.
bool start_library();
void stop_library();

/// Registers the log callback of the stress host; what the library answers.
bool create_library();

/// From now on the random calls give the library no URLs, or give them again. Any thread.
void withhold_urls(bool wanted);

/// Answers a fetch, whether there is one or not. `body` may be null.
void deliver_answer(const char* body, int status);

/// Asks a library that is stopped for everything, and fails when it answers anything but false.
/// While no other thread calls.
void expect_all_turned_away();

/// How often each function was called, in the order of the flat interface.
struct CallCount {
    const char* function;
    unsigned long calls;
    unsigned long answered_true;  ///< 0 for a function without result
};
std::array<CallCount, 11> call_counts();

/// The longest that a stop took.
std::chrono::milliseconds longest_stop();

}  // namespace headsetmgmt::stress
