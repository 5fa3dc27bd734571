// SPDX-License-Identifier: Apache-2.0
// What holds of every inventory report that is posted.

#pragma once

namespace headsetmgmt::fuzz {

/// Ends the process unless `body` is a whole report with all its members. A serial number may only
/// be empty if `blank_serial_numbers` is true.
void expect_report(const char* body, bool blank_serial_numbers);

}  // namespace headsetmgmt::fuzz
