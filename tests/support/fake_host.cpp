// SPDX-License-Identifier: Apache-2.0
// The phone's host application in tests.

#include "support/fake_host.h"

#include <chrono>
#include <tuple>

#include "headsetmgmt/phone/host_functions.h"

namespace headsetmgmt::test_support {

namespace {

std::optional<std::string> copied(const char* text) {
    return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

/// A text that the library must never pass as null. If it does, the transcript shows it.
std::string shown(const char* text) {
    return copied(text).value_or("null");
}

}  // namespace

bool operator==(const HttpRequestCall& left, const HttpRequestCall& right) {
    return std::tie(left.type, left.url, left.body) == std::tie(right.type, right.url, right.body);
}

bool operator==(const ApplyChangesCall& left, const ApplyChangesCall& right) {
    return std::tie(left.device_id, left.name, left.usage_id, left.value) ==
           std::tie(right.device_id, right.name, right.usage_id, right.value);
}

bool operator==(const FirmwareUpgradeCall& left, const FirmwareUpgradeCall& right) {
    return std::tie(left.device_id, left.version, left.firmware_name) ==
           std::tie(right.device_id, right.version, right.firmware_name);
}

void FakeHost::reset() {
    const std::lock_guard<std::mutex> host_lock(host_mutex);
    host_behaviour = {};
    requests.clear();
    changes.clear();
    upgrades.clear();
    checks.clear();
    facts = 0;
    lines.clear();
    events.clear();
}

void FakeHost::behave(HostBehaviour behaviour) {
    const std::lock_guard<std::mutex> host_lock(host_mutex);
    host_behaviour = std::move(behaviour);
}

std::vector<HttpRequestCall> FakeHost::http_requests() const {
    const std::lock_guard<std::mutex> host_lock(host_mutex);
    return requests;
}

std::vector<ApplyChangesCall> FakeHost::applied_changes() const {
    const std::lock_guard<std::mutex> host_lock(host_mutex);
    return changes;
}

std::vector<FirmwareUpgradeCall> FakeHost::firmware_upgrades() const {
    const std::lock_guard<std::mutex> host_lock(host_mutex);
    return upgrades;
}

Lines FakeHost::upgrade_checks() const {
    const std::lock_guard<std::mutex> host_lock(host_mutex);
    return checks;
}

int FakeHost::facts_asked() const {
    const std::lock_guard<std::mutex> host_lock(host_mutex);
    return facts;
}

std::vector<std::pair<int, std::string>> FakeHost::log_lines() const {
    const std::lock_guard<std::mutex> host_lock(host_mutex);
    return lines;
}

Lines FakeHost::transcript() const {
    const std::lock_guard<std::mutex> host_lock(host_mutex);
    return events;
}

bool FakeHost::wait_until(const std::function<bool()>& reached) const {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    for (;;) {
        std::size_t seen = 0;
        {
            const std::lock_guard<std::mutex> host_lock(host_mutex);
            seen = happened;
        }
        if (reached()) {
            return true;
        }
        std::unique_lock<std::mutex> host_lock(host_mutex);
        if (!something_happened.wait_until(host_lock, limit,
                                           [this, seen] { return happened != seen; })) {
            return false;
        }
    }
}

bool FakeHost::wait_for_http_requests(std::size_t count) const {
    return wait_until([this, count] { return http_requests().size() >= count; });
}

bool FakeHost::take(const HttpRequestCall& call) {
    std::unique_lock<std::mutex> host_lock(host_mutex);
    requests.push_back(call);
    note("httpRequest " + std::to_string(call.type) + " " + call.url + " " +
         call.body.value_or("null"));
    const auto hook = host_behaviour.on_http_request;
    const bool answer = host_behaviour.http_request_answer;
    host_lock.unlock();
    if (hook) {
        hook(call);
    }
    return answer;
}

bool FakeHost::take(const ApplyChangesCall& call) {
    std::unique_lock<std::mutex> host_lock(host_mutex);
    changes.push_back(call);
    note("apply_changes " + call.device_id + "|" + call.name + "|" + std::to_string(call.usage_id) +
         "|" + call.value);
    const auto hook = host_behaviour.on_apply_changes;
    const bool answer = host_behaviour.apply_changes_answer;
    host_lock.unlock();
    if (hook) {
        hook(call);
    }
    return answer;
}

bool FakeHost::take(const FirmwareUpgradeCall& call) {
    std::unique_lock<std::mutex> host_lock(host_mutex);
    upgrades.push_back(call);
    note("request_firmware_upgrade " + call.device_id + "|" + call.version + "|" +
         call.firmware_name);
    const auto hook = host_behaviour.on_firmware_upgrade;
    const bool answer = host_behaviour.firmware_upgrade_answer;
    host_lock.unlock();
    if (hook) {
        hook(call);
    }
    return answer;
}

bool FakeHost::take_upgrade_check(const std::string& device_id) {
    std::unique_lock<std::mutex> host_lock(host_mutex);
    checks.push_back(device_id);
    note("check_firmware_upgrade " + device_id);
    const auto hook = host_behaviour.on_upgrade_check;
    const bool answer = host_behaviour.upgrade_check_answer;
    host_lock.unlock();
    if (hook) {
        hook(device_id);
    }
    return answer;
}

const char* FakeHost::answer_fact(std::optional<std::string> HostBehaviour::*fact) {
    // One text for each thread, overwritten by the next question: a kept pointer reads another
    // fact.
    thread_local std::string answer;
    std::unique_lock<std::mutex> host_lock(host_mutex);
    ++facts;
    const std::optional<std::string> text = host_behaviour.*fact;
    const auto hook = host_behaviour.on_fact;
    host_lock.unlock();
    if (hook) {
        hook();
    }
    if (!text) {
        return nullptr;
    }
    answer = *text;
    return answer.c_str();
}

void FakeHost::take_log_line(int level, const std::string& line) {
    std::unique_lock<std::mutex> host_lock(host_mutex);
    lines.emplace_back(level, line);
    note("log " + std::to_string(level) + " " + line);
    const auto hook = host_behaviour.on_log_line;
    host_lock.unlock();
    if (hook) {
        hook(level, line);
    }
}

// Expects the host's lock held.
void FakeHost::note(const std::string& event) {
    events.push_back(event);
    ++happened;
    something_happened.notify_all();
}

FakeHost& fake_host() {
    // Never deleted: the library may write its last lines while the process exits.
    static auto* const host = new FakeHost;
    return *host;
}

FakeHost& fresh_fake_host() {
    FakeHost& host = fake_host();
    host.reset();
    return host;
}

void record_host_log_line(int level, const char* text) {
    fake_host().take_log_line(level, shown(text));
}

}  // namespace headsetmgmt::test_support

using headsetmgmt::test_support::ApplyChangesCall;
using headsetmgmt::test_support::fake_host;
using headsetmgmt::test_support::FirmwareUpgradeCall;
using headsetmgmt::test_support::HostBehaviour;
using headsetmgmt::test_support::HttpRequestCall;

bool httpRequest(HttpRequestType type, const char* url, const char* body) {
    return fake_host().take(HttpRequestCall{type, headsetmgmt::test_support::shown(url),
                                            headsetmgmt::test_support::copied(body)});
}

bool apply_changes(const char* device_id, const char* name, int usage_id, const char* value) {
    return fake_host().take(ApplyChangesCall{headsetmgmt::test_support::shown(device_id),
                                             headsetmgmt::test_support::shown(name), usage_id,
                                             headsetmgmt::test_support::shown(value)});
}

bool request_firmware_upgrade(const char* device_id, const char* version,
                              const char* firmware_name) {
    return fake_host().take(FirmwareUpgradeCall{headsetmgmt::test_support::shown(device_id),
                                                headsetmgmt::test_support::shown(version),
                                                headsetmgmt::test_support::shown(firmware_name)});
}

bool check_firmware_upgrade(const char* device_id) {
    return fake_host().take_upgrade_check(headsetmgmt::test_support::shown(device_id));
}

const char* get_host_serial_num() {
    return fake_host().answer_fact(&HostBehaviour::serial_number);
}

const char* get_host_os_ver() {
    return fake_host().answer_fact(&HostBehaviour::os_version);
}

const char* get_orvik_ver() {
    return fake_host().answer_fact(&HostBehaviour::orvik_version);
}
