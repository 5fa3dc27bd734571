// SPDX-License-Identifier: Apache-2.0
// What the program answers to its caller.

#pragma once

namespace headsetmgmt::program {

enum ExitCode : int {
    /// Everything that was asked for happened.
    exit_done = 0,
    /// Something did not; the last line or standard error says what.
    exit_failed = 1,
    /// The command line, or a file, folder, URL or address that it names, is wrong.
    exit_usage = 2,
};

}  // namespace headsetmgmt::program
