// SPDX-License-Identifier: Apache-2.0
// Tests of how events reach standard output, and of texts made fit for a terminal.

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "program/exit_codes.h"
#include "program/output.h"

namespace headsetmgmt::program {
namespace {

std::string written(Output& output, const Event& event) {
    testing::internal::CaptureStdout();
    output.write(event);
    output.end(exit_done);
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

TEST(Escaped, CharactersBeyondAsciiAreTheirNumbers) {
    EXPECT_EQ("M\\u00fcller \\u20ac \\uffff \\U0001f3a7 \\U0010ffff",
              escaped("M\xc3\xbcller \xe2\x82\xac \xef\xbf\xbf \xf0\x9f\x8e\xa7 \xf4\x8f\xbf\xbf"));
}

// They end lines, or turn the direction of what follows.
TEST(Escaped, SeparatorsAndMarksOfDirectionAreTheirNumbers) {
    EXPECT_EQ("\\u2028\\u2029\\u202e\\u2066\\ufeff",
              escaped("\xe2\x80\xa8\xe2\x80\xa9\xe2\x80\xae\xe2\x81\xa6\xef\xbb\xbf"));
}

TEST(Escaped, BytesThatAreNoUtf8AreNumbers) {
    EXPECT_EQ("a\\xffz", escaped("a\xffz"));
    EXPECT_EQ("a\\xc3", escaped("a\xc3"));
    EXPECT_EQ("\\xe2\\x82 \\u00fc", escaped("\xe2\x82 \xc3\xbc"));
}

TEST(Escaped, OverlongFormsAndHalvesOfPairsAreNoUtf8) {
    EXPECT_EQ("\\xc0\\x8a", escaped("\xc0\x8a"));
    EXPECT_EQ("\\xe0\\x82\\x9b", escaped("\xe0\x82\x9b"));
    EXPECT_EQ("\\xf0\\x8f\\xbf\\xbf", escaped("\xf0\x8f\xbf\xbf"));
    EXPECT_EQ("\\xed\\xa0\\x80", escaped("\xed\xa0\x80"));
    EXPECT_EQ("\\xf4\\x90\\x80\\x80", escaped("\xf4\x90\x80\x80"));
}

// U+009B begins a command to the terminal as ESC [ does.
TEST(Escaped, ControlCharactersBeyondAsciiAreTheirNumbers) {
    EXPECT_EQ("\\u009b31m\\u0080\\u009f\\u00a0", escaped("\xc2\x9b"
                                                         "31m\xc2\x80\xc2\x9f\xc2\xa0"));
}

TEST(Output, WordsAreASentenceALine) {
    Output output(false, kind_in_words);

    EXPECT_EQ("a fetch happened\n", written(output, {{"event", "fetch"}, {"attempt", 1}}));
}

TEST(Output, JsonLinesCarryTheFormatFirstAndKeepTheOrder) {
    Output output(true, kind_in_words);

    EXPECT_EQ(
        "{\"format\":1,\"event\":\"setting\",\"usageId\":32,\"name\":\"a\",\"ok\":true}\n",
        written(output, {{"event", "setting"}, {"usageId", 32}, {"name", "a"}, {"ok", true}}));
}

TEST(Output, JsonLineStaysOneLineWhateverATextHolds) {
    Output output(true, kind_in_words);

    EXPECT_EQ("{\"format\":1,\"event\":\"log\",\"text\":\"a\\nb\\u001b\\u0000\"}\n",
              written(output, {{"event", "log"}, {"text", std::string("a\nb\x1b\0", 5)}}));
}

TEST(Output, BytesThatAreNoUtf8AreReplacedInJson) {
    Output output(true, kind_in_words);

    EXPECT_EQ("{\"format\":1,\"event\":\"log\",\"text\":\"a\\ufffdz\"}\n",
              written(output, {{"event", "log"}, {"text", "a\xffz"}}));
}

TEST(Output, JsonIsPrintableAscii) {
    Output output(true, kind_in_words);

    EXPECT_EQ("{\"format\":1,\"event\":\"log\",\"text\":"
              "\"\\u007f\\u009b\\u00fc\\u2028\\u202e\\ud83c\\udfa7\"}\n",
              written(output, {{"event", "log"},
                               {"text", "\x7f\xc2\x9b\xc3\xbc\xe2\x80\xa8\xe2\x80\xae"
                                        "\xf0\x9f\x8e\xa7"}}));
}

TEST(Output, EachEventIsALineOfItsOwn) {
    Output output(true, kind_in_words);
    testing::internal::CaptureStdout();

    output.write({{"event", "a"}});
    output.write({{"event", "b"}});
    output.end(exit_done);

    EXPECT_EQ("{\"format\":1,\"event\":\"a\"}\n{\"format\":1,\"event\":\"b\"}\n",
              testing::internal::GetCapturedStdout());
}

/// Standard output, led elsewhere for the length of a scope.
class StandardOutputTo {
public:
    explicit StandardOutputTo(int descriptor) {
        std::fflush(stdout);
        before = dup(STDOUT_FILENO);
        dup2(descriptor, STDOUT_FILENO);
    }
    ~StandardOutputTo() {
        std::fflush(stdout);
        std::clearerr(stdout);
        dup2(before, STDOUT_FILENO);
        close(before);
    }

    StandardOutputTo(const StandardOutputTo&) = delete;
    StandardOutputTo& operator=(const StandardOutputTo&) = delete;

private:
    int before;
};

TEST(Output, WhatCannotBeWrittenIsReportedOnceAndMakesASuccessAFailure) {
    Output output(true, kind_in_words);
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_NE(-1, full);
    testing::internal::CaptureStderr();
    {
        const StandardOutputTo nowhere(full);
        output.write({{"event", "a"}});
        output.write({{"event", "b"}});
        EXPECT_EQ(exit_failed, output.end(exit_done));
    }
    close(full);

    EXPECT_EQ("headsetmgmt: standard output cannot be written: No space left on device\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(exit_usage, output.end(exit_usage));
}

TEST(Output, ReaderThatHasGoneIsNoFailure) {
    Output output(true, kind_in_words);
    const auto handler_before = std::signal(SIGPIPE, SIG_IGN);
    int ends[2] = {-1, -1};
    ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
    close(ends[0]);
    testing::internal::CaptureStderr();
    {
        const StandardOutputTo gone(ends[1]);
        output.write({{"event", "a"}});
        EXPECT_EQ(exit_done, output.end(exit_done));
    }
    close(ends[1]);
    std::signal(SIGPIPE, handler_before);

    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

/// What reaches a reader who begins to read when two of four events are lost.
std::string told_late(bool as_json) {
    constexpr std::size_t room_for_one = 1000;
    LineWriter::Limits limits;
    limits.bytes = room_for_one;
    int ends[2] = {-1, -1};
    EXPECT_EQ(0, pipe2(ends, O_CLOEXEC));
    // Longer than a pipe holds: it stays in hand until it is read.
    const Event long_event = {{"event", std::string(std::size_t{1} << 20U, 'a')}};
    std::string text;
    testing::internal::CaptureStderr();
    {
        Output output(
            as_json, [](const Event& event) { return event.value("event", ""); }, limits);
        const StandardOutputTo pipe(ends[1]);
        output.write(long_event);
        output.write({{"event", "b"}});
        output.write({{"event", "c"}});
        std::string bytes(4096, '\0');
        std::thread reader([&] {
            ssize_t length = 0;
            while ((length = read(ends[0], bytes.data(), bytes.size())) > 0) {
                text.append(bytes, 0, static_cast<std::size_t>(length));
            }
        });
        EXPECT_EQ(exit_failed, output.end(exit_done));
        close(ends[1]);
        dup2(STDERR_FILENO, STDOUT_FILENO);  // the last descriptor of the pipe's writing end
        reader.join();
    }
    close(ends[0]);
    EXPECT_EQ("headsetmgmt: lost: 2 lines of output, for nobody read them\n",
              testing::internal::GetCapturedStderr());
    return text.substr(text.find('\n') + 1);
}

TEST(Output, LostEventsAreAnEvent) {
    EXPECT_EQ("{\"format\":1,\"event\":\"lost\",\"lines\":2}\n", told_late(true));
}

TEST(Output, LostSentencesAreASentence) {
    EXPECT_EQ("lost here: 2 lines of output\n", told_late(false));
}

}  // namespace
}  // namespace headsetmgmt::program
