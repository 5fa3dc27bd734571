// What the least that anyone could do is made of: log lines, a map of settings, a report.

#include "benchmarks/floors.h"

#include <cstring>
#include <ctime>
#include <sstream>

#include <cjson/cJSON.h>

#include "benchmarks/host.h"

namespace headsetmgmt::benchmarks {

Lines::Lines(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
        all += text;
        ends.push_back(all.size());
    }
}

void Lines::write() const {
    std::size_t begin = 0;
    for (const std::size_t end : ends) {
        std::ostringstream stream;
        stream << std::string_view(all).substr(begin, end - begin);
        count_line(5, stream.str().c_str());
        begin = end;
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

std::size_t build_report() {
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
    char* printed = cJSON_Print(report);
    const std::size_t length = std::strlen(printed);
    cJSON_free(printed);
    cJSON_Delete(report);
    return length;
}

}  // namespace headsetmgmt::benchmarks
