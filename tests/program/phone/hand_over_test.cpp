// SPDX-License-Identifier: Apache-2.0
// Tests of how accessories fared with a document that was handed to the library.

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

/// "a taken" for each turn.
Texts turns(const HandOver& hand_over, std::vector<AccessoryCache>& waiting) {
    Texts texts;
    for (const Turn& turn : hand_over.take_turns(waiting)) {
        texts.push_back(turn.facts.device_id + (turn.is_taken ? " taken" : " failed") +
                        (turn.lacks_memory ? " lacks memory" : ""));
    }
    return texts;
}

Texts ids(const std::vector<AccessoryCache>& accessories) {
    Texts texts;
    for (const AccessoryCache& facts : accessories) {
        texts.push_back(facts.device_id);
    }
    return texts;
}

TEST(HandOver, WithoutLinesNobodyHadATurn) {
    std::vector<AccessoryCache> waiting = {accessory("a", "M")};
    const HandOver hand_over;

    EXPECT_EQ(Texts{}, turns(hand_over, waiting));
    EXPECT_EQ((Texts{"a"}), ids(waiting));
    EXPECT_FALSE(hand_over.was_dropped());
}

TEST(HandOver, DroppedDocumentIsNobodysTurn) {
    std::vector<AccessoryCache> waiting = {accessory("a", "M")};
    HandOver hand_over;
    hand_over.on_line({Kind::document_dropped, ""});

    EXPECT_TRUE(hand_over.was_dropped());
    EXPECT_EQ(Texts{}, turns(hand_over, waiting));
}

TEST(HandOver, ModelNamesTheAccessory) {
    std::vector<AccessoryCache> waiting = {accessory("a", "M"), accessory("b", "N")};
    HandOver hand_over;
    hand_over.on_line(model("N"));
    hand_over.on_line(failed);

    EXPECT_EQ((Texts{"b failed"}), turns(hand_over, waiting));
    EXPECT_EQ((Texts{"a"}), ids(waiting));
}

TEST(HandOver, ModelIsTheOneThatTheDocumentIsSearchedFor) {
    AccessoryCache k20 = accessory("a", "Varos K30");
    k20.serial_number = "ABCDEFG4";
    std::vector<AccessoryCache> waiting = {accessory("b", "Varos K30"), k20};
    HandOver hand_over;
    hand_over.on_line(model("Varos K20"));
    hand_over.on_line(taken);

    EXPECT_EQ((Texts{"a taken"}), turns(hand_over, waiting));
}

TEST(HandOver, EarliestOfAModelHaveTheirTurns) {
    std::vector<AccessoryCache> waiting = {accessory("a", "M"), accessory("b", "M"),
                                           accessory("c", "M")};
    HandOver hand_over;
    for (int i = 0; i < 2; ++i) {
        hand_over.on_line(model("M"));
        hand_over.on_line(taken);
    }

    EXPECT_EQ((Texts{"a taken", "b taken"}), turns(hand_over, waiting));
    EXPECT_EQ((Texts{"c"}), ids(waiting));
}

TEST(HandOver, HostCallNamesTheAccessory) {
    std::vector<AccessoryCache> waiting = {accessory("a", "M"), accessory("b", "M")};
    HandOver hand_over;
    hand_over.on_line(model("M"));
    hand_over.on_line(failed);
    hand_over.on_line(model("M"));
    hand_over.on_host_call("a");
    hand_over.on_line(taken);

    EXPECT_EQ((Texts{"a taken", "b failed"}), turns(hand_over, waiting));
}

TEST(HandOver, WithoutAModelTheEarliestHadItsTurn) {
    std::vector<AccessoryCache> waiting = {accessory("a", "M"), accessory("b", "N"),
                                           accessory("c", "O")};
    HandOver hand_over;
    hand_over.on_line(failed);
    hand_over.on_line(failed);

    EXPECT_EQ((Texts{"a failed", "b failed"}), turns(hand_over, waiting));
    EXPECT_EQ((Texts{"c"}), ids(waiting));
}

TEST(HandOver, LackOfMemoryIsOfTheTurnInWhichItWasFound) {
    std::vector<AccessoryCache> waiting = {accessory("a", "M"), accessory("b", "N")};
    HandOver hand_over;
    hand_over.on_lack_of_memory();
    hand_over.on_line(failed);
    hand_over.on_line(model("N"));
    hand_over.on_line(taken);

    EXPECT_EQ((Texts{"a failed lacks memory", "b taken"}), turns(hand_over, waiting));
}

}  // namespace
}  // namespace headsetmgmt::program
