// SPDX-License-Identifier: Apache-2.0
// The events about a document that was handed over.

#include "program/phone/document_events.h"

#include <algorithm>
#include <map>
#include <optional>
#include <unordered_set>
#include <utility>

#include "headsetmgmt/constants.h"

#include "program/utf8.h"

namespace headsetmgmt::program {

namespace {

/// So many of each kind stand in an event, and how many there are.
constexpr std::size_t enough = settings_in_an_event;

/// Accessories, by their place in `HandedOver::turns`.
using Group = std::vector<std::size_t>;

void add_accessory(Event& event, const HandedOver& handed_over, std::size_t i) {
    event["model"] = handed_over.outcome.accessories[i].model;
    event["id"] = handed_over.turns[i].facts.device_id;
}

void add_place(Event& event, const json::Place& place) {
    event["line"] = place.line;
    event["column"] = place.column;
}

Event first_accessories(const HandedOver& handed_over, const Group& group) {
    Event accessories = Event::array();
    for (std::size_t i = 0; i < std::min(enough, group.size()); ++i) {
        Event accessory = Event::object();
        add_accessory(accessory, handed_over, group[i]);
        accessories.push_back(std::move(accessory));
    }
    return accessories;
}

/// Whether the library read the document for the accessory: it found the template and had memory.
bool is_read_for(const HandedOver& handed_over, std::size_t i) {
    return handed_over.outcome.fault.empty() && !handed_over.turns[i].lacks_memory;
}

/// Those for which the document was read.
Group readers(const HandedOver& handed_over) {
    Group group;
    for (std::size_t i = 0; i < handed_over.turns.size(); ++i) {
        if (is_read_for(handed_over, i)) {
            group.push_back(i);
        }
    }
    return group;
}

/// The same, by the entry that serves them.
std::map<std::size_t, Group> readers_by_entry(const HandedOver& handed_over) {
    std::map<std::size_t, Group> groups;
    for (const std::size_t i : readers(handed_over)) {
        if (const auto& entry = handed_over.outcome.accessories[i].settings_entry) {
            groups[entry->entry].push_back(i);
        }
    }
    return groups;
}

void add_failure(Event& event, const HandedOver& handed_over, std::size_t i) {
    const AccessoryOutcome& outcome = handed_over.outcome.accessories[i];
    const Turn& turn = handed_over.turns[i];
    Event failure = Event::object();
    std::string sentence;
    if (handed_over.outcome.fault.empty()) {
        add_accessory(failure, handed_over, i);
        std::string model = outcome.model;
        if (turn.facts.model != outcome.model) {
            failure["reportedModel"] = turn.facts.model;
            model += ", reported as " + turn.facts.model +
                     ": the eighth character of its serial number is a 4";
        }
        sentence = accessory_in_words(turn.facts.device_id, model) + ": ";
    }
    std::string reason = outcome.failure.empty() ? "the library does not say why" : outcome.failure;
    if (turn.lacks_memory) {
        reason = "memory ran out while the library read the document";
    }
    failure["reason"] = reason;
    event["reasons"].push_back(sentence + reason);
    event["failures"].push_back(std::move(failure));
}

void add_entry(Event& event, const HandedOver& handed_over, std::size_t i,
               const ServingEntry& serving, const std::string& dongle_model) {
    const ModelEntry& entry = handed_over.outcome.entries[serving.entry];
    Event served = Event::object();
    add_accessory(served, handed_over, i);
    if (!dongle_model.empty()) {
        served["dongleModel"] = dongle_model;
    }
    served["entry"] = entry.index;
    served["name"] = shortened(serving.name);
    add_place(served, entry.place);
    event["entries"].push_back(std::move(served));
}

/// Which entry serves whom.
void add_entries(Event& event, const HandedOver& handed_over) {
    std::size_t count = 0;
    const auto add = [&](std::size_t i, const std::optional<ServingEntry>& serving,
                         const std::string& dongle_model) {
        if (serving && ++count <= enough) {
            add_entry(event, handed_over, i, *serving, dongle_model);
        }
    };
    for (const std::size_t i : readers(handed_over)) {
        const AccessoryOutcome& outcome = handed_over.outcome.accessories[i];
        add(i, outcome.settings_entry, "");
        add(i, outcome.dongle_entry, handed_over.turns[i].facts.dongle_model);
    }
    if (count != 0) {
        event["served"] = count;
    }
}

void add_unsent(Event& event, const HandedOver& handed_over) {
    // Without a setting of its model's list, an accessory keeps the common ones.
    const std::size_t kept = kept_settings(handed_over.outcome.common, nullptr).size();
    if (kept == 0) {
        return;
    }
    std::size_t accessories = 0;
    for (const std::size_t i : readers(handed_over)) {
        const AccessoryOutcome& outcome = handed_over.outcome.accessories[i];
        if (outcome.unsent_reason.empty() || ++accessories > enough) {
            continue;
        }
        Event unsent = Event::object();
        add_accessory(unsent, handed_over, i);
        unsent["settings"] = kept;
        unsent["reason"] = outcome.unsent_reason;
        event["notSent"].push_back(std::move(unsent));
    }
    if (accessories != 0) {
        event["keptUnsent"] = accessories;
    }
}

/// What is wrong with the first faulty settings of a list, and who lacks them; `room` is how many
/// more of its kind are listed.
void add_passed_over(Event& event, const HandedOver& handed_over, const char* list_name,
                     const SettingsList& list, const Group& group, std::size_t& room) {
    Event& settings = event["passedOver"];
    for (const FaultySetting& faulty : list.faulty) {
        if (room == 0) {
            return;
        }
        --room;
        Event setting = {{"list", list_name}};
        if (!faulty.name.empty()) {
            setting["name"] = shortened(faulty.name);
        }
        setting["reason"] = in_words(faulty.fault);
        add_place(setting, faulty.place);
        setting["accessories"] = first_accessories(handed_over, group);
        setting["lackedBy"] = group.size();
        settings.push_back(std::move(setting));
    }
}

void add_all_passed_over(Event& event, const HandedOver& handed_over) {
    const std::size_t count = count_passed_over(handed_over);
    if (count == 0) {
        return;
    }
    event["settingsPassedOver"] = count;
    std::size_t room = enough;
    add_passed_over(event, handed_over, constants::key_common_settings, handed_over.outcome.common,
                    readers(handed_over), room);
    room = enough;
    for (const auto& [entry, group] : readers_by_entry(handed_over)) {
        add_passed_over(event, handed_over, constants::key_firmware_params,
                        handed_over.outcome.entries[entry].params, group, room);
    }
}

/// The settings that accessories keep although no device is sent them, for their access.
void add_kept_back(Event& event, const HandedOver& handed_over) {
    struct KeptBack {
        KeptSetting kept;
        Group group;
    };
    std::vector<KeptBack> first;
    std::map<const ReadSetting*, std::size_t> places;  // in `first`
    std::unordered_set<const ReadSetting*> all;
    for (const auto& [entry, group] : readers_by_entry(handed_over)) {
        const AccessoryOutcome& outcome = handed_over.outcome.accessories[group.front()];
        if (!outcome.unsent_reason.empty()) {
            continue;  // none of their settings is sent
        }
        for (const KeptSetting& kept : kept_settings(handed_over.outcome, outcome)) {
            if (is_sent(*kept.setting)) {
                continue;
            }
            if (all.insert(kept.setting).second && first.size() < enough) {
                places[kept.setting] = first.size();
                first.push_back({kept, {}});
            }
            const auto place = places.find(kept.setting);
            if (place != places.end()) {
                Group& keepers = first[place->second].group;
                keepers.insert(keepers.end(), group.begin(), group.end());
            }
        }
    }
    if (all.empty()) {
        return;
    }
    event["settingsKeptBack"] = all.size();
    for (const KeptBack& one : first) {
        Event setting = {{"list", one.kept.is_common ? constants::key_common_settings
                                                     : constants::key_firmware_params},
                         {"name", shortened(one.kept.setting->param.name)},
                         {"access", shortened(one.kept.setting->access)}};
        add_place(setting, one.kept.setting->place);
        setting["accessories"] = first_accessories(handed_over, one.group);
        setting["keptBy"] = one.group.size();
        event["keptBack"].push_back(std::move(setting));
    }
}

}  // namespace

std::string accessory_in_words(const std::string& id, const std::string& model) {
    return id + " (" + (model.empty() ? "model unknown" : model) + ")";
}

std::size_t count_taken(const HandedOver& handed_over) {
    return static_cast<std::size_t>(std::count_if(handed_over.turns.begin(),
                                                  handed_over.turns.end(),
                                                  [](const Turn& turn) { return turn.is_taken; }));
}

std::size_t count_passed_over(const HandedOver& handed_over) {
    const DocumentOutcome& outcome = handed_over.outcome;
    std::size_t count = readers(handed_over).empty() ? 0 : outcome.common.faulty_count;
    for (const auto& [entry, group] : readers_by_entry(handed_over)) {
        count += outcome.entries[entry].params.faulty_count;
    }
    return count;
}

std::vector<Event> firmware_events(const HandedOver& handed_over) {
    std::vector<Event> events;
    for (const std::size_t i : readers(handed_over)) {
        const FirmwareDecision& firmware = handed_over.outcome.accessories[i].firmware;
        if (firmware.kind == FirmwareDecision::Kind::none) {
            continue;
        }
        Event event = {{"event", "firmware"}};
        add_accessory(event, handed_over, i);
        if (firmware.is_dongles) {
            event["dongleModel"] = handed_over.turns[i].facts.dongle_model;
        }
        event["decision"] = in_words(firmware);
        if (firmware.has_compared()) {
            event["reported"] = firmware.reported;
            event["wanted"] = shortened(firmware.wanted);
        }
        if (firmware.kind == FirmwareDecision::Kind::upgrade) {
            event["requested"] = true;
        }
        events.push_back(std::move(event));
    }
    return events;
}

Event document_event(const HandedOver& handed_over) {
    const std::size_t taken = count_taken(handed_over);
    Event event = {
        {"event", "document"}, {"taken", taken}, {"failed", handed_over.turns.size() - taken}};
    if (handed_over.was_dropped) {
        event["dropped"] = true;
    }
    std::size_t failures = 0;
    for (std::size_t i = 0; i < handed_over.turns.size(); ++i) {
        if (!handed_over.turns[i].is_taken && ++failures <= enough) {
            add_failure(event, handed_over, i);
        }
    }
    add_entries(event, handed_over);
    add_unsent(event, handed_over);
    add_all_passed_over(event, handed_over);
    add_kept_back(event, handed_over);
    return event;
}

}  // namespace headsetmgmt::program
