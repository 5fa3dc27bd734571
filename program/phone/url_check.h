// What is wrong with a bench's URLs before anybody was asked: what no retry mends.

#pragma once

#include "program/phone/bench.h"

namespace headsetmgmt::program {

/// Refuses a config URL or an inventory URL that can never be requested, or that has letters in
/// braces that the library does not replace: they were meant to be a placeholder. A file name
/// without a TFTP server passes: the fetch tells that, and the reports are sent all the same.
/// Throws `BenchError`.
void check_urls(const Bench& bench);

}  // namespace headsetmgmt::program
