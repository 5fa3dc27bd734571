// SPDX-License-Identifier: Apache-2.0
// What a configuration document does to accessories, and where it says so.
//
// Pure: text and facts in, values out. It stands on the code with which the library reads the nodes
// of a document.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "headsetmgmt/phone/host_types.h"

#include "program/document/firmware.h"
#include "program/document/settings.h"
#include "program/json/places.h"

namespace headsetmgmt::program {

/// An element of "modelSpecificSettings" that serves one of the accessories.
struct ModelEntry {
    std::size_t index;  ///< from 0
    json::Place place;
    SettingsList params;  ///< "firmwareParams"; empty when there are none
};

/// The entry that serves an accessory, or its dongle.
struct ServingEntry {
    std::size_t entry;  ///< its place in `DocumentOutcome::entries`
    std::string name;   ///< of its "models", which occurs in the model
};

/// What the document does to one accessory.
struct AccessoryOutcome {
    std::string model;    ///< as the document is searched for it; empty when nothing is searched
    std::string failure;  ///< why it cannot use the document; empty when it can

    std::optional<ServingEntry> settings_entry;  ///< serves the accessory
    std::optional<ServingEntry> dongle_entry;    ///< serves its dongle, whose firmware it has
    std::string unsent_reason;  ///< why no setting is sent; empty when settings are sent
    FirmwareDecision firmware;
};

/// What the document does to all of them.
struct DocumentOutcome {
    std::string fault;           ///< why nobody can use it: no JSON, no template; else empty
    json::Place template_place;  ///< of the object that is read
    SettingsList common;         ///< "commonSettings"
    std::vector<ModelEntry> entries;
    std::vector<AccessoryOutcome> accessories;  ///< in the order in which they were given
};

/// Reads `text` up to its first NUL, as the library does. The accessories are new: settings of an
/// earlier document are not known. Of each list, at most `most_faulty` settings that cannot be read
/// are kept. The time is linear in the length of the text, but for names of "models", each of
/// which is compared with each distinct model. What the parser takes is freed before the places are
/// looked for. Throws std::bad_alloc when the parser lacks memory.
DocumentOutcome read_document(const std::string& text,
                              const std::vector<AccessoryCache>& accessories,
                              std::size_t most_faulty);

/// The settings that an accessory keeps, in the order in which they are sent. Borrows `outcome`.
std::vector<KeptSetting> kept_settings(const DocumentOutcome& outcome,
                                       const AccessoryOutcome& accessory);

}  // namespace headsetmgmt::program
