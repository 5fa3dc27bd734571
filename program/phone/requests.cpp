// SPDX-License-Identifier: Apache-2.0
// The requests of a phone: its network thread.

#include "program/phone/requests.h"

#include <optional>
#include <utility>

#include "headsetmgmt/phone/flat_interface.h"

#include "program/network/fetch_url.h"
#include "program/network/retry_wait.h"
#include "program/phone/transfer_events.h"

namespace headsetmgmt::program {

namespace {

using Lock = std::unique_lock<std::mutex>;

}  // namespace

PhoneRequests::PhoneRequests(Options request_options, Output& events,
                             RequestListener& request_listener)
    : options(std::move(request_options)), output(events), listener(request_listener),
      transfers(options.limits), jitter(std::random_device{}()) {}

PhoneRequests::~PhoneRequests() {
    stop();
}

void PhoneRequests::start() {
    network = std::thread([this] { work(); });
}

void PhoneRequests::stop() {
    interrupt();
    if (network.joinable()) {
        network.join();
    }
}

RunProgress PhoneRequests::interrupt() {
    RunProgress progress;
    {
        const Lock lock(state_mutex);
        stopping = true;
        progress = {under_way, attempt, !held_back.empty(), true, last_fetch_failure};
        changed.notify_all();
    }
    transfers.interrupt();
    return progress;
}

void PhoneRequests::add_fetch(const std::string& url) {
    const Lock lock(state_mutex);
    if (fetches.add(url)) {
        requests.push_back({url, false, {}});
        changed.notify_all();
    }
}

void PhoneRequests::add_post(const std::string& url, const std::string& body) {
    const Lock lock(state_mutex);
    requests.push_back({url, true, body});
    changed.notify_all();
}

/// Requests one after the other, and failures held back until they are due.
void PhoneRequests::work() {
    Lock lock(state_mutex);
    while (!stopping) {
        if (!held_back.empty() && held_back.begin()->first <= Clock::now()) {
            const HeldBackFailure failure = held_back.begin()->second;
            held_back.erase(held_back.begin());
            lock.unlock();
            answer_failure(failure);
            lock.lock();
        } else if (!requests.empty()) {
            const TransferRequest request = std::move(requests.front());
            requests.pop_front();
            attempt += request.is_post ? 0 : 1;
            under_way =
                request.is_post ? RunProgress::UnderWay::report : RunProgress::UnderWay::fetch;
            lock.unlock();
            request.is_post ? post(request) : fetch(request);
            lock.lock();
            under_way = RunProgress::UnderWay::nothing;
        } else if (!held_back.empty()) {
            changed.wait_until(lock, held_back.begin()->first);
        } else {
            changed.wait(lock);
        }
    }
}

void PhoneRequests::fetch(const TransferRequest& wanted) {
    int this_attempt = 0;
    {
        const Lock lock(state_mutex);
        this_attempt = attempt;
    }
    const std::optional<FetchUrl> target = fetch_url(wanted.url, options.tftp_servers);
    if (!target) {
        const std::string error = "a file name without a server, and there is no TFTP server to "
                                  "look it up on: give servers.tftp or --tftp-server";
        output.write(
            {{"event", "fetch"}, {"attempt", this_attempt}, {"url", wanted.url}, {"error", error}});
        end_fetch(error);
        fail_fetch(wanted.url, 0, true);
        return;
    }
    if (!target->dropped_query.empty()) {
        output.write(
            {{"event", "note"},
             {"text", "TFTP has no queries, so this is dropped: " + target->dropped_query}});
    }
    TransferRequest request = wanted;
    request.url = target->url;
    const TransferResult result = transfers.perform(request);
    output.write(fetch_event(this_attempt, request, result));
    if (result.interrupted) {
        return;
    }
    end_fetch(is_fetched(result) ? "" : failure_of(result));
    if (!is_fetched(result)) {
        fail_fetch(wanted.url, result.status, false);
        return;
    }
    deliver(wanted.url, result.body);
}

void PhoneRequests::deliver(const std::string& url, const std::string& document) {
    if (document.find('\0') != std::string::npos) {
        output.write({{"event", "note"},
                      {"text", "the document has a NUL byte: the library reads it up to there"}});
    }
    for (int left = take_fetches(url); left != 0; --left) {
        set_under_way(RunProgress::UnderWay::document);
        listener.on_document(document);
        set_under_way(RunProgress::UnderWay::nothing);
        const Lock lock(state_mutex);
        attempt = 0;
    }
}

/// How many of the library's requests the end of the URL's transfer answers. Called before the
/// first of them is answered: the library may ask again from inside.
int PhoneRequests::take_fetches(const std::string& url) {
    const Lock lock(state_mutex);
    return fetches.take(url);
}

void PhoneRequests::answer_failure(const HeldBackFailure& failure) {
    for (int left = take_fetches(failure.url); left != 0; --left) {
        httpResponse("", failure.status);
    }
}

/// `failure` is empty when there is a document.
void PhoneRequests::end_fetch(const std::string& failure) {
    const Lock lock(state_mutex);
    under_way = RunProgress::UnderWay::nothing;
    last_fetch_failure = failure;
}

void PhoneRequests::set_under_way(RunProgress::UnderWay what) {
    const Lock lock(state_mutex);
    under_way = what;
}

/// Holds the answer back: the library fetches again as soon as a failure is reported.
void PhoneRequests::fail_fetch(const std::string& url, int status, bool for_good) {
    std::chrono::milliseconds wait{0};
    int next_attempt = 0;
    std::string reason_to_give_up;
    {
        const Lock lock(state_mutex);
        if (for_good || (options.give_up_after != 0 && attempt >= options.give_up_after)) {
            reason_to_give_up = no_document(attempt, last_fetch_failure);
        } else {
            next_attempt = attempt + 1;
            wait = wait_before(next_attempt, jitter);
            held_back.insert({Clock::now() + wait, {url, status}});
        }
    }
    if (!reason_to_give_up.empty()) {
        listener.on_gave_up(reason_to_give_up);
        return;
    }
    output.write({{"event", "wait"}, {"attempt", next_attempt}, {"milliseconds", wait.count()}});
}

void PhoneRequests::post(const TransferRequest& request) {
    const TransferResult result = transfers.perform(request);
    output.write(report_event(request, result));
    if (!result.interrupted) {
        listener.on_report_end(is_accepted(result) ? "" : failure_of(result));
    }
}

}  // namespace headsetmgmt::program
