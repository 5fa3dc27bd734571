// SPDX-License-Identifier: Apache-2.0
// Inventory reports, as a phone posts them.

#pragma once

#include <array>
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

/// Members of "value.headset" that an accessory is known by: texts.
inline constexpr std::array<const char*, 3> accessory_facts = {"serialNumber", "model",
                                                               "firmwareVersion"};

/// The report that `body` holds. Throws ReportRefusal when it is not JSON, is nested deeper or has
/// more members or array elements than a report could, lacks one of "time", "key", "value",
/// "value.host", "value.headset" with the type of each, or has an accessory's fact that is not a
/// text. Other members are taken as they are. Any thread.
Event read_report(const std::string& body);

}  // namespace headsetmgmt::program
