// SPDX-License-Identifier: Apache-2.0
// What the calls carry: accessories, documents, URLs and servers, good ones and odd ones.

#include "stress/properties.h"

#include <algorithm>
#include <string>
#include <vector>

#include "stress/dice.h"

namespace headsetmgmt::stress {

const char probe_id[] = "probe";
const char probe_serial_number[] = "PROBE-SERIAL";

namespace {

using namespace std::string_literals;

constexpr int maker = HEADSETMGMT_MAKER_VENDOR_ID;
constexpr int headset = 1;
constexpr int camera = 2;

const std::string long_text(10000, 'x');
const std::string odd_text = "%s%n {tftp} {korm} \"\\\n\x01\xff\xfe\0behind"s;

AccessoryCache accessory(const std::string& id, int type, const std::string& model,
                         const std::string& version) {
    AccessoryCache record;
    record.device_id = id;
    record.accessory_type = type;
    record.vendor_id = maker;
    record.model = model;
    record.software_version = version;
    record.hardware_version = "2";
    record.serial_number = "0000000" + id;
    record.vendor = "Varos";
    record.connection_type = "USB";
    record.connection_status = "connected";
    return record;
}

AccessoryCache with_dongle(AccessoryCache record) {
    record.dongle_model = "Varos Link";
    record.dongle_version = "1-2-9";
    record.dongle_serial_number = "DONGLE-" + record.device_id;
    return record;
}

AccessoryCache with_dock(AccessoryCache record) {
    record.dock_model = "Varos Base";
    record.dock_serial_number = "DOCK-" + record.device_id;
    return record;
}

AccessoryCache of_another_maker(AccessoryCache record) {
    record.vendor_id = maker + 1;
    record.vendor = "Another";
    return record;
}

AccessoryCache with_texts(AccessoryCache record, const std::string& text) {
    record.model = text;
    record.software_version = text;
    record.hardware_version = text;
    record.serial_number = text;
    record.vendor = text;
    record.dongle_model = text;
    record.dongle_version = text;
    record.dock_model = text;
    record.connection_status = text;
    return record;
}

std::vector<AccessoryCache> make_accessories() {
    AccessoryCache other_model = accessory("k30", headset, "Varos K30", "1-0-2");
    other_model.serial_number = "00000004";
    return {
        accessory("headset", headset, "Varos K30", "1-0-2"),
        other_model,
        with_dock(accessory("docked", headset, "Varos K20", "2-1-0")),
        with_dongle(accessory("wireless", headset, "Varos K30", "2-0-9")),
        with_dock(with_dongle(accessory("complete", headset, "Varos K20", "dev-1"))),
        of_another_maker(accessory("strange", headset, "Another 1", "7")),
        accessory("camera", camera, "Varos Eye", "3-0-0"),
        accessory("second camera", camera, "Varos Eye", "3-0-1"),
        of_another_maker(accessory("strange camera", camera, "Another Eye", "3.0")),
        // Their fetch is held back until its time is over.
        accessory("slow", headset, "Varos K30", ""),
        accessory("slow camera", camera, "", "3-0-0"),
        // No configuration, no report.
        accessory("unknown", 0, "Varos K30", "1-0-2"),
        accessory("neither", 99, "Varos K30", "1-0-2"),
        // Texts that no accessory should have.
        with_texts(accessory(long_text, headset, "", ""), long_text),
        with_texts(accessory("odd", headset, "", ""), odd_text),
        with_texts(accessory("", camera, "", ""), "Varos Eye {tftp}"),
    };
}

std::string good_document_text() {
    return R"({"templateConfiguration": {
        "updatedTime": 1795248000,
        "commonSettings": [
            {"name": "Speaker Volume", "usageId": 32, "value": 7, "access": "User"},
            {"name": "Sidetone", "usageId": 34, "value": "medium", "access": "Admin"},
            {"name": "Bluetooth", "usageId": "39", "value": "off", "access": "admin"}],
        "modelSpecificSettings": [
            {"models": ["Varos K30", "Varos K20"], "modelFirmware": [
                {"firmwareName": "k.img", "firmwareVersion": "2-1-0", "firmwareParams": [
                    {"name": "Equalizer", "usageId": 35, "value": "warm", "access": "Admin"}]}]},
            {"models": ["Varos Link"], "modelFirmware": [
                {"firmwareName": "link.img", "firmwareVersion": "1-3-0"}]},
            {"models": ["Varos Eye"], "modelFirmware": [
                {"firmwareName": "eye.img", "firmwareVersion": "Current", "firmwareParams": [
                    {"name": "Frame Rate", "usageId": 41, "value": 30, "access": "Admin"}]}]}]}})";
}

/// Serves every model that has a name with an "a", and leaves the upgrade to the host.
std::string document_with_many_settings() {
    std::string text = R"({"x": {"updatedTime": 3, "commonSettings": [{}],
        "modelSpecificSettings": [{"models": ["zz", "", 7, "a"], "modelFirmware": [
        {"firmwareName": "Latest", "firmwareVersion": "9", "firmwareParams": [)";
    constexpr int settings = 60;
    for (int id = 0; id < settings; ++id) {
        text += R"({"name": "setting", "value": 1.5, "access": "Admin", "usageId": )" +
                std::to_string(id) + "},\n";
    }
    return text + R"({"name": "User's", "value": 1, "access": "User", "usageId": 77}]}]}]}})";
}

std::string document_of_faults() {
    return R"({"templateConfiguration": {"updatedTime": "yesterday", "commonSettings": [
        7, {}, {"name": ""}, {"name": "a"}, {"name": "a", "usageId": null},
        {"name": "a", "usageId": 1}, {"name": "a", "usageId": 1, "value": {}, "access": "Admin"},
        {"name": "a", "usageId": "x", "value": 1, "access": "Admin"}],
        "modelSpecificSettings": [{"models": ["Varos"], "modelFirmware": [
            {"firmwareVersion": 2, "firmwareParams": [{"name": "a"}]}]}]}})";
}

std::vector<std::string> make_documents() {
    const std::string good = good_document_text();
    const std::string cut = good.substr(0, good.size() / 2);
    return {
        good,
        good,
        document_with_many_settings(),
        document_of_faults(),
        cut,
        std::string(2000, '['),
        "",
        "null",
        "<html>404</html>",
        R"({"a": {"modelSpecificSettings": [{"models": ["Varos", "Another"]}]}})",
    };
}

/// Enough of them that there is always one that the library does not know yet.
std::vector<std::string> make_servers() {
    std::vector<std::string> made = {"", "tftp.example", "::1", "{tftp}:69", "{korm}", odd_text};
    constexpr int addresses = 250;
    for (int last = 1; last <= addresses; ++last) {
        made.push_back("10.0.0." + std::to_string(last));
    }
    return made;
}

// Made before the library is, so that they outlive it when the process exits without a stop.
const std::vector<AccessoryCache> accessories = make_accessories();
const std::vector<std::string> documents = make_documents();
const std::vector<std::string> servers = make_servers();

thread_local const AccessoryCache* at_hand = nullptr;

const AccessoryCache& any_of_the_sixteen() {
    return at_hand != nullptr && dice().one_in(2) ? *at_hand : dice().any_of(accessories);
}

}  // namespace

AccessoryAtHand::AccessoryAtHand(const char* device_id) : former(at_hand) {
    const auto known =
        std::find_if(accessories.begin(), accessories.end(),
                     [&](const AccessoryCache& record) { return record.device_id == device_id; });
    at_hand = known != accessories.end() ? &*known : nullptr;
}

AccessoryAtHand::~AccessoryAtHand() {
    at_hand = former;
}

std::shared_ptr<AccessoryCache> any_accessory() {
    constexpr unsigned int seldom = 40;
    if (dice().one_in(seldom)) {
        return nullptr;
    }
    auto accessory = std::make_shared<AccessoryCache>(any_of_the_sixteen());
    constexpr unsigned int sometimes = 5;
    if (dice().one_in(sometimes)) {
        const AccessoryCache& other = dice().any_of(accessories);
        accessory->model = other.model;
        accessory->software_version = other.software_version;
        accessory->dongle_model = other.dongle_model;
        accessory->dongle_version = other.dongle_version;
    }
    return accessory;
}

bool may_be_configured(const AccessoryCache* accessory) {
    return accessory != nullptr &&
           (accessory->accessory_type == headset || accessory->accessory_type == camera);
}

const char* any_device_id() {
    constexpr const char* others[] = {nullptr, "", "nobody's", "probe", "\xff%n"};
    constexpr unsigned int seldom = 40;
    return dice().one_in(seldom) ? dice().any_of(others) : any_of_the_sixteen().device_id.c_str();
}

const char* any_document() {
    constexpr unsigned int seldom = 30;
    return dice().one_in(seldom) ? nullptr : dice().any_of(documents).c_str();
}

const char* good_document() {
    return documents.front().c_str();
}

std::shared_ptr<AccessoryCache> probe() {
    AccessoryCache record = accessory(probe_id, headset, "Varos K30", "1-0-2");
    record.serial_number = probe_serial_number;
    return std::make_shared<AccessoryCache>(record);
}

const char* any_url() {
    static const char* const urls[] = {"http://{tftp}/{userid}.json",
                                       "https://phone.example/document.json",
                                       "{tftp}",
                                       "http://{korm}/report",
                                       "{korm}{korm}{tftp}{userid}",
                                       "",
                                       nullptr,
                                       long_text.c_str(),
                                       odd_text.c_str()};
    return dice().any_of(urls);
}

const char** any_servers() {
    thread_local const char* three[3];
    for (const char*& server : three) {
        server = dice().one_in(2) ? dice().any_of(servers).c_str() : nullptr;
    }
    constexpr unsigned int seldom = 8;
    return dice().one_in(seldom) ? nullptr : three;
}

const char* any_text() {
    static const char* const texts[] = {"user", "user@example", "{userid}",
                                        "",     nullptr,        odd_text.c_str()};
    return dice().any_of(texts);
}

}  // namespace headsetmgmt::stress
