// SPDX-License-Identifier: Apache-2.0
// What the least that anyone could do is made of: log lines, a map of settings, a report; and
// whether it comes to what the library does.

#include "benchmarks/floors.h"

#include <ctime>
#include <sstream>
#include <stdexcept>

#include "headsetmgmt/phone/flat_interface.h"

#include "benchmarks/documents.h"
#include "benchmarks/host.h"
#include "benchmarks/phone.h"
#include "benchmarks/resting_worker.h"

namespace headsetmgmt::benchmarks {

namespace {

constexpr int debug_level = 5;

/// The report without its first member, the time.
std::string all_but_time(const std::string& report) {
    const std::string::size_type end_of_time = report.find(',');
    return end_of_time == std::string::npos ? report : report.substr(end_of_time);
}

void check_report() {
    Phone phone;
    std::string posted;
    on_post = [&posted](const char* body) { posted = body; };
    send_inventory(headset("1"));
    run_worker();
    on_post = nullptr;
    const std::string printed = print_report().get();
    if (all_but_time(posted) != all_but_time(printed)) {
        throw std::runtime_error("the library posts\n" + posted + "\nand its floor prints\n" +
                                 printed);
    }
}

/// What the library writes about each setting that it stores.
std::vector<std::string> stored_by_library(std::size_t settings, const std::string& remark) {
    const std::string document = document_of_settings(settings, remark);
    Phone phone;
    phone.attach_and_fetch(headset("1"));
    std::vector<std::string> found;
    for (const std::string& line :
         phone.lines_of([&document] { httpResponse(document.c_str(), 200); })) {
        const std::string::size_type place = line.find("save_config_to_map: ");
        if (place != std::string::npos && line.find(", key: ") != std::string::npos) {
            found.push_back(line.substr(place));
        }
    }
    return found;
}

void check_settings(const std::string& remark) {
    constexpr std::size_t settings = 100;
    std::vector<std::string> expected;
    for (const auto& [usage_id, setting] : map_of(settings_of_document(settings, remark))) {
        expected.push_back("save_config_to_map: " + std::to_string(usage_id) +
                           ", key: " + setting.name + ", value: " + setting.value +
                           ", access: " + setting.access);
    }
    const std::vector<std::string> stored = stored_by_library(settings, remark);
    for (std::size_t i = 0; i < settings; ++i) {
        const std::string line = i < stored.size() ? stored[i] : "nothing";
        if (i >= expected.size() || line != expected[i]) {
            throw std::runtime_error(
                "of setting " + std::to_string(i + 1) + " the library writes\n" + line +
                "\nand the floor's map holds\n" + (i < expected.size() ? expected[i] : "nothing"));
        }
    }
}

}  // namespace

Lines::Lines(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
        all += text;
        ends.push_back(all.size());
        all += '\0';
    }
}

void Lines::write() const {
    std::size_t begin = 0;
    for (const std::size_t end : ends) {
        std::ostringstream stream;
        stream << std::string_view(all).substr(begin, end - begin);
        count_line(debug_level, stream.str().c_str());
        begin = end + 1;
    }
}

void Lines::hand_over() const {
    std::size_t begin = 0;
    for (const std::size_t end : ends) {
        count_line(debug_level, all.data() + begin);
        begin = end + 1;
    }
}

std::vector<ConfigParam> settings_of_document(std::size_t settings, const std::string& remark) {
    std::vector<ConfigParam> list;
    list.reserve(settings);
    for (std::size_t usage_id = 1; usage_id <= settings; ++usage_id) {
        const std::string number = std::to_string(usage_id);
        list.push_back({static_cast<int>(usage_id), "Parameter " + number + remark,
                        usage_id % 2 == 0 ? number : "level " + number + remark, "Admin"});
    }
    return list;
}

std::map<int, ConfigParam> map_of(const std::vector<ConfigParam>& settings) {
    std::map<int, ConfigParam> map;
    for (const ConfigParam& setting : settings) {
        map.emplace_hint(map.end(), setting.usage_id, setting);
    }
    return map;
}

JsonTextOwner print_report() {
    cJSON* report = cJSON_CreateObject();
    cJSON_AddNumberToObject(report, "time", static_cast<double>(std::time(nullptr)));
    cJSON_AddStringToObject(report, "key", "headsetInventory");
    cJSON* value = cJSON_CreateObject();
    cJSON* host = cJSON_CreateObject();
    cJSON_AddStringToObject(host, "client", "Orvik-VDI");
    cJSON_AddStringToObject(host, "serialNumber", "PHONE-SERIAL");
    cJSON_AddStringToObject(host, "deviceName", "TRMXXXXXXXX");
    cJSON_AddStringToObject(host, "model", "TRM");
    cJSON_AddStringToObject(host, "firmwareVersion", "orvik-1");
    cJSON_AddStringToObject(host, "hostOSVersion", "os-1");
    cJSON_AddStringToObject(host, "userId", "user");
    cJSON_AddItemToObject(value, "host", host);
    cJSON* dock = cJSON_CreateObject();
    cJSON_AddStringToObject(dock, "serialNumber", "VDOCK-00012345678");
    cJSON_AddStringToObject(dock, "model", "Varos Dock");
    cJSON_AddItemToObject(value, "dock", dock);
    cJSON* headset = cJSON_CreateObject();
    cJSON_AddStringToObject(headset, "serialNumber", "VK20-000400123456");
    cJSON_AddStringToObject(headset, "firmwareVersion", "1-0-2");
    cJSON_AddStringToObject(headset, "vendor", "Varos");
    cJSON_AddStringToObject(headset, "model", "Varos K20");
    cJSON_AddStringToObject(headset, "connectionType", "USB");
    cJSON_AddStringToObject(headset, "connectionStatus", "connected");
    cJSON_AddItemToObject(value, "headset", headset);
    cJSON_AddItemToObject(report, "value", value);
    JsonTextOwner printed(cJSON_Print(report));
    cJSON_Delete(report);
    return printed;
}

void check_floors() {
    check_report();
    check_settings("");
    check_settings(long_remark);
}

}  // namespace headsetmgmt::benchmarks
