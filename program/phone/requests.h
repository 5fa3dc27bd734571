// SPDX-License-Identifier: Apache-2.0
// The requests of a phone: its network thread.

#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "program/network/transfer.h"
#include "program/output.h"
#include "program/phone/joined_fetches.h"
#include "program/phone/run_end.h"

namespace headsetmgmt::program {

/// What the network thread reports; called on that thread.
class RequestListener {
public:
    virtual ~RequestListener() = default;

    /// A document has arrived for a request of the library. Returns when it was handed over.
    virtual void on_document(const std::string& document) = 0;

    /// No document will be fetched any more.
    virtual void on_gave_up(const std::string& reason) = 0;

    /// A report was accepted (`failure` is empty) or not.
    virtual void on_report_end(const std::string& failure) = 0;
};

/// Carries out the library's requests one after the other, on a thread of its own, and answers
/// them. A failed fetch is reported to the library only when it is time for the next one.
class PhoneRequests {
public:
    struct Options {
        TransferLimits limits;
        std::vector<std::string> tftp_servers;
        int give_up_after = 0;  ///< failed fetches in a row; 0: never
    };

    PhoneRequests(Options request_options, Output& events, RequestListener& request_listener);
    ~PhoneRequests();

    PhoneRequests(const PhoneRequests&) = delete;
    PhoneRequests& operator=(const PhoneRequests&) = delete;

    void start();

    /// Breaks off what is under way and ends the thread.
    void stop();

    /// Breaks off what is under way; nothing more is done. How far the requests have come. Any
    /// thread.
    RunProgress interrupt();

    /// A request of the library: a post when there is a body, else a fetch. Any thread.
    void add_fetch(const std::string& url);
    void add_post(const std::string& url, const std::string& body);

private:
    using Clock = std::chrono::steady_clock;
    /// A failed fetch. It is reported to the library later: that fetches again at once.
    struct HeldBackFailure {
        std::string url;
        int status;
    };

    void work();
    void fetch(const TransferRequest& wanted);
    void post(const TransferRequest& request);
    void answer_failure(const HeldBackFailure& failure);
    void deliver(const std::string& url, const std::string& document);
    void end_fetch(const std::string& failure);
    void set_under_way(RunProgress::UnderWay what);
    void fail_fetch(const std::string& url, int status, bool for_good);
    int take_fetches(const std::string& url);

    Options options;
    Output& output;
    RequestListener& listener;
    Transfers transfers;
    std::mt19937 jitter;  // of the network thread
    std::thread network;

    std::mutex state_mutex;  // guards all below
    std::condition_variable changed;
    std::deque<TransferRequest> requests;
    JoinedFetches fetches;
    std::multimap<Clock::time_point, HeldBackFailure> held_back;  // by when they are due
    RunProgress::UnderWay under_way = RunProgress::UnderWay::nothing;
    int attempt = 0;                 // fetches since the last document
    std::string last_fetch_failure;  // empty when the last fetch brought a document
    bool stopping = false;
};

}  // namespace headsetmgmt::program
