// SPDX-License-Identifier: Apache-2.0
// Fuzzes sequences of calls of the flat interface: each byte chooses a call, a host's answer or the
// passing of time, those after it the arguments, null and hostile ones among them.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "headsetmgmt/phone/flat_interface.h"
#include "headsetmgmt/phone/host_functions.h"

#include "fuzz/hostile_input.h"
#include "fuzz/oracle.h"
#include "fuzz/report_oracle.h"
#include "support/virtual_time.h"

namespace headsetmgmt::fuzz {
namespace {

using test_support::VirtualTime;

constexpr std::time_t beginning = 1700000000;
constexpr std::chrono::milliseconds pause_between_passes(50);
constexpr int most_calls = 300;
constexpr int deepest_call = 3;

/// The phone of one input, and what it knows the library to know.
///
/// The clock stands still until this thread moves it, so only one of the two, this thread or the
/// worker, runs at any time, except while the library stops.
class Phone {
public:
    Phone(const std::uint8_t* data, std::size_t size) : input(data, size) {}

    void run();

    // What the library calls.
    void take_request(HttpRequestType type, const char* url, const char* body);
    void take_setting(const char* device_id, const char* name, const char* value, int usage_id);
    void take_firmware(const char* device_id);
    const char* answer_fact();
    void take_line(int level, const char* text);

private:
    using Frame = std::map<std::pair<std::string, int>, std::size_t>;  // how often each was sent

    void call_something();
    void call_from_inside();

    void create();
    void start();
    void stop();
    void set_urls();
    void configure();
    void report();
    void update();
    void retrieve();
    void answer_fetch();
    void answer_fetch(int status);
    void reset();
    void remove();
    void let_time_pass(std::chrono::microseconds duration);

    bool is_known(const std::string& id) const { return known.count(id) != 0; }

    /// Whether it is certain that `known` is right about an accessory.
    bool is_sure(const std::string& id) const { return unsure.count(id) == 0; }

    /// Runs a call that attaches or removes an accessory; false when calls came from inside it, so
    /// that it is unknown which of them came last.
    template <typename Call>
    bool changing(const std::string& id, Call call) {
        unsure.insert(id);
        const bool outermost = changing_now.count(id) == 0;
        const auto here = changing_now.insert(id);
        const int calls_before = calls;
        call();
        changing_now.erase(here);
        if (calls != calls_before || !outermost) {
            return false;
        }
        unsure.erase(id);
        return true;
    }

    /// Runs a call that may send settings, in a frame of its own.
    template <typename Call>
    void in_frame(Call call) {
        frames.emplace_back();
        call();
        frames.pop_back();
    }

    HostileInput input;
    std::optional<VirtualTime> time;
    bool running = false;
    bool stopping = false;  // the worker runs at the same time: nothing below is touched
    int calls = 0;
    int depth = 0;
    bool call_at_next_line = false;
    std::set<std::string> known;              // ids in the registry
    std::set<std::string> unsure;             // ids that may be there or not
    std::multiset<std::string> changing_now;  // ids that come or go this moment
    /// The ids that were attached since the start, by what host functions see of them: a text ends
    /// there at its first NUL.
    std::map<std::string, std::set<std::string>> ids_shown_as;
    bool blank_serial_numbers = false;  // a reported one began with a NUL
    std::vector<Frame> frames;
    std::size_t runs_wanted = 0;  // since the start
    std::size_t fetches = 0;
    std::size_t reports_wanted = 0;
    std::size_t reports = 0;
    std::string fact;
};

bool begins_with_nul(const std::string& text) {
    return !text.empty() && text.front() == '\0';
}

Phone* phone = nullptr;

void write_line(int level, const char* text) {
    phone->take_line(level, text);
}

void Phone::run() {
    create_headset_mgmt(write_line);
    while (!input.is_used_up() && calls < most_calls) {
        call_something();
    }
    stop();
    create_headset_mgmt(nullptr);
}

void Phone::call_something() {
    ++calls;
    switch (input.below(16)) {
    case 0:
        return create();
    case 1:
        return start();
    case 2:
        return depth == 0 ? stop() : stop_headset_mgmt();
    case 3:
        return set_urls();
    case 4:
    case 5:
        return configure();
    case 6:
        return report();
    case 7:
        return update();
    case 8:
        return retrieve();
    case 9:
    case 10:
        return answer_fetch();
    case 11:
        return reset();
    case 12:
        return remove();
    case 13:
        return let_time_pass(std::chrono::seconds(input.byte()));
    case 14:
        call_at_next_line = true;
        return;
    default:
        return let_time_pass(pause_between_passes);
    }
}

/// A call from inside a host function or the log callback.
void Phone::call_from_inside() {
    if (depth >= deepest_call || calls >= most_calls) {
        return;
    }
    ++depth;
    call_something();
    --depth;
}

void Phone::create() {
    const bool silent = input.below(8) == 7;
    const bool created = create_headset_mgmt(silent ? nullptr : write_line);
    expect(created || depth != 0, "the callback is registered");
}

void Phone::start() {
    const int calls_before = calls;
    const bool from_inside = depth != 0;
    if (!from_inside && !running) {
        time.emplace(beginning);
    }
    const Text phone_model = input.some_text();
    const Text storage_path = input.some_text();
    const bool started = start_headset_mgmt(phone_model.get(), nullptr, storage_path.get());
    if (from_inside) {
        expect(started == running || calls != calls_before, "a start from inside does nothing");
        return;
    }
    expect(started, "the library starts");
    if (!running) {
        time->wait_until_parked();
        running = true;
    }
}

void Phone::stop() {
    if (!running) {
        stop_headset_mgmt();
        return;
    }
    stopping = true;
    time->release();
    stop_headset_mgmt();
    time.reset();
    stopping = false;
    running = false;
    call_at_next_line = false;
    known.clear();
    unsure.clear();
    ids_shown_as.clear();
    blank_serial_numbers = false;
    runs_wanted = fetches = reports_wanted = reports = 0;
}

void Phone::set_urls() {
    const Text config_url = input.some_url();
    const Text inventory_url = input.some_url();
    const Text service_url = input.some_text();
    const Text user_id = input.some_text();
    Text servers[6];
    const char* entries[6];
    for (std::size_t i = 0; i < 6; ++i) {
        servers[i] = input.some_text();
        entries[i] = servers[i].get();
    }
    const unsigned int missing = input.below(8);
    const char** const tftp_servers = missing == 5 ? nullptr : entries;
    const char** const korm_servers = missing == 6 ? nullptr : entries + 3;
    const bool taken = setHeadsetConfigUrl(config_url.get(), inventory_url.get(), service_url.get(),
                                           tftp_servers, korm_servers, user_id.get());
    expect(taken == running, "a library that runs takes its URLs");
}

void Phone::configure() {
    const std::shared_ptr<AccessoryCache> accessory = input.some_accessory();
    if (accessory == nullptr) {
        expect(!configure_headset(accessory), "no accessory is configured");
        return;
    }
    const std::string id = accessory->device_id;
    ids_shown_as[id.c_str()].insert(id);
    const bool usable = accessory->accessory_type == 1 || accessory->accessory_type == 2;
    const bool wanted = running && (usable || is_known(id));
    const bool sure = usable || is_sure(id);
    if (running) {
        ++runs_wanted;
    }
    bool configured = false;
    const bool undisturbed = changing(id, [&] { configured = configure_headset(accessory); });
    if (wanted) {
        known.insert(id);
    }
    if (undisturbed && sure) {
        // The answer is the id, so one that is empty looks like a failure.
        expect(configured == (wanted && !id.empty()), "an accessory is configured if it can be");
    }
}

void Phone::report() {
    const std::shared_ptr<AccessoryCache> accessory = input.some_accessory();
    if (accessory != nullptr && running) {
        ++reports_wanted;
        blank_serial_numbers = blank_serial_numbers || begins_with_nul(accessory->serial_number) ||
                               begins_with_nul(accessory->dock_serial_number);
    }
    send_inventory(accessory);
}

void Phone::update() {
    const Text id = input.some_id();
    const CONFIG_SETTING_USAGE_ID usage_id = input.some_usage_id();
    expect(!update_config(id.get(), usage_id, static_cast<int>(input.byte())),
           "no change by the user is taken");
}

void Phone::retrieve() {
    constexpr int untouched = 123456789;
    const Text id = input.some_id();
    const CONFIG_SETTING_USAGE_ID usage_id = input.some_usage_id();
    int value = untouched;
    const bool nowhere = input.below(8) == 7;
    const bool retrieved = retrieve_config(id.get(), usage_id, nowhere ? nullptr : &value);
    expect(!retrieved || (running && !nowhere), "a value comes from a library that runs");
    expect(retrieved || value == untouched, "a value that is not there leaves the other alone");
}

void Phone::answer_fetch() {
    answer_fetch(input.some_status());
}

void Phone::answer_fetch(int status) {
    const Text body = input.some_document();
    if (status != 200) {
        ++runs_wanted;
    }
    in_frame([&] { httpResponse(body.get(), status); });
}

void Phone::reset() {
    const Text id = input.some_id();
    const int calls_before = calls;
    const bool wanted = running && is_known(id.value());
    const bool sure = is_sure(id.value());
    bool answered = false;
    in_frame([&] { answered = factory_reset(id.get()); });
    if (calls == calls_before && sure) {
        expect(answered == wanted, "an accessory that is known is reset");
    }
}

void Phone::remove() {
    const Text id = input.some_id();
    bool removed = false;
    changing(id.value(), [&] { removed = remove_peripheral(id.get()); });
    known.erase(id.value());
    expect(removed == running, "a library that runs takes every removal");
}

void Phone::let_time_pass(std::chrono::microseconds duration) {
    if (running && depth == 0) {
        time->advance_and_settle(duration);
    }
}

void Phone::take_request(HttpRequestType type, const char* url, const char* body) {
    expect(url != nullptr && *url != '\0', "a request has a URL");
    expect(type == HTTP_REQUEST_GET || type == HTTP_REQUEST_POST, "a request is a fetch or a post");
    if (type == HTTP_REQUEST_POST) {
        expect(body != nullptr, "a post has a body");
        expect_report(body, blank_serial_numbers);
    } else {
        expect(body == nullptr, "a fetch has no body");
    }
    if (stopping) {
        return;
    }
    if (type == HTTP_REQUEST_POST) {
        expect(++reports <= reports_wanted, "a report is posted once at most");
    } else {
        expect(++fetches <= runs_wanted, "a fetch has a reason of its own");
    }
    switch (input.below(8)) {
    case 4:
        return answer_fetch(200);
    case 5:
        return answer_fetch(500);
    case 6:
        answer_fetch(input.some_status());
        return answer_fetch(input.some_status());
    case 7:
        return call_from_inside();
    default:
        return;  // the answer comes later, or never
    }
}

void Phone::take_setting(const char* device_id, const char* name, const char* value, int usage_id) {
    expect(device_id != nullptr && name != nullptr && value != nullptr, "a setting is complete");
    expect(!frames.empty() && !stopping, "a setting is sent from inside a reset or an answer");
    expect(++frames.back()[{device_id, usage_id}] <= ids_shown_as[device_id].size(),
           "a setting is sent once to an accessory", name);
    if (input.below(4) == 3) {
        call_from_inside();
    }
}

void Phone::take_firmware(const char* device_id) {
    expect(device_id != nullptr, "firmware is for a device");
    expect(!frames.empty() && !stopping, "firmware is decided on from inside an answer");
    if (input.below(4) == 3) {
        call_from_inside();
    }
}

const char* Phone::answer_fact() {
    if (stopping) {
        return "";
    }
    if (input.below(4) == 3) {
        call_from_inside();
    }
    const Text text = input.some_text();
    fact = text.value();
    return text.get() != nullptr ? fact.c_str() : nullptr;
}

void Phone::take_line(int level, const char* text) {
    constexpr int level_of_every_line = 5;
    expect(level == level_of_every_line, "a line has the host's level");
    expect(text != nullptr && *text != '\0', "a line says something");
    if (!stopping && std::exchange(call_at_next_line, false)) {
        call_from_inside();
    }
}

}  // namespace
}  // namespace headsetmgmt::fuzz

using headsetmgmt::fuzz::phone;

bool httpRequest(HttpRequestType type, const char* url, const char* body) {
    phone->take_request(type, url, body);
    return false;
}

bool apply_changes(const char* device_id, const char* name, int usage_id, const char* value) {
    phone->take_setting(device_id, name, value, usage_id);
    return false;
}

bool request_firmware_upgrade(const char* device_id, const char* version,
                              const char* firmware_name) {
    headsetmgmt::fuzz::expect(version != nullptr && firmware_name != nullptr,
                              "an upgrade is complete");
    phone->take_firmware(device_id);
    return false;
}

bool check_firmware_upgrade(const char* device_id) {
    phone->take_firmware(device_id);
    return false;
}

const char* get_host_serial_num() {
    return phone->answer_fact();
}

const char* get_host_os_ver() {
    return phone->answer_fact();
}

const char* get_orvik_ver() {
    return phone->answer_fact();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    headsetmgmt::fuzz::Phone this_phone(data, size);
    phone = &this_phone;
    this_phone.run();
    phone = nullptr;
    return 0;
}
