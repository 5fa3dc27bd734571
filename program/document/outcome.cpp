// SPDX-License-Identifier: Apache-2.0
// What a configuration document does to accessories, and where it says so.

#include "program/document/outcome.h"

#include <map>
#include <memory>
#include <new>
#include <set>
#include <unordered_map>
#include <utility>
#include <variant>

#include <cjson/cJSON.h>

#include "headsetmgmt/utilities.h"

#include "config/document.h"
#include "program/document/model_search.h"
#include "program/json/fault.h"
#include "program/json/index.h"
#include "program/json/preorder.h"
#include "program/json/scan.h"

namespace headsetmgmt::program {

namespace {

struct TreeDeleter {
    void operator()(cJSON* tree) const { cJSON_Delete(tree); }
};
using Tree = std::unique_ptr<cJSON, TreeDeleter>;

/// Numbers of the nodes whose places are wanted, in the order of the text; they outlive the tree.
struct NodeNumbers {
    std::optional<std::size_t> configuration_template;
    std::optional<std::size_t> common;
    std::vector<std::size_t> entries;
    std::vector<std::optional<std::size_t>> params;  // of each entry
};

/// Reads one document for all accessories.
class Reading {
public:
    Reading(const cJSON* tree, const std::vector<AccessoryCache>& accessories,
            std::size_t faulty_at_most)
        : root(tree), configuration_template(document::find_template(tree)),
          most_faulty(faulty_at_most) {
        if (configuration_template == nullptr) {
            outcome.fault = "no \"templateConfiguration\" in the document, nor in what its first "
                            "members hold";
        } else {
            common = document::find_common_settings(configuration_template);
            outcome.common = read_settings(common, most_faulty);
            search_models(accessories);
        }
        for (const AccessoryCache& facts : accessories) {
            add(facts);
        }
    }

    /// What was read, without places.
    DocumentOutcome take() { return std::move(outcome); }

    /// One walk through the tree.
    NodeNumbers numbers() const {
        std::unordered_map<const cJSON*, std::optional<std::size_t>> wanted = {
            {configuration_template, {}}, {common, {}}};
        for (std::size_t i = 0; i < entries.size(); ++i) {
            wanted[entries[i]] = {};
            wanted[params[i]] = {};
        }
        json::for_each_value(root, [&wanted](const cJSON& node, std::size_t number) {
            const auto found = wanted.find(&node);
            if (found != wanted.end()) {
                found->second = number;
            }
        });
        NodeNumbers result;
        result.configuration_template = wanted[configuration_template];
        result.common = wanted[common];
        for (std::size_t i = 0; i < entries.size(); ++i) {
            result.entries.push_back(wanted[entries[i]].value_or(0));
            result.params.push_back(wanted[params[i]]);
        }
        return result;
    }

private:
    void search_models(const std::vector<AccessoryCache>& accessories) {
        std::set<std::string> models;
        for (const AccessoryCache& facts : accessories) {
            models.insert(get_headset_model(facts.model, facts.serial_number));
            if (!facts.dongle_model.empty()) {
                models.insert(facts.dongle_model);
            }
        }
        searches = find_models(configuration_template, models);
    }

    void add(const AccessoryCache& facts) {
        AccessoryOutcome accessory;
        if (configuration_template == nullptr) {
            accessory.failure = outcome.fault;
        } else {
            accessory.model = get_headset_model(facts.model, facts.serial_number);
            read_for(facts, accessory);
        }
        outcome.accessories.push_back(std::move(accessory));
    }

    void read_for(const AccessoryCache& facts, AccessoryOutcome& accessory) {
        const ModelSearch& own = searches.at(accessory.model);
        accessory.settings_entry = serving(own);
        accessory.unsent_reason = unsent_reason(own, accessory.settings_entry);
        if (facts.dongle_model.empty()) {
            read_firmware(own, facts.software_version, "", accessory);
            return;
        }
        // The settings are the headset's, but where there is a dongle, that one gets the firmware.
        const ModelSearch& dongle = searches.at(facts.dongle_model);
        accessory.dongle_entry = serving(dongle);
        read_firmware(dongle, facts.dongle_version, facts.dongle_model, accessory);
    }

    static void read_firmware(const ModelSearch& found, const std::string& reported,
                              const std::string& dongle, AccessoryOutcome& accessory) {
        accessory.failure = found.failure.empty() ? fault_of_firmware(found.firmware)
                                                  : found.failure + found.details;
        if (accessory.failure.empty()) {
            accessory.firmware = decide_on_firmware(found.firmware, reported, !dongle.empty());
        } else if (!dongle.empty()) {
            accessory.failure.insert(0, "dongle " + dongle + ": ");
        }
    }

    std::string unsent_reason(const ModelSearch& found,
                              const std::optional<ServingEntry>& serving_entry) const {
        if (!found.failure.empty()) {
            return found.failure;
        }
        if (params[serving_entry->entry] == nullptr) {
            return "the first entry of its modelFirmware has no firmwareParams";
        }
        return outcome.entries[serving_entry->entry].params.settings.empty()
                   ? "its firmwareParams have no setting that can be read"
                   : "";
    }

    /// The entry's settings are read when it serves for the first time.
    std::optional<ServingEntry> serving(const ModelSearch& found) {
        if (found.entry == nullptr) {
            return std::nullopt;
        }
        const auto [place, is_new] = numbers_of_entries.try_emplace(found.entry, entries.size());
        if (is_new) {
            const cJSON* list = document::find_firmware_params(found.firmware);
            entries.push_back(found.entry);
            params.push_back(list);
            outcome.entries.push_back({found.index, {}, read_settings(list, most_faulty)});
        }
        return ServingEntry{place->second, found.name};
    }

    const cJSON* root;
    const cJSON* configuration_template;
    const cJSON* common = nullptr;
    std::size_t most_faulty;
    DocumentOutcome outcome;
    std::map<std::string, ModelSearch> searches;  // by model
    std::unordered_map<const cJSON*, std::size_t> numbers_of_entries;
    // Side by side with the outcome's entries.
    std::vector<const cJSON*> entries;
    std::vector<const cJSON*> params;
};

/// Gives the settings of a list their places. Both of its parts are in the order of the document.
void place_settings(SettingsList& list, std::size_t number, const json::Index& index,
                    const json::Places& places) {
    std::size_t element = 0;
    auto setting = list.settings.begin();
    auto faulty = list.faulty.begin();
    for (auto child = index.first_child(number); child; child = index.next_sibling(*child)) {
        if (setting != list.settings.end() && setting->index == element) {
            setting->place = places.at(index[*child].begin);
            ++setting;
        } else if (faulty != list.faulty.end() && faulty->index == element) {
            faulty->place = places.at(index[*child].begin);
            ++faulty;
        } else if (setting == list.settings.end() && faulty == list.faulty.end()) {
            return;
        }
        ++element;
    }
}

void add_places(DocumentOutcome& outcome, const NodeNumbers& numbers, const json::Index& index,
                std::string_view text) {
    const json::Places places(text);
    if (numbers.configuration_template) {
        outcome.template_place = places.at(index[*numbers.configuration_template].begin);
    }
    if (numbers.common) {
        place_settings(outcome.common, *numbers.common, index, places);
    }
    for (std::size_t i = 0; i < outcome.entries.size(); ++i) {
        ModelEntry& entry = outcome.entries[i];
        entry.place = places.at(index[numbers.entries[i]].begin);
        if (numbers.params[i]) {
            place_settings(entry.params, *numbers.params[i], index, places);
        }
    }
}

/// Why the parser refused the text.
DocumentOutcome outcome_of_refused_text(const std::string& text, std::size_t accessories) {
    const auto scanned = json::scan(text);
    const auto* fault = std::get_if<json::Fault>(&scanned);
    if (fault == nullptr) {
        throw std::bad_alloc();  // the text is right, so the parser lacked memory
    }
    DocumentOutcome outcome;
    outcome.fault = json::explanation(text, *fault);
    outcome.accessories.resize(accessories);
    for (AccessoryOutcome& accessory : outcome.accessories) {
        accessory.failure = outcome.fault;
    }
    return outcome;
}

}  // namespace

DocumentOutcome read_document(const std::string& text,
                              const std::vector<AccessoryCache>& accessories,
                              std::size_t most_faulty) {
    DocumentOutcome outcome;
    NodeNumbers numbers;
    {
        const Tree tree(cJSON_Parse(text.c_str()));
        if (tree == nullptr) {
            return outcome_of_refused_text(text, accessories.size());
        }
        Reading reading(tree.get(), accessories, most_faulty);
        numbers = reading.numbers();
        outcome = reading.take();
    }
    const auto scanned = json::scan(text);
    if (const auto* index = std::get_if<json::Index>(&scanned)) {
        add_places(outcome, numbers, *index, text);
    }
    return outcome;
}

std::vector<KeptSetting> kept_settings(const DocumentOutcome& outcome,
                                       const AccessoryOutcome& accessory) {
    const SettingsList* of_model = accessory.settings_entry
                                       ? &outcome.entries[accessory.settings_entry->entry].params
                                       : nullptr;
    return kept_settings(outcome.common, of_model);
}

}  // namespace headsetmgmt::program
