// What holds of every inventory report that is posted.

#pragma once

namespace headsetmgmt::fuzz {

/// Ends the process unless `body` is a whole report with all its members.
void expect_report(const char* body);

}  // namespace headsetmgmt::fuzz
