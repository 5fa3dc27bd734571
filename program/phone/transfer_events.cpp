// SPDX-License-Identifier: Apache-2.0
// The events about the end of a request.

#include "program/phone/transfer_events.h"

#include <string>

#include "program/url_mask.h"

namespace headsetmgmt::program {

namespace {

void add_outcome(Event& event, const TransferResult& result, bool is_good) {
    if (!result.final_url.empty()) {
        event["finalUrl"] = result.final_url;
    }
    if (!result.error.empty()) {
        event["error"] = result.error;
    }
    if (result.status == 0) {
        return;
    }
    event["status"] = result.status;
    const std::string remark = is_good ? "" : remark_on(result.status);
    if (!remark.empty()) {
        event["message"] = remark;
    }
}

}  // namespace

bool is_fetched(const TransferResult& result) {
    return result.status == fetched_status;
}

bool is_accepted(const TransferResult& result) {
    return is_success(result.status);
}

Event fetch_event(int attempt, const TransferRequest& request, const TransferResult& result) {
    Event event = {{"event", "fetch"},
                   {"attempt", attempt},
                   {"url", masked_url(request.url)},
                   {"milliseconds", result.duration.count()}};
    add_outcome(event, result, is_fetched(result));
    if (result.error.empty()) {
        event["bytes"] = result.body.size();
    }
    return event;
}

Event report_event(const TransferRequest& request, const TransferResult& result) {
    Event event = {{"event", "report"},
                   {"url", masked_url(request.url)},
                   {"bytes", request.body.size()},
                   {"accepted", is_accepted(result)},
                   {"milliseconds", result.duration.count()}};
    add_outcome(event, result, is_accepted(result));
    return event;
}

}  // namespace headsetmgmt::program
