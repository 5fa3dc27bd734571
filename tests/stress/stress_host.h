// SPDX-License-Identifier: Apache-2.0
// The host that the library talks to: it answers in every way that there is, and calls back in.

#pragma once

namespace headsetmgmt::stress {

/// The log callback. Counts lines, and calls the library once in a while, from the outer line
/// alone.
void take_log_line(int level, const char* text);

/// Whether the calling thread is inside a host function or the log callback.
bool is_inside_host();

/// From now on the host answers every fetch at once with the good document, and neither calls back
/// in nor throws; until `become_wild`. It is wild at first. A call that is under way goes on as it
/// began. Any thread.
void become_calm();
void become_wild();

/// Whether the library's own thread is inside a host function or the log callback.
bool is_worker_inside();

}  // namespace headsetmgmt::stress
