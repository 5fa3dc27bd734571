// SPDX-License-Identifier: Apache-2.0
// The file of certificates that a phone trusts, before it is used.

#pragma once

#include <string>

namespace headsetmgmt::program {

/// Refuses a file that cannot be read or has no certificate in it, with which every https request
/// would fail. A pipe is not read: that can be done only once. Throws `RefusedInput`.
void check_ca_file(const std::string& path);

}  // namespace headsetmgmt::program
