// The events that tell how a request over the network ended.

#include "program/phone/transfer_events.h"

#include <string>

#include "program/url_mask.h"

namespace headsetmgmt::program {

namespace {

void add_outcome(Event& told, const TransferResult& result, bool is_good) {
    if (!result.final_url.empty()) {
        told["finalUrl"] = result.final_url;
    }
    if (!result.error.empty()) {
        told["error"] = result.error;
    }
    if (result.status == 0) {
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
    return is_success(result.status);
}

Event fetch_event(int attempt, const TransferRequest& request, const TransferResult& result) {
    Event told = {{"event", "fetch"},
                  {"attempt", attempt},
                  {"url", masked_url(request.url)},
                  {"milliseconds", result.duration.count()}};
    add_outcome(told, result, is_fetched(result));
    if (result.error.empty()) {
        told["bytes"] = result.body.size();
    }
    return told;
}

Event report_event(const TransferRequest& request, const TransferResult& result) {
    Event told = {{"event", "report"},
                  {"url", masked_url(request.url)},
                  {"bytes", request.body.size()},
                  {"accepted", is_accepted(result)},
                  {"milliseconds", result.duration.count()}};
    add_outcome(told, result, is_accepted(result));
    return told;
}

}  // namespace headsetmgmt::program
