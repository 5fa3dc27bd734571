// SPDX-License-Identifier: Apache-2.0
// Bench files: benches as JSON whose every member is known.

#include "program/phone/bench_file.h"

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

#include "program/json/index.h"
#include "program/json/places.h"
#include "program/json/scan.h"
#include "program/phone/bench_syntax.h"
#include "program/refused_input.h"

namespace headsetmgmt::program {

namespace {

using Json = nlohmann::json;

constexpr std::size_t largest_file = std::size_t{16} << 20U;  // bytes

/// The number that a text writes in decimal digits, or in hexadecimal ones after 0x.
std::optional<long> number_in(const std::string& text) {
    char* end = nullptr;
    errno = 0;
    const bool is_hexadecimal = text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0;
    const long number = std::strtol(text.c_str(), &end, is_hexadecimal ? 16 : 10);
    const bool is_number = !text.empty() && *end == '\0' && errno == 0;
    return is_number ? std::optional<long>(number) : std::nullopt;
}

/// Reads a bench from its JSON.
class Reader {
public:
    /// Words a refusal: the place, such as "/accessories/0/type", and what was expected there.
    using Wording =
        std::function<std::string(const std::string& place, const std::string& expected)>;

    Reader(const Json& bench, Wording refusal_wording)
        : document(bench), wording(std::move(refusal_wording)) {}

    Bench read() {
        Bench bench;
        expect_object(document, "");
        expect_known(document, "", {"phone", "urls", "servers", "accessories"});
        if (const Json* phone = object(document, "", "phone")) {
            expect_known(*phone, "/phone",
                         {"serialNumber", "osVersion", "softwareVersion", "userId"});
            text(*phone, "/phone", "serialNumber", bench.serial_number);
            text(*phone, "/phone", "osVersion", bench.os_version);
            text(*phone, "/phone", "softwareVersion", bench.software_version);
            text(*phone, "/phone", "userId", bench.user_id);
        }
        if (const Json* urls = object(document, "", "urls")) {
            expect_known(*urls, "/urls", {"config", "inventory", "service"});
            text(*urls, "/urls", "config", bench.config_url);
            text(*urls, "/urls", "inventory", bench.inventory_url);
            text(*urls, "/urls", "service", bench.service_url);
        }
        if (const Json* servers = object(document, "", "servers")) {
            expect_known(*servers, "/servers", {"tftp", "korm"});
            bench.tftp_servers = server_list(*servers, "tftp");
            bench.korm_servers = server_list(*servers, "korm");
        }
        read_accessories(bench);
        return bench;
    }

private:
    [[noreturn]] void fail(const std::string& place, const std::string& expected) const {
        throw RefusedInput(wording(place, expected));
    }

    void expect_object(const Json& value, const std::string& place) const {
        if (!value.is_object()) {
            fail(place, "expected an object, found " + described(value));
        }
    }

    void expect_known(const Json& value, const std::string& place,
                      const std::set<std::string>& known) const {
        for (const auto& [name, member] : value.items()) {
            if (known.count(name) == 0) {
                std::string names;
                for (const std::string& one : known) {
                    names.append(names.empty() ? "" : ", ").append(one);
                }
                std::string unknown = place;
                unknown.append("/").append(json::pointer_token(name));
                fail(unknown, "not known here; expected one of: " + names);
            }
        }
    }

    const Json* object(const Json& parent, const std::string& place, const char* name) const {
        const auto member = parent.find(name);
        if (member == parent.end()) {
            return nullptr;
        }
        expect_object(*member, place + "/" + name);
        return &*member;
    }

    void text(const Json& parent, const std::string& place, const char* name,
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

    std::vector<std::string> server_list(const Json& servers, const char* name) const {
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
            const Json& server = (*member)[i];
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
        for (std::size_t i = 0; i < member->size(); ++i) {
            const std::string place = "/accessories/" + std::to_string(i);
            bench.accessories.push_back(read_accessory((*member)[i], place));
        }
    }

    AccessoryCache read_accessory(const Json& value, const std::string& place) const {
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

    std::int32_t read_type(const Json& value, const std::string& place) const {
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

    std::int32_t read_vendor_id(const Json& value, const std::string& place) const {
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

    static std::string described(const Json& value) {
        if (value.is_array()) {
            return "an array of " + std::to_string(value.size());
        }
        return value.is_object() ? "an object"
                                 : value.dump(-1, ' ', false, Json::error_handler_t::replace);
    }

    const Json& document;
    Wording wording;
};

/// The members of an accessory from "NAME=VALUE,...". `wording` words a refusal.
Json members_of(const std::string& text,
                const std::function<std::string(const std::string&)>& wording) {
    Json members = Json::object();
    std::stringstream pairs(text);
    std::string pair;
    while (std::getline(pairs, pair, ',')) {
        const std::size_t equals = pair.find('=');
        if (equals == std::string::npos || equals == 0) {
            throw RefusedInput(
                wording("expected NAME=VALUE,..., found \"" + pair +
                        "\"; a value cannot hold a comma here, only in a bench file"));
        }
        const std::string name = pair.substr(0, equals);
        const std::string value = pair.substr(equals + 1);
        if (name.find(' ') != std::string::npos) {
            throw RefusedInput(wording("expected a name without blanks, found \"" + name + "\""));
        }
        if (members.contains(name)) {
            throw RefusedInput(wording(name + ": expected once, found again"));
        }
        const std::optional<long> number = name == "vendorId" ? number_in(value) : std::nullopt;
        members[name] = number ? Json(*number) : Json(value);
    }
    return members;
}

}  // namespace

std::string read_bench_file(const std::string& path) {
    std::string text;
    errno = 0;
    try {
        std::ifstream file(path, std::ios::binary);
        text.resize(largest_file + 1);
        file.read(text.data(), static_cast<std::streamsize>(text.size()));
        text.resize(static_cast<std::size_t>(file.gcount()));
    } catch (const std::ios_base::failure&) {
        // errno has the reason
    }
    if (errno != 0) {
        throw RefusedInput(path + ": cannot be read: " + std::strerror(errno));
    }
    if (text.size() > largest_file) {
        throw RefusedInput(path + ": expected at most " + std::to_string(largest_file) + " bytes");
    }
    return text;
}

Bench read_bench(const std::string& text, const std::string& path) {
    check_json(text, path);
    const auto wording = [&](const std::string& place, const std::string& expected) {
        return place_in_file(text, path, place) + ": " + expected;
    };
    return Reader(Json::parse(text), wording).read();
}

std::string place_in_file(const std::string& text, const std::string& path,
                          const std::string& pointer) {
    const json::Place place = json::place_of_pointer(text, pointer).value_or(json::Place());
    return path + ":" + std::to_string(place.line) + ": " +
           (pointer.empty() ? "the document" : "member " + pointer);
}

std::string place_in_option(const std::string& text, const std::string& option) {
    return option + " \"" + text + "\"";
}

AccessoryCache read_accessory(const std::string& text, const std::string& option) {
    const auto wording = [&](const std::string& expected) {
        return place_in_option(text, option) + ": " + expected;
    };
    const auto wording_of_member = [&](const std::string& place, const std::string& expected) {
        constexpr std::size_t accessory = sizeof("/accessories/0") - 1;
        return wording(place.size() > accessory ? place.substr(accessory + 1) + ": " + expected
                                                : expected);
    };
    const Json given = {{"accessories", Json::array({members_of(text, wording)})}};
    // Bytes that are no UTF-8, which a bench file cannot have, are replaced.
    const Json document = Json::parse(given.dump(-1, ' ', false, Json::error_handler_t::replace));
    return Reader(document, wording_of_member).read().accessories.front();
}

}  // namespace headsetmgmt::program
