// SPDX-License-Identifier: Apache-2.0
// Why a report was not built.

#include "program/phone/report_judgement.h"

namespace headsetmgmt::program {

std::optional<std::string> ReportJudgement::on_line(const LibraryLine& line) {
    using Kind = LibraryLine::Kind;
    if (line.kind == Kind::report_begun) {
        lacks_serial_number = false;
    } else if (line.kind == Kind::report_without_serial_number) {
        lacks_serial_number = true;
    } else if (line.kind == Kind::report_failed) {
        return lacks_serial_number ? "the accessory has no serial number"
                                   : "the library does not say why";
    }
    return std::nullopt;
}

}  // namespace headsetmgmt::program
