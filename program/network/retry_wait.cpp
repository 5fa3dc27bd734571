// SPDX-License-Identifier: Apache-2.0
// How long a phone waits before it fetches again.

#include "program/network/retry_wait.h"

#include <algorithm>

namespace headsetmgmt::program {

std::chrono::milliseconds wait_before(int next_attempt, std::mt19937& random) {
    constexpr std::chrono::seconds first_wait{1};
    constexpr std::chrono::seconds longest_wait{60};
    std::chrono::milliseconds wait = first_wait;
    for (int i = 2; i < next_attempt && wait < longest_wait; ++i) {
        wait *= 2;
    }
    wait = std::min<std::chrono::milliseconds>(wait, longest_wait);
    std::uniform_real_distribution<double> share(0.75, 1.0);
    return std::chrono::milliseconds(
        static_cast<long>(static_cast<double>(wait.count()) * share(random)));
}

}  // namespace headsetmgmt::program
