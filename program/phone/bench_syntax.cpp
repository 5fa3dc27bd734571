// SPDX-License-Identifier: Apache-2.0
// Whether a bench file is JSON, in which every member stands once.

#include "program/phone/bench_syntax.h"

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <variant>

#include "program/json/places.h"
#include "program/json/scan.h"
#include "program/refused_input.h"

namespace headsetmgmt::program {

namespace {

using Json = nlohmann::json;

/// Finds the first fault of a text that is not JSON.
class SyntaxCheck : public nlohmann::json_sax<Json> {
public:
    bool null() override { return true; }
    bool boolean(bool /*value*/) override { return true; }
    bool number_integer(number_integer_t /*value*/) override { return true; }
    bool number_unsigned(number_unsigned_t /*value*/) override { return true; }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return true; }
    bool string(string_t& /*value*/) override { return true; }
    bool binary(binary_t& /*value*/) override { return true; }
    bool start_object(std::size_t /*elements*/) override { return true; }
    bool key(string_t& /*name*/) override { return true; }
    bool end_object() override { return true; }
    bool start_array(std::size_t /*elements*/) override { return true; }
    bool end_array() override { return true; }
    bool parse_error(std::size_t position, const std::string& token,
                     const nlohmann::detail::exception& error) override {
        // The parser counts the bytes that it has read, the wrong one included. Of a number that
        // no double holds, all of it is wrong.
        const bool is_number = dynamic_cast<const Json::parse_error*>(&error) == nullptr;
        offset = position - std::min(position, is_number ? token.size() : 1);
        message = without_prefix(error.what());
        return false;
    }

    std::size_t offset = 0;
    std::string message;

private:
    /// The parser's words without its own name and the place.
    static std::string without_prefix(const std::string& text) {
        const std::size_t name_end = text.find("] ");
        const std::size_t place_end = text.find(": ", text.find(", column "));
        if (text.find(", column ") != std::string::npos && place_end != std::string::npos) {
            return text.substr(place_end + 2);
        }
        return name_end != std::string::npos ? text.substr(name_end + 2) : text;
    }
};

void check_syntax(const std::string& text, const std::string& path) {
    if (text.empty()) {
        throw RefusedInput(path + ":1: expected JSON, found an empty file");
    }
    const auto refuse = [&](std::size_t offset, const std::string& message) {
        const json::Place place = json::place_at(text, offset);
        throw RefusedInput(path + ":" + std::to_string(place.line) + ":" +
                           std::to_string(place.column) + ": expected JSON: " + message);
    };
    // The parser would take it as the end of the text.
    const std::size_t nul = text.find('\0');
    if (nul != std::string::npos) {
        refuse(nul, "found a NUL byte");
    }
    SyntaxCheck check;
    if (!Json::sax_parse(text, &check)) {
        refuse(check.offset, check.message);
    }
}

/// Refuses a member that stands a second time in its object. The text must be JSON.
void check_repetitions(const std::string& text, const std::string& path) {
    const auto scanned = json::scan(text, json::any_levels);
    const auto* index = std::get_if<json::Index>(&scanned);
    const auto repeated = index != nullptr ? index->first_repetition() : std::nullopt;
    if (!repeated) {
        return;
    }
    const auto line_of = [&](std::size_t number) {
        return std::to_string(json::place_at(text, (*index)[number].member_begin()).line);
    };
    throw RefusedInput(path + ":" + line_of(repeated->second) + ": member " +
                       index->pointer(repeated->second) + ": expected once, found on line " +
                       line_of(repeated->first) + " already");
}

}  // namespace

void check_json(const std::string& text, const std::string& path) {
    check_syntax(text, path);
    check_repetitions(text, path);
}

}  // namespace headsetmgmt::program
