// Tests of what is told of a document that the library could not parse.

#include <cstddef>
#include <string>

#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include "program/phone/syntax_error.h"

namespace headsetmgmt::program {
namespace {

/// What is told of a text that the library's parser, called as the library calls it, refuses.
std::string syntax_error_of(const std::string& text) {
    const char* rest = nullptr;
    cJSON* tree = cJSON_ParseWithOpts(text.c_str(), &rest, 0);
    if (tree != nullptr) {
        cJSON_Delete(tree);
        return "JSON";
    }
    return syntax_error(text, rest);
}

TEST(SyntaxError, EmptyDocument) {
    EXPECT_EQ("the document is empty (0 bytes)", syntax_error("", "Nothing to parse"));
}

TEST(SyntaxError, DocumentOfWhiteSpace) {
    EXPECT_EQ("the document is nothing but white space (3 bytes)", syntax_error(" \r\n", ""));
}

TEST(SyntaxError, DocumentThatBeginsWithANul) {
    EXPECT_EQ("the document begins with a NUL byte, so it counts as empty",
              syntax_error(std::string("\0{}", 3), "Nothing to parse"));
}

TEST(SyntaxError, PlaceCountsLinesAndCharactersFromOne) {
    EXPECT_EQ("no JSON: line 1, column 1: \"oops\"", syntax_error("oops", "oops"));
    EXPECT_EQ("no JSON: line 3, column 4: \"x}\"", syntax_error("{\n\"a\":\n   x}", "x}"));
}

TEST(SyntaxError, CharacterOfSeveralBytesIsOneColumn) {
    EXPECT_EQ("no JSON: line 1, column 8: \"x\"",
              syntax_error("[\"\xc3\xa4\xe2\x82\xac\", x", "x"));
}

TEST(SyntaxError, TextFromTheErrorOnIsCutBetweenCharacters) {
    const std::string digits = "x1234567890123456789012345678901234567890123456789012345678";

    EXPECT_EQ("no JSON: line 1, column 1: \"" + digits + "...\"",
              syntax_error(digits + "\xc3\xa4yz", digits + "\xc3\xa4yz"));
}

// The parser goes on by one byte, which is the end of the document here.
TEST(SyntaxError, MissingKeyIsTheByteBefore) {
    EXPECT_EQ("no JSON: line 1, column 8: \"}\"", syntax_error("{\"a\":1,}", ""));
    EXPECT_EQ("no JSON: line 1, column 2: \"'a': 1}\"", syntax_error("{'a': 1}", "a': 1}"));
    EXPECT_EQ("no JSON: line 1, column 8: \"[\"", syntax_error("{\"a\":1,[", ""));
    EXPECT_EQ("no JSON: line 1, column 2: \"t\"", syntax_error("{t", ""));
}

TEST(SyntaxError, BackslashInAKeyIsWhereItStands) {
    EXPECT_EQ("no JSON: line 1, column 4: \"\\q\": 1}\"",
              syntax_error("{\"a\\q\": 1}", "\\q\": 1}"));
}

TEST(SyntaxError, BackslashIsWhereItStandsThoughALaterTextIsCutOff) {
    EXPECT_EQ("no JSON: line 1, column 4: \"\\q\": \"x\"",
              syntax_error("{\"a\\q\": \"x", "\\q\": \"x"));
}

TEST(SyntaxError, CommaOfAnArrayIsFollowedByNoKey) {
    EXPECT_EQ("no JSON: line 1, column 5: \"x]\"", syntax_error("[1,2x]", "x]"));
}

TEST(SyntaxError, DocumentThatIsCutOff) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 1)", syntax_error("{", ""));
    EXPECT_EQ("no JSON: it ends in the middle (byte 7)", syntax_error("{\"a\":1,", ""));
    EXPECT_EQ("no JSON: it ends in the middle (byte 10)", syntax_error("[1, \"\\\"\", ", ""));
}

TEST(SyntaxError, DocumentThatIsCutOffInAWord) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 5)", syntax_error("[fals", "fals"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 2)", syntax_error("[-", "-"));
    EXPECT_EQ("no JSON: line 1, column 2: \"falsy\"", syntax_error("[falsy", "falsy"));
}

TEST(SyntaxError, DocumentThatIsCutOffInAnExponent) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 10)", syntax_error("{\"a\":-2.5e", "e"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 11)", syntax_error("{\"a\":-2.5E+", "E+"));
    EXPECT_EQ("no JSON: line 1, column 4: \"e\"", syntax_error("[1 e", "e"));
    EXPECT_EQ("no JSON: line 1, column 3: \"e+]\"", syntax_error("[1e+]", "e+]"));
}

TEST(SyntaxError, WordThatMayNotStandWhereItDoesIsNotCutOff) {
    EXPECT_EQ("no JSON: line 1, column 4: \"t\"", syntax_error("[1 t", "t"));
}

TEST(SyntaxError, EmptyObjectLacksNoKey) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 7)", syntax_error("{\"a\":{}", ""));
    EXPECT_EQ("no JSON: it ends in the middle (byte 8)", syntax_error("{\"a\":{ }", ""));
    EXPECT_EQ("no JSON: it ends in the middle (byte 6)", syntax_error("[{},{}", ""));
    EXPECT_EQ("no JSON: line 1, column 4: \"x]\"", syntax_error("[{}x]", "x]"));
    EXPECT_EQ("no JSON: line 1, column 13: \"\"commonSettings\":[]}}\"",
              syntax_error("{\"t\":{\"x\":{}\"commonSettings\":[]}}", "\"commonSettings\":[]}}"));
}

TEST(SyntaxError, EveryBeginningOfADocumentEndsInTheMiddle) {
    const std::string document =
        "{\"empty\": {}, \"blank\": { }, \"none\":[ ],\n"
        "\"numbers\": [0, -0, 17, -2.5e3, 1E+2, 6.25e-1],\n"
        "\"words\": [true, false, null], \"\\u00e4\\\"\": \"\\\\ \\n\\u20ac\",\n"
        "\"\xc3\xa4\": [{}, {\"a\": [[], {\"b\": {}}]}, \"\"]}";
    ASSERT_EQ("JSON", syntax_error_of(document));

    for (std::size_t bytes = 1; bytes < document.size(); ++bytes) {
        const std::string beginning = document.substr(0, bytes);
        const std::string expected =
            "no JSON: it ends in the middle (byte " + std::to_string(bytes) + ")";
        EXPECT_EQ(expected, syntax_error_of(beginning).substr(0, expected.size())) << beginning;
    }
}

TEST(SyntaxError, DocumentThatIsCutOffInATextSaysWhereThatBegins) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 11), in a text that begins at line 2, column 5",
              syntax_error("{\n\"a\":\"b\\\"}", "b\\\"}"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 5), in a text that begins at line 1, column 2",
              syntax_error("{\"key", "key"));
}

TEST(SyntaxError, DocumentThatGoesTooDeep) {
    EXPECT_EQ(
        "nested deeper than the library reads, which is 2 levels: line 1, column 8: \"[1]]}\"",
        syntax_error("{\"a\": [[1]]}", "[1]]}"));
}

TEST(SyntaxError, LevelThatMayNotStandWhereItDoesIsNotTooDeep) {
    EXPECT_EQ("no JSON: line 1, column 4: \"[2]]\"", syntax_error("[1 [2]]", "[2]]"));
}

TEST(SyntaxError, HundredThousandLevelsAreNoMatter) {
    const std::string deep(100000, '[');

    EXPECT_EQ(
        "nested deeper than the library reads, which is 1000 levels: line 1, column 1001: \"" +
            std::string(60, '[') + "...\"",
        syntax_error(deep, deep.substr(1000)));
}

TEST(SyntaxError, DocumentCountsUpToItsFirstNul) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 7)",
              syntax_error(std::string("{\"a\": 1\0}", 9), ""));
}

TEST(SyntaxError, RestThatIsNotOfTheDocumentIsToldAsItIs) {
    EXPECT_EQ("no JSON at: something else", syntax_error("{\"a\" 1}", "something else"));
}

}  // namespace
}  // namespace headsetmgmt::program
