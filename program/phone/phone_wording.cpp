// SPDX-License-Identifier: Apache-2.0
// The sentence for each event of a phone.

#include "program/phone/phone_wording.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>

#include "program/phone/document_events.h"

namespace headsetmgmt::program {

namespace {

/// The member as it is written in a sentence: a text without quotation marks.
std::string said(const Event& event, const char* member) {
    const auto value = event.find(member);
    if (value == event.end()) {
        return {};
    }
    return value->is_string() ? escaped(value->get<std::string>()) : value->dump();
}

std::string seconds(const Event& event) {
    const double milliseconds = event.value("milliseconds", 0.0);
    std::string text = std::to_string(milliseconds / 1000.0);
    text.resize(text.find('.') + 2);
    return text + " s";
}

/// The status, with its name when it is one of those that stand for a failure.
std::string status(const Event& event) {
    static const std::map<int, const char*> names = {
        {400, "Bad Request"},
        {401, "Unauthorized"},
        {403, "Forbidden"},
        {404, "Not Found"},
        {405, "Method Not Allowed"},
        {408, "Request Timeout"},
        {410, "Gone"},
        {413, "Content Too Large"},
        {429, "Too Many Requests"},
        {500, "Internal Server Error"},
        {501, "Not Implemented"},
        {502, "Bad Gateway"},
        {503, "Service Unavailable"},
        {504, "Gateway Timeout"},
    };
    const auto name = names.find(event.value("status", 0));
    const std::string number = "status " + said(event, "status");
    return name == names.end() ? number : number + " (" + name->second + ")";
}

/// How a request ended; `bytes` names what was counted.
std::string outcome(const Event& event, const std::string& bytes) {
    if (event.contains("error") && !event.contains("status")) {
        return said(event, "error");
    }
    const std::string text = status(event) + ", " + said(event, "bytes") + " " + bytes + ", " +
                             said(event, "milliseconds") + " ms";
    if (event.contains("error")) {
        return text + "; then: " + said(event, "error");
    }
    return event.contains("message") ? text + ": " + said(event, "message") : text;
}

/// The URL that was asked for, and the one that answered when it is another.
std::string url(const Event& event) {
    return event.contains("finalUrl")
               ? said(event, "url") + " redirected to " + said(event, "finalUrl")
               : said(event, "url");
}

/// "firmware 2-0-4", or that its version is not known.
std::string firmware(const Event& event, const char* member) {
    const std::string version = said(event, member);
    return version.empty() ? "firmware unknown" : "firmware " + version;
}

std::string attached(const Event& event) {
    const std::string model = said(event, "model");
    std::string text = "attached " + said(event, "id") + ": " +
                       (model.empty() ? "model unknown" : model) + ", " +
                       firmware(event, "softwareVersion");
    if (!event.value("dongleModel", "").empty()) {
        text += ", dongle " + said(event, "dongleModel") + ", " + firmware(event, "dongleVersion");
    }
    return text;
}

/// "1 setting", "2 settings".
std::string settings(const Event& event, const char* member) {
    return said(event, member) + (event.value(member, 0) == 1 ? " setting" : " settings");
}

/// The accessory: "desk (Varos K20)".
std::string accessory(const Event& object) {
    return accessory_in_words(said(object, "id"), said(object, "model"));
}

/// The accessory, or its dongle when that is named: "desk's dongle Varos Link".
std::string device_in_words(const Event& object) {
    return object.contains("dongleModel")
               ? said(object, "id") + "'s dongle " + said(object, "dongleModel")
               : accessory(object);
}

/// Whose firmware, what is decided, and from which version to which.
std::string firmware(const Event& event) {
    const std::string text = "firmware of " + device_in_words(event);
    if (event.value("requested", false)) {
        // Which of the two is the newer one, nobody knows.
        return text + ": change from " + said(event, "reported") + " to " + said(event, "wanted") +
               " requested";
    }
    return text + ": " + said(event, "decision");
}

std::string not_sent(const Event& unsent) {
    return "kept but not sent: " + settings(unsent, "settings") + " of " + accessory(unsent) +
           ": " + said(unsent, "reason");
}

/// "line 7, column 13".
std::string place(const Event& object) {
    return "line " + said(object, "line") + ", column " + said(object, "column");
}

/// Where a setting stands: its list, of a model's list the first accessory's model, and the place.
std::string origin(const Event& setting) {
    std::string text = said(setting, "list");
    const auto accessories = setting.find("accessories");
    if (text != "commonSettings" && accessories != setting.end() && !accessories->empty()) {
        text += " of " + said(accessories->front(), "model");
    }
    return text + ", " + place(setting);
}

std::string passed_over(const Event& setting) {
    const std::string name = setting.contains("name") ? said(setting, "name") : "a setting";
    return "passed over: " + name + ": " + said(setting, "reason") + " (" + origin(setting) + ")";
}

std::string kept_back(const Event& setting) {
    return "kept, sent at a factory reset only: " + said(setting, "name") + ": its access is \"" +
           said(setting, "access") + R"(", not "Admin" ()" + origin(setting) + ")";
}

std::string entry(const Event& served) {
    return device_in_words(served) + " is served by entry " + said(served, "entry") +
           " of modelSpecificSettings: \"" + said(served, "name") + "\" (" + place(served) + ")";
}

std::string failure_reason(const Event& reason) {
    return escaped(reason.get<std::string>());
}

/// The first values of an array, a line each, and how many more there are: `count` names the
/// member with the number of all. JSON has some more of them.
std::string lines_of(const Event& event, const char* array, const char* count,
                     std::string (*in_words)(const Event&), const std::string& kind) {
    constexpr std::size_t enough = 20;
    const auto values = event.find(array);
    if (values == event.end()) {
        return {};
    }
    std::string text;
    for (std::size_t i = 0; i < std::min(enough, values->size()); ++i) {
        text += "\n  " + in_words((*values)[i]);
    }
    const std::size_t all = event.value(count, std::size_t{0});
    return all > enough ? text + "\n  and " + std::to_string(all - enough) + " more " + kind : text;
}

std::string document(const Event& event) {
    if (event.value("dropped", false)) {
        return "document dropped: nobody was waiting for it";
    }
    std::string text =
        "document taken by " + said(event, "taken") + ", failed for " + said(event, "failed");
    text += lines_of(event, "reasons", "failed", failure_reason, "failed");
    text += lines_of(event, "entries", "served", entry, "served");
    text += lines_of(event, "notSent", "keptUnsent", not_sent, "kept but not sent");
    return text + lines_of(event, "passedOver", "settingsPassedOver", passed_over, "passed over") +
           lines_of(event, "keptBack", "settingsKeptBack", kept_back,
                    "kept, sent at a factory reset only");
}

std::string device(const Event& event) {
    std::string text = "device " + said(event, "id") + " has";
    for (const Event& setting : event["settings"]) {
        text += "\n  " + said(setting, "usageId") + " " + said(setting, "name") + " = " +
                said(setting, "value");
    }
    return text;
}

struct Counts {
    int all;
    int good;
    int failed;
};

/// "1 of 3 configured, 1 failed, 1 without a document": what there is none of is left out.
std::string share(const Counts& counts, const std::string& good, const std::string& left) {
    std::string text =
        std::to_string(counts.good) + " of " + std::to_string(counts.all) + " " + good;
    if (counts.failed != 0) {
        text += ", " + std::to_string(counts.failed) + " failed";
    }
    const int open = counts.all - counts.good - counts.failed;
    return open > 0 ? text + ", " + std::to_string(open) + " " + left : text;
}

std::string result(const Event& event) {
    const std::string gaps = event.contains("settingsPassedOver")
                                 ? " (" + settings(event, "settingsPassedOver") + " passed over)"
                                 : "";
    const std::string counts =
        share({event.value("attached", 0), event.value("configured", 0),
               event.value("notConfigured", 0)},
              "configured" + gaps, "without a document") +
        "; " +
        (event.value("reportsWanted", 0) == 0
             ? "no reports wanted"
             : share({event.value("reportsWanted", 0), event.value("reportsAccepted", 0),
                      event.value("reportsFailed", 0)},
                     "reports accepted", "without an answer"));
    if (event.value("ok", false)) {
        return "done: " + counts;
    }
    std::string text = counts;
    for (const Event& reason : event.value("reasons", Event::array())) {
        text += "\nfailed: " + escaped(reason.get<std::string>());
    }
    return text;
}

/// Many of the library's lines end in a line feed, which says nothing here.
std::string log_line(const Event& event) {
    std::string text = event.value("text", "");
    if (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return escaped(text);
}

}  // namespace

std::string phone_event_in_words(const Event& event) {
    const std::string kind = event.value("event", "");
    if (kind == "attached") {
        return attached(event);
    }
    if (kind == "fetch") {
        return "fetch, attempt " + said(event, "attempt") + ": " + url(event) + ": " +
               outcome(event, "bytes");
    }
    if (kind == "wait") {
        return "next attempt (" + said(event, "attempt") + ") in " + seconds(event);
    }
    if (kind == "setting") {
        return "set " + said(event, "id") + ": " + said(event, "name") + " (usage id " +
               said(event, "usageId") + ") = " + said(event, "value");
    }
    if (kind == "firmware") {
        return firmware(event);
    }
    if (kind == "upgrade") {
        return "upgrade " + said(event, "id") + " to " + said(event, "version") + " with " +
               said(event, "firmwareName");
    }
    if (kind == "document") {
        return document(event);
    }
    if (kind == "report") {
        return "report to " + url(event) + ": " +
               (event.value("accepted", false) ? "accepted: " : "not accepted: ") +
               outcome(event, "bytes sent");
    }
    if (kind == "device") {
        return device(event);
    }
    if (kind == "result") {
        return result(event);
    }
    if (kind == "log") {
        return log_line(event);
    }
    return said(event, kind == "note" ? "text" : "message");
}

}  // namespace headsetmgmt::program
