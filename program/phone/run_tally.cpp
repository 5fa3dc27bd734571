// SPDX-License-Identifier: Apache-2.0
// The result of a run so far.

#include "program/phone/run_tally.h"

#include <algorithm>

namespace headsetmgmt::program {

void RunTally::note_reason(const std::string& reason) {
    if (std::find(reasons.begin(), reasons.end(), reason) == reasons.end()) {
        reasons.push_back(reason);
    }
}

bool RunTally::wants_document() const {
    return !gave_up && configured + not_configured < attached;
}

bool RunTally::is_complete() const {
    return reports_accepted + reports_failed >= reports_wanted && !wants_document();
}

Event RunTally::result(const std::string& interruption) const {
    std::vector<std::string> all_reasons = reasons;
    if (!interruption.empty()) {
        all_reasons.insert(all_reasons.begin(), interruption);
    }
    Event event = {{"event", "result"},
                   {"ok", all_reasons.empty()},
                   {"attached", attached},
                   {"configured", configured},
                   {"notConfigured", not_configured},
                   {"reportsWanted", reports_wanted},
                   {"reportsAccepted", reports_accepted},
                   {"reportsFailed", reports_failed}};
    if (passed_over != 0) {
        event["settingsPassedOver"] = passed_over;
    }
    if (!all_reasons.empty()) {
        event["reason"] = all_reasons.front();
        event["reasons"] = all_reasons;
    }
    return event;
}

}  // namespace headsetmgmt::program
