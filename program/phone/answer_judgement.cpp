// What the library made of a document, read from the log lines of the answer's own call.

#include "program/phone/answer_judgement.h"

#include <cstddef>

namespace headsetmgmt::program {

namespace {

/// The line without the component's name; empty when the line is not of a configuration object.
std::string of_config_object(const std::string& line) {
    for (const std::string component : {"HeadsetConfigImpl: ", "CameraConfigImpl: "}) {
        if (line.compare(0, component.size(), component) == 0) {
            return line.substr(component.size());
        }
    }
    return {};
}

bool begins_with(const std::string& text, const std::string& beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

/// What an operation's line says, without the operation's name.
std::string message_of(const std::string& line) {
    const std::size_t colon = line.find(": ");
    return colon != std::string::npos ? line.substr(colon + 2) : line;
}

/// Enough of a text to find it by.
std::string beginning_of(const std::string& text) {
    constexpr std::size_t enough = 60;
    return text.size() > enough ? text.substr(0, enough) + "..." : text;
}

}  // namespace

void AnswerJudgement::on_line(const std::string& line) {
    constexpr char manager[] = "Lib::ConfigManagerImpl: on_fetch_config_success: ";
    if (line == manager + std::string("no configuration in progress, dropping data")) {
        dropped = true;
        return;
    }
    if (line == manager + std::string("unable to update config retrieved from server in library")) {
        failure_reasons.push_back(latest_reason.empty() ? "not said" : latest_reason);
        latest_reason.clear();
        is_parsed = false;
        return;
    }
    if (begins_with(line, manager)) {
        latest_reason = line.substr(sizeof(manager) - 1);  // what the library threw
        return;
    }
    const std::string message = of_config_object(line);
    if (message == "update_from_server Enter:") {
        is_parsed = true;
    } else if (is_parsed && message == "update_from_server: success") {
        ++taken_count;
        is_parsed = false;
        latest_reason.clear();
    } else if (begins_with(message, "upgrade_firmware: Requesting upgrade to ")) {
        decisions.push_back("upgrade requested to " +
                            message.substr(sizeof("upgrade_firmware: Requesting upgrade to ") - 1));
    } else if (begins_with(message, "upgrade_firmware: No upgrade required")) {
        decisions.emplace_back("no upgrade required");
    } else if (message == "upgrade_firmwarestay on current version, skip upgrade") {
        decisions.emplace_back("stays on the current version, as the document says");
    } else if (message == "upgrade_firmware: Legacy Flow - delegate upgrade to config driver") {
        decisions.emplace_back("left to the phone");
    } else if (message == "upgrade_firmware: No support for firmware downgrade. Exiting.") {
        decisions.emplace_back("downgrade refused");
    } else if (message == "check_firmware_upgrade: firmware version is empty") {
        decisions.emplace_back("none: the document or the accessory tells no version");
    } else if (begins_with(message, "upgrade_firmware[") ||
               begins_with(message, "parse_remote_default_config[")) {
        latest_reason = message_of(message);
    } else if (begins_with(message, "update_from_server: ") && latest_reason.empty()) {
        const bool is_unparsed = !is_parsed && message != "update_from_server: Nothing to parse";
        latest_reason =
            is_unparsed ? "no JSON at: " + beginning_of(message_of(message)) : message_of(message);
    }
}

}  // namespace headsetmgmt::program
