// The phone that the benchmarks play: host functions that count.

#include "benchmarks/phone.h"

#include <stdexcept>
#include <utility>

#include "headsetmgmt/phone/flat_interface.h"
#include "headsetmgmt/phone/host_functions.h"

#include "benchmarks/processor_time.h"
#include "benchmarks/resting_worker.h"

namespace headsetmgmt::benchmarks {

namespace {

Counts so_far;
std::vector<std::string> recorded;
Phone* the_phone = nullptr;
std::size_t watched_call = 0;  // of `apply_changes`
double watched_seconds = 0;

void record_line(int /*level*/, const char* text) {
    recorded.emplace_back(text);
}

void check(bool well, const char* what) {
    if (!well) {
        throw std::runtime_error(std::string("benchmark's phone: ") + what);
    }
}

}  // namespace

void count_line(int /*level*/, const char* /*text*/) {
    ++so_far.lines;
}

Phone::Phone() {
    the_phone = this;
    make_bed_for_worker();
    check(create_headset_mgmt(count_line), "not created");
    check(start_headset_mgmt("", "", ""), "not started");
    const char* servers[] = {"server", nullptr, nullptr};
    check(setHeadsetConfigUrl("http://{tftp}/config.json", "http://{korm}/inventory", "", servers,
                              servers, "user"),
          "took no URLs");
    wait_for_worker();
}

Phone::~Phone() {
    wake_worker_for_good();
    stop_headset_mgmt();
}

void Phone::attach_and_fetch(const std::shared_ptr<AccessoryCache>& accessory) {
    const std::size_t before = so_far.fetches;
    check(configure_headset(accessory), "accessory not taken");
    run_worker();
    check(so_far.fetches == before + 1, "no document requested");
}

Counts Phone::counts() const {
    return so_far;
}

void Phone::watch_apply(std::size_t n) {
    watched_call = so_far.applied + n;
}

double Phone::watched_apply() const {
    return watched_seconds;
}

std::vector<std::string> Phone::lines_of(const std::function<void()>& body) {
    recorded.clear();
    create_headset_mgmt(record_line);
    body();
    create_headset_mgmt(count_line);
    return std::move(recorded);
}

std::shared_ptr<AccessoryCache> headset(const std::string& device_id) {
    auto accessory = std::make_shared<AccessoryCache>();
    accessory->device_id = device_id;
    accessory->accessory_type = 1;
    accessory->vendor_id = 0xF055;
    accessory->software_version = "1-0-2";
    accessory->hardware_version = "4";
    accessory->model = "Varos K20";
    accessory->serial_number = "VK20-000400123456";
    accessory->vendor = "Varos";
    accessory->dock_serial_number = "VDOCK-00012345678";
    accessory->dock_model = "Varos Dock";
    accessory->connection_type = "USB";
    accessory->connection_status = "connected";
    return accessory;
}

}  // namespace headsetmgmt::benchmarks

namespace phone = headsetmgmt::benchmarks;

bool httpRequest(HttpRequestType type, const char* /*url*/, const char* /*body*/) {
    if (type == HTTP_REQUEST_POST) {
        ++phone::so_far.posts;
        return true;
    }
    ++phone::so_far.fetches;
    if (phone::the_phone->on_fetch) {
        phone::the_phone->on_fetch();
    }
    return true;
}

bool apply_changes(const char* /*device_id*/, const char* /*name*/, int /*usage_id*/,
                   const char* /*value*/) {
    if (++phone::so_far.applied == phone::watched_call) {
        phone::watched_seconds = phone::processor_seconds();
    }
    return true;
}

bool request_firmware_upgrade(const char* /*device_id*/, const char* /*version*/,
                              const char* /*firmware_name*/) {
    return true;
}

bool check_firmware_upgrade(const char* /*device_id*/) {
    return true;
}

const char* get_host_serial_num() {
    return "PHONE-SERIAL";
}

const char* get_host_os_ver() {
    return "os-1";
}

const char* get_orvik_ver() {
    return "orvik-1";
}
