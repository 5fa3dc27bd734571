// SPDX-License-Identifier: Apache-2.0
// Input that the program refuses.

#pragma once

#include <stdexcept>

namespace headsetmgmt::program {

/// The command line, or a file, folder, URL or address that it names, is wrong. The text names the
/// place and what was expected there; the program ends with `exit_usage`.
class RefusedInput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace headsetmgmt::program
