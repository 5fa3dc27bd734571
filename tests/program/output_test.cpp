// Tests of how events reach standard output, and of texts made fit for a terminal.

#include <string>

#include <gtest/gtest.h>

#include "program/output.h"

namespace headsetmgmt::program {
namespace {

std::string told(Output& output, const Event& event) {
    testing::internal::CaptureStdout();
    output.tell(event);
    return testing::internal::GetCapturedStdout();
}

std::string kind_in_words(const Event& event) {
    return "a " + event.value("event", "") + " happened";
}

TEST(Escaped, PlainTextStaysAsItIs) {
    EXPECT_EQ("", escaped(""));
    EXPECT_EQ("set a = \"b\" {c}~", escaped("set a = \"b\" {c}~"));
}

TEST(Escaped, BackslashIsTwo) {
    EXPECT_EQ("a\\\\nb", escaped("a\\nb"));
}

TEST(Escaped, LineEndsAndTabsHaveTheirOwnLetters) {
    EXPECT_EQ("one\\ntwo\\tthree", escaped("one\ntwo\tthree"));
}

TEST(Escaped, ControlCharactersAreNumbers) {
    EXPECT_EQ("\\x1b[31mred\\x07\\x0d\\x01\\x1f\\x7f", escaped("\x1b[31mred\a\r\x01\x1f\x7f"));
}

TEST(Escaped, NulIsANumberAndNotTheEnd) {
    EXPECT_EQ("a\\x00b", escaped(std::string("a\0b", 3)));
}

TEST(Escaped, Utf8StaysAsItIs) {
    EXPECT_EQ("M\xc3\xbcller \xe2\x82\xac \xf0\x9f\x8e\xa7",
              escaped("M\xc3\xbcller \xe2\x82\xac \xf0\x9f\x8e\xa7"));
}

TEST(Escaped, BytesThatAreNoUtf8AreNumbers) {
    EXPECT_EQ("a\\xffz", escaped("a\xffz"));
    EXPECT_EQ("a\\xc3", escaped("a\xc3"));
    EXPECT_EQ("\\xe2\\x82 \xc3\xbc", escaped("\xe2\x82 \xc3\xbc"));
}

TEST(Escaped, OverlongFormsAndHalvesOfPairsAreNoUtf8) {
    EXPECT_EQ("\\xc0\\x8a", escaped("\xc0\x8a"));
    EXPECT_EQ("\\xe0\\x82\\x9b", escaped("\xe0\x82\x9b"));
    EXPECT_EQ("\\xf0\\x8f\\xbf\\xbf", escaped("\xf0\x8f\xbf\xbf"));
    EXPECT_EQ("\\xed\\xa0\\x80", escaped("\xed\xa0\x80"));
    EXPECT_EQ("\\xf4\\x90\\x80\\x80", escaped("\xf4\x90\x80\x80"));
    EXPECT_EQ("\xf4\x8f\xbf\xbf", escaped("\xf4\x8f\xbf\xbf"));
}

// U+009B begins a command to the terminal as ESC [ does.
TEST(Escaped, ControlCharactersBeyondAsciiAreNumbers) {
    EXPECT_EQ("\\xc2\\x9b31m\\xc2\\x80\\xc2\\x9f\xc2\xa0", escaped("\xc2\x9b"
                                                                   "31m\xc2\x80\xc2\x9f\xc2\xa0"));
}

TEST(Output, WordsAreASentenceALine) {
    Output output(false, kind_in_words);

    EXPECT_EQ("a fetch happened\n", told(output, {{"event", "fetch"}, {"attempt", 1}}));
}

TEST(Output, JsonLinesCarryTheFormatFirstAndKeepTheOrder) {
    Output output(true, kind_in_words);

    EXPECT_EQ("{\"format\":1,\"event\":\"setting\",\"usageId\":32,\"name\":\"a\",\"ok\":true}\n",
              told(output, {{"event", "setting"}, {"usageId", 32}, {"name", "a"}, {"ok", true}}));
}

TEST(Output, JsonLineStaysOneLineWhateverATextHolds) {
    Output output(true, kind_in_words);

    EXPECT_EQ("{\"format\":1,\"event\":\"log\",\"text\":\"a\\nb\\u001b\\u0000\"}\n",
              told(output, {{"event", "log"}, {"text", std::string("a\nb\x1b\0", 5)}}));
}

TEST(Output, BytesThatAreNoUtf8AreReplacedInJson) {
    Output output(true, kind_in_words);

    EXPECT_EQ("{\"format\":1,\"event\":\"log\",\"text\":\"a\xef\xbf\xbdz \xc3\xbc\"}\n",
              told(output, {{"event", "log"}, {"text", "a\xffz \xc3\xbc"}}));
}

TEST(Output, EachEventIsALineOfItsOwn) {
    Output output(true, kind_in_words);
    testing::internal::CaptureStdout();

    output.tell({{"event", "a"}});
    output.tell({{"event", "b"}});

    EXPECT_EQ("{\"format\":1,\"event\":\"a\"}\n{\"format\":1,\"event\":\"b\"}\n",
              testing::internal::GetCapturedStdout());
}

}  // namespace
}  // namespace headsetmgmt::program
