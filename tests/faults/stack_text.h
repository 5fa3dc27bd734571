// SPDX-License-Identifier: Apache-2.0
// A stack, for people to read.

#pragma once

#include <string>
#include <vector>

namespace headsetmgmt::test_support {

/// The functions and places of a stack of this very process, one a line: of its return addresses,
/// or with `addr2line` where there is one.
std::string stack_text(const std::vector<void*>& return_addresses);

}  // namespace headsetmgmt::test_support
