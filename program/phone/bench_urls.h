// SPDX-License-Identifier: Apache-2.0
// Checks of a bench's URLs before the first request: no retry mends what they refuse.

#pragma once

#include "program/phone/bench.h"

namespace headsetmgmt::program {

/// Refuses a config URL or an inventory URL that can never be requested, or that has letters in
/// braces that the library does not replace: they were meant to be a placeholder. A file name
/// without a TFTP server passes: the fetch reports it, and the reports are sent all the same.
/// Throws `RefusedInput`.
void check_urls(const Bench& bench);

}  // namespace headsetmgmt::program
