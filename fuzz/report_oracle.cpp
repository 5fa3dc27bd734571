// SPDX-License-Identifier: Apache-2.0
// What holds of every inventory report that is posted.

#include "fuzz/report_oracle.h"

#include <initializer_list>
#include <string>

#include <cjson/cJSON.h>

#include "core/json.h"
#include "fuzz/oracle.h"

namespace headsetmgmt::fuzz {

namespace {

const cJSON* member(const cJSON* object, const char* name) {
    return cJSON_GetObjectItemCaseSensitive(object, name);
}

/// The object has the texts `names`, in this order and nothing else.
void expect_texts(const cJSON* object, std::initializer_list<const char*> names,
                  const char* claim) {
    expect(cJSON_IsObject(object) != 0, claim, "no object");
    const cJSON* at = object->child;
    for (const char* name : names) {
        expect(at != nullptr, claim, std::string("no ") + name);
        expect(std::string(name) == at->string, claim, at->string);
        expect(cJSON_IsString(at) != 0, claim, std::string("no text: ") + name);
        at = at->next;
    }
    expect(at == nullptr, claim, "more members");
}

bool is_empty(const cJSON* object, const char* name) {
    return *cJSON_GetStringValue(member(object, name)) == '\0';
}

}  // namespace

void expect_report(const char* body, bool blank_serial_numbers) {
    const JsonOwner report(cJSON_ParseWithOpts(body, nullptr, 1));
    expect(report != nullptr, "a report is JSON", body);
    expect(cJSON_GetArraySize(report.get()) == 3, "a report has time, key and value", body);
    expect(cJSON_IsNumber(member(report.get(), "time")) != 0, "a report has its time", body);

    const char* key = cJSON_GetStringValue(member(report.get(), "key"));
    expect(key != nullptr &&
               (std::string(key) == "headsetInventory" || std::string(key) == "cameraInventory"),
           "a report names its kind", body);

    const cJSON* value = member(report.get(), "value");
    const cJSON* host = member(value, "host");
    if (cJSON_GetArraySize(host) == 1) {
        expect_texts(host, {"userId"}, "of another maker's accessory: the user alone");
        expect(member(value, "dock") == nullptr, "another maker's accessory has no dock", body);
    } else {
        expect_texts(host,
                     {"client", "serialNumber", "deviceName", "model", "firmwareVersion",
                      "hostOSVersion", "userId"},
                     "the report describes the phone");
    }
    if (const cJSON* dock = member(value, "dock")) {
        expect_texts(dock, {"serialNumber", "model"}, "the report describes the dock");
        expect(blank_serial_numbers || !is_empty(dock, "serialNumber"),
               "a dock has a serial number");
    }
    const cJSON* headset = member(value, "headset");
    expect_texts(headset,
                 {"serialNumber", "firmwareVersion", "vendor", "model", "connectionType",
                  "connectionStatus"},
                 "the report describes the accessory");
    expect(blank_serial_numbers || !is_empty(headset, "serialNumber"),
           "an accessory has a serial number");
}

}  // namespace headsetmgmt::fuzz
