// SPDX-License-Identifier: Apache-2.0
// A reference phone host: everything that a phone does around the library.

#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "headsetmgmt/phone/host_types.h"

#include "program/network/transfer.h"
#include "program/output.h"
#include "program/phone/bench.h"
#include "program/phone/document_events.h"
#include "program/phone/report_judgement.h"
#include "program/phone/requests.h"
#include "program/phone/run_tally.h"

namespace headsetmgmt::program {

struct PhoneOptions {
    Bench bench;
    TransferLimits limits;
    int give_up_after = 0;  ///< failed fetches in a row; 0: never
    bool verbose = false;   ///< show the library's log lines too
};

/// Runs the library as a phone does: attaches the bench's accessories, carries out the requests,
/// plays the devices, and has the accessories reported.
///
/// One at a time: the library's host functions find it by a process-wide pointer.
class PhoneHost : private RequestListener {
public:
    PhoneHost(PhoneOptions phone_options, Output& events);
    ~PhoneHost() override;

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
    struct Setting {
        std::string name;
        std::string value;
    };

    bool bring_up();
    void configure(const std::shared_ptr<AccessoryCache>& accessory);
    void stop_waiting(const std::set<std::string>& device_ids);
    void add_to_tally(const HandedOver& handed_over, const Event& event);
    void report_devices();

    void on_document(const std::string& document) override;
    void on_gave_up(const std::string& reason) override;
    void on_report_end(const std::string& failure) override;

    PhoneOptions options;
    Output& output;

    mutable std::mutex state_mutex;  // guards all below but the requests
    std::condition_variable changed;
    std::map<std::string, std::map<int, Setting>> devices;  // what each was given, by usage id
    ReportJudgement report_lines;
    std::vector<AccessoryCache> waiting;  // attached, without a document so far
    RunTally tally;
    std::string interrupted_while;  // what was going on then
    bool interrupted = false;

    PhoneRequests requests;  // last: its thread uses all above
};

}  // namespace headsetmgmt::program
