// SPDX-License-Identifier: Apache-2.0
// Tests of the index: members, names, pointers, places of values.

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "program/json/preorder.h"
#include "program/json/scan.h"

namespace headsetmgmt::program::json {
namespace {

Index indexed(std::string_view text) {
    auto scanned = scan(text, any_levels);
    if (const auto* fault = std::get_if<Fault>(&scanned)) {
        throw std::invalid_argument(explanation(text, *fault));
    }
    return std::get<Index>(scanned);
}

/// The bytes of each value, in the order of the index.
std::vector<std::string> values_of(const std::string& text) {
    const Index index = indexed(text);
    std::vector<std::string> result;
    for (std::size_t number = 0; number < index.size(); ++number) {
        result.push_back(text.substr(index[number].begin, index[number].end - index[number].begin));
    }
    return result;
}

std::vector<std::string> pointers_of(std::string_view text) {
    const Index index = indexed(text);
    std::vector<std::string> result;
    for (std::size_t number = 0; number < index.size(); ++number) {
        result.push_back(index.pointer(number));
    }
    return result;
}

/// The bytes of the value that a pointer names; "none" without one.
std::string value_at(const std::string& text, std::string_view pointer) {
    const Index index = indexed(text);
    const auto found = index.find(pointer);
    return found ? text.substr(index[*found].begin, index[*found].end - index[*found].begin)
                 : "none";
}

using Texts = std::vector<std::string>;
using Number = std::optional<std::size_t>;

TEST(Index, ValuesStandInTheOrderOfTheText) {
    EXPECT_EQ((Texts{"{\"a\" : [1, {}], \"b\": \"x\" }", "[1, {}]", "1", "{}", "\"x\""}),
              values_of(" {\"a\" : [1, {}], \"b\": \"x\" } behind"));
}

TEST(Index, MemberHasThePlaceOfItsName) {
    const Index index = indexed("{ \"a\" : [1]}");
    EXPECT_EQ(2U, index[1].name);
    EXPECT_EQ(2U, index[1].member_begin());
    EXPECT_EQ(8U, index[1].begin);
    EXPECT_EQ(Value::no_name_, index[0].name);
    EXPECT_EQ(Value::no_name_, index[2].name);
    EXPECT_EQ(9U, index[2].member_begin());
}

TEST(Index, Types) {
    const Index index = indexed("[null, true, false, -1, 2, \"\", {}]");
    EXPECT_EQ(Type::array, index.type(0));
    EXPECT_EQ(Type::null, index.type(1));
    EXPECT_EQ(Type::boolean, index.type(2));
    EXPECT_EQ(Type::boolean, index.type(3));
    EXPECT_EQ(Type::number, index.type(4));
    EXPECT_EQ(Type::number, index.type(5));
    EXPECT_EQ(Type::string, index.type(6));
    EXPECT_EQ(Type::object, index.type(7));
}

TEST(Index, NamesAreWithoutEscapes) {
    const Index index =
        indexed(R"({"": 1, "a\"\\\/\b\f\n\r\t": 2, "\u0041\u00E4\u20ac\ud83d\ude00": 3})");
    EXPECT_EQ("", index.name(0));
    EXPECT_EQ("", index.name(1));
    EXPECT_EQ("a\"\\/\b\f\n\r\t", index.name(2));
    EXPECT_EQ("A\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", index.name(3));
}

TEST(Index, NameWithANulIsWhole) {
    EXPECT_EQ(std::string("a\0b", 3), indexed(R"({"a\u0000b": 1})").name(1));
    EXPECT_EQ(std::string("a\0b", 3), indexed(R"({"a\uzzzzb": 1})").name(1));
}

TEST(Index, WalksOverMembersAndElements) {
    const Index index = indexed("{\"a\": [1, [2]], \"b\": {}}");
    EXPECT_EQ(Number(1), index.first_child(0));
    EXPECT_EQ(Number(2), index.first_child(1));
    EXPECT_EQ(Number(3), index.next_sibling(2));
    EXPECT_EQ(Number(4), index.first_child(3));
    EXPECT_EQ(std::nullopt, index.next_sibling(4));
    EXPECT_EQ(std::nullopt, index.next_sibling(3));
    EXPECT_EQ(Number(5), index.next_sibling(1));
    EXPECT_EQ(std::nullopt, index.first_child(5));
    EXPECT_EQ(std::nullopt, index.next_sibling(5));
}

TEST(Index, CommaBehindTheDocumentIsNoSibling) {
    EXPECT_EQ(std::nullopt, indexed("[] , []").next_sibling(0));
}

TEST(Index, Pointers) {
    EXPECT_EQ((Texts{"", "/a", "/a/0", "/a/1", "/a/1/b", "/a/2", "/"}),
              pointers_of("{\"a\": [[], {\"b\": 1}, 2], \"\": 3}"));
}

TEST(Index, PointerHasTildeAndSlashEscaped) {
    EXPECT_EQ((Texts{"", "/a~1b~0c"}), pointers_of("{\"a/b~c\": 1}"));
    EXPECT_EQ("~01~1", pointer_token("~1/"));
}

TEST(Index, FindsTheValueOfEachPointer) {
    const std::string text =
        "{\"a\": [10, {\"b\": 11}], \"\": {\"\": 12}, \"x/~\": 13, \"~1\": 14}";
    EXPECT_EQ(text, value_at(text, ""));
    EXPECT_EQ("10", value_at(text, "/a/0"));
    EXPECT_EQ("11", value_at(text, "/a/1/b"));
    EXPECT_EQ("12", value_at(text, "//"));
    EXPECT_EQ("13", value_at(text, "/x~1~0"));
    EXPECT_EQ("14", value_at(text, "/~01"));
}

TEST(Index, FindsNothingForOtherPointers) {
    const std::string text = "{\"a\": [10, 11]}";
    for (const char* pointer : {"a", "/", "/b", "/a/2", "/a/01", "/a/-", "/a/", "/a/0/0", "/A"}) {
        EXPECT_EQ("none", value_at(text, pointer)) << pointer;
    }
}

TEST(Index, FindsTheFirstOfRepeatedMembers) {
    EXPECT_EQ("1", value_at("{\"a\": 1, \"a\": 2}", "/a"));
}

TEST(Index, RepeatedMemberIsFound) {
    const Index index = indexed("{\"a\": 1, \"b\": {\"a\": 2, \"c\": [3], \"\\u0061\": 4}}");
    const auto repetition = index.first_repetition();
    ASSERT_TRUE(repetition);
    EXPECT_EQ("/b/a", index.pointer(repetition->first));
    EXPECT_EQ(3U, repetition->first);
    EXPECT_EQ(6U, repetition->second);
}

TEST(Index, FirstRepetitionIsTheFirstInTheText) {
    const auto repetition = indexed("{\"a\": {\"b\": 1, \"b\": 2}, \"a\": 3}").first_repetition();
    ASSERT_TRUE(repetition);
    EXPECT_EQ(2U, repetition->first);
    EXPECT_EQ(3U, repetition->second);
}

TEST(Index, SameNameInAnotherObjectIsNoRepetition) {
    EXPECT_FALSE(indexed("[{\"a\": {\"a\": 1}}, {\"a\": 2}]").first_repetition());
    EXPECT_FALSE(indexed("{\"a\": 1, \"A\": 2}").first_repetition());
}

TEST(PlaceOfPointer, MemberStandsAtItsName) {
    const char text[] = "{\n  \"a\":\n 1, \"b\": [\n2]}";
    EXPECT_EQ((Place{1, 1}), place_of_pointer(text, ""));
    EXPECT_EQ((Place{2, 3}), place_of_pointer(text, "/a"));
    EXPECT_EQ((Place{3, 5}), place_of_pointer(text, "/b"));
    EXPECT_EQ((Place{4, 1}), place_of_pointer(text, "/b/0"));
}

TEST(PlaceOfPointer, NothingWithoutAValue) {
    EXPECT_EQ(std::nullopt, place_of_pointer("{}", "/a"));
    EXPECT_EQ(std::nullopt, place_of_pointer("{\"a\": oops}", "/a"));
}

TEST(PlaceOfPointer, TextIsNestedDeeperThanTheLibraryReads) {
    const std::string deep = std::string(100000, '[') + std::string(100000, ']');
    EXPECT_EQ((Place{2, 1}), place_of_pointer("{\"a\": " + deep + ",\n\"b\": 1}", "/b"));
}

struct Node {
    const Node* child = nullptr;
    const Node* next = nullptr;
    char letter = ' ';
};

TEST(Preorder, EachNodeIsBeforeItsOwn) {
    const Node stranger = {nullptr, nullptr, '!'};
    const Node last = {nullptr, nullptr, 'e'};
    const Node inner = {nullptr, nullptr, 'd'};
    const Node middle = {&inner, &last, 'c'};
    const Node first = {nullptr, &middle, 'b'};
    const Node root = {&first, &stranger, 'a'};
    std::string order;
    for_each_value(&root, [&order](const Node& node, std::size_t number) {
        order += node.letter + std::to_string(number);
    });
    EXPECT_EQ("a0b1c2d3e4", order);
}

}  // namespace
}  // namespace headsetmgmt::program::json
