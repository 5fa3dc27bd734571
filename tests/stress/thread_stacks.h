// SPDX-License-Identifier: Apache-2.0
// The stacks of all threads of the process.

#pragma once

namespace headsetmgmt::stress {

/// Writes the stack of every thread but the caller's to standard error, the innermost function
/// first. For a process that is about to end: threads are stopped where they are, whatever they
/// hold. One thread.
void print_all_stacks();

}  // namespace headsetmgmt::stress
