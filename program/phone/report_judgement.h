// SPDX-License-Identifier: Apache-2.0
// Why a report was not built.

#pragma once

#include <optional>
#include <string>

#include "program/phone/library_lines.h"

namespace headsetmgmt::program {

/// Follows the library's lines about reports, in the order in which its worker writes them. One
/// thread at a time.
class ReportJudgement {
public:
    /// Why, as far as the lines say, when this one says that a report was not built.
    std::optional<std::string> on_line(const LibraryLine& line);

private:
    bool lacks_serial_number = false;  // the accessory of the report that is being built
};

}  // namespace headsetmgmt::program
