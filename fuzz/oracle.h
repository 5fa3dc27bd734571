// SPDX-License-Identifier: Apache-2.0
// What a fuzz target claims of the code under test.

#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace headsetmgmt::fuzz {

/// Ends the process with the claim unless it holds; the fuzzer keeps the input.
inline void expect(bool holds, const char* claim, const std::string& found = {}) {
    if (holds) {
        return;
    }
    std::fprintf(stderr, "fuzz: expected: %s\n", claim);
    if (!found.empty()) {
        std::fprintf(stderr, "fuzz: found: %s\n", found.c_str());
    }
    std::abort();
}

}  // namespace headsetmgmt::fuzz
