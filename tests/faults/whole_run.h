// SPDX-License-Identifier: Apache-2.0
// A host that does everything once: create, start, attach, configure, report, ask, reset, remove,
// stop.

#pragma once

#include <string>

#include "support/lines.h"

namespace headsetmgmt::test_support {

/// The record of one whole run.
struct WholeRun {
    Lines refused;        ///< steps that should answer true, and answered false
    Lines refused_twice;  ///< and again when the host repeated them at once
    Lines granted;        ///< steps that should answer false, and answered true
    Lines calls;          ///< of host functions, in their order
    Lines lines;          ///< of the log, in their order
};

/// Creates and starts the library, if it is not, and does everything but stop it. For the thread
/// that loaded the program, like the next.
WholeRun start_and_use();

/// Stops the library. Returns how many allocations that took.
long stop();

/// The host's calls that a whole run makes, in the order of their texts.
const Lines& expected_calls();

/// Whether the call may be made when memory is short: one of the above, or one of the few that
/// follow from what was lost.
bool is_permitted_call(const std::string& call);

/// Whether a step that was refused for lack of memory must succeed when it is repeated with memory.
/// Others depend on a document that may have been lost.
bool is_repeatable(const std::string& step);

}  // namespace headsetmgmt::test_support
