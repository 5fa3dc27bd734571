// SPDX-License-Identifier: Apache-2.0
// The arguments of flat calls, read from the bytes of a fuzz input.

#include "fuzz/hostile_input.h"

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace headsetmgmt::fuzz {

namespace {

constexpr const char* const ids[] = {"headset-1", "camera-1", "", "headset-2"};

constexpr const char* const urls[] = {
    "http://{tftp}/{userid}/headsets.json",
    "https://{korm}/inventory",
    "",
    "{tftp}{tftp}",
    "{korm}",
};

constexpr const char* const documents[] = {
    "",
    "{",
    "[]",
    R"({"templateConfiguration":{}})",
    R"({"templateConfiguration": {"updatedTime": 7, "commonSettings": [
        {"name": "32 Speaker Volume", "usageId": 32, "value": 7, "access": "User"},
        {"name": "Bluetooth", "usageId": "39", "value": "off", "access": "Admin"}],
        "modelSpecificSettings": [{"models": ["K30", "Eye"], "modelFirmware": [
        {"firmwareName": "k30.img", "firmwareVersion": "2-1-0", "firmwareParams": [
            {"name": "Sidetone", "usageId": 34, "value": 2, "access": "Admin"},
            {"name": "Equalizer", "usageId": 35, "value": "warm", "access": "admin"}]}]}]}})",
    R"({"templateConfiguration": {"modelSpecificSettings": [{"models": ["Varos"],
        "modelFirmware": [{"firmwareName": "latest", "firmwareParams": [
            {"name": "7", "usageId": -1, "value": 0, "access": "ADMIN"}]}]}]}})",
};

constexpr int usage_ids[] = {32, 34, 35, 39, -1};  // of the documents

constexpr int statuses[] = {200, 200, 404, 500, 0, -1};

template <typename T, std::size_t size>
const T& chosen(Input& input, const T (&choices)[size]) {
    return choices[input.below(static_cast<unsigned int>(size))];
}

}  // namespace

Text HostileInput::some_text() {
    switch (below(6)) {
    case 0:
        return {std::nullopt};
    case 1:
        return {""};
    case 2:
        return {"fe80::1"};
    case 3:
        return {"server"};
    case 4:
        return {std::string(3000, 'x')};
    default:
        return {text()};
    }
}

Text HostileInput::some_id() {
    const unsigned int choice = below(16);
    return choice < 14 ? Text{chosen(*this, ids)} : some_text();
}

CONFIG_SETTING_USAGE_ID HostileInput::some_usage_id() {
    const unsigned int choice = byte();
    const bool any = choice >= 128;
    return static_cast<CONFIG_SETTING_USAGE_ID>(any ? static_cast<std::int8_t>(choice)
                                                    : usage_ids[choice % std::size(usage_ids)]);
}

Text HostileInput::some_url() {
    return below(8) < 6 ? Text{chosen(*this, urls)} : some_text();
}

Text HostileInput::some_document() {
    const unsigned int choice = below(10);
    if (choice < 7) {
        return {chosen(*this, documents)};
    }
    if (choice == 9) {
        return {std::nullopt};
    }
    std::string document = text();
    document += text();
    document += text();
    return {document};
}

int HostileInput::some_status() {
    return chosen(*this, statuses);
}

std::shared_ptr<AccessoryCache> HostileInput::some_accessory() {
    auto accessory = std::make_shared<AccessoryCache>();
    const unsigned int choice = below(16);
    if (choice == 15) {
        return nullptr;
    }
    accessory->device_id = chosen(*this, ids);
    accessory->accessory_type = choice % 2 == 0 ? 1 : 2;
    accessory->vendor_id = 0xF055;
    accessory->software_version = "1-0-2";
    accessory->model = choice % 2 == 0 ? "Varos K30" : "Varos Eye 2";
    accessory->serial_number = "SN12345678";
    accessory->vendor = "Varos";
    if (choice >= 8) {
        change_at_will(*accessory);
    }
    return accessory;
}

void HostileInput::change_at_will(AccessoryCache& accessory) {
    accessory.accessory_type = static_cast<std::int8_t>(byte()) % 5;
    accessory.vendor_id = static_cast<std::int32_t>(byte());
    std::string* const texts[] = {&accessory.software_version,   &accessory.model,
                                  &accessory.serial_number,      &accessory.vendor,
                                  &accessory.dock_serial_number, &accessory.dock_model,
                                  &accessory.dongle_model,       &accessory.dongle_version,
                                  &accessory.connection_type,    &accessory.connection_status,
                                  &accessory.device_id};
    unsigned int given = byte();
    given |= byte() << 8U;
    for (std::size_t i = 0; i < std::size(texts); ++i) {
        if ((given >> i & 1U) != 0) {
            *texts[i] = text();
        }
    }
}

}  // namespace headsetmgmt::fuzz
