// SPDX-License-Identifier: Apache-2.0
// Everything that a host does between start and stop, on a phone that owns the clock, and the calls
// of host functions that follow.

#include "faults/host_run.h"

#include <algorithm>
#include <ostream>
#include <tuple>

#include <gtest/gtest.h>

namespace headsetmgmt::test_support {

namespace {

CallCounts all_calls() {
    const FakeHost& host = fake_host();
    const std::vector<HttpRequestCall> requests = host.http_requests();
    const auto fetches = static_cast<std::size_t>(
        std::count_if(requests.begin(), requests.end(),
                      [](const HttpRequestCall& call) { return call.type == HTTP_REQUEST_GET; }));
    return {fetches,
            requests.size() - fetches,
            host.applied_changes().size(),
            host.firmware_upgrades().size(),
            host.facts_asked(),
            host.upgrade_checks().size()};
}

AccessoryCache docked(const char* device_id) {
    AccessoryCache facts = headset_named(device_id);
    facts.dock_model = "Varos Base";
    facts.dock_serial_number = "DK0000001";
    return facts;
}

}  // namespace

const char document_with_firmware[] = R"({"templateConfiguration": {
    "updatedTime": 1700000000,
    "commonSettings": [
        {"name": "Speaker", "usageId": 32, "value": 7, "access": "Admin"}],
    "modelSpecificSettings": [{"models": ["K30"], "modelFirmware": [
        {"firmwareName": "k30.bin", "firmwareVersion": "1-0-3", "firmwareParams": [
            {"name": "Sidetone", "usageId": 34, "value": 2, "access": "Admin"}]}]}]}})";

bool operator==(const CallCounts& left, const CallCounts& right) {
    const auto all = [](const CallCounts& calls) {
        return std::tie(calls.fetches, calls.posts, calls.changes, calls.upgrades, calls.facts,
                        calls.checks);
    };
    return all(left) == all(right);
}

void PrintTo(const CallCounts& calls, std::ostream* stream) {
    *stream << calls.fetches << " fetches, " << calls.posts << " posts, " << calls.changes
            << " changes, " << calls.upgrades << " upgrades, " << calls.facts << " facts, "
            << calls.checks << " checks";
}

CallsSince::CallsSince() : before(all_calls()) {}

CallCounts CallsSince::now() const {
    const CallCounts calls = all_calls();
    return {calls.fetches - before.fetches, calls.posts - before.posts,
            calls.changes - before.changes, calls.upgrades - before.upgrades,
            calls.facts - before.facts,     calls.checks - before.checks};
}

bool attach_both() {
    const bool first = configure_headset(shared(docked("headset-1")));
    return configure_headset(shared(docked("headset-2"))) && first;
}

void remove_both() {
    EXPECT_TRUE(remove_peripheral("headset-1"));
    EXPECT_TRUE(remove_peripheral("headset-2"));
}

bool attach_configure_report_reset(
    const std::function<void(std::size_t requests)>& wait_for_requests) {
    attach_both();
    wait_for_requests(1);
    httpResponse("", 404);
    wait_for_requests(2);
    httpResponse(document_with_firmware, 200);
    send_inventory(shared(docked("headset-1")));
    wait_for_requests(3);
    return factory_reset("headset-1");
}

bool attach_configure_report_reset(PhoneHost& host) {
    remove_both();
    return attach_configure_report_reset([&host](std::size_t) { host.run_worker(); });
}

void expect_usual_runs(PhoneHost& host) {
    fake_host().behave(usual_behaviour());
    for (const char* occasion : {"at once", "after a stop and a start"}) {
        const CallsSince since;
        EXPECT_TRUE(attach_configure_report_reset(host)) << occasion;
        EXPECT_EQ(since.now(), usual_calls) << occasion;
        host.stop();
        EXPECT_TRUE(host.start()) << occasion;
        EXPECT_TRUE(set_urls()) << occasion;
    }
}

}  // namespace headsetmgmt::test_support
