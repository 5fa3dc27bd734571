// A reference phone host: everything that a phone does around the library.

#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>

#include "headsetmgmt/phone/host_types.h"

#include "program/network/transfer.h"
#include "program/output.h"
#include "program/phone/bench.h"
#include "program/phone/joined_fetches.h"
#include "program/phone/report_judgement.h"
#include "program/phone/run_end.h"
#include "program/phone/run_tally.h"

namespace headsetmgmt::program {

struct PhoneOptions {
    Bench bench;
    TransferLimits limits;
    int give_up_after = 0;         ///< failed fetches in a row; 0: never
    std::string detach_on_answer;  ///< accessory to detach when the document has arrived
    bool verbose = false;          ///< tell the library's log lines too
};

/// Runs the library as a phone does: attaches the bench's accessories, does the requests, plays the
/// devices, and has the accessories reported.
///
/// One at a time: the library's host functions find it by a process-wide pointer.
class PhoneHost {
public:
    PhoneHost(PhoneOptions phone_options, Output& events);
    ~PhoneHost();

    PhoneHost(const PhoneHost&) = delete;
    PhoneHost& operator=(const PhoneHost&) = delete;

    /// From start to stop of the library: until every accessory is configured and every report
    /// accepted, or this cannot be.
    void run();

    /// Ends the run soon. Any thread.
    void interrupt();

    /// The event `result`, as things stand. Any thread.
    Event result();

    // The library's host functions and its log callback. Any thread.
    void request(HttpRequestType type, const char* url, const char* body);
    void apply(const char* device_id, const char* name, int usage_id, const char* value);
    void upgrade(const char* device_id, const char* version, const char* firmware_name);
    void log_line(const char* text);
    const Bench& bench() const { return options.bench; }

private:
    using Clock = std::chrono::steady_clock;
    struct Setting {
        std::string name;
        std::string value;
    };
    /// A failed fetch that the library hears of later, so that it does not fetch again at once.
    struct HeldBackFailure {
        std::string url;
        int status;
    };

    bool bring_up();
    void configure(const std::shared_ptr<AccessoryCache>& accessory);
    void work_on_requests();
    void fetch(const TransferRequest& wanted);
    void post(const TransferRequest& request);
    void report_failure(const HeldBackFailure& failure);
    void deliver(const std::string& url, const std::string& document);
    void deliver_once(const std::string& document);
    void end_fetch(const std::string& failure);
    void set_under_way(RunProgress::UnderWay what);
    void fail_fetch(const std::string& url, int status, bool for_good);
    int take_fetches(const std::string& url);
    void tell_devices();

    PhoneOptions options;
    Output& output;
    Transfers transfers;

    mutable std::mutex state_mutex;  // guards all below
    std::condition_variable changed;
    std::deque<TransferRequest> requests;
    JoinedFetches fetches;
    std::multimap<Clock::time_point, HeldBackFailure> held_back;  // by when they are due
    std::map<std::string, std::map<int, Setting>> devices;  // what each was given, by usage id
    std::mt19937 jitter;
    RunProgress::UnderWay under_way = RunProgress::UnderWay::nothing;
    int attempt = 0;                 // fetches since the last document
    std::string last_fetch_failure;  // empty when the last fetch brought a document
    ReportJudgement report_lines;
    RunTally tally;
    std::string interrupted_while;  // what was going on then
    bool interrupted = false;
    bool stopping = false;
};

/// The sentence for an event of a phone.
std::string phone_event_in_words(const Event& event);

}  // namespace headsetmgmt::program
