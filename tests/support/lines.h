// SPDX-License-Identifier: Apache-2.0
// Log lines, calls and other records as texts, in the order in which they came.

#pragma once

#include <initializer_list>
#include <string>
#include <vector>

namespace headsetmgmt::test_support {

using Lines = std::vector<std::string>;

/// All pieces in one transcript.
inline Lines joined(std::initializer_list<Lines> pieces) {
    Lines all;
    for (const Lines& piece : pieces) {
        all.insert(all.end(), piece.begin(), piece.end());
    }
    return all;
}

}  // namespace headsetmgmt::test_support
