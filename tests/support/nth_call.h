// SPDX-License-Identifier: Apache-2.0
// Makes a fake fail at a chosen call.

#pragma once

#include <atomic>

namespace headsetmgmt::test_support {

/// Counts calls down to the one that is to fail. Any thread.
class NthCall {
public:
    /// Chooses the `n`th call from now, 1 being the next; 0 chooses none.
    void choose(int n) { left = n; }

    /// Counts one call; whether it is the chosen one.
    bool is_now() {
        int before = left;
        while (before > 0 && !left.compare_exchange_weak(before, before - 1)) {
        }
        return before == 1;
    }

private:
    std::atomic<int> left = 0;
};

}  // namespace headsetmgmt::test_support
