// SPDX-License-Identifier: Apache-2.0
// Tests of what the scanner takes and refuses, each also asked of the library's parser.

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>

#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include "program/json/scan.h"

namespace headsetmgmt::program::json {
namespace {

/// What the library's parser, called as the library calls it, reports of a text.
std::string parser_verdict(const std::string& text) {
    const char* stop = nullptr;
    cJSON* tree = cJSON_ParseWithOpts(text.c_str(), &stop, 0);
    const bool is_taken = tree != nullptr;
    cJSON_Delete(tree);
    return (is_taken ? "taken, left: " : "stops at: ") + std::string(stop);
}

/// The same of the scanner; "differs" when it is not the same.
std::string verdict(const std::string& text) {
    const std::string read = text.substr(0, text.find('\0'));
    const auto scanned = scan(text);
    const auto* fault = std::get_if<Fault>(&scanned);
    const std::string result = fault != nullptr
                                   ? "stops at: " + read.substr(fault->parser_offset)
                                   : "taken, left: " + read.substr(std::get<Index>(scanned)[0].end);
    return result == parser_verdict(text) ? result
                                          : result + ", the parser " + parser_verdict(text);
}

TEST(Scan, TextBehindTheValueIsLeft) {
    EXPECT_EQ("taken, left:  }{ oops", verdict("{} }{ oops"));
    EXPECT_EQ("taken, left: x", verdict("nullx"));
    EXPECT_EQ("taken, left: , 2", verdict("1, 2"));
}

TEST(Scan, ByteOrderMark) {
    EXPECT_EQ("taken, left: ", verdict("\xef\xbb\xbf{}"));
    EXPECT_EQ("taken, left: ", verdict("\xef\xbb\xbf 1"));
    EXPECT_EQ("stops at: \xef\xbb\xbf", verdict("\xef\xbb\xbf"));
    EXPECT_EQ("stops at: ", verdict("\xef\xbb\xbf "));
    EXPECT_EQ("stops at: \xef\xbb\xbf{}", verdict(" \xef\xbb\xbf{}"));
    EXPECT_EQ("stops at: \xef\xbb\xbf{}", verdict("\xef\xbb\xbf\xef\xbb\xbf{}"));
    EXPECT_EQ("stops at: \xef\xbb{}", verdict("\xef\xbb{}"));
}

TEST(Scan, EveryByteUpToTheBlankIsWhiteSpace) {
    for (char byte = 1; byte <= ' '; ++byte) {
        const std::string blank(1, byte);
        EXPECT_EQ("taken, left: " + blank,
                  verdict(blank + "{" + blank + "\"a\"" + blank + ":" + blank + "[" + blank + "1" +
                          blank + "," + blank + "2" + blank + "]" + blank + "}" + blank))
            << int{byte};
    }
    EXPECT_EQ("stops at: \x7f]", verdict("[\x7f]"));
    EXPECT_EQ("stops at: \xc2\xa0]", verdict("[\xc2\xa0]"));
}

TEST(Scan, ControlCharactersMayStandInStrings) {
    for (char byte = 1; byte < ' '; ++byte) {
        EXPECT_EQ("taken, left: ", verdict("[\"" + std::string(1, byte) + "\"]"));
    }
}

TEST(Scan, BytesThatAreNotUtf8MayStandInStrings) {
    EXPECT_EQ("taken, left: ", verdict("[\"\xff\xc3\"]"));
    EXPECT_EQ("stops at: \xff]", verdict("[\xff]"));
}

TEST(Scan, NulByteEndsTheText) {
    EXPECT_EQ("taken, left: ", verdict(std::string("{}\0x", 4)));
    EXPECT_EQ("stops at: ", verdict(std::string("{\0}", 3)));
    EXPECT_EQ("stops at: a", verdict(std::string("\"a\0\"", 4)));
    EXPECT_EQ("stops at: a\\", verdict(std::string("\"a\\\0\"", 5)));
    EXPECT_EQ("stops at: ", verdict(std::string("\0{}", 3)));
}

TEST(Scan, EmptyText) {
    EXPECT_EQ("stops at: ", verdict(""));
    EXPECT_EQ("stops at: ", verdict(" \r\n"));
}

TEST(Scan, NumbersMayHaveMoreFormsThanInJson) {
    for (const char* number : {"0", "-0", "01", "-007", "1.", "-.5", "1.5e3", "1E+2", "1.e-2",
                               "1e999", "-1e-999", "123456789012345678901234567890"}) {
        EXPECT_EQ("taken, left: ", verdict(number)) << number;
    }
}

TEST(Scan, NumberEndsWhereStrtodStops) {
    EXPECT_EQ("taken, left: x10", verdict("0x10"));
    EXPECT_EQ("taken, left: .2", verdict("1.1.2"));
    EXPECT_EQ("taken, left: e", verdict("1e"));
    EXPECT_EQ("taken, left: E+", verdict("1E+"));
    EXPECT_EQ("taken, left: e--1", verdict("1e--1"));
    EXPECT_EQ("taken, left: .5", verdict("1e2.5"));
    EXPECT_EQ("taken, left: -2", verdict("1-2"));
}

TEST(Scan, NumberBeginsWithADigitOrAMinusAndHasADigit) {
    for (const std::string number :
         {"+1", ".5", "-", "--1", "-+1", "-.", "-e5", "-.e5", "-x", "-inf", "nan", "Infinity"}) {
        EXPECT_EQ("stops at: " + number, verdict(number));
    }
}

TEST(Scan, NumberOfAHundredThousandDigits) {
    EXPECT_EQ("taken, left: ]", verdict("[" + std::string(100000, '1') + "]]"));
}

TEST(Scan, EscapesOfStrings) {
    EXPECT_EQ("taken, left: ", verdict(R"("\"\\\/\b\f\n\r\t\u0041")"));
    EXPECT_EQ("stops at: \\q\"", verdict(R"("a\q")"));
    EXPECT_EQ("stops at: \\U0041\"", verdict(R"("\U0041")"));
    EXPECT_EQ("stops at: \\x41\"", verdict(R"("\x41")"));
    EXPECT_EQ("stops at: \\", verdict(R"("\)"));
}

TEST(Scan, UEscapeTakesAnyFourBytes) {
    EXPECT_EQ("taken, left: ", verdict(R"("\uzzzz")"));
    EXPECT_EQ("taken, left: ", verdict(R"("\u\"abc")"));
    EXPECT_EQ("taken, left: ", verdict(R"("\u12\\\"")"));
    EXPECT_EQ("taken, left: ", verdict(R"("\uabc\\")"));
    EXPECT_EQ("stops at: \\u123\"", verdict(R"("\u123")"));
    EXPECT_EQ("stops at: \\u\"", verdict(R"("\u")"));
}

TEST(Scan, SurrogatesMustBePairs) {
    EXPECT_EQ("taken, left: ", verdict(R"("\ud83d\ude00")"));
    EXPECT_EQ("taken, left: ", verdict(R"("\uDBFF\uDFFF")"));
    for (const char* wrong : {R"("\ude00")", R"("\ude00\ude00")", R"("\ud83d\ue000")",
                              R"("\ud83d")", R"("\ud83d\u0041")", R"("\ud83dxude00")",
                              R"("\ud83d\nde000")", R"("\ud83d\ude0")", R"("\ud83d\ud83d")"}) {
        EXPECT_EQ("stops at: " + std::string(wrong + 1), verdict(wrong));
    }
}

TEST(Scan, NamesMayBeEmptyAndRepeated) {
    EXPECT_EQ("taken, left: ", verdict(R"({"": 1, "": 2, "a": 3, "a": 4})"));
}

TEST(Scan, NamesMustBeStrings) {
    EXPECT_EQ("stops at: : 2}", verdict("{1: 2}"));
    EXPECT_EQ("stops at: ", verdict("{\"a\": 1,}"));
    EXPECT_EQ("stops at: 1}", verdict("{\"a\" 1}"));
    EXPECT_EQ("stops at: \"a\": 1}", verdict("{,\"a\": 1}"));
}

TEST(Scan, CommasStandBetweenValues) {
    EXPECT_EQ("stops at: ]", verdict("[1,]"));
    EXPECT_EQ("stops at: ,1]", verdict("[,1]"));
    EXPECT_EQ("stops at: 2]", verdict("[1 2]"));
    EXPECT_EQ("stops at: \"b\": 2}", verdict("{\"a\": 1 \"b\": 2}"));
}

TEST(Scan, BracketsMustMatch) {
    EXPECT_EQ("stops at: }", verdict("[1}"));
    EXPECT_EQ("stops at: ]", verdict("{\"a\": 1]"));
    EXPECT_EQ("stops at: ]", verdict("]"));
}

TEST(Scan, WordsAreInSmallLetters) {
    EXPECT_EQ("taken, left: ", verdict("[true, false, null]"));
    EXPECT_EQ("stops at: True]", verdict("[True]"));
    EXPECT_EQ("stops at: NULL]", verdict("[NULL]"));
}

TEST(Scan, ThousandLevelsAreRead) {
    const std::string begin(1000, '[');
    const std::string end(1000, ']');
    EXPECT_EQ("taken, left: ", verdict(begin + end));
    EXPECT_EQ("stops at: []" + end, verdict(begin + "[]" + end));
    EXPECT_EQ("stops at: {}" + end, verdict(begin + "{}" + end));
}

TEST(Scan, LevelsThatAreClosedDoNotCount) {
    std::string text = "[";
    for (int i = 0; i < 2000; ++i) {
        text += "[{}],";
    }
    EXPECT_EQ("taken, left: ", verdict(text + "1]"));
}

TEST(Scan, MoreLevelsAreReadOnDemand) {
    const std::string deep = std::string(100000, '[') + std::string(100000, ']');
    EXPECT_TRUE(std::holds_alternative<Index>(scan(deep, any_levels)));
}

}  // namespace
}  // namespace headsetmgmt::program::json
