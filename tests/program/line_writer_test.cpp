// Tests of lines on their way to a reader who may not read.

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <fcntl.h>
#include <string>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "program/line_writer.h"

namespace headsetmgmt::program {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds forever{3600 * 1000};

/// A pipe, which may be full from the start.
class Pipe {
public:
    Pipe() { EXPECT_EQ(0, pipe2(ends, O_CLOEXEC)); }
    /// Ends a write that blocks. The writing end stays open, for that write is in it.
    ~Pipe() {
        if (ends[0] != -1) {
            close_reading_end();
        }
    }

    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int writing_end() const { return ends[1]; }

    void fill() {
        fcntl(ends[1], F_SETFL, O_NONBLOCK);
        const std::string bytes(4096, '.');
        while (write(ends[1], bytes.data(), bytes.size()) > 0) {
            filled += bytes.size();
        }
        fcntl(ends[1], F_SETFL, 0);
    }

    /// Reads until so many bytes were read after those that filled it.
    std::string read_bytes(std::size_t count) {
        std::string text;
        std::string bytes(4096, '\0');
        while (text.size() < filled + count) {
            const ssize_t length = read(ends[0], bytes.data(), bytes.size());
            if (length <= 0) {
                break;
            }
            text.append(bytes, 0, static_cast<std::size_t>(length));
        }
        text.erase(0, filled);
        filled = 0;
        return text;
    }

    void close_reading_end() {
        close(ends[0]);
        ends[0] = -1;
    }

private:
    int ends[2] = {-1, -1};
    std::size_t filled = 0;
};

LineWriter::Limits limits(std::size_t bytes, milliseconds patience, bool waits) {
    LineWriter::Limits all;
    all.bytes = bytes;
    all.patience = patience;
    all.waits = waits;
    return all;
}

std::string count_line(std::size_t lines) {
    return "lost " + std::to_string(lines) + "\n";
}

void ignore_error(int /*error*/) {}

/// A line of a thousand bytes.
std::string line_of(char letter) {
    return std::string(999, letter) + "\n";
}

// Two lines of a thousand bytes fit, three do not.
constexpr std::size_t room_for_two = 2500;

TEST(LineWriter, LinesAreWrittenInTheirOrder) {
    Pipe pipe;
    LineWriter writer(pipe.writing_end(), {}, count_line, ignore_error);

    writer.add("one\n");
    writer.add("two\nthree\n");

    EXPECT_EQ("one\ntwo\nthree\n", pipe.read_bytes(14));
    EXPECT_EQ(0U, writer.finish().lost_lines);
}

TEST(LineWriter, WhatDoesNotFitIsLostAtOnceWhenNobodyMayWait) {
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(room_for_two, forever, false), count_line,
                      ignore_error);

    writer.add(line_of('a'));
    writer.add(line_of('b'));
    writer.add(line_of('c'));
    writer.add(line_of('d') + "e\n");

    EXPECT_EQ(line_of('a') + line_of('b') + "lost 3\n", pipe.read_bytes(2007));
    EXPECT_EQ(3U, writer.finish().lost_lines);
}

TEST(LineWriter, LossStandsWhereTheLinesAreMissing) {
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(room_for_two, forever, false), count_line,
                      ignore_error);
    writer.add(line_of('a'));
    writer.add(line_of('b'));
    writer.add(line_of('c'));

    const std::string before = pipe.read_bytes(2007);
    writer.add("d\n");

    EXPECT_EQ(line_of('a') + line_of('b') + "lost 1\n", before);
    EXPECT_EQ("d\n", pipe.read_bytes(2));
}

TEST(LineWriter, LineLongerThanTheQueueIsTakenWhenItIsEmpty) {
    Pipe pipe;
    LineWriter writer(pipe.writing_end(), limits(10, forever, false), count_line, ignore_error);

    writer.add(line_of('a'));

    EXPECT_EQ(line_of('a'), pipe.read_bytes(1000));
    EXPECT_EQ(0U, writer.finish().lost_lines);
}

TEST(LineWriter, ReaderWhoIsSlowerThanTheLinesLosesNone) {
    constexpr std::size_t count = 2000;
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(room_for_two, forever, true), count_line,
                      ignore_error);
    std::string read;
    std::thread reader([&] { read = pipe.read_bytes(count * 1000); });
    std::string expected;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string line = line_of(static_cast<char>('a' + i % 26));
        expected += line;
        writer.add(line);
    }
    reader.join();

    EXPECT_EQ(expected, read);
    EXPECT_EQ(0U, writer.finish().lost_lines);
}

TEST(LineWriter, ReaderWhoReadsNothingIsWaitedForOnce) {
    constexpr milliseconds patience{200};
    constexpr int count = 500;
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(room_for_two, patience, true), count_line,
                      ignore_error);

    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i) {
        writer.add(line_of('a'));
    }
    const auto duration = std::chrono::steady_clock::now() - begin;

    EXPECT_GE(duration, patience);
    EXPECT_LT(duration, patience * count / 10);
    EXPECT_EQ(500U, writer.finish().lost_lines);
}

TEST(LineWriter, FinishGivesUpWhenNobodyReadsAndCountsWhatIsLeft) {
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(room_for_two, milliseconds(10), false), count_line,
                      ignore_error);
    writer.add(line_of('a'));
    writer.add("b\nc\n");

    EXPECT_EQ(3U, writer.finish().lost_lines);
    EXPECT_EQ(3U, writer.finish().lost_lines);
}

TEST(LineWriter, FinishWaitsForAReaderWhoReads) {
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(std::size_t{1} << 20U, forever, false), count_line,
                      ignore_error);
    std::string expected;
    for (int i = 0; i < 500; ++i) {
        expected += line_of('a');
        writer.add(line_of('a'));
    }
    std::string read;
    std::thread reader([&] { read = pipe.read_bytes(expected.size()); });

    EXPECT_EQ(0U, writer.finish().lost_lines);
    reader.join();
    EXPECT_EQ(expected, read);
}

TEST(LineWriter, HurryEndsAWaitForRoomAndMakesFinishShort) {
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(room_for_two, forever, true), count_line,
                      ignore_error);
    writer.add(line_of('a'));
    writer.add(line_of('b'));
    std::thread waiting([&] { writer.add(line_of('c')); });

    writer.hurry();
    waiting.join();

    EXPECT_EQ(3U, writer.finish().lost_lines);
}

TEST(LineWriter, LastLineIsAddedInAnyCaseAndNoneAfterIt) {
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(room_for_two, forever, false), count_line,
                      ignore_error);
    writer.add(line_of('a'));
    writer.add(line_of('b'));
    std::string read;
    std::thread reader([&] { read = pipe.read_bytes(2005); });

    EXPECT_EQ(0U, writer.finish("last\n").lost_lines);
    writer.add("later\n");

    reader.join();
    EXPECT_EQ(line_of('a') + line_of('b') + "last\n", read);
    EXPECT_EQ(0U, writer.finish().lost_lines);
}

TEST(LineWriter, ReaderWhoHasGoneIsNeitherALossNorAnError) {
    Pipe pipe;
    pipe.close_reading_end();
    int errors = 0;
    LineWriter writer(pipe.writing_end(), {}, count_line, [&errors](int /*error*/) { ++errors; });

    writer.add("a\n");
    const LineWriter::Result result = writer.finish();

    EXPECT_EQ(0U, result.lost_lines);
    EXPECT_EQ(0, result.error);
    EXPECT_EQ(0, errors);
}

TEST(LineWriter, FirstErrorIsReportedOnce) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_NE(-1, full);
    int errors = 0;
    LineWriter writer(full, {}, count_line, [&errors](int error) { errors += error; });

    writer.add("a\n");
    writer.add("b\n");
    const LineWriter::Result result = writer.finish();
    close(full);

    EXPECT_EQ(0U, result.lost_lines);
    EXPECT_EQ(ENOSPC, result.error);
    EXPECT_EQ(ENOSPC, errors);
}

TEST(LineWriter, DescriptorThatDoesNotBlockIsNoErrorWhenItIsFull) {
    Pipe pipe;
    pipe.fill();
    fcntl(pipe.writing_end(), F_SETFL, O_NONBLOCK);
    LineWriter writer(pipe.writing_end(), limits(room_for_two, milliseconds(200), false),
                      count_line, ignore_error);
    writer.add(line_of('a'));

    const LineWriter::Result result = writer.finish();

    EXPECT_EQ(0, result.error);
    EXPECT_EQ(1U, result.lost_lines);
}

// Whoever shares a terminal or a pipe may have made it so.
TEST(LineWriter, DescriptorThatDoesNotBlockIsWaitedFor) {
    Pipe pipe;
    pipe.fill();
    fcntl(pipe.writing_end(), F_SETFL, O_NONBLOCK);
    LineWriter writer(pipe.writing_end(), limits(room_for_two, forever, false), count_line,
                      ignore_error);
    std::string read;
    std::thread reader([&] { read = pipe.read_bytes(1000); });

    writer.add(line_of('a'));

    EXPECT_EQ(0U, writer.finish().lost_lines);
    reader.join();
    EXPECT_EQ(line_of('a'), read);
}

}  // namespace
}  // namespace headsetmgmt::program
