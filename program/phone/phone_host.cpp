// A reference phone host: everything that a phone does around the library.

#include "program/phone/phone_host.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <utility>

#include "headsetmgmt/phone/flat_interface.h"
#include "headsetmgmt/phone/host_functions.h"

#include "program/exit_codes.h"
#include "program/phone/answer_judgement.h"
#include "program/phone/document_events.h"

namespace headsetmgmt::program {

namespace {

using Lock = std::unique_lock<std::mutex>;

constexpr int status_ok = 200;
constexpr std::chrono::seconds first_wait{1};
constexpr std::chrono::seconds longest_wait{60};

PhoneHost* current_host = nullptr;

/// Set on the thread that delivers a document, while it does.
thread_local AnswerJudgement* judgement = nullptr;

/// Set on the thread that attaches an accessory, while it does: whether the fetch that this queued
/// is the accessory's own, and not one that was on its way already.
thread_local bool* queued_fetch = nullptr;

void on_log_line(int /*level*/, const char* text) {
    current_host->log_line(text);
}

/// 1 s after the first failure, twice as long after each further one, 60 s at most; less up to a
/// quarter, so that the phones of a site do not ask all at once when its server comes back.
std::chrono::milliseconds wait_before(int next_attempt, std::mt19937& random) {
    std::chrono::milliseconds wait = first_wait;
    for (int i = 2; i < next_attempt && wait < longest_wait; ++i) {
        wait *= 2;
    }
    wait = std::min<std::chrono::milliseconds>(wait, longest_wait);
    std::uniform_real_distribution<double> share(0.75, 1.0);
    return std::chrono::milliseconds(
        static_cast<long>(static_cast<double>(wait.count()) * share(random)));
}

/// Adds how a request ended to the event that tells it.
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

/// What the library waits for before it fetches the document for an accessory; empty: it does not.
std::string missing_members(const AccessoryCache& facts) {
    if (facts.software_version.empty() && facts.model.empty()) {
        return "softwareVersion, model";
    }
    return facts.software_version.empty() ? "softwareVersion" : facts.model.empty() ? "model" : "";
}

bool is_bare_name(const std::string& url) {
    return url.find("://") == std::string::npos;
}

std::string bracketed(const std::string& server) {
    return server.find(':') != std::string::npos ? "[" + server + "]" : server;
}

}  // namespace

PhoneHost::PhoneHost(PhoneOptions phone_options, Output& events)
    : options(std::move(phone_options)), output(events), transfers(options.limits),
      jitter(std::random_device{}()) {
    current_host = this;
}

PhoneHost::~PhoneHost() {
    current_host = nullptr;
}

int PhoneHost::run() {
    std::thread network([this] { work_on_requests(); });
    if (bring_up()) {
        Lock lock(state_mutex);
        changed.wait(lock, [this] { return interrupted || is_complete(); });
    }
    {
        const Lock lock(state_mutex);
        stopping = true;
        changed.notify_all();
    }
    transfers.interrupt();
    network.join();
    stop_headset_mgmt();

    tell_devices();
    const Lock lock(state_mutex);
    const std::vector<std::string> all_reasons = verdict();
    Event result = {{"event", "result"},
                    {"ok", all_reasons.empty()},
                    {"attached", attached},
                    {"configured", configured},
                    {"notConfigured", not_configured},
                    {"reportsWanted", reports_wanted},
                    {"reportsAccepted", reports_accepted},
                    {"reportsFailed", reports_failed}};
    if (passed_over != 0) {
        result["settingsPassedOver"] = passed_over;
    }
    if (!all_reasons.empty()) {
        result["reason"] = all_reasons.front();
        result["reasons"] = all_reasons;
    }
    output.tell(result);
    return all_reasons.empty() ? exit_done : exit_failed;
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
        note_reason("the library could not be started");
        return false;
    }
    for (const AccessoryCache& facts : bench.accessories) {
        output.tell({{"event", "attached"},
                     {"id", facts.device_id},
                     {"model", facts.model},
                     {"softwareVersion", facts.software_version},
                     {"dongleModel", facts.dongle_model},
                     {"dongleVersion", facts.dongle_version}});
        {
            const Lock lock(state_mutex);
            ++attached;
            reports_wanted += bench.inventory_url.empty() ? 0 : 1;
        }
        const auto accessory = std::make_shared<AccessoryCache>(facts);
        configure(accessory);
        if (!bench.inventory_url.empty()) {
            send_inventory(accessory);
        }
    }
    if (bench.inventory_url.empty()) {
        output.tell({{"event", "note"}, {"text", "no inventory URL: no reports are sent"}});
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
        ++not_configured;
        note_reason("the library does not configure " + accessory->device_id);
    } else if (is_fetch_queued && !missing.empty()) {
        // The library gives the device that long to tell them, and then does without.
        output.tell(
            {{"event", "note"},
             {"text", "the document is fetched in 60 s: until then the library waits for what "
                      "the bench does not tell of " +
                          accessory->device_id + ": " + missing}});
    }
}

void PhoneHost::interrupt() {
    {
        const Lock lock(state_mutex);
        interrupted = true;
        interrupted_while =
            interruption({under_way, attempt, held_back.has_value(),
                          !gave_up && configured + not_configured < attached, last_fetch_failure});
        changed.notify_all();
    }
    transfers.interrupt();
}

void PhoneHost::request(HttpRequestType type, const char* url, const char* body) {
    const Lock lock(state_mutex);
    const bool is_post = type == HTTP_REQUEST_POST;
    requests.push_back({url, is_post, is_post ? body : ""});
    changed.notify_all();
}

void PhoneHost::apply(const char* device_id, const char* name, int usage_id, const char* value) {
    {
        const Lock lock(state_mutex);
        devices[device_id][usage_id] = {name, value};
    }
    output.tell({{"event", "setting"},
                 {"id", device_id},
                 {"name", name},
                 {"usageId", usage_id},
                 {"value", value}});
}

void PhoneHost::upgrade(const char* device_id, const char* version, const char* firmware_name) {
    output.tell({{"event", "upgrade"},
                 {"id", device_id},
                 {"version", version},
                 {"firmwareName", firmware_name}});
}

void PhoneHost::log_line(const char* text) {
    if (judgement != nullptr) {
        judgement->on_line(text);
    }
    constexpr char queued[] = "Lib::ConfigManagerImpl: configure_accessory: added async task";
    if (queued_fetch != nullptr && std::strcmp(text, queued) == 0) {
        *queued_fetch = true;
    }
    const std::string line = text;
    {
        const Lock lock(state_mutex);
        if (const std::optional<std::string> cause = report_lines.on_line(line)) {
            // There will be no request to tell how the report fared.
            ++reports_failed;
            note_reason("a report could not be built: " + *cause);
            changed.notify_all();
        }
    }
    if (options.verbose) {
        output.tell({{"event", "log"}, {"text", line}});
    }
}

/// The network thread: requests one after the other, and failures held back until they are due.
void PhoneHost::work_on_requests() {
    Lock lock(state_mutex);
    while (!stopping && !interrupted) {
        if (held_back && held_back->due <= Clock::now()) {
            const int status = held_back->status;
            held_back.reset();
            lock.unlock();
            httpResponse("", status);
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
            changed.notify_all();
        } else if (held_back) {
            changed.wait_until(lock, held_back->due);
        } else {
            changed.wait(lock);
        }
    }
}

void PhoneHost::fetch(const TransferRequest& wanted) {
    int this_attempt = 0;
    {
        const Lock lock(state_mutex);
        this_attempt = attempt;
    }
    TransferRequest request = wanted;
    Event told = {{"event", "fetch"}, {"attempt", this_attempt}, {"url", request.url}};
    if (is_bare_name(request.url)) {
        if (options.bench.tftp_servers.empty()) {
            told["error"] =
                "a file name without a server, and there is no TFTP server to look it up "
                "on: set urls.config or servers.tftp";
            output.tell(told);
            end_fetch(told["error"]);
            fail_fetch(0, true);
            return;
        }
        request.url = "tftp://" + bracketed(options.bench.tftp_servers.front()) + "/" + request.url;
        told["url"] = request.url;
    }
    const std::size_t query = request.url.find('?');
    if (is_tftp_url(request.url) && query != std::string::npos) {
        output.tell(
            {{"event", "note"},
             {"text", "TFTP has no queries, so this is dropped: " + request.url.substr(query)}});
        request.url.erase(query);
        told["url"] = request.url;
    }
    const TransferResult result = transfers.perform(request);
    told["milliseconds"] = result.duration.count();
    add_outcome(told, result, result.status == status_ok);
    if (result.error.empty()) {
        told["bytes"] = result.body.size();
    }
    output.tell(told);
    if (result.interrupted) {
        return;
    }
    end_fetch(result.status == status_ok ? "" : failure_of(result));
    if (result.status != status_ok) {
        fail_fetch(result.status, false);
        return;
    }
    deliver(result.body);
}

/// `failure` is empty when there is a document.
void PhoneHost::end_fetch(const std::string& failure) {
    const Lock lock(state_mutex);
    under_way = RunProgress::UnderWay::nothing;
    last_fetch_failure = failure;
}

/// Hands the document in and reads from the log lines of this very call what became of it.
void PhoneHost::deliver(const std::string& document) {
    if (!options.detach_on_answer.empty()) {
        output.tell({{"event", "detached"}, {"id", options.detach_on_answer}});
        remove_peripheral(options.detach_on_answer.c_str());
        const Lock lock(state_mutex);
        ++not_configured;
        note_reason(options.detach_on_answer + " was detached before it was configured");
        options.detach_on_answer.clear();
    }
    if (document.find('\0') != std::string::npos) {
        output.tell({{"event", "note"},
                     {"text", "the document has a NUL byte: the library reads it up to there"}});
    }
    AnswerJudgement judged(document);
    judgement = &judged;
    httpResponse(document.c_str(), status_ok);
    judgement = nullptr;

    for (const Event& event : firmware_events(judged, options.bench.accessories)) {
        output.tell(event);
    }
    const Event told = document_event(judged, options.bench.accessories);
    output.tell(told);

    const Lock lock(state_mutex);
    attempt = 0;
    const int failed = static_cast<int>(judged.failures().size());
    configured += judged.taken();
    not_configured += failed;
    passed_over += static_cast<int>(judged.passed_over().size());
    if (failed != 0) {
        note_reason(std::to_string(failed) + " of " + std::to_string(judged.taken() + failed) +
                    " accessories could not use the document: " +
                    told["reasons"].front().get<std::string>());
    }
}

/// The library fetches again as soon as it hears of a failure, so this holds the news back.
void PhoneHost::fail_fetch(int status, bool for_good) {
    std::chrono::milliseconds wait{0};
    int next_attempt = 0;
    {
        const Lock lock(state_mutex);
        if (for_good || (options.give_up_after != 0 && attempt >= options.give_up_after)) {
            gave_up = true;
            note_reason(no_document(attempt, last_fetch_failure));
            return;
        }
        next_attempt = attempt + 1;
        wait = wait_before(next_attempt, jitter);
        held_back = HeldBackFailure{Clock::now() + wait, status};
    }
    output.tell({{"event", "wait"}, {"attempt", next_attempt}, {"milliseconds", wait.count()}});
}

void PhoneHost::post(const TransferRequest& request) {
    const TransferResult result = transfers.perform(request);
    constexpr int first_success = 200;
    constexpr int first_redirect = 300;
    const bool accepted = result.status >= first_success && result.status < first_redirect;
    Event told = {{"event", "report"},
                  {"url", request.url},
                  {"bytes", request.body.size()},
                  {"accepted", accepted},
                  {"milliseconds", result.duration.count()}};
    add_outcome(told, result, accepted);
    output.tell(told);
    if (result.interrupted) {
        return;
    }
    const Lock lock(state_mutex);
    if (accepted) {
        ++reports_accepted;
        return;
    }
    ++reports_failed;
    note_reason("a report was not accepted: " + failure_of(result));
}

/// The state is held.
void PhoneHost::note_reason(const std::string& reason) {
    if (std::find(reasons.begin(), reasons.end(), reason) == reasons.end()) {
        reasons.push_back(reason);
    }
}

/// Whether everything that was begun has come to its end. The state is held.
bool PhoneHost::is_complete() const {
    const bool all_configured = configured + not_configured >= attached;
    const bool all_reported = reports_accepted + reports_failed >= reports_wanted;
    return all_reported && (all_configured || gave_up);
}

/// Why the run did not go well: the interruption, then what went wrong before it. Empty when it
/// went well. The state is held.
std::vector<std::string> PhoneHost::verdict() const {
    std::vector<std::string> all = reasons;
    if (interrupted && !is_complete()) {
        all.insert(all.begin(), interrupted_while);
    }
    return all;
}

void PhoneHost::tell_devices() {
    const Lock lock(state_mutex);
    for (const auto& [id, settings] : devices) {
        Event told = {{"event", "device"}, {"id", id}, {"settings", Event::array()}};
        for (const auto& [usage_id, setting] : settings) {
            told["settings"].push_back(
                {{"usageId", usage_id}, {"name", setting.name}, {"value", setting.value}});
        }
        output.tell(told);
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
