// Why a report was not built, read from the library's log lines.

#include "program/phone/report_judgement.h"

#include <cstddef>

namespace headsetmgmt::program {

std::optional<std::string> ReportJudgement::on_line(const std::string& line) {
    constexpr char failure[] = "assemble_metrics[LIB-ERR]: ";
    constexpr std::size_t failure_length = sizeof(failure) - 1;
    const std::size_t colon = line.find(": ");
    const std::string message = colon == std::string::npos ? line : line.substr(colon + 2);
    if (message == "send_task: Enter") {
        cause.clear();
    } else if (message == "build_accessory_payload: accessory serial number is empty.") {
        cause = "the accessory has no serial number";
    } else if (message == failure + std::string("Building dock payload failed")) {
        // A report without its dock is built all the same.
    } else if (message.compare(0, failure_length, failure) == 0 && cause.empty()) {
        cause = "the library says: " + message.substr(failure_length);
    } else if (message == "send_task: building metrics failed") {
        return cause.empty() ? "the library does not say why" : cause;
    }
    return std::nullopt;
}

}  // namespace headsetmgmt::program
