// SPDX-License-Identifier: Apache-2.0
// Tests of lines, columns and excerpts.

#include <cstddef>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "program/json/places.h"

namespace headsetmgmt::program::json {

static void PrintTo(const Place& place, std::ostream* out) {
    *out << place.line << ":" << place.column;
}

namespace {

TEST(Places, LinesAndColumnsCountFromOne) {
    EXPECT_EQ((Place{1, 1}), place_at("", 0));
    EXPECT_EQ((Place{1, 1}), place_at("ab\ncd", 0));
    EXPECT_EQ((Place{1, 3}), place_at("ab\ncd", 2));
    EXPECT_EQ((Place{2, 1}), place_at("ab\ncd", 3));
    EXPECT_EQ((Place{2, 2}), place_at("ab\ncd", 4));
}

TEST(Places, EndOfTheTextHasAPlace) {
    EXPECT_EQ((Place{2, 3}), place_at("ab\ncd", 5));
    EXPECT_EQ((Place{3, 1}), place_at("ab\ncd\n", 6));
    EXPECT_EQ((Place{2, 3}), place_at("ab\ncd", 1000));
}

TEST(Places, CarriageReturnEndsNoLine) {
    EXPECT_EQ((Place{2, 1}), place_at("a\r\nb", 3));
    EXPECT_EQ((Place{1, 3}), place_at("a\rb", 2));
}

TEST(Places, CharacterOfSeveralBytesIsOneColumn) {
    const std::string text = "\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80x";
    EXPECT_EQ((Place{1, 4}), place_at(text, 9));
}

TEST(Places, ByteInACharacterHasThePlaceOfTheCharacter) {
    EXPECT_EQ((Place{1, 2}), place_at("a\xe2\x82\xac", 2));
    EXPECT_EQ((Place{1, 2}), place_at("a\xe2\x82\xac", 3));
}

TEST(Places, ByteThatIsNotUtf8IsOneColumn) {
    EXPECT_EQ((Place{1, 3}), place_at("\xff\xfex", 2));
    EXPECT_EQ((Place{1, 3}), place_at("\xe2\x82x", 2));          // cut off
    EXPECT_EQ((Place{1, 3}), place_at("\xc0\x80x", 2));          // longer than it needs to be
    EXPECT_EQ((Place{1, 4}), place_at("\xe0\x80\x80x", 3));      // the same
    EXPECT_EQ((Place{1, 5}), place_at("\xf0\x80\x80\x80x", 4));  // the same
    EXPECT_EQ((Place{1, 4}), place_at("\xed\xa0\x80x", 3));      // half of a surrogate pair
    EXPECT_EQ((Place{1, 5}), place_at("\xf4\x90\x80\x80x", 4));  // behind the last character
    EXPECT_EQ((Place{1, 5}), place_at("\xf5\x80\x80\x80x", 4));  // the same
    EXPECT_EQ((Place{1, 2}), place_at("\x80x", 1));
}

TEST(Places, LineFeedEndsACharacterThatIsCutOff) {
    EXPECT_EQ((Place{2, 2}), place_at("\xe2\x82\nab", 4));
}

TEST(Places, LongTextHasTheSamePlacesAsAShortOne) {
    std::string text;
    for (int line = 0; line < 120; ++line) {
        text += std::string(static_cast<std::size_t>(line), 'x') + "\xe2\x82\xac\xc3\xa4\xff\n";
    }
    text += std::string(5000, 'y');
    const Places places(text);

    Place expected;
    for (std::size_t offset = 0; offset < text.size(); ++offset) {
        const bool is_in_character = (static_cast<unsigned char>(text[offset]) & 0xc0U) == 0x80U;
        if (offset > 0 && text[offset - 1] == '\n') {
            expected = {expected.line + 1, 1};
        } else if (offset > 0 && !is_in_character) {
            ++expected.column;
        }
        ASSERT_EQ(expected, places.at(offset)) << offset;
    }
    EXPECT_EQ((Place{121, 5001}), places.at(text.size()));
    EXPECT_EQ((Place{121, 5001}), places.at(text.size() + 5000));
    EXPECT_EQ((Place{121, 5001}), place_at(text, text.size()));
}

TEST(Places, EmptyTextHasOnePlace) {
    EXPECT_EQ((Place{1, 1}), Places("").at(0));
}

/// An excerpt in one line: the part in brackets, dots where the line goes on.
std::string shown(const Excerpt& excerpt) {
    return (excerpt.is_cut_before ? "..." : "") + std::string(excerpt.before) + "[" +
           std::string(excerpt.marked) + "]" + std::string(excerpt.after) +
           (excerpt.is_cut_after ? "..." : "");
}

TEST(Excerpt, ShortLineIsWhole) {
    EXPECT_EQ("{\"a\": [17]}", shown(excerpt("x\n{\"a\": 17}\ny", 8, 10)));
    EXPECT_EQ("[x]", shown(excerpt("x\ny", 0, 1)));
    EXPECT_EQ("[y]", shown(excerpt("x\ny", 2, 3)));
}

TEST(Excerpt, PartOfSeveralLinesIsMarkedToTheEndOfTheFirst) {
    EXPECT_EQ("\"a\": [{]", shown(excerpt("\"a\": {\n\"b\": 1}", 5, 14)));
    EXPECT_EQ("\"a\": [{]", shown(excerpt("\"a\": {\r\n\"b\": 1}", 5, 14)));
}

TEST(Excerpt, EndOfATextIsAnEmptyPart) {
    EXPECT_EQ("{\"a\":[]", shown(excerpt("{\"a\":", 5, 5)));
    EXPECT_EQ("[]", shown(excerpt("{\n", 2, 2)));
    EXPECT_EQ("[]", shown(excerpt("", 0, 0)));
    EXPECT_EQ("a[]", shown(excerpt("a", 10, 20)));
}

TEST(Excerpt, LongLineIsCutAtSixtyBytesOnEitherSide) {
    const std::string text = std::string(100, 'a') + "!!" + std::string(100, 'b');
    EXPECT_EQ("..." + std::string(60, 'a') + "[!!]" + std::string(58, 'b') + "...",
              shown(excerpt(text, 100, 102)));
    EXPECT_EQ("..." + std::string(60, 'a') + "[" + std::string(60, 'b') + "]...",
              shown(excerpt(std::string(61, 'a') + std::string(61, 'b'), 61, 122)));
}

TEST(Excerpt, LineOfSixtyBytesOnEitherSideIsWhole) {
    EXPECT_EQ(std::string(60, 'a') + "[b]" + std::string(59, 'b'),
              shown(excerpt(std::string(60, 'a') + std::string(60, 'b'), 60, 61)));
}

TEST(Excerpt, LongLineIsCutBetweenCharacters) {
    // 59 of 61 bytes fit on either side.
    const std::string before = "\xe2\x82\xac" + std::string(58, 'a');
    const std::string after = std::string(58, 'b') + "\xe2\x82\xac";
    EXPECT_EQ("..." + std::string(58, 'a') + "[]" + std::string(58, 'b') + "...",
              shown(excerpt(before + after, before.size(), before.size())));
}

}  // namespace
}  // namespace headsetmgmt::program::json
