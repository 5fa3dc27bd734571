// SPDX-License-Identifier: Apache-2.0
// Why a run did not end well, in words.

#include "program/phone/run_end.h"

namespace headsetmgmt::program {

std::string no_document(int attempts, const std::string& last_failure) {
    const std::string count = "no document after " + std::to_string(attempts);
    return attempts == 1 ? count + " attempt: " + last_failure
                         : count + " attempts; the last: " + last_failure;
}

std::string interruption(const RunProgress& progress) {
    using UnderWay = RunProgress::UnderWay;
    const std::string last =
        progress.last_failure.empty() ? "" : "; the last: " + progress.last_failure;
    if (progress.under_way == UnderWay::fetch) {
        return "interrupted during attempt " + std::to_string(progress.attempt) + last;
    }
    if (progress.under_way == UnderWay::document) {
        return "interrupted while a document was handed over";
    }
    if (progress.waits) {
        return "interrupted while waiting for attempt " + std::to_string(progress.attempt + 1) +
               last;
    }
    if (progress.under_way == UnderWay::report) {
        return "interrupted while a report was on its way";
    }
    if (!progress.wants_document) {
        return "interrupted before every report was sent";
    }
    // The library asks for the next attempt once it has heard of the failure.
    return progress.attempt == 0
               ? "interrupted before the library asked for a document"
               : "interrupted before attempt " + std::to_string(progress.attempt + 1) + last;
}

}  // namespace headsetmgmt::program
