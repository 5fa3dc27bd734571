// SPDX-License-Identifier: Apache-2.0
// The phone's host application in tests: the host functions, a log callback, and a record of their
// calls.

#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "headsetmgmt/phone/host_types.h"

#include "support/lines.h"

namespace headsetmgmt::test_support {

/// One call of `httpRequest`.
struct HttpRequestCall {
    HttpRequestType type;
    std::string url;
    std::optional<std::string> body;  ///< none for null
};

/// One call of `apply_changes`.
struct ApplyChangesCall {
    std::string device_id;
    std::string name;
    int usage_id;
    std::string value;
};

/// One call of `request_firmware_upgrade`.
struct FirmwareUpgradeCall {
    std::string device_id;
    std::string version;
    std::string firmware_name;
};

bool operator==(const HttpRequestCall& left, const HttpRequestCall& right);
bool operator==(const ApplyChangesCall& left, const ApplyChangesCall& right);
bool operator==(const FirmwareUpgradeCall& left, const FirmwareUpgradeCall& right);

/// What the host functions answer, and what happens inside them.
///
/// Hooks run inside the host function, after the call was recorded and without a lock: they may
/// call the flat interface, block, or throw. A hook that blocks must return before the test
/// ends.
struct HostBehaviour {
    bool http_request_answer = true;
    bool apply_changes_answer = true;
    bool firmware_upgrade_answer = true;
    bool upgrade_check_answer = true;
    std::optional<std::string> serial_number = "PHONE-SERIAL";  ///< none: null
    std::optional<std::string> os_version = "os-1";             ///< none: null
    std::optional<std::string> orvik_version = "orvik-1";       ///< none: null

    std::function<void(const HttpRequestCall&)> on_http_request;
    std::function<void(const ApplyChangesCall&)> on_apply_changes;
    std::function<void(const FirmwareUpgradeCall&)> on_firmware_upgrade;
    std::function<void(const std::string& device_id)> on_upgrade_check;
    std::function<void()> on_fact;  ///< inside each of the three functions that answer a text
    std::function<void(int level, const std::string& line)> on_log_line;
};

/// The one host of a test program. Any thread.
class FakeHost {
public:
    /// Forgets all calls, lines and hooks; called by every test that uses the host, at its start.
    void reset();

    /// Replaces how the host behaves from now on.
    void behave(HostBehaviour behaviour);

    std::vector<HttpRequestCall> http_requests() const;
    std::vector<ApplyChangesCall> applied_changes() const;
    std::vector<FirmwareUpgradeCall> firmware_upgrades() const;
    Lines upgrade_checks() const;  ///< device ids
    int facts_asked() const;       ///< calls of the functions that answer a text
    std::vector<std::pair<int, std::string>> log_lines() const;

    /// Everything in the order in which it happened, one text a call:
    /// "httpRequest 0 <url> <body or null>", "apply_changes <id>|<name>|<usage id>|<value>",
    /// "request_firmware_upgrade <id>|<version>|<firmware name>", "check_firmware_upgrade <id>",
    /// "log <level> <line>".
    Lines transcript() const;

    /// Waits until `reached` holds, checked after each call of the host; false if it does not hold
    /// within a minute. `reached` is called without a lock and may ask this host.
    bool wait_until(const std::function<bool()>& reached) const;

    /// Waits for the `count`th call of `httpRequest` since the reset.
    bool wait_for_http_requests(std::size_t count) const;

    // What the host functions and the log callback do.
    bool take(const HttpRequestCall& call);
    bool take(const ApplyChangesCall& call);
    bool take(const FirmwareUpgradeCall& call);
    bool take_upgrade_check(const std::string& device_id);
    const char* answer_fact(std::optional<std::string> HostBehaviour::*fact);
    void take_log_line(int level, const std::string& line);

private:
    void note(const std::string& event);

    mutable std::mutex host_mutex;  // guards all of the below
    mutable std::condition_variable something_happened;
    HostBehaviour host_behaviour;
    std::vector<HttpRequestCall> requests;
    std::vector<ApplyChangesCall> changes;
    std::vector<FirmwareUpgradeCall> upgrades;
    Lines checks;
    int facts = 0;
    std::vector<std::pair<int, std::string>> lines;
    Lines events;
    std::size_t happened = 0;  // only grows
};

/// The test program's host, as it stands.
FakeHost& fake_host();

/// The test program's host, reset.
FakeHost& fresh_fake_host();

/// A log callback that records its lines in the test program's host.
void record_host_log_line(int level, const char* text);

}  // namespace headsetmgmt::test_support
