// SPDX-License-Identifier: Apache-2.0
// The search for the model entries that serve devices.

#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>

struct cJSON;

namespace headsetmgmt::program {

/// The entry that serves a device, or why none does. The node is borrowed from the document.
struct ModelSearch {
    const cJSON* entry = nullptr;  ///< null when none serves
    std::size_t index = 0;         ///< of the entry, from 0
    std::string name;              ///< of its "models", which serves
    cJSON* firmware = nullptr;     ///< its "modelFirmware"; null when it has none

    std::string failure;  ///< why there is no firmware; empty when there is
    std::string details;  ///< what to look at, to follow the failure; may be empty
};

/// Searches a template for each of `models` as the library does: entries in their order, and the
/// names of an entry in theirs. One walk through the entries: each name is read once, and compared
/// with each model that no entry serves so far.
std::map<std::string, ModelSearch> find_models(const cJSON* configuration_template,
                                               const std::set<std::string>& models);

}  // namespace headsetmgmt::program
