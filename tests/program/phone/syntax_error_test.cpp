// Tests of what is reported of a document that the library could not parse.

#include <string>

#include <gtest/gtest.h>

#include "program/phone/syntax_error.h"

namespace headsetmgmt::program {
namespace {

TEST(SyntaxError, ReasonAndPlaceInTheDocument) {
    EXPECT_EQ("no JSON: line 3, column 4: \"x}\"", syntax_error("{\n\"a\":\n   x}", "x}"));
}

TEST(SyntaxError, RestBeginsWhereTheParserGaveUp) {
    EXPECT_EQ("no JSON: line 1, column 2: \"'a': 1}\"", syntax_error("{'a': 1}", "a': 1}"));
    EXPECT_EQ("no JSON: it ends in the middle (byte 5), in a text that begins at line 1, column 2",
              syntax_error("{\"key", "key"));
}

TEST(SyntaxError, EmptyDocumentHasNoRest) {
    EXPECT_EQ("the document is empty (0 bytes)", syntax_error("", "Nothing to parse"));
    EXPECT_EQ("the document begins with a NUL byte, so it counts as empty",
              syntax_error(std::string("\0{}", 3), "Nothing to parse"));
}

TEST(SyntaxError, DocumentCountsUpToItsFirstNul) {
    EXPECT_EQ("no JSON: it ends in the middle (byte 7)",
              syntax_error(std::string("{\"a\": 1\0}", 9), ""));
}

TEST(SyntaxError, RestThatIsNotOfTheDocumentIsQuotedAlone) {
    EXPECT_EQ("no JSON at: something else", syntax_error("{\"a\" 1}", "something else"));
    EXPECT_EQ("no JSON at: 1}", syntax_error("{\"a\": 1}", "1}"));
}

}  // namespace
}  // namespace headsetmgmt::program
