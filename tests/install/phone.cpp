// SPDX-License-Identifier: Apache-2.0
// The smallest phone: starts the installed library, attaches a headset, and waits for the request.

#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

#include "headsetmgmt/phone/flat_interface.h"
#include "headsetmgmt/phone/host_functions.h"

namespace {

std::mutex mutex;
std::condition_variable changed;
std::string fetched_url;

}  // namespace

bool httpRequest(HttpRequestType type, const char* url, const char* /*body*/) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (type == HTTP_REQUEST_GET) {
        fetched_url = url;
    }
    changed.notify_all();
    return true;
}

bool apply_changes(const char* /*device_id*/, const char* /*name*/, int /*usage_id*/,
                   const char* /*value*/) {
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
    return "";
}

const char* get_host_os_ver() {
    return "";
}

const char* get_orvik_ver() {
    return "";
}

int main() {
    const char* tftp_servers[3] = {"192.0.2.1", "", ""};
    if (!create_headset_mgmt(nullptr) || !start_headset_mgmt("", "", "") ||
        !setHeadsetConfigUrl("http://{tftp}/defaultheadsetconfig.json", "", "", tftp_servers,
                             nullptr, "")) {
        return 1;
    }
    std::printf("started\n");

    const auto headset = std::make_shared<AccessoryCache>();
    headset->device_id = "headset-1";
    headset->accessory_type = headsetmgmt::HEADSET;
    headset->model = "Varos K30";
    headset->software_version = "2-1-0";
    if (!configure_headset(headset)) {
        return 1;
    }
    std::printf("configuring\n");
    {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [] { return !fetched_url.empty(); });  // the test has a time-out
        std::printf("GET %s\n", fetched_url.c_str());
    }
    stop_headset_mgmt();
    return 0;
}
