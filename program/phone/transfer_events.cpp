// The events that tell how a request over the network ended.

#include "program/phone/transfer_events.h"

#include <string>

namespace headsetmgmt::program {

namespace {

void add_outcome(Event& told, const TransferResult& result, bool is_good) {
    if (!result.final_url.empty()) {
        told["finalUrl"] = result.final_url;
    }
    if (!result.error.empty()) {
        told["error"] = result.error;
        return;
    }
    told["status"] = result.status;
    const std::string remark = is_good ? "" : remark_on(result.status);
    if (!remark.empty()) {
        told["message"] = remark;
    }
}

}  // namespace

bool is_fetched(const TransferResult& result) {
    return result.status == fetched_status;
}

bool is_accepted(const TransferResult& result) {
    constexpr int first_success = 200;
    constexpr int first_redirect = 300;
    return result.status >= first_success && result.status < first_redirect;
}

Event fetch_event(int attempt, const TransferRequest& request, const TransferResult& result) {
    Event told = {{"event", "fetch"},
                  {"attempt", attempt},
                  {"url", request.url},
                  {"milliseconds", result.duration.count()}};
    add_outcome(told, result, is_fetched(result));
    if (result.error.empty()) {
        told["bytes"] = result.body.size();
    }
    return told;
}

Event report_event(const TransferRequest& request, const TransferResult& result) {
    Event told = {{"event", "report"},
                  {"url", request.url},
                  {"bytes", request.body.size()},
                  {"accepted", is_accepted(result)},
                  {"milliseconds", result.duration.count()}};
    add_outcome(told, result, is_accepted(result));
    return told;
}

}  // namespace headsetmgmt::program
