// SPDX-License-Identifier: Apache-2.0
// Tests of how accessories fared with a document that was handed to the library.

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "program/phone/hand_over.h"

namespace headsetmgmt::program {
namespace {

using Kind = LibraryLine::Kind;
using Texts = std::vector<std::string>;

AccessoryCache accessory(const std::string& id, const std::string& model) {
    AccessoryCache facts;
    facts.device_id = id;
    facts.model = model;
    return facts;
}

const LibraryLine taken = {Kind::document_taken, ""};
const LibraryLine failed = {Kind::document_failed, ""};

LibraryLine model(const std::string& text) {
    return {Kind::accessory_model, text};
}

/// "a taken" for each turn. The document is of no use to the accessories with these ids.
Texts turns(const HandOver& hand_over, const std::vector<AccessoryCache>& waiting,
            const Texts& failing = {}) {
    std::vector<AccessoryOutcome> outcomes;
    for (const AccessoryCache& facts : waiting) {
        const bool fails =
            std::find(failing.begin(), failing.end(), facts.device_id) != failing.end();
        AccessoryOutcome outcome;
        outcome.model = facts.device_id;  // so that it is seen whose it is
        outcome.failure = fails ? "a reason" : "";
        outcomes.push_back(outcome);
    }
    Texts texts;
    Texts ids;
    for (const Turn& turn : hand_over.turns(waiting, outcomes)) {
        ids.push_back(turn.facts.device_id);
        texts.push_back(turn.facts.device_id + (turn.is_taken ? " taken" : " failed") +
                        (turn.lacks_memory ? " lacks memory" : ""));
    }
    Texts ids_of_outcomes;
    for (const AccessoryOutcome& outcome : outcomes) {
        ids_of_outcomes.push_back(outcome.model);
    }
    EXPECT_EQ(ids, ids_of_outcomes);
    return texts;
}

TEST(HandOver, WithoutLinesNobodyHadATurn) {
    const std::vector<AccessoryCache> waiting = {accessory("a", "M")};
    const HandOver hand_over;

    EXPECT_EQ(Texts{}, turns(hand_over, waiting));
    EXPECT_FALSE(hand_over.has_turns());
    EXPECT_FALSE(hand_over.was_dropped());
}

TEST(HandOver, DroppedDocumentIsNobodysTurn) {
    const std::vector<AccessoryCache> waiting = {accessory("a", "M")};
    HandOver hand_over;
    hand_over.on_line({Kind::document_dropped, ""});

    EXPECT_TRUE(hand_over.was_dropped());
    EXPECT_EQ(Texts{}, turns(hand_over, waiting));
}

TEST(HandOver, ModelNamesTheAccessory) {
    const std::vector<AccessoryCache> waiting = {accessory("a", "M"), accessory("b", "N")};
    HandOver hand_over;
    hand_over.on_line(model("N"));
    hand_over.on_line(failed);

    EXPECT_EQ((Texts{"b failed"}), turns(hand_over, waiting));
    EXPECT_TRUE(hand_over.has_turns());
}

TEST(HandOver, ModelIsTheOneThatTheDocumentIsSearchedFor) {
    AccessoryCache k20 = accessory("a", "Varos K30");
    k20.serial_number = "ABCDEFG4";
    const std::vector<AccessoryCache> waiting = {accessory("b", "Varos K30"), k20};
    HandOver hand_over;
    hand_over.on_line(model("Varos K20"));
    hand_over.on_line(taken);

    EXPECT_EQ((Texts{"a taken"}), turns(hand_over, waiting));
}

TEST(HandOver, EarliestOfAModelHaveTheirTurns) {
    const std::vector<AccessoryCache> waiting = {accessory("a", "M"), accessory("b", "M"),
                                                 accessory("c", "M")};
    HandOver hand_over;
    for (int i = 0; i < 2; ++i) {
        hand_over.on_line(model("M"));
        hand_over.on_line(taken);
    }

    EXPECT_EQ((Texts{"a taken", "b taken"}), turns(hand_over, waiting));
}

TEST(HandOver, HostCallNamesTheAccessory) {
    const std::vector<AccessoryCache> waiting = {accessory("a", "M"), accessory("b", "M")};
    HandOver hand_over;
    hand_over.on_line(model("M"));
    hand_over.on_line(failed);
    hand_over.on_line(model("M"));
    hand_over.on_host_call("a");
    hand_over.on_line(taken);

    EXPECT_EQ((Texts{"a taken", "b failed"}), turns(hand_over, waiting));
}

TEST(HandOver, OutcomeDistinguishesAccessoriesOfOneModel) {
    const std::vector<AccessoryCache> waiting = {accessory("a", "M"), accessory("b", "M"),
                                                 accessory("c", "M")};
    HandOver hand_over;
    hand_over.on_line(model("M"));
    hand_over.on_line(failed);
    hand_over.on_line(model("M"));
    hand_over.on_line(taken);

    EXPECT_EQ((Texts{"a taken", "c failed"}), turns(hand_over, waiting, {"c"}));
}

TEST(HandOver, ResultThatNoOutcomeExplainsIsTheEarliestOfTheModel) {
    const std::vector<AccessoryCache> waiting = {accessory("a", "N"), accessory("b", "M"),
                                                 accessory("c", "M")};
    HandOver hand_over;
    hand_over.on_line(model("M"));
    hand_over.on_line(failed);

    EXPECT_EQ((Texts{"b failed"}), turns(hand_over, waiting));
}

TEST(HandOver, WithoutAModelTheEarliestHadItsTurn) {
    const std::vector<AccessoryCache> waiting = {accessory("a", "M"), accessory("b", "N"),
                                                 accessory("c", "O")};
    HandOver hand_over;
    hand_over.on_line(failed);
    hand_over.on_line(failed);

    EXPECT_EQ((Texts{"a failed", "b failed"}), turns(hand_over, waiting));
}

TEST(HandOver, LackOfMemoryIsOfTheTurnInWhichItWasFound) {
    const std::vector<AccessoryCache> waiting = {accessory("a", "M"), accessory("b", "N")};
    HandOver hand_over;
    hand_over.on_lack_of_memory();
    hand_over.on_line(failed);
    hand_over.on_line(model("N"));
    hand_over.on_line(taken);

    EXPECT_EQ((Texts{"a failed lacks memory", "b taken"}), turns(hand_over, waiting));
}

}  // namespace
}  // namespace headsetmgmt::program
