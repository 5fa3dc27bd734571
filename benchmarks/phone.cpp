// SPDX-License-Identifier: Apache-2.0
// The phone that the benchmarks play.

#include "benchmarks/phone.h"

#include <cstddef>
#include <stdexcept>
#include <utility>

#include "headsetmgmt/phone/flat_interface.h"

#include "benchmarks/host.h"
#include "benchmarks/resting_worker.h"

namespace headsetmgmt::benchmarks {

namespace {

std::vector<std::string> recorded;

void record_line(int level, const char* text) {
    count_line(level, text);
    recorded.emplace_back(text);
}

void check(bool well, const char* what) {
    if (!well) {
        throw std::runtime_error(std::string("benchmark's phone: ") + what);
    }
}

}  // namespace

Phone::Phone() {
    let_worker_rest();
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
    const std::size_t before = host_counts.fetches;
    check(configure_headset(accessory), "accessory not taken");
    run_worker();
    check(host_counts.fetches == before + 1, "no document requested");
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
