// What the library made of a document, read from the log lines of the answer's own call.

#include "program/phone/answer_judgement.h"

#include <algorithm>
#include <cstdlib>

#include "program/phone/syntax_error.h"

namespace headsetmgmt::program {

namespace {

bool begins_with(const std::string& text, std::string_view beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

/// The line without the component's name; empty when the line is not of a configuration object.
std::string of_config_object(const std::string& line) {
    for (const std::string_view component : {"HeadsetConfigImpl: ", "CameraConfigImpl: "}) {
        if (begins_with(line, component)) {
            return line.substr(component.size());
        }
    }
    return {};
}

/// What follows `beginning`; none when the text begins otherwise.
std::optional<std::string> after(const std::string& text, std::string_view beginning) {
    if (!begins_with(text, beginning)) {
        return std::nullopt;
    }
    return text.substr(beginning.size());
}

/// What an operation's line says, without the operation's name.
std::string message_of(const std::string& line) {
    const std::size_t colon = line.find(": ");
    return colon != std::string::npos ? line.substr(colon + 2) : line;
}

/// How a fault's line begins, and what is wrong with the setting that it names.
struct Fault {
    const char* beginning;
    const char* reason;
};

constexpr Fault faults[] = {
    {": Parameter extracted has missing KEY name. Cannot identify which parameter.",
     "its name is missing, empty or no text"},
    {": Null Usage ID for param ", "its usageId is missing or null"},
    {": Null Value for param ", "its value is missing or null"},
    {": Invalid Access field for param ", "its access is missing, empty or no text"},
    {": Invalid Usage ID for param ", "its usageId is neither a number nor a text of digits"},
    {": Invalid Value for param ", "its value is neither a number nor a text"},
};

constexpr char lack_of_memory[] = "memory ran out while the library read the document";

constexpr char fault_line[] = "save_config_to_map[KORM-ERR]";

}  // namespace

void AnswerJudgement::on_line(const std::string& line) {
    if (on_manager_line(line)) {
        return;
    }
    const std::string message = of_config_object(line);
    if (message == "update_from_server Enter:") {
        turn = {};
        turn.is_parsed = true;
    } else if (begins_with(message, "update_from_server: ")) {
        on_document_line(message);
    } else if (!on_settings_line(message) && !on_search_line(message) &&
               !on_firmware_line(message)) {
        const auto model = after(message, "parse_remote_default_config: Current accessory "
                                          "plugged in: ");
        if (model) {
            turn.model = *model;
        } else if (begins_with(message, "parse_remote_default_config[")) {
            turn.reason = message_of(message);
        }
    }
}

/// Lines of the manager, which hands the document to one accessory after the other.
bool AnswerJudgement::on_manager_line(const std::string& line) {
    const auto said = after(line, "Lib::ConfigManagerImpl: on_fetch_config_success: ");
    if (!said) {
        return false;
    }
    if (*said == "no configuration in progress, dropping data") {
        dropped = true;
    } else if (*said == "unable to update config retrieved from server in library") {
        failed.push_back({turn.model, turn.reason.empty() ? "not said" : turn.reason});
        turn = {};
    } else {
        turn.reason = *said;  // what the library threw
    }
    return true;
}

/// How the parse went, and at its end how all of it did.
void AnswerJudgement::on_document_line(const std::string& message) {
    if (!turn.is_parsed && turn.lacks_memory) {
        turn.reason = lack_of_memory;
    } else if (!turn.is_parsed) {
        if (parse_reason.empty()) {
            // An empty document has no rest, but the text of another may read like its line.
            parse_reason = syntax_error(document, message_of(message));
        }
        turn.reason = parse_reason;
    } else if (message == "update_from_server: success") {
        ++taken_count;
        turn = {};
    } else if (turn.reason.empty()) {
        turn.reason = message_of(message);
    }
}

bool AnswerJudgement::on_settings_line(const std::string& message) {
    if (begins_with(message, fault_line)) {
        on_fault(message.substr(sizeof(fault_line) - 1));
    } else if (begins_with(message, "save_config_to_map: Saved ")) {
        turn.kept_count = std::strtol(message.c_str() + message.rfind(' '), nullptr, 10);
    } else if (begins_with(message, "save_model_specific_settings_params : ")) {
        keep_unsent(failed_search());
    } else if (message == "apply_settings: No settings available for firmware") {
        keep_unsent("the first entry of its modelFirmware has no firmwareParams");
    } else if (message == "apply_settings: Failed to apply current firmware version settings.") {
        keep_unsent("its firmwareParams have no setting that can be read");
    } else {
        return false;
    }
    return true;
}

void AnswerJudgement::on_fault(const std::string& message) {
    for (const Fault& fault : faults) {
        const auto name = after(message, fault.beginning);
        if (!name) {
            continue;
        }
        pass_over(*name, fault.reason);
        return;
    }
}

void AnswerJudgement::pass_over(const std::string& name, const char* reason) {
    constexpr std::size_t enough = 100;
    // The entry is searched for when the common settings are done.
    const std::string list = turn.search ? "firmwareParams" : "commonSettings";
    // Every accessory reads the same common settings: the second that it passes over is the second
    // that another did.
    FaultyList& faulty = faulty_lists[{list, turn.search ? turn.model : ""}];
    std::size_t& number = turn.search ? turn.firmware_faults : turn.common_faults;
    if (number == faulty.count) {
        ++faulty.count;
        ++unread_count;
        if (unread.size() < enough) {
            faulty.places.push_back(unread.size());
            unread.push_back({list, name, reason, 0, {}});
        }
    }
    if (number < faulty.places.size()) {
        PassedOverSetting& setting = unread[faulty.places[number]];
        ++setting.accessories;
        if (setting.models.size() < enough) {
            setting.models.push_back(turn.model);
        }
    }
    ++number;
}

void AnswerJudgement::keep_unsent(const std::string& reason) {
    if (turn.kept_count > 0) {
        kept.push_back({turn.model, turn.kept_count, reason});
    }
}

/// The search for the entry that serves the headset or camera, and then for its dongle's.
bool AnswerJudgement::on_search_line(const std::string& message) {
    if (const auto model = after(message, "extract_model_firmware_settings: MODEL NAME ")) {
        turn.search = Search();
        turn.search->model = *model;
        return true;
    }
    if (!turn.search) {
        return false;
    }
    Search& search = *turn.search;
    if (begins_with(message, "extract_model_firmware_settings[")) {
        search.has_entries = false;
        return true;
    }
    auto name = after(message, "extract_model_firmware_settings config_model_name: ");
    if (name) {
        constexpr std::size_t enough = 8;
        const std::string end = ", device_model_name: " + search.model;
        name->resize(name->size() - std::min(name->size(), end.size()));
        // No line tells that a name serves, but its rule does: a part of the model.
        search.is_served = !name->empty() && search.model.find(*name) != std::string::npos;
        // One that is empty, or no text, serves nobody.
        if (!name->empty() && ++search.compared_count <= enough) {
            search.compared.push_back(*name);
        }
        return true;
    }
    return false;
}

/// Why the latest search found no firmware block.
std::string AnswerJudgement::failed_search() const {
    if (!turn.search) {
        return "Model_firmware_settings do not exist";
    }
    if (!turn.search->has_entries) {
        return "the template has no modelSpecificSettings";
    }
    return turn.search->is_served ? "its entry has no modelFirmware"
                                  : "no entry of modelSpecificSettings serves it";
}

/// What to look at, to follow that reason.
std::string AnswerJudgement::failed_search_details() const {
    if (!turn.search || turn.search->is_served) {
        return {};
    }
    if (!turn.search->has_entries) {
        return "; is templateConfiguration the first member of its object?";
    }
    if (turn.search->compared_count == 0) {
        return "; not one has an array \"models\" with a name in it";
    }
    std::string names;
    for (const std::string& name : turn.search->compared) {
        names += (names.empty() ? "\"" : ", \"") + name + "\"";
    }
    if (turn.search->compared_count > turn.search->compared.size()) {
        names += " and " +
                 std::to_string(turn.search->compared_count - turn.search->compared.size()) +
                 " more";
    }
    return "; compared with " + names + "; capitals count";
}

/// What the decision rests on, and why none may be possible.
bool AnswerJudgement::on_firmware_line(const std::string& message) {
    const std::string whose = turn.dongle_model.empty() ? "" : "dongle " + turn.dongle_model + ": ";
    if (const auto dongle = after(message, "parse_remote_default_config: found dongle [")) {
        turn.dongle_model = dongle->substr(0, dongle->rfind("], will upgrade dongle only"));
    } else if (const auto entries = after(message, "upgrade_firmware: received ")) {
        turn.firmware_entries = entries->substr(0, entries->find(' '));
    } else if (const auto wanted = after(message, "check_firmware_upgrade: FW ver candidate from "
                                                  "Configuration: ")) {
        turn.wanted_version = *wanted;
    } else if (const auto reported =
                   after(message, "check_firmware_upgrade: System info reported FW: ")) {
        turn.reported_version = *reported;
    } else if (begins_with(message, "check_firmware_upgrade: naming format not supported, ")) {
        turn.is_spelling_refused = turn.wanted_version && turn.reported_version;
    } else if (begins_with(message, "upgrade_firmware[PARSING-ERR]")) {
        turn.reason = whose + failed_search() + failed_search_details();
    } else if (begins_with(message, "upgrade_firmware[")) {
        turn.reason = turn.firmware_entries == "0"
                          ? whose + "its modelFirmware has no entries"
                          : whose + "the first entry of its modelFirmware has no firmwareName, or "
                                    "one that is no text";
    } else {
        return on_decision_line(message);
    }
    return true;
}

bool AnswerJudgement::on_decision_line(const std::string& message) {
    if (const auto version = after(message, "upgrade_firmware: Requesting upgrade to ")) {
        decide("upgrade requested to " + *version);
    } else if (begins_with(message, "upgrade_firmware: No upgrade required")) {
        // The library says so of a spelling that it refuses, too.
        decide(turn.is_spelling_refused
                   ? "\"" + *turn.wanted_version +
                         "\" is no version (letters, digits and hyphens), so " +
                         *turn.reported_version + " stays"
                   : "no upgrade required");
    } else if (message == "upgrade_firmwarestay on current version, skip upgrade") {
        decide("stays on the current version, as the document says");
    } else if (message == "upgrade_firmware: Legacy Flow - delegate upgrade to config driver") {
        decide("left to the phone");
    } else if (message == "upgrade_firmware: No support for firmware downgrade. Exiting.") {
        decide("downgrade refused");
    } else if (message == "check_firmware_upgrade: firmware version is empty") {
        decide(unknown_version());
    } else {
        return false;
    }
    return true;
}

void AnswerJudgement::decide(const std::string& decision) {
    decisions.push_back(
        {turn.model, turn.dongle_model, decision, turn.reported_version, turn.wanted_version});
}

std::string AnswerJudgement::unknown_version() const {
    const bool no_wanted = turn.wanted_version && turn.wanted_version->empty();
    const bool no_reported = turn.reported_version && turn.reported_version->empty();
    const std::string accessory = turn.dongle_model.empty() ? "the accessory" : "the dongle";
    if (no_wanted && no_reported) {
        return "none: the document tells no version, or one that is no text, and " + accessory +
               " tells none";
    }
    if (no_wanted) {
        return "none: the document tells no version, or one that is no text";
    }
    if (no_reported) {
        return "none: " + accessory + " tells no version";
    }
    return "none: the document or the accessory tells no version";
}

}  // namespace headsetmgmt::program
