// SPDX-License-Identifier: Apache-2.0
// Inventory reports, as a phone posts them.

#include "program/serve/inventory_report.h"

#include <cstddef>
#include <utility>

namespace headsetmgmt::program {

namespace {

// The JSON library copies and prints by recursion, and looks for members one by
// one: both are kept far from where a hostile report would hurt. A true report
// has 3 levels and some 20 members.
constexpr std::size_t deepest_nesting = 32;
constexpr std::size_t most_values = 1000;

std::string found_text(const Event& value) {
    constexpr std::size_t longest = 64;
    if (!value.is_string()) {
        return std::string("a value of type ") + value.type_name();
    }
    const std::string text = value.dump(-1, ' ', true);
    return text.size() <= longest ? text : text.substr(0, longest) + "...";
}

const Event& member_of(const Event& object, const std::string& path, const char* name,
                       const char* expected) {
    const auto value = object.find(name);
    if (value == object.end()) {
        throw ReportRefusal(path, expected, "nothing");
    }
    return *value;
}

const Event& object_of(const Event& object, const std::string& path, const char* name) {
    const Event& value = member_of(object, path, name, "an object");
    if (!value.is_object()) {
        throw ReportRefusal(path, "an object", found_text(value));
    }
    return value;
}

[[noreturn]] void refuse_size(std::size_t most, const char* unit) {
    throw ReportRefusal("", "at most " + std::to_string(most) + " " + unit, "more");
}

/// Reads JSON without building a value, and refuses at the first place that is wrong or one too
/// many.
class Bounds : public nlohmann::json_sax<Event> {
public:
    explicit Bounds(std::size_t bytes) : size(bytes) {}

    bool null() override { return count(); }
    bool boolean(bool /*value*/) override { return count(); }
    bool number_integer(number_integer_t /*value*/) override { return count(); }
    bool number_unsigned(number_unsigned_t /*value*/) override { return count(); }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override {
        return count();
    }
    bool string(string_t& /*value*/) override { return count(); }
    bool binary(binary_t& /*value*/) override { return count(); }
    bool start_object(std::size_t /*size*/) override { return count() && enter(); }
    bool key(string_t& /*name*/) override { return true; }
    bool end_object() override { return leave(); }
    bool start_array(std::size_t /*size*/) override { return count() && enter(); }
    bool end_array() override { return leave(); }

    bool parse_error(std::size_t place, const std::string& /*token*/,
                     const Event::exception& error) override {
        if (dynamic_cast<const Event::out_of_range*>(&error) != nullptr) {
            throw ReportRefusal("", "a JSON object", "a number that is too large");
        }
        throw ReportRefusal("", "a JSON object",
                            "no JSON: error at byte " + std::to_string(place) + " of " +
                                std::to_string(size));
    }

private:
    bool count() {
        if (values++ > most_values) {  // the report itself is one more
            refuse_size(most_values, "members and array elements");
        }
        return true;
    }
    bool enter() {
        if (++depth > deepest_nesting) {
            refuse_size(deepest_nesting, "levels");
        }
        return true;
    }
    bool leave() {
        --depth;
        return true;
    }

    std::size_t size;
    std::size_t values = 0;
    std::size_t depth = 0;
};

Event parse(const std::string& body) {
    if (body.empty()) {
        throw ReportRefusal("", "a JSON object", "nothing: the body is empty");
    }
    // A report that is far too large is refused before the first value is built: values take a
    // hundred times the memory of the text, and deleting them takes more.
    Bounds bounds(body.size());
    Event::sax_parse(body, &bounds);
    return Event::parse(body);
}

}  // namespace

ReportRefusal::ReportRefusal(std::string member_path, std::string expected_there,
                             std::string found_there)
    : std::runtime_error((member_path.empty() ? "the report" : "member \"" + member_path + "\"") +
                         ": expected " + expected_there + ", found " + found_there),
      member(std::move(member_path)), expected(std::move(expected_there)),
      found(std::move(found_there)) {}

Event read_report(const std::string& body) {
    Event report = parse(body);
    if (!report.is_object()) {
        throw ReportRefusal("", "a JSON object", found_text(report));
    }
    const Event& time = member_of(report, "time", "time", "a number");
    if (!time.is_number()) {
        throw ReportRefusal("time", "a number", found_text(time));
    }
    constexpr const char* keys = R"("headsetInventory" or "cameraInventory")";
    const Event& key = member_of(report, "key", "key", keys);
    if (key != "headsetInventory" && key != "cameraInventory") {
        throw ReportRefusal("key", keys, found_text(key));
    }
    const Event& value = object_of(report, "value", "value");
    object_of(value, "value.host", "host");
    const Event& accessory = object_of(value, "value.headset", "headset");
    for (const char* name : accessory_facts) {
        const auto fact = accessory.find(name);
        if (fact != accessory.end() && !fact->is_string()) {
            throw ReportRefusal(std::string("value.headset.") + name, "a text", found_text(*fact));
        }
    }
    return report;
}

}  // namespace headsetmgmt::program
