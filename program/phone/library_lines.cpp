// SPDX-License-Identifier: Apache-2.0
// The log lines that the phone reads: what they say, no host function does.

#include "program/phone/library_lines.h"

#include <string_view>

namespace headsetmgmt::program {

namespace {

using Kind = LibraryLine::Kind;

/// Who writes a line.
enum class Writer { manager, config_object, report };

/// How a line goes on after its writer's name.
struct Wording {
    Writer writer;
    std::string_view text;
    bool is_beginning;  ///< the line has a text of its own behind it
    Kind kind;
};

constexpr Wording wordings[] = {
    {Writer::manager, "configure_accessory: added async task", false, Kind::fetch_queued},
    {Writer::manager, "on_fetch_config_success: no configuration in progress, dropping data", false,
     Kind::document_dropped},
    {Writer::manager,
     "on_fetch_config_success: unable to update config retrieved from server in library", false,
     Kind::document_failed},
    // Not "update_from_server: success": a document that is not JSON may read like that.
    {Writer::config_object, "parse_remote_default_config: Success", false, Kind::document_taken},
    {Writer::config_object, "parse_remote_default_config: Current accessory plugged in: ", true,
     Kind::accessory_model},
    {Writer::report, "send_task: Enter", false, Kind::report_begun},
    {Writer::report, "build_accessory_payload: accessory serial number is empty.", false,
     Kind::report_without_serial_number},
    {Writer::report, "send_task: building metrics failed", false, Kind::report_failed},
};

bool is_of(Writer writer, std::string_view component) {
    switch (writer) {
    case Writer::manager:
        return component == "Lib::ConfigManagerImpl";
    case Writer::config_object:
        return component == "HeadsetConfigImpl" || component == "CameraConfigImpl";
    case Writer::report:
        break;
    }
    return true;  // no other component has such lines
}

}  // namespace

LibraryLine read_library_line(const std::string& line) {
    constexpr std::string_view separator = ": ";
    const std::size_t end = line.find(separator);
    if (end == std::string::npos) {
        return {};
    }
    const std::string_view component = std::string_view(line).substr(0, end);
    const std::string_view message = std::string_view(line).substr(end + separator.size());
    for (const Wording& wording : wordings) {
        const bool matches = wording.is_beginning
                                 ? message.substr(0, wording.text.size()) == wording.text
                                 : message == wording.text;
        if (matches && is_of(wording.writer, component)) {
            return {wording.kind, wording.is_beginning
                                      ? std::string(message.substr(wording.text.size()))
                                      : std::string()};
        }
    }
    return {};
}

}  // namespace headsetmgmt::program
