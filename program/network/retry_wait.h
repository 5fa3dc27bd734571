// SPDX-License-Identifier: Apache-2.0
// How long a phone waits before it fetches again.

#pragma once

#include <chrono>
#include <random>

namespace headsetmgmt::program {

/// The wait before an attempt that follows a failure, the second or a later one: 1 s before the
/// second, twice as long before each further one, 60 s at most; less up to a quarter, so that the
/// phones of a site do not ask all at once when its server comes back.
std::chrono::milliseconds wait_before(int next_attempt, std::mt19937& random);

}  // namespace headsetmgmt::program
