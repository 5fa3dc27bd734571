// SPDX-License-Identifier: Apache-2.0
// The sentence for each event of a server.

#include "program/serve/serve_wording.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <string>

namespace headsetmgmt::program {

namespace {

/// The member as it is written in a sentence: a text without quotation marks,
/// "none" for nothing.
std::string said(const Event& object, const char* member) {
    const auto value = object.find(member);
    if (value == object.end() ||
        (value->is_string() && value->get_ref<const std::string&>().empty())) {
        return "none";
    }
    return escaped(value->is_string() ? value->get<std::string>() : value->dump());
}

/// "every IPv4 address" or "every address" for one that stands for them; empty for any other.
std::string all_of(const std::string& address) {
    in6_addr v6 = {};
    if (inet_pton(AF_INET6, address.c_str(), &v6) == 1 && IN6_IS_ADDR_UNSPECIFIED(&v6)) {
        return "every address";
    }
    return address == "0.0.0.0" ? "every IPv4 address" : "";
}

std::string listening(const Event& event) {
    const std::string address = said(event, "address");
    const std::string all = all_of(address);
    const std::string host = address.find(':') == std::string::npos ? address : "[" + address + "]";
    return "listening on " +
           (all.empty() ? "http://" + host + ":" + said(event, "port") + "/"
                        : "port " + said(event, "port") + " of " + all) +
           ", documents from " + said(event, "documents");
}

std::string request(const Event& event) {
    std::string text = said(event, "client") + " ";
    if (!event.value("method", "").empty()) {
        text += said(event, "method") + " ";
    }
    text += said(event, "path") + ": ";
    if (event.contains("error")) {
        return text + said(event, "error");
    }
    text += "status " + said(event, "status") + ", " + said(event, "bytes") + " bytes";
    return event.contains("message") ? text + ": " + said(event, "message") : text;
}

std::string report(const Event& event) {
    const Event& accessory = event["accessory"];
    const Event& value = event["report"]["value"];
    std::string text =
        "report to " + said(event, "path") + ": " + said(event, "key") + ", serial number " +
        said(accessory, "serialNumber") + ", model " + said(accessory, "model") + ", firmware " +
        said(accessory, "firmwareVersion") + ", user " + said(value["host"], "userId");
    const auto dock = value.find("dock");
    if (dock != value.end() && dock->is_object()) {
        text += ", dock " + said(*dock, "serialNumber") + ", model " + said(*dock, "model");
    }
    return text;
}

}  // namespace

std::string serve_event_in_words(const Event& event) {
    const std::string kind = event.value("event", "");
    if (kind == "listening") {
        return listening(event);
    }
    if (kind == "request") {
        return request(event);
    }
    if (kind == "connection") {
        return said(event, "client") + ": " + said(event, "error");
    }
    if (kind == "report") {
        return report(event);
    }
    if (kind == "stopped") {
        return "stopped: requests " + said(event, "requests") + ", reports " +
               said(event, "reports");
    }
    return said(event, kind == "note" ? "text" : "message");
}

}  // namespace headsetmgmt::program
