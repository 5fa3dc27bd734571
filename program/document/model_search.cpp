// SPDX-License-Identifier: Apache-2.0
// The search for the model entries that serve devices.

#include "program/document/model_search.h"

#include <cstddef>
#include <vector>

#include <cjson/cJSON.h>

#include "headsetmgmt/constants.h"

#include "config/document.h"
#include "program/document/node_type.h"
#include "program/utf8.h"

namespace headsetmgmt::program {

namespace {

/// The texts that were compared with the model, in a sentence: the first of them.
class ComparedNames {
public:
    void add(const std::string& name) {
        constexpr std::size_t enough = 8;
        ++count;
        if (count <= enough) {
            ++listed;
            names += (names.empty() ? "\"" : ", \"") + shortened(name) + "\"";
        }
    }

    bool is_empty() const { return count == 0; }

    std::string list() const {
        return count > listed ? names + " and " + std::to_string(count - listed) + " more" : names;
    }

private:
    std::size_t count = 0;
    std::size_t listed = 0;
    std::string names;
};

/// Entries whose "models" is a text, which are compared with nothing.
class EntriesWithAText {
public:
    void add(std::size_t index, const cJSON* entry) {
        const char* text = cJSON_GetStringValue(cJSON_GetObjectItem(entry, constants::key_models));
        if (text == nullptr) {
            return;
        }
        ++count;
        if (first.empty()) {
            const std::string models = '"' + shortened(text) + '"';
            first = "entry " + std::to_string(index) + " is not compared: its models is the text " +
                    models + ", write [" + models + "]";
        }
    }

    /// With a semicolon before it; empty when there is none.
    std::string in_words() const {
        if (count == 0) {
            return {};
        }
        return "; " + first + (count > 1 ? "; nor are " + std::to_string(count - 1) + " more" : "");
    }

private:
    std::size_t count = 0;
    std::string first;
};

/// An entry that serves a model.
ModelSearch found(const cJSON* entry, std::size_t index, const std::string& name) {
    ModelSearch search;
    search.entry = entry;
    search.index = index;
    search.name = name;
    search.firmware = document::find_model_firmware(entry);
    search.failure = search.firmware == nullptr ? "its entry has no modelFirmware" : "";
    return search;
}

/// That no entry serves a model.
ModelSearch not_found(const cJSON* entries, const ComparedNames& compared,
                      const EntriesWithAText& with_a_text) {
    ModelSearch search;
    if (entries == nullptr) {
        search.failure = "the template has no modelSpecificSettings";
        search.details = "; is templateConfiguration the first member of its object?";
    } else if (cJSON_IsArray(entries) == 0 && compared.is_empty()) {
        search.failure = "modelSpecificSettings is " + type_of(entries) +
                         ", and must be an array with an entry for each model";
    } else {
        search.failure = "no entry of modelSpecificSettings serves it";
        search.details = compared.is_empty()
                             ? "; not one has an array \"models\" with a name in it"
                             : "; compared with " + compared.list() + "; capitals count";
        search.details += with_a_text.in_words();
    }
    return search;
}

}  // namespace

std::map<std::string, ModelSearch> find_models(const cJSON* configuration_template,
                                               const std::set<std::string>& models) {
    std::map<std::string, ModelSearch> searches;
    std::set<std::string> open = models;
    ComparedNames compared;
    EntriesWithAText with_a_text;
    std::size_t index = 0;
    const cJSON* entries = document::find_model_entries(configuration_template);
    const cJSON* entry = nullptr;
    cJSON_ArrayForEach(entry, entries) {
        for (const std::string& name : document::read_model_names(entry)) {
            for (auto model = open.begin(); model != open.end();) {
                if (document::serves_model(name, *model)) {
                    searches[*model] = found(entry, index, name);
                    model = open.erase(model);
                } else {
                    ++model;
                }
            }
            if (!name.empty()) {  // one that is empty, or not a text, serves nobody
                compared.add(name);
            }
        }
        if (open.empty()) {
            break;
        }
        with_a_text.add(index, entry);
        ++index;
    }
    for (const std::string& model : open) {
        searches[model] = not_found(entries, compared, with_a_text);
    }
    return searches;
}

}  // namespace headsetmgmt::program
