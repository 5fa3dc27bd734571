// SPDX-License-Identifier: Apache-2.0
// How the program ends when it cannot go on.

#pragma once

namespace headsetmgmt::program {

/// From here on an exception that nobody catches, on any thread, ends the program with a message on
/// standard error and `exit_failed`.
void end_on_uncaught_exceptions();

/// From here on the program ends so as soon as a C++ allocation fails, on any thread: the library
/// catches what it throws, and goes on without what was to be done.
void end_on_lack_of_memory();

}  // namespace headsetmgmt::program
