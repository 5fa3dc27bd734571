// Reads bench files: JSON whose every member is known.

#include "program/phone/bench.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

#include "headsetmgmt/types.h"

#include "program/phone/located_json.h"

namespace headsetmgmt::program {

namespace {

using nlohmann::json;

constexpr std::size_t largest_file = std::size_t{16} << 20U;  // bytes

/// The number that a text writes in decimal digits, or in hexadecimal ones after 0x.
std::optional<long> number_in(const std::string& text) {
    char* end = nullptr;
    errno = 0;
    const long number = std::strtol(text.c_str(), &end, 0);
    const bool is_number = !text.empty() && *end == '\0' && errno == 0;
    return is_number ? std::optional<long>(number) : std::nullopt;
}

/// A bench in the reading.
class Reader {
public:
    /// Words a refusal: the place, such as "/accessories/0/type", and what was expected there.
    using Wording =
        std::function<std::string(const std::string& place, const std::string& expected)>;

    Reader(const json& bench, Wording wording) : document(bench), told(std::move(wording)) {}

    Bench read() {
        Bench bench;
        expect_object(document, "");
        expect_known(document, "", {"phone", "urls", "servers", "accessories"});
        if (const json* phone = object(document, "", "phone")) {
            expect_known(*phone, "/phone",
                         {"serialNumber", "osVersion", "softwareVersion", "userId"});
            text(*phone, "/phone", "serialNumber", bench.serial_number);
            text(*phone, "/phone", "osVersion", bench.os_version);
            text(*phone, "/phone", "softwareVersion", bench.software_version);
            text(*phone, "/phone", "userId", bench.user_id);
        }
        if (const json* urls = object(document, "", "urls")) {
            expect_known(*urls, "/urls", {"config", "inventory", "service"});
            text(*urls, "/urls", "config", bench.config_url);
            text(*urls, "/urls", "inventory", bench.inventory_url);
            text(*urls, "/urls", "service", bench.service_url);
        }
        if (const json* servers = object(document, "", "servers")) {
            expect_known(*servers, "/servers", {"tftp", "korm"});
            bench.tftp_servers = server_list(*servers, "tftp");
            bench.korm_servers = server_list(*servers, "korm");
        }
        read_accessories(bench);
        return bench;
    }

private:
    [[noreturn]] void fail(const std::string& place, const std::string& expected) const {
        throw BenchError(told(place, expected));
    }

    void expect_object(const json& value, const std::string& place) const {
        if (!value.is_object()) {
            fail(place, "expected an object, found " + described(value));
        }
    }

    void expect_known(const json& value, const std::string& place,
                      const std::set<std::string>& known) const {
        for (const auto& [name, member] : value.items()) {
            if (known.count(name) == 0) {
                std::string names;
                for (const std::string& one : known) {
                    names.append(names.empty() ? "" : ", ").append(one);
                }
                std::string unknown = place;
                unknown.append("/").append(name_in_place(name));
                fail(unknown, "not known here; expected one of: " + names);
            }
        }
    }

    const json* object(const json& parent, const std::string& place, const char* name) const {
        const auto member = parent.find(name);
        if (member == parent.end()) {
            return nullptr;
        }
        expect_object(*member, place + "/" + name);
        return &*member;
    }

    void text(const json& parent, const std::string& place, const char* name,
              std::string& result) const {
        const auto member = parent.find(name);
        if (member == parent.end()) {
            return;
        }
        if (!member->is_string()) {
            fail(place + "/" + name, "expected a text, found " + described(*member));
        }
        result = member->get<std::string>();
        expect_no_nul(result, place + "/" + name);
    }

    /// Host and library exchange most texts as C strings, which end at their first NUL.
    void expect_no_nul(const std::string& value, const std::string& place) const {
        if (value.find('\0') != std::string::npos) {
            fail(place, "expected a text without a NUL character");
        }
    }

    std::vector<std::string> server_list(const json& servers, const char* name) const {
        const std::string place = std::string("/servers/") + name;
        std::vector<std::string> result;
        const auto member = servers.find(name);
        if (member == servers.end()) {
            return result;
        }
        if (!member->is_array() || member->size() > servers_of_a_kind) {
            fail(place, "expected an array of at most " + std::to_string(servers_of_a_kind) +
                            " texts, found " + described(*member) +
                            (member->is_string() ? "; write [" + described(*member) + "]" : ""));
        }
        for (std::size_t i = 0; i < member->size(); ++i) {
            const json& server = (*member)[i];
            if (!server.is_string() || server.get<std::string>().empty()) {
                fail(place + "/" + std::to_string(i),
                     "expected the name or address of a server, found " + described(server));
            }
            expect_no_nul(server.get<std::string>(), place + "/" + std::to_string(i));
            result.push_back(server.get<std::string>());
        }
        return result;
    }

    void read_accessories(Bench& bench) const {
        const auto member = document.find("accessories");
        if (member == document.end()) {
            return;
        }
        if (!member->is_array()) {
            fail("/accessories", "expected an array of objects, found " + described(*member));
        }
        std::set<std::string> ids;
        for (std::size_t i = 0; i < member->size(); ++i) {
            const std::string place = "/accessories/" + std::to_string(i);
            bench.accessories.push_back(read_accessory((*member)[i], place));
            const std::string& id = bench.accessories.back().device_id;
            if (!ids.insert(id).second) {
                fail(place + "/id", "expected an id of its own, found \"" + id + "\" again");
            }
        }
    }

    AccessoryCache read_accessory(const json& value, const std::string& place) const {
        expect_object(value, place);
        expect_known(value, place,
                     {"id", "type", "vendorId", "softwareVersion", "hardwareVersion", "model",
                      "serialNumber", "vendor", "dockSerialNumber", "dockModel",
                      "dongleSerialNumber", "dongleModel", "dongleVersion", "connectionType",
                      "connectionStatus"});
        AccessoryCache accessory;
        accessory.connection_type = "USB";
        accessory.connection_status = "connected";
        text(value, place, "id", accessory.device_id);
        if (accessory.device_id.empty()) {
            fail(place + (value.contains("id") ? "/id" : ""),
                 "expected a member \"id\" with a text that is not empty");
        }
        accessory.accessory_type = read_type(value, place);
        accessory.vendor_id = read_vendor_id(value, place);
        text(value, place, "softwareVersion", accessory.software_version);
        text(value, place, "hardwareVersion", accessory.hardware_version);
        text(value, place, "model", accessory.model);
        text(value, place, "serialNumber", accessory.serial_number);
        text(value, place, "vendor", accessory.vendor);
        text(value, place, "dockSerialNumber", accessory.dock_serial_number);
        text(value, place, "dockModel", accessory.dock_model);
        text(value, place, "dongleSerialNumber", accessory.dongle_serial_number);
        text(value, place, "dongleModel", accessory.dongle_model);
        text(value, place, "dongleVersion", accessory.dongle_version);
        text(value, place, "connectionType", accessory.connection_type);
        text(value, place, "connectionStatus", accessory.connection_status);
        return accessory;
    }

    std::int32_t read_type(const json& value, const std::string& place) const {
        std::string type;
        text(value, place, "type", type);
        if (type == "headset") {
            return HEADSET;
        }
        if (type == "camera") {
            return CAMERA;
        }
        const std::string expected = R"(expected a member "type" with "headset" or "camera")";
        if (!value.contains("type")) {
            fail(place, expected);
        }
        std::string small = type;
        std::transform(type.begin(), type.end(), small.begin(),
                       [](unsigned char letter) { return std::tolower(letter); });
        const bool is_spelt_so = small == "headset" || small == "camera";
        fail(place + "/type", expected + ", found " + described(value["type"]) +
                                  (is_spelt_so ? " (capitals count)" : ""));
    }

    std::int32_t read_vendor_id(const json& value, const std::string& place) const {
        const auto member = value.find("vendorId");
        if (member == value.end()) {
            return 0;
        }
        constexpr std::int64_t largest = 0xFFFF;
        if (!member->is_number_integer() || member->get<std::int64_t>() < 0 ||
            member->get<std::int64_t>() > largest) {
            std::string expected =
                "expected a USB vendor id, 0 to 65535, found " + described(*member);
            const auto number =
                member->is_string() ? number_in(member->get<std::string>()) : std::nullopt;
            if (number && *number >= 0 && *number <= largest) {
                expected += "; write the number " + std::to_string(*number) +
                            ", without quotation marks (JSON has no hexadecimal numbers)";
            }
            fail(place + "/vendorId", expected);
        }
        return member->get<std::int32_t>();
    }

    static std::string described(const json& value) {
        if (value.is_array()) {
            return "an array of " + std::to_string(value.size());
        }
        return value.is_object() ? "an object"
                                 : value.dump(-1, ' ', false, json::error_handler_t::replace);
    }

    const json& document;
    Wording told;
};

/// The members of an accessory from "NAME=VALUE,...". `told` words a refusal.
json members_of(const std::string& text,
                const std::function<std::string(const std::string&)>& told) {
    json members = json::object();
    std::stringstream pairs(text);
    std::string pair;
    while (std::getline(pairs, pair, ',')) {
        const std::size_t equals = pair.find('=');
        if (equals == std::string::npos || equals == 0) {
            throw BenchError(told("expected NAME=VALUE,..., found \"" + pair +
                                  "\"; a value cannot hold a comma here, only in a bench file"));
        }
        const std::string name = pair.substr(0, equals);
        const std::string value = pair.substr(equals + 1);
        if (name.find(' ') != std::string::npos) {
            throw BenchError(told("expected a name without blanks, found \"" + name + "\""));
        }
        if (members.contains(name)) {
            throw BenchError(told(name + ": expected once, found again"));
        }
        const std::optional<long> number = name == "vendorId" ? number_in(value) : std::nullopt;
        members[name] = number ? json(*number) : json(value);
    }
    return members;
}

}  // namespace

Bench read_bench(const std::string& text, const std::string& path) {
    const LocatedJson located(text, path);
    const auto told = [&](const std::string& place, const std::string& expected) {
        return path + ":" + std::to_string(located.line_of(place)) + ": " +
               (place.empty() ? "the document" : "member " + place) + ": " + expected;
    };
    return Reader(located.document(), told).read();
}

Bench read_bench_file(const std::string& path) {
    std::string text;
    errno = 0;
    try {
        std::ifstream file(path, std::ios::binary);
        text.resize(largest_file + 1);
        file.read(text.data(), static_cast<std::streamsize>(text.size()));
        text.resize(static_cast<std::size_t>(file.gcount()));
    } catch (const std::ios_base::failure&) {
        // errno tells why
    }
    if (errno != 0) {
        throw BenchError(path + ": cannot be read: " + std::strerror(errno));
    }
    if (text.size() > largest_file) {
        throw BenchError(path + ": expected at most " + std::to_string(largest_file) + " bytes");
    }
    return read_bench(text, path);
}

AccessoryCache read_accessory(const std::string& text, const std::string& option) {
    const auto told = [&](const std::string& expected) {
        return option + " \"" + text + "\": " + expected;
    };
    const auto told_of_member = [&](const std::string& place, const std::string& expected) {
        constexpr std::size_t accessory = sizeof("/accessories/0") - 1;
        return told(place.size() > accessory ? place.substr(accessory + 1) + ": " + expected
                                             : expected);
    };
    const json given = {{"accessories", json::array({members_of(text, told)})}};
    // Bytes that are no UTF-8, which a bench file cannot have, are replaced.
    const json document = json::parse(given.dump(-1, ' ', false, json::error_handler_t::replace));
    return Reader(document, told_of_member).read().accessories.front();
}

}  // namespace headsetmgmt::program
