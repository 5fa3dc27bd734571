// SPDX-License-Identifier: Apache-2.0
// The events about a document that was handed over.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "program/document/outcome.h"
#include "program/output.h"
#include "program/phone/hand_over.h"

namespace headsetmgmt::program {

/// A document that was handed over: how each accessory fared, and what the document says about
/// that. Side by side: `turns` and `outcome.accessories`.
struct HandedOver {
    std::vector<Turn> turns;
    DocumentOutcome outcome;
    bool was_dropped = false;  ///< nobody was waiting for it
};

/// Of the settings that could not be read, the event has so many.
inline constexpr std::size_t settings_in_an_event = 100;

/// An accessory as sentences name it: "desk (Varos K20)".
std::string accessory_in_words(const std::string& id, const std::string& model);

/// How many accessories could use the document.
std::size_t count_taken(const HandedOver& handed_over);

/// How many settings of the document could not be read.
std::size_t count_passed_over(const HandedOver& handed_over);

/// The `firmware` events: one for each accessory on whose firmware there was a decision.
std::vector<Event> firmware_events(const HandedOver& handed_over);

/// The `document` event. It has each of the first failures twice: in "reasons" as a sentence, in
/// "failures" by its members.
Event document_event(const HandedOver& handed_over);

}  // namespace headsetmgmt::program
