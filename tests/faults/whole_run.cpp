// SPDX-License-Identifier: Apache-2.0
// A host that does everything once: create, start, attach, configure, report, ask, reset, remove,
// stop.

#include "faults/whole_run.h"

#include <algorithm>
#include <memory>
#include <mutex>

#include "headsetmgmt/phone/flat_interface.h"
#include "headsetmgmt/phone/host_functions.h"

#include "faults/failing_memory.h"
#include "faults/worker_clock.h"

namespace headsetmgmt::test_support {

namespace {

using Inside = LibraryMemory::Inside;
using Outside = LibraryMemory::Outside;

// Long names throughout: a short one is kept without an allocation, which could not fail.
constexpr char headset_id[] = "headset-1-of-user-4711";
constexpr char other_headset_id[] = "headset-2-of-user-4711";
constexpr char camera_id[] = "camera-of-user-4711";
constexpr char config_url[] = "http://{tftp}/phones/of/{userid}/headsets.json";
constexpr char inventory_url[] = "https://{korm}/inventory/of/all/accessories";

constexpr char document[] = R"({"templateConfiguration": {
    "updatedTime": 1700000000,
    "commonSettings": [
        {"name": "Speaker volume of the phone", "usageId": 32, "value": "7 of the 10 steps",
         "access": "Admin"},
        {"name": "Microphone gain of the phone", "usageId": "33", "value": 5,
         "access": "Everybody that comes along"}],
    "modelSpecificSettings": [
        {"models": ["Varos C10", "Varos C10 with a longer name"], "modelFirmware": [
            {"firmwareName": "LATEST", "firmwareVersion": "the latest there is",
             "firmwareParams": []}]},
        {"models": ["Varos K99 with a longer name", "Varos K30"], "modelFirmware": [
            {"firmwareName": "varos-k30-winter.bin",
             "firmwareVersion": "1-0-3-for-winter", "firmwareParams": [
                {"name": "Sidetone of the headset", "usageId": 34, "value": 2,
                 "access": "Admin"}]}]}]}})";

constexpr char unusable_document[] =
    R"({"templateConfiguration": {"commonSettings": [{"name": ]}})";

std::mutex record_mutex;  // guards the two below
WholeRun record;
int unanswered = 0;  // fetches

void note(Lines WholeRun::*list, const std::string& text) {
    const std::lock_guard<std::mutex> record_lock(record_mutex);
    (record.*list).push_back(text);
}

void note_fetch() {
    const std::lock_guard<std::mutex> record_lock(record_mutex);
    ++unanswered;
}

void note_line(int, const char* text) {
    const Outside outside;
    note(&WholeRun::lines, text);
}

AccessoryCache headset(const char* id) {
    AccessoryCache facts;
    facts.device_id = id;
    facts.accessory_type = 1;
    facts.vendor_id = 0xF055;
    facts.software_version = "1-0-2-summer-release";
    facts.hardware_version = "B, the second one";
    facts.model = "Varos K30";
    facts.serial_number = "SN123456789012345";
    facts.vendor = "Varos of the north";
    facts.dock_model = "Varos Base of the north";
    facts.dock_serial_number = "DK123456789012345";
    facts.connection_type = "usb through a hub";
    facts.connection_status = "connected at last";
    return facts;
}

AccessoryCache camera() {
    AccessoryCache facts;
    facts.device_id = camera_id;
    facts.accessory_type = 2;
    facts.vendor_id = 0xF055;
    facts.software_version = "4-0-0-summer-release";
    facts.model = "Varos C10";
    facts.serial_number = "CAM76543210987654";
    facts.vendor = "Varos of the north";
    facts.connection_type = "usb through a hub";
    facts.connection_status = "connected at last";
    return facts;
}

std::shared_ptr<AccessoryCache> shared(const AccessoryCache& facts) {
    return std::make_shared<AccessoryCache>(facts);
}

constexpr char fetch_call[] =
    "httpRequest 0 http://tftp-server-of-the-first-floor/phones/of/user-4711-of-the-first-floor/"
    "headsets.json null";

constexpr char dock_member[] = R"(
		"dock":	{
			"serialNumber":	"DK123456789012345",
			"model":	"Varos Base of the north"
		},)";

std::string report_call(const std::string& dock) {
    return R"(httpRequest 2 https://korm-server-of-the-first-floor/inventory/of/all/accessories {
	"time":	1700000000,
	"key":	"headsetInventory",
	"value":	{
		"host":	{
			"client":	"Orvik-VDI",
			"serialNumber":	"PHONE-OF-THE-FIRST-FLOOR-0001",
			"deviceName":	"TRMXXXXXXXX",
			"model":	"TRM",
			"firmwareVersion":	"12.5 with all the updates of the winter",
			"hostOSVersion":	"6.1 with all the updates of the winter",
			"userId":	"user-4711-of-the-first-floor"
		},)" +
           dock + R"(
		"headset":	{
			"serialNumber":	"SN123456789012345",
			"firmwareVersion":	"1-0-2-summer-release",
			"vendor":	"Varos of the north",
			"model":	"Varos K30",
			"connectionType":	"usb through a hub",
			"connectionStatus":	"connected at last"
		}
	}
})";
}

Lines sorted(Lines texts) {
    std::sort(texts.begin(), texts.end());
    return texts;
}

bool is_in(const Lines& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

/// A step that should answer true, and is repeated when it does not.
template <typename Call>
bool expect_true(const char* name, Call call) {
    const auto try_it = [&] {
        const Inside inside;
        return call();
    };
    if (try_it()) {
        return true;
    }
    note(&WholeRun::refused, name);
    if (try_it()) {
        return true;
    }
    note(&WholeRun::refused_twice, name);
    return false;
}

template <typename Call>
void expect_false(const char* name, Call call) {
    const Inside inside;
    if (call()) {
        const Outside outside;
        note(&WholeRun::granted, name);
    }
}

/// Answers a fetch, if there is one that is not answered yet.
void answer_fetch(const char* body, int status) {
    {
        const std::lock_guard<std::mutex> record_lock(record_mutex);
        if (unanswered == 0) {
            return;
        }
        --unanswered;
    }
    const Inside inside;
    httpResponse(body, status);
}

void report(const AccessoryCache& facts) {
    const auto accessory = shared(facts);
    const Inside inside;
    send_inventory(accessory);
}

bool attach(const AccessoryCache& facts) {
    const auto accessory = shared(facts);
    return expect_true("configure_headset", [&] { return configure_headset(accessory); });
}

bool start_up() {
    expect_true("create_headset_mgmt", [] { return create_headset_mgmt(note_line); });
    const bool started =
        expect_true("start_headset_mgmt", [] { return start_headset_mgmt("phone", "1.0", "/"); });
    if (started) {
        WorkerClock::hold();
        WorkerClock::wait_until_paused();
    }
    return started;
}

void set_urls() {
    const char* tftp_servers[] = {"tftp-server-of-the-first-floor", "tftp-server-of-the-cellar",
                                  ""};
    const char* korm_servers[] = {"korm-server-of-the-first-floor", "", nullptr};
    expect_true("setHeadsetConfigUrl", [&] {
        return setHeadsetConfigUrl(config_url, inventory_url, "https://service.of.the.house",
                                   tftp_servers, korm_servers, "user-4711-of-the-first-floor");
    });
}

/// Everything between start and stop. One headset stays attached;
/// `run_worker` lets the worker run what is queued.
template <typename RunWorker>
void use_library(RunWorker run_worker) {
    set_urls();
    attach(camera());
    run_worker();
    answer_fetch(document, 200);

    // Alike but for their names: their addresses decide which comes first.
    attach(headset(headset_id));
    attach(headset(other_headset_id));
    run_worker();
    answer_fetch("", 503);
    run_worker();
    answer_fetch(document, 200);

    AccessoryCache unknown = camera();
    unknown.accessory_type = 7;
    report(headset(headset_id));
    report(unknown);
    run_worker();

    int value = 0;
    expect_true("retrieve_config",
                [&] { return retrieve_config(headset_id, USAGE_SIDETONE, &value); });
    expect_false("update_config", [] { return update_config(headset_id, USAGE_SIDETONE, 1234); });
    expect_true("factory_reset", [] { return factory_reset(headset_id); });

    attach(headset(headset_id));  // once more, with new facts
    run_worker();
    answer_fetch(unusable_document, 200);

    for (const char* id : {other_headset_id, camera_id}) {
        expect_true("remove_peripheral", [id] { return remove_peripheral(id); });
    }
    run_worker();  // returns when its last pass is over
}

}  // namespace

WholeRun start_and_use() {
    record = {};
    unanswered = 0;
    WorkerClock::release();
    if (start_up()) {
        use_library([] { WorkerClock::run_worker(); });
    } else {
        use_library([] {});
    }
    return record;
}

long stop() {
    WorkerClock::release();
    const long before = LibraryMemory::allocations();
    const Inside inside;
    stop_headset_mgmt();
    return LibraryMemory::allocations() - before;
}

const Lines& expected_calls() {
    static const Lines calls = sorted(
        {// The camera's run.
         fetch_call,
         // The headsets' run, of which the first fetch fails.
         fetch_call, fetch_call,
         "apply_changes headset-1-of-user-4711|Speaker volume of the phone|32|7 of the 10 steps",
         "apply_changes headset-1-of-user-4711|Sidetone of the headset|34|2",
         "request_firmware_upgrade headset-1-of-user-4711|1-0-3-for-winter|varos-k30-winter.bin",
         "apply_changes headset-2-of-user-4711|Speaker volume of the phone|32|7 of the 10 steps",
         "apply_changes headset-2-of-user-4711|Sidetone of the headset|34|2",
         "request_firmware_upgrade headset-2-of-user-4711|1-0-3-for-winter|varos-k30-winter.bin",
         // The report.
         report_call(dock_member),
         // The reset.
         "apply_changes headset-1-of-user-4711|Speaker volume of the phone|32|7 of the 10 steps",
         "apply_changes headset-1-of-user-4711|Microphone gain of the phone|33|5",
         "apply_changes headset-1-of-user-4711|Sidetone of the headset|34|2",
         // The headset's second run.
         fetch_call});
    return calls;
}

bool is_permitted_call(const std::string& call) {
    static const Lines substitutes = {
        // The URL was not stored, or not all of the servers.
        "httpRequest 0 defaultheadsetconfig.json null",
        "httpRequest 0 http://{tftp}/phones/of/{userid}/headsets.json null",
        // A missing dock never fails a report.
        report_call(""),
    };
    return is_in(expected_calls(), call) || is_in(substitutes, call);
}

bool is_repeatable(const std::string& step) {
    return step != "retrieve_config";
}

}  // namespace headsetmgmt::test_support

using headsetmgmt::test_support::LibraryMemory;
using headsetmgmt::test_support::note;
using headsetmgmt::test_support::note_fetch;
using headsetmgmt::test_support::WholeRun;

bool httpRequest(HttpRequestType type, const char* url, const char* body) {
    const LibraryMemory::Outside outside;
    if (type == HTTP_REQUEST_GET) {
        note_fetch();
    }
    note(&WholeRun::calls, "httpRequest " + std::to_string(type) + " " + url + " " +
                               (body != nullptr ? body : "null"));
    return true;
}

bool apply_changes(const char* device_id, const char* name, int usage_id, const char* value) {
    const LibraryMemory::Outside outside;
    note(&WholeRun::calls, std::string("apply_changes ") + device_id + "|" + name + "|" +
                               std::to_string(usage_id) + "|" + value);
    return true;
}

bool request_firmware_upgrade(const char* device_id, const char* version,
                              const char* firmware_name) {
    const LibraryMemory::Outside outside;
    note(&WholeRun::calls, std::string("request_firmware_upgrade ") + device_id + "|" + version +
                               "|" + firmware_name);
    return true;
}

bool check_firmware_upgrade(const char* device_id) {
    const LibraryMemory::Outside outside;
    note(&WholeRun::calls, std::string("check_firmware_upgrade ") + device_id);
    return true;
}

const char* get_host_serial_num() {
    return "PHONE-OF-THE-FIRST-FLOOR-0001";
}

const char* get_host_os_ver() {
    return "6.1 with all the updates of the winter";
}

const char* get_orvik_ver() {
    return "12.5 with all the updates of the winter";
}
