// SPDX-License-Identifier: Apache-2.0
// A phone at the flat interface that owns the clock.

#include "support/phone_host.h"

#include <chrono>
#include <ctime>
#include <dirent.h>
#include <fstream>
#include <future>

namespace headsetmgmt::test_support {

namespace {

constexpr std::time_t beginning = 1700000000;
constexpr std::chrono::milliseconds pause_between_passes(50);

}  // namespace

const char document_with_sidetone[] = R"({"templateConfiguration": {
    "modelSpecificSettings": [{"models": ["K30"], "modelFirmware": [
        {"firmwareName": "k30.bin", "firmwareVersion": "Current", "firmwareParams": [
            {"name": "Sidetone", "usageId": 34, "value": 2, "access": "Admin"}]}]}]}})";

AccessoryCache headset_1() {
    return headset_named("headset-1");
}

AccessoryCache headset_named(const std::string& device_id) {
    AccessoryCache record;
    record.device_id = device_id;
    record.accessory_type = 1;
    record.vendor_id = 0xF055;
    record.software_version = "1-0-2";
    record.hardware_version = "B";
    record.model = "Varos K30";
    record.serial_number = "SN1234567";
    record.vendor = "Varos";
    record.connection_type = "usb";
    record.connection_status = "connected";
    return record;
}

AccessoryCache camera_1() {
    AccessoryCache record;
    record.device_id = "camera-1";
    record.accessory_type = 2;
    record.vendor_id = 0xF055;
    record.software_version = "4-0-0";
    record.model = "Varos C10";
    record.serial_number = "CAM7654321";
    record.vendor = "Varos";
    record.connection_type = "usb";
    record.connection_status = "connected";
    return record;
}

std::shared_ptr<AccessoryCache> shared(const AccessoryCache& record) {
    return std::make_shared<AccessoryCache>(record);
}

HostBehaviour usual_behaviour() {
    HostBehaviour behaviour;
    behaviour.serial_number = "PHONE0001";
    behaviour.os_version = "6.1";
    behaviour.orvik_version = "12.5";
    return behaviour;
}

bool set_urls() {
    const char* tftp_servers[] = {"fe80::1", "tftp-2", ""};
    const char* korm_servers[] = {"korm-1", "", "korm-3"};
    return setHeadsetConfigUrl("http://{tftp}/{userid}/headsets.json", "https://{korm}/inventory",
                               "https://service", tftp_servers, korm_servers, "4711");
}

bool on_another_thread(const std::function<bool()>& call) {
    return std::async(std::launch::async, call).get();
}

int threads_named(const std::string& name) {
    int count = 0;
    DIR* tasks = opendir("/proc/self/task");
    while (const dirent* entry = readdir(tasks)) {
        std::ifstream comm("/proc/self/task/" + std::string(entry->d_name) + "/comm");
        std::string thread_name;
        if (std::getline(comm, thread_name) && thread_name == name) {
            ++count;
        }
    }
    closedir(tasks);
    return count;
}

PhoneHost::PhoneHost() {
    time.emplace(beginning);
    fresh_fake_host().behave(usual_behaviour());
}

PhoneHost::~PhoneHost() {
    time->release();
    stop_headset_mgmt();
}

void PhoneHost::start_up() {
    create_headset_mgmt(record_host_log_line);
    start();
    set_urls();
    take();
}

bool PhoneHost::start() {
    const bool started = start_headset_mgmt("phone", "1.0", "/");
    if (started) {
        time->wait_until_parked();
    }
    return started;
}

void PhoneHost::run_worker() {
    time->advance_and_settle(pause_between_passes);
}

void PhoneHost::stop() {
    time->release();
    stop_headset_mgmt();
    time.emplace(beginning);
}

Lines PhoneHost::take() {
    const Lines all = fake_host().transcript();
    const Lines latest(all.begin() + static_cast<std::ptrdiff_t>(taken), all.end());
    taken = all.size();
    return latest;
}

}  // namespace headsetmgmt::test_support
