// Inventory reports, as a phone posts them.

#include "program/serve/inventory_report.h"

#include <cstddef>
#include <utility>

namespace headsetmgmt::program {

namespace {

// The JSON library copies and prints by recursion, and looks for members one by
// one: both are kept far from where a hostile report would hurt. A true report
// has 3 levels and some 20 members.
constexpr int deepest_nesting = 32;
constexpr std::size_t most_members = 1000;

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

Event parse(const std::string& body) {
    if (body.empty()) {
        throw ReportRefusal("", "a JSON object", "nothing: the body is empty");
    }
    std::size_t members = 0;
    const auto keep_within_bounds = [&members](int depth, Event::parse_event_t event,
                                               Event& /*value*/) {
        if (depth > deepest_nesting) {
            throw ReportRefusal("", "at most " + std::to_string(deepest_nesting) + " levels",
                                "more");
        }
        if (event == Event::parse_event_t::key && ++members > most_members) {
            throw ReportRefusal("", "at most " + std::to_string(most_members) + " members", "more");
        }
        return true;
    };
    try {
        return Event::parse(body, keep_within_bounds);
    } catch (const Event::parse_error& error) {
        throw ReportRefusal("", "a JSON object",
                            "no JSON: error at byte " + std::to_string(error.byte) + " of " +
                                std::to_string(body.size()));
    } catch (const Event::out_of_range& /*error*/) {
        throw ReportRefusal("", "a JSON object", "a number that is too large");
    }
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
    object_of(value, "value.headset", "headset");
    return report;
}

}  // namespace headsetmgmt::program
