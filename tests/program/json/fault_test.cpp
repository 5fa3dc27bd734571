// SPDX-License-Identifier: Apache-2.0
// Tests of the explanations for texts that are not JSON.

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>

#include <gtest/gtest.h>

#include "program/json/scan.h"

namespace headsetmgmt::program::json {
namespace {

/// The explanation for a text; "JSON" when it has no fault.
std::string explained(std::string_view text) {
    const auto scanned = scan(text);
    const auto* fault = std::get_if<Fault>(&scanned);
    return fault != nullptr ? explanation(text, *fault) : "JSON";
}

TEST(Fault, EmptyDocument) {
    EXPECT_EQ("the document is empty (0 bytes)", explained(""));
}

TEST(Fault, DocumentOfWhiteSpace) {
    EXPECT_EQ("the document is nothing but white space (3 bytes)", explained(" \r\n"));
}

TEST(Fault, DocumentThatBeginsWithANul) {
    EXPECT_EQ("the document begins with a NUL byte, so it counts as empty",
              explained(std::string("\0{}", 3)));
}

TEST(Fault, PlaceCountsLinesAndCharactersFromOne) {
    EXPECT_EQ("no JSON: line 1, column 1: \"oops\"", explained("oops"));
    EXPECT_EQ("no JSON: line 3, column 4: \"x}\"", explained("{\n\"a\":\n   x}"));
}

TEST(Fault, CharacterOfSeveralBytesIsOneColumn) {
    EXPECT_EQ("no JSON: line 1, column 8: \"x\"", explained("[\"\xc3\xa4\xe2\x82\xac\", x"));
}

TEST(Fault, QuotedRestIsCutBetweenCharacters) {
    const std::string digits = "x1234567890123456789012345678901234567890123456789012345678";

    EXPECT_EQ("no JSON: line 1, column 1: \"" + digits + "...\"", explained(digits + "\xc3\xa4yz"));
}

// The parser gives up one byte behind the place.
TEST(Fault, MissingNameIsWhereItShouldStand) {
    EXPECT_EQ("no JSON: line 1, column 8: \"}\"", explained("{\"a\":1,}"));
    EXPECT_EQ("no JSON: line 1, column 2: \"'a': 1}\"", explained("{'a': 1}"));
    EXPECT_EQ("no JSON: line 1, column 8: \"[\"", explained("{\"a\":1,["));
    EXPECT_EQ("no JSON: line 1, column 2: \"t\"", explained("{t"));
}

TEST(Fault, WrongEscapeInANameIsWhereItStands) {
    EXPECT_EQ("no JSON: line 1, column 4: \"\\q\": 1}\"", explained("{\"a\\q\": 1}"));
}

TEST(Fault, WrongEscapeIsWhereItStandsThoughALaterStringIsCutOff) {
    EXPECT_EQ("no JSON: line 1, column 4: \"\\q\": \"x\"", explained("{\"a\\q\": \"x"));
}

TEST(Fault, ElementOfAnArrayHasNoName) {
    EXPECT_EQ("no JSON: line 1, column 5: \"x]\"", explained("[1,2x]"));
}

TEST(Fault, DocumentThatIsCutOff) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 1)", explained("{"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 7)", explained("{\"a\":1,"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 10)", explained("[1, \"\\\"\", "));
}

TEST(Fault, DocumentThatIsCutOffInAWord) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 5)", explained("[fals"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 2)", explained("[-"));
    EXPECT_EQ("no JSON: line 1, column 2: \"falsy\"", explained("[falsy"));
}

TEST(Fault, DocumentThatIsCutOffInAnExponent) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 10)", explained("{\"a\":-2.5e"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 11)", explained("{\"a\":-2.5E+"));
    EXPECT_EQ("no JSON: line 1, column 4: \"e\"", explained("[1 e"));
    EXPECT_EQ("no JSON: line 1, column 3: \"e+]\"", explained("[1e+]"));
}

TEST(Fault, WordInAWrongPlaceIsNotCutOff) {
    EXPECT_EQ("no JSON: line 1, column 4: \"t\"", explained("[1 t"));
}

TEST(Fault, EmptyObjectNeedsNoName) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 7)", explained("{\"a\":{}"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 8)", explained("{\"a\":{ }"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 6)", explained("[{},{}"));
    EXPECT_EQ("no JSON: line 1, column 4: \"x]\"", explained("[{}x]"));
    EXPECT_EQ("no JSON: line 1, column 13: \"\"commonSettings\":[]}}\"",
              explained("{\"t\":{\"x\":{}\"commonSettings\":[]}}"));
}

TEST(Fault, EveryBeginningOfADocumentEndsInTheMiddle) {
    const std::string document =
        "{\"empty\": {}, \"blank\": { }, \"none\":[ ],\n"
        "\"numbers\": [0, -0, 17, -2.5e3, 1E+2, 6.25e-1],\n"
        "\"words\": [true, false, null], \"\\u00e4\\\"\": \"\\\\ \\n\\u20ac\",\n"
        "\"\xc3\xa4\": [{}, {\"a\": [[], {\"b\": {}}]}, \"\"]}";
    ASSERT_EQ("JSON", explained(document));

    for (std::size_t bytes = 1; bytes < document.size(); ++bytes) {
        const std::string beginning = document.substr(0, bytes);
        const std::string expected =
            "no JSON: it ends in the middle (byte " + std::to_string(bytes) + ")";
        EXPECT_EQ(expected, explained(beginning).substr(0, expected.size())) << beginning;
    }
}

TEST(Fault, DocumentThatIsCutOffInAStringIsReportedWithTheBeginningOfTheString) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 11), in a text that begins at line 2, column 5",
              explained("{\n\"a\":\"b\\\"}"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 5), in a text that begins at line 1, column 2",
              explained("{\"key"));
}

TEST(Fault, DocumentThatGoesTooDeep) {
    const std::string levels(999, '[');

    EXPECT_EQ("nested deeper than the library reads, which is 1000 levels: line 2, column 1000: "
              "\"[1]]}\"",
              explained("{\"a\":\n" + levels + "[1]]}"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 1006)", explained("{\"a\":\n" + levels + "1"));
}

TEST(Fault, LevelInAWrongPlaceIsNotTooDeep) {
    EXPECT_EQ("no JSON: line 1, column 4: \"[2]]\"", explained("[1 [2]]"));
}

TEST(Fault, HundredThousandLevels) {
    const std::string deep(100000, '[');

    EXPECT_EQ(
        "nested deeper than the library reads, which is 1000 levels: line 1, column 1001: \"" +
            std::string(60, '[') + "...\"",
        explained(deep));
}

TEST(Fault, DocumentCountsUpToItsFirstNul) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 7)", explained(std::string("{\"a\": 1\0}", 9)));
}

TEST(Fault, ControlCharactersAreWhiteSpace) {
    EXPECT_EQ("the document is nothing but white space (2 bytes)", explained("\x01\t"));
}

TEST(Fault, ByteOrderMarkAloneIsNotJson) {
    EXPECT_EQ("no JSON: line 1, column 1: \"\xef\xbb\xbf\"", explained("\xef\xbb\xbf"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 4)", explained("\xef\xbb\xbf "));
}

TEST(Fault, PointWithoutDigits) {
    EXPECT_EQ("no JSON: line 1, column 2: \"-.]\"", explained("[-.]"));
    EXPECT_EQ("no JSON: line 1, column 2: \".5]\"", explained("[.5]"));
}

}  // namespace
}  // namespace headsetmgmt::program::json
