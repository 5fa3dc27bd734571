// SPDX-License-Identifier: Apache-2.0
// Tests of lines on their way to a reader who may not read.

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <fcntl.h>
#include <future>
#include <string>
#include <sys/resource.h>
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

    /// Reads byte by byte, what filled it first, until `is_enough` says so of the rest.
    template <typename IsEnough>
    std::string read_by_bytes_until(IsEnough is_enough) {
        std::string text;
        char byte = 0;
        while ((text.empty() || !is_enough(text)) && read(ends[0], &byte, 1) == 1) {
            if (filled != 0) {
                --filled;
            } else {
                text += byte;
            }
        }
        return text;
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

LineWriter::Limits limits(std::size_t bytes, milliseconds patience) {
    LineWriter::Limits all;
    all.bytes = bytes;
    all.patience = patience;
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

TEST(LineWriter, WhatDoesNotFitIsLostAtOnce) {
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(room_for_two, forever), count_line, ignore_error);

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
    LineWriter writer(pipe.writing_end(), limits(room_for_two, forever), count_line, ignore_error);
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
    LineWriter writer(pipe.writing_end(), limits(10, forever), count_line, ignore_error);

    writer.add(line_of('a'));

    EXPECT_EQ(line_of('a'), pipe.read_bytes(1000));
    EXPECT_EQ(0U, writer.finish().lost_lines);
}

TEST(LineWriter, FinishGivesUpWhenNobodyReadsAndCountsWhatIsLeft) {
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(room_for_two, milliseconds(10)), count_line,
                      ignore_error);
    writer.add(line_of('a'));
    writer.add("b\nc\n");

    EXPECT_EQ(3U, writer.finish().lost_lines);
    EXPECT_EQ(3U, writer.finish().lost_lines);
}

TEST(LineWriter, FinishWaitsForAReaderWhoReads) {
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(std::size_t{1} << 20U, forever), count_line,
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

// The reader goes on for longer than the patience, but never pauses for as long.
TEST(LineWriter, FinishWaitsForASlowReader) {
    constexpr milliseconds patience{1000};
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(std::size_t{64} << 20U, patience), count_line,
                      ignore_error);
    std::string expected;
    for (int i = 0; i < 20000; ++i) {
        expected += line_of('a');
        writer.add(line_of('a'));
    }
    const auto begin = std::chrono::steady_clock::now();
    std::string read;
    std::thread reader([&] {
        read = pipe.read_by_bytes_until([&](const std::string& /*text*/) {
            return std::chrono::steady_clock::now() > begin + patience * 3 / 2;
        });
        read += pipe.read_bytes(expected.size() - read.size());
    });

    EXPECT_EQ(0U, writer.finish().lost_lines);
    EXPECT_GT(std::chrono::steady_clock::now() - begin, patience);
    reader.join();
    EXPECT_EQ(expected, read);
}

TEST(LineWriter, FinishInAHurryIsShort) {
    Pipe pipe;
    pipe.fill();
    LineWriter::Limits short_hurry = limits(room_for_two, forever);
    short_hurry.hurry_for_all = milliseconds(10);
    short_hurry.hurry_for_last = milliseconds(10);
    LineWriter writer(pipe.writing_end(), short_hurry, count_line, ignore_error);
    writer.add(line_of('a'));
    writer.add(line_of('b'));

    writer.hurry();

    EXPECT_EQ(3U, writer.finish("last\n").lost_lines);
}

TEST(LineWriter, HurryShortensAFinishThatWaits) {
    Pipe pipe;
    pipe.fill();
    LineWriter::Limits short_hurry = limits(room_for_two, forever);
    short_hurry.hurry_for_all = milliseconds(10);
    short_hurry.hurry_for_last = milliseconds(10);
    LineWriter writer(pipe.writing_end(), short_hurry, count_line, ignore_error);
    std::size_t lost = 0;
    std::thread finishing([&] { lost = writer.finish("last\n").lost_lines; });

    writer.hurry();

    finishing.join();
    EXPECT_EQ(1U, lost);
}

TEST(LineWriter, InAHurryTheCountOfWhatWaitsAndTheLastLineAreLeft) {
    Pipe pipe;
    pipe.fill();
    LineWriter::Limits last_alone = limits(std::size_t{64} << 20U, forever);
    last_alone.hurry_for_all = milliseconds(0);
    last_alone.hurry_for_last = forever;
    LineWriter writer(pipe.writing_end(), last_alone, count_line, ignore_error);
    constexpr std::size_t count = 5000;
    for (std::size_t i = 0; i < count; ++i) {
        writer.add(line_of('a'));
    }
    writer.hurry();
    std::size_t lost = 0;
    std::thread finishing([&] { lost = writer.finish("last\n").lost_lines; });

    // So slowly that the reader cannot have all lines before the other thread finishes.
    std::string read = pipe.read_by_bytes_until(
        [](const std::string& text) { return text.back() == 't' || text.size() == count * 1000; });
    read += pipe.read_bytes(std::string("lost 4999\nlast\n").size() - 4);

    finishing.join();
    const std::size_t lines = read.find("lost") / 1000;
    EXPECT_EQ(count, lines + lost);
    EXPECT_EQ("lost " + std::to_string(lost) + "\nlast\n", read.substr(lines * 1000));
}

TEST(LineWriter, SecondFinishReturnsAtOnce) {
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(room_for_two, milliseconds(500)), count_line,
                      ignore_error);
    writer.add(line_of('a'));
    writer.finish();

    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(1U, writer.finish("other\n").lost_lines);
    }

    EXPECT_LT(std::chrono::steady_clock::now() - begin, milliseconds(5000));
}

TEST(LineWriter, LastLineIsAddedInAnyCaseAndNoneAfterIt) {
    Pipe pipe;
    pipe.fill();
    LineWriter writer(pipe.writing_end(), limits(room_for_two, forever), count_line, ignore_error);
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

// As a full disk on which somebody makes room.
TEST(LineWriter, LineThatAnErrorCutIsEndedAndCounted) {
    const std::string path = testing::TempDir() + "line_writer_test." + std::to_string(getpid());
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_NE(-1, file);
    unlink(path.c_str());
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 1500;
    setrlimit(RLIMIT_FSIZE, &small);
    std::promise<void> failed;
    LineWriter writer(file, {}, count_line, [&failed](int /*error*/) { failed.set_value(); });
    writer.add(line_of('a'));
    writer.add(line_of('b'));
    failed.get_future().wait();
    setrlimit(RLIMIT_FSIZE, &before);

    writer.add("c\n");
    const LineWriter::Result result = writer.finish();

    std::string text(4096, '\0');
    text.resize(static_cast<std::size_t>(pread(file, text.data(), text.size(), 0)));
    close(file);
    EXPECT_EQ(line_of('a') + std::string(500, 'b') + "\nlost 1\nc\n", text);
    EXPECT_EQ(EFBIG, result.error);
    EXPECT_EQ(0U, result.lost_lines);
}

TEST(LineWriter, DescriptorThatDoesNotBlockIsNoErrorWhenItIsFull) {
    Pipe pipe;
    pipe.fill();
    fcntl(pipe.writing_end(), F_SETFL, O_NONBLOCK);
    LineWriter writer(pipe.writing_end(), limits(room_for_two, milliseconds(200)), count_line,
                      ignore_error);
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
    LineWriter writer(pipe.writing_end(), limits(room_for_two, forever), count_line, ignore_error);
    std::string read;
    std::thread reader([&] { read = pipe.read_bytes(1000); });

    writer.add(line_of('a'));

    EXPECT_EQ(0U, writer.finish().lost_lines);
    reader.join();
    EXPECT_EQ(line_of('a'), read);
}

}  // namespace
}  // namespace headsetmgmt::program
