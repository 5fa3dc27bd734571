// Reads bench files: JSON whose every member is known, with the line of each for the messages.

#include "program/phone/bench.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

#include "headsetmgmt/types.h"

namespace headsetmgmt::program {

namespace {

using nlohmann::json;

constexpr std::size_t deepest_named_place = 4;                // such as /accessories/0/type
constexpr std::size_t largest_file = std::size_t{16} << 20U;  // bytes

/// Where in a text the parser is.
struct Position {
    std::size_t line = 1;
    bool after_line_feed = false;  // counted with the next character: a number is read one too far
};

/// Hands characters to the parser and keeps the position.
class LineCounter {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    LineCounter(const char* place, Position* parser_position)
        : at(place), position(parser_position) {}

    reference operator*() const { return *at; }
    LineCounter& operator++() {
        if (position->after_line_feed) {
            ++position->line;
        }
        position->after_line_feed = *at == '\n';
        ++at;
        return *this;
    }
    bool operator==(const LineCounter& other) const { return at == other.at; }
    bool operator!=(const LineCounter& other) const { return at != other.at; }

private:
    const char* at;
    Position* position;
};

/// Notes on which line each member and each element of a document stands.
class LineNotes : public nlohmann::json_sax<json> {
public:
    explicit LineNotes(const Position& parser_position) : position(parser_position) {}

    bool null() override { return value(); }
    bool boolean(bool /*value*/) override { return value(); }
    bool number_integer(number_integer_t /*value*/) override { return value(); }
    bool number_unsigned(number_unsigned_t /*value*/) override { return value(); }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override {
        return value();
    }
    bool string(string_t& /*value*/) override { return value(); }
    bool binary(binary_t& /*value*/) override { return value(); }
    bool start_object(std::size_t /*elements*/) override { return open(false); }
    bool start_array(std::size_t /*elements*/) override { return open(true); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(string_t& name) override {
        here.back().name = name;
        // Here, not at the value: a number ends only where the next token begins.
        if (may_be_named()) {
            const std::string member = path();
            if (!lines.emplace(member, position.line).second && !first_repetition) {
                first_repetition = Repetition{member, position.line};
            }
        }
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override {
        return false;
    }

    /// A member that stands a second time in its object.
    struct Repetition {
        std::string path;
        std::size_t line;
    };
    const std::optional<Repetition>& repeated() const { return first_repetition; }

    /// Line of the value at a path such as "/accessories/0/type".
    std::size_t line_of(const std::string& path) const {
        const auto entry = lines.find(path);
        return entry != lines.end() ? entry->second : 1;
    }

private:
    struct Level {
        bool is_array;
        std::size_t index;
        std::string name;
    };

    std::string path() const {
        std::string result;
        for (const Level& level : here) {
            result += "/" + (level.is_array ? std::to_string(level.index) : level.name);
        }
        return result;
    }
    /// Whether any message may name a place as deep as this one.
    bool may_be_named() const { return here.size() <= deepest_named_place; }
    void note() {
        if (may_be_named()) {
            lines.emplace(path(), position.line);
        }
    }
    void done() {
        if (!here.empty() && here.back().is_array) {
            ++here.back().index;
        }
    }
    bool value() {
        note();
        done();
        return true;
    }
    bool open(bool is_array) {
        note();
        here.push_back({is_array, 0, {}});
        return true;
    }
    bool close() {
        here.pop_back();
        done();
        return true;
    }

    const Position& position;
    std::vector<Level> here;
    std::map<std::string, std::size_t> lines;
    std::optional<Repetition> first_repetition;
};

/// A bench file in the reading.
class Reader {
public:
    Reader(const std::string& text, std::string file) : path(std::move(file)), notes(position) {
        const LineCounter begin(text.data(), &position);
        const LineCounter end(text.data() + text.size(), &position);
        json::sax_parse(begin, end, &notes);
        try {
            document = json::parse(text);
        } catch (const json::parse_error& error) {
            const auto place =
                text.begin() + static_cast<std::ptrdiff_t>(std::min(error.byte, text.size()));
            fail_at(1 + static_cast<std::size_t>(std::count(text.begin(), place, '\n')),
                    std::string("expected JSON: ") + error.what());
        } catch (const json::exception& error) {
            // A number that no double holds: the exception tells no place, but the reading for the
            // lines stopped there.
            fail_at(position.line, std::string("expected JSON: ") + error.what());
        }
        if (notes.repeated()) {
            fail_at(notes.repeated()->line,
                    "member " + notes.repeated()->path + ": expected once, found again");
        }
    }

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
    [[noreturn]] void fail_at(std::size_t at_line, const std::string& message) const {
        throw BenchError(path + ":" + std::to_string(at_line) + ": " + message);
    }

    [[noreturn]] void fail(const std::string& place, const std::string& expected) const {
        fail_at(notes.line_of(place),
                (place.empty() ? "the document" : "member " + place) + ": " + expected);
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
                unknown.append("/").append(name);
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

    /// The library takes texts up to their first NUL.
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
                            " texts, found " + described(*member));
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
        fail(place + (value.contains("type") ? "/type" : ""),
             R"(expected a member "type" with "headset" or "camera")");
    }

    std::int32_t read_vendor_id(const json& value, const std::string& place) const {
        const auto member = value.find("vendorId");
        if (member == value.end()) {
            return 0;
        }
        constexpr std::int64_t largest = 0xFFFF;
        if (!member->is_number_integer() || member->get<std::int64_t>() < 0 ||
            member->get<std::int64_t>() > largest) {
            fail(place + "/vendorId",
                 "expected a USB vendor id, 0 to 65535, found " + described(*member));
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

    std::string path;
    Position position;
    LineNotes notes;
    json document;
};

}  // namespace

Bench read_bench(const std::string& text, const std::string& path) {
    return Reader(text, path).read();
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
    json members = json::object();
    std::stringstream pairs(text);
    std::string pair;
    while (std::getline(pairs, pair, ',')) {
        const std::size_t equals = pair.find('=');
        if (equals == std::string::npos) {
            std::string message = option;
            message.append(": expected NAME=VALUE,..., found \"").append(pair).append("\"");
            throw BenchError(message);
        }
        const std::string name = pair.substr(0, equals);
        const std::string value = pair.substr(equals + 1);
        members[name] = value;
        if (name == "vendorId") {
            char* end = nullptr;
            const long number = std::strtol(value.c_str(), &end, 0);
            if (!value.empty() && *end == '\0') {
                members[name] = number;
            }
        }
    }
    const json document = {{"accessories", json::array({members})}};
    return read_bench(document.dump(-1, ' ', false, json::error_handler_t::replace), option)
        .accessories.front();
}

}  // namespace headsetmgmt::program
