// Inventory reports, as a phone posts them.

#pragma once

#include <stdexcept>
#include <string>

#include "program/output.h"

namespace headsetmgmt::program {

/// A report that is refused: the member that is wrong, what was expected there,
/// and what was found.
class ReportRefusal : public std::runtime_error {
public:
    ReportRefusal(std::string member_path, std::string expected_there, std::string found_there);

    std::string member;  ///< such as "value.host"; empty: the document as a whole
    std::string expected;
    std::string found;
};

/// The report that `body` holds. Throws ReportRefusal when it is no JSON, is
/// nested deeper or has more members than a report could, or lacks one of
/// "time", "key", "value", "value.host", "value.headset" with the type of each.
/// Other members are taken as they are. Any thread.
Event read_report(const std::string& body);

}  // namespace headsetmgmt::program
