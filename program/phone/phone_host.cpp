// SPDX-License-Identifier: Apache-2.0
// A reference phone host: everything that a phone does around the library.

#include "program/phone/phone_host.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <optional>
#include <utility>

#include "headsetmgmt/phone/flat_interface.h"
#include "headsetmgmt/phone/host_functions.h"

#include "program/document/outcome.h"
#include "program/exit_codes.h"
#include "program/phone/document_events.h"
#include "program/phone/hand_over.h"
#include "program/phone/library_lines.h"
#include "program/phone/run_end.h"
#include "program/phone/transfer_events.h"
#include "program/url_mask.h"

namespace headsetmgmt::program {

namespace {

using Lock = std::unique_lock<std::mutex>;

PhoneHost* current_host = nullptr;

/// Set on the thread that hands a document over, while it does.
thread_local HandOver* hand_over = nullptr;

/// Set on the thread that attaches an accessory, while it does: whether the fetch that this queued
/// is the accessory's own, and not one that was on its way already.
thread_local bool* queued_fetch = nullptr;

void on_log_line(int /*level*/, const char* text) {
    current_host->log_line(text);
}

void note_host_call(const char* device_id) {
    if (hand_over != nullptr) {
        hand_over->on_host_call(device_id);
    }
}

/// What the library waits for before it fetches the document for an accessory; empty: it does not.
std::string missing_members(const AccessoryCache& facts) {
    if (facts.software_version.empty() && facts.model.empty()) {
        return "softwareVersion, model";
    }
    return facts.software_version.empty() ? "softwareVersion" : facts.model.empty() ? "model" : "";
}

}  // namespace

PhoneHost::PhoneHost(PhoneOptions phone_options, Output& events)
    : options(std::move(phone_options)), output(events),
      requests({options.limits, options.bench.tftp_servers, options.give_up_after}, events, *this) {
    current_host = this;
}

PhoneHost::~PhoneHost() {
    current_host = nullptr;
}

void PhoneHost::run() {
    requests.start();
    if (bring_up()) {
        Lock lock(state_mutex);
        changed.wait(lock, [this] { return interrupted || tally.is_complete(); });
    }
    requests.stop();
    stop_headset_mgmt();

    report_devices();
}

Event PhoneHost::result() {
    const Lock lock(state_mutex);
    const bool is_broken_off = interrupted && !tally.is_complete();
    return tally.result(is_broken_off ? interrupted_while : "");
}

/// Starts the library and attaches the accessories; false when it could not be started.
bool PhoneHost::bring_up() {
    const Bench& bench = options.bench;
    std::array<const char*, servers_of_a_kind> tftp = {};
    std::array<const char*, servers_of_a_kind> korm = {};
    std::transform(bench.tftp_servers.begin(), bench.tftp_servers.end(), tftp.begin(),
                   [](const std::string& server) { return server.c_str(); });
    std::transform(bench.korm_servers.begin(), bench.korm_servers.end(), korm.begin(),
                   [](const std::string& server) { return server.c_str(); });
    if (!create_headset_mgmt(on_log_line) ||
        !start_headset_mgmt("TRM", bench.software_version.c_str(), "./") ||
        !setHeadsetConfigUrl(bench.config_url.c_str(), bench.inventory_url.c_str(),
                             bench.service_url.c_str(), tftp.data(), korm.data(),
                             bench.user_id.c_str())) {
        const Lock lock(state_mutex);
        tally.note_reason("the library could not be started");
        return false;
    }
    for (const AccessoryCache& facts : bench.accessories) {
        output.write({{"event", "attached"},
                      {"id", facts.device_id},
                      {"model", facts.model},
                      {"softwareVersion", facts.software_version},
                      {"dongleModel", facts.dongle_model},
                      {"dongleVersion", facts.dongle_version}});
        {
            const Lock lock(state_mutex);
            waiting.push_back(facts);
            ++tally.attached;
            tally.reports_wanted += bench.inventory_url.empty() ? 0 : 1;
        }
        const auto accessory = std::make_shared<AccessoryCache>(facts);
        configure(accessory);
        if (!bench.inventory_url.empty()) {
            send_inventory(accessory);
        }
    }
    if (bench.inventory_url.empty()) {
        output.write({{"event", "note"}, {"text", "no inventory URL: no reports are sent"}});
    }
    return true;
}

void PhoneHost::configure(const std::shared_ptr<AccessoryCache>& accessory) {
    bool is_fetch_queued = false;
    queued_fetch = &is_fetch_queued;
    const bool is_taken = configure_headset(accessory);
    queued_fetch = nullptr;
    const std::string missing = missing_members(*accessory);
    if (!is_taken) {
        const Lock lock(state_mutex);
        stop_waiting({accessory->device_id});
        ++tally.not_configured;
        tally.note_reason("the library does not configure " + accessory->device_id);
    } else if (is_fetch_queued && !missing.empty()) {
        // The library waits so long for the device to report them, then does without.
        output.write(
            {{"event", "note"},
             {"text", "the document is fetched in 60 s: until then the library waits for values "
                      "that the bench lacks for " +
                          accessory->device_id + ": " + missing}});
    }
}

/// Under the lock.
void PhoneHost::stop_waiting(const std::set<std::string>& device_ids) {
    const auto is_one = [&device_ids](const AccessoryCache& facts) {
        return device_ids.count(facts.device_id) != 0;
    };
    waiting.erase(std::remove_if(waiting.begin(), waiting.end(), is_one), waiting.end());
}

void PhoneHost::interrupt() {
    RunProgress progress = requests.interrupt();
    const Lock lock(state_mutex);
    interrupted = true;
    progress.wants_document = tally.wants_document();
    interrupted_while = interruption(progress);
    changed.notify_all();
}

void PhoneHost::request(HttpRequestType type, const char* url, const char* body) {
    if (type == HTTP_REQUEST_POST) {
        requests.add_post(url, body);
    } else {
        requests.add_fetch(url);
    }
}

void PhoneHost::apply(const char* device_id, const char* name, int usage_id, const char* value) {
    note_host_call(device_id);
    {
        const Lock lock(state_mutex);
        devices[device_id][usage_id] = {name, value};
    }
    output.write({{"event", "setting"},
                  {"id", device_id},
                  {"name", name},
                  {"usageId", usage_id},
                  {"value", value}});
}

void PhoneHost::upgrade(const char* device_id, const char* version, const char* firmware_name) {
    note_host_call(device_id);
    output.write({{"event", "upgrade"},
                  {"id", device_id},
                  {"version", version},
                  {"firmwareName", firmware_name}});
}

void PhoneHost::log_line(const char* text) {
    const std::string line = text;
    const LibraryLine read = read_library_line(line);
    if (hand_over != nullptr) {
        if (errno == ENOMEM) {
            hand_over->on_lack_of_memory();
            errno = 0;
        }
        hand_over->on_line(read);
    }
    if (queued_fetch != nullptr && read.kind == LibraryLine::Kind::fetch_queued) {
        *queued_fetch = true;
    }
    {
        const Lock lock(state_mutex);
        if (const std::optional<std::string> cause = report_lines.on_line(read)) {
            // No request of this report follows.
            ++tally.reports_failed;
            tally.note_reason("a report could not be built: " + *cause);
            changed.notify_all();
        }
    }
    if (options.verbose) {
        output.write({{"event", "log"}, {"text", with_masked_passwords(line)}});
    }
}

void PhoneHost::on_document(const std::string& document) {
    HandOver followed;
    hand_over = &followed;
    errno = 0;  // what the library's parser leaves when memory runs out
    httpResponse(document.c_str(), fetched_status);
    hand_over = nullptr;

    HandedOver handed_over;
    handed_over.was_dropped = followed.was_dropped();
    if (followed.has_turns()) {
        std::vector<AccessoryCache> candidates;
        {
            const Lock lock(state_mutex);
            candidates = waiting;
        }
        handed_over.outcome = read_document(document, candidates, settings_in_an_event);
        handed_over.turns = followed.turns(candidates, handed_over.outcome.accessories);
        std::set<std::string> served;
        for (const Turn& turn : handed_over.turns) {
            served.insert(turn.facts.device_id);
        }
        const Lock lock(state_mutex);
        stop_waiting(served);
    }
    for (const Event& event : firmware_events(handed_over)) {
        output.write(event);
    }
    const Event event = document_event(handed_over);
    output.write(event);
    add_to_tally(handed_over, event);
}

void PhoneHost::add_to_tally(const HandedOver& handed_over, const Event& event) {
    const Lock lock(state_mutex);
    const int taken = static_cast<int>(count_taken(handed_over));
    const int failed = static_cast<int>(handed_over.turns.size()) - taken;
    tally.configured += taken;
    tally.not_configured += failed;
    tally.passed_over += count_passed_over(handed_over);
    if (failed != 0) {
        tally.note_reason(std::to_string(failed) + " of " + std::to_string(taken + failed) +
                          " accessories could not use the document: " +
                          event["reasons"].front().get<std::string>());
    }
    changed.notify_all();
}

void PhoneHost::on_gave_up(const std::string& reason) {
    const Lock lock(state_mutex);
    tally.gave_up = true;
    tally.note_reason(reason);
    changed.notify_all();
}

void PhoneHost::on_report_end(const std::string& failure) {
    const Lock lock(state_mutex);
    if (failure.empty()) {
        ++tally.reports_accepted;
    } else {
        ++tally.reports_failed;
        tally.note_reason("a report was not accepted: " + failure);
    }
    changed.notify_all();
}

void PhoneHost::report_devices() {
    const Lock lock(state_mutex);
    for (const auto& [id, settings] : devices) {
        Event event = {{"event", "device"}, {"id", id}, {"settings", Event::array()}};
        for (const auto& [usage_id, setting] : settings) {
            event["settings"].push_back(
                {{"usageId", usage_id}, {"name", setting.name}, {"value", setting.value}});
        }
        output.write(event);
    }
}

}  // namespace headsetmgmt::program

// What the library asks of its host.

using headsetmgmt::program::current_host;

bool httpRequest(HttpRequestType type, const char* url, const char* body) {
    current_host->request(type, url, body);
    return true;
}

bool apply_changes(const char* device_id, const char* name, int usage_id, const char* value) {
    current_host->apply(device_id, name, usage_id, value);
    return true;
}

bool request_firmware_upgrade(const char* device_id, const char* version,
                              const char* firmware_name) {
    current_host->upgrade(device_id, version, firmware_name);
    return true;
}

bool check_firmware_upgrade(const char* /*device_id*/) {
    return true;
}

const char* get_host_serial_num() {
    return current_host->bench().serial_number.c_str();
}

const char* get_host_os_ver() {
    return current_host->bench().os_version.c_str();
}

const char* get_orvik_ver() {
    return current_host->bench().software_version.c_str();
}
