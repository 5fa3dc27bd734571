// SPDX-License-Identifier: Apache-2.0
// The JSON parser with its error, and the owners of what it makes.

#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/json.h"

using headsetmgmt::JsonOwner;
using headsetmgmt::JsonTextOwner;
using headsetmgmt::parse_json;

namespace {

TEST(JsonTest, SoundTextBecomesATree) {
    std::optional<std::string> rest = "untouched";

    const JsonOwner tree = parse_json(R"({"updatedTime": 12})", rest);

    ASSERT_TRUE(tree);
    const cJSON* time = cJSON_GetObjectItemCaseSensitive(tree.get(), "updatedTime");
    ASSERT_NE(time, nullptr);
    EXPECT_EQ(time->valueint, 12);
    EXPECT_EQ(rest, "untouched");
}

TEST(JsonTest, BrokenTextGivesWhatStandsFromTheErrorOn) {
    std::optional<std::string> rest;

    const JsonOwner tree = parse_json("[1, oops]", rest);

    EXPECT_FALSE(tree);
    EXPECT_EQ(rest, "oops]");
}

TEST(JsonTest, ErrorInAKeyIsPlacedOneCharacterIntoIt) {
    std::optional<std::string> rest;

    const JsonOwner tree = parse_json(R"({"a": 1, oops})", rest);

    EXPECT_FALSE(tree);
    EXPECT_EQ(rest, "ops}");
}

TEST(JsonTest, TextThatIsNotJsonAtAllIsTheRest) {
    std::optional<std::string> rest;

    const JsonOwner tree = parse_json("not json", rest);

    EXPECT_FALSE(tree);
    EXPECT_EQ(rest, "not json");
}

TEST(JsonTest, EmptyTextHasNoTree) {
    std::optional<std::string> rest;

    const JsonOwner tree = parse_json("", rest);

    EXPECT_FALSE(tree);
    EXPECT_EQ(rest, "");
}

TEST(JsonTest, TextIsReadUpToItsFirstZeroByte) {
    std::optional<std::string> rest;

    const JsonOwner tree = parse_json(std::string("[1]\0[2", 6), rest);

    ASSERT_TRUE(tree);
    EXPECT_EQ(cJSON_GetArraySize(tree.get()), 1);
}

TEST(JsonTest, WhateverFollowsTheFirstValueIsIgnored) {
    std::optional<std::string> rest;

    const JsonOwner tree = parse_json("{} trailing", rest);

    EXPECT_TRUE(tree);
}

TEST(JsonTest, DeepNestingIsRefusedInsteadOfExhaustingTheStack) {
    const std::string text(200000, '[');
    std::optional<std::string> rest;

    const JsonOwner tree = parse_json(text, rest);

    EXPECT_FALSE(tree);
}

TEST(JsonTest, OwnersReleaseTreesAndPrintedText) {
    std::optional<std::string> rest;
    const JsonOwner tree = parse_json(R"(["a", 1])", rest);
    ASSERT_TRUE(tree);

    const JsonTextOwner printed(cJSON_PrintUnformatted(tree.get()));

    ASSERT_TRUE(printed);
    EXPECT_STREQ(printed.get(), R"(["a",1])");
}

TEST(JsonTest, ThreadsThatParseAtOnceEachReadTheirOwnError) {
    constexpr int threads = 4;
    constexpr int rounds = 200;
    std::vector<int> wrong(threads, 0);
    std::vector<std::thread> parsers;
    for (int parser = 0; parser < threads; ++parser) {
        parsers.emplace_back([parser, &count = wrong.at(static_cast<std::size_t>(parser))] {
            const std::string broken = "broken " + std::to_string(parser);
            for (int round = 0; round < rounds; ++round) {
                std::optional<std::string> rest;
                const JsonOwner tree = parse_json("[" + broken, rest);
                count += tree || rest != broken ? 1 : 0;
            }
        });
    }
    for (std::thread& parser : parsers) {
        parser.join();
    }

    EXPECT_EQ(wrong, std::vector<int>(threads, 0));
}

}  // namespace
