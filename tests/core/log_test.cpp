// SPDX-License-Identifier: Apache-2.0
// Log lines: how one is composed, and that it is delivered once, at its level.

#include <iomanip>
#include <locale>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "headsetmgmt/log.h"

using headsetmgmt::log::HostLogInterface;
using headsetmgmt::log::Logger;
using headsetmgmt::log::LogLevel;
using headsetmgmt::log::LogStream;
using testing::ElementsAre;
using testing::Pair;

namespace {

/// Keeps what it is given, byte for byte and with its level.
class LineSink : public HostLogInterface {
public:
    int map_to_host_log_level(LogLevel level) const override { return static_cast<int>(level); }
    void print(LogLevel level, const std::string& line) override {
        const std::lock_guard<std::mutex> lines_lock(lines_mutex);
        lines.emplace_back(level, line);
    }

    std::vector<std::pair<LogLevel, std::string>> lines;

private:
    std::mutex lines_mutex;
};

class ThrowingSink : public HostLogInterface {
public:
    int map_to_host_log_level(LogLevel /*level*/) const override { return 0; }
    void print(LogLevel /*level*/, const std::string& /*line*/) override {
        throw std::runtime_error("the host failed");
    }
};

TEST(LogTest, LevelsHaveTheirFixedValues) {
    EXPECT_EQ(static_cast<int>(LogLevel::critical), 0);
    EXPECT_EQ(static_cast<int>(LogLevel::error), 1);
    EXPECT_EQ(static_cast<int>(LogLevel::warning), 2);
    EXPECT_EQ(static_cast<int>(LogLevel::notice), 3);
    EXPECT_EQ(static_cast<int>(LogLevel::info), 4);
    EXPECT_EQ(static_cast<int>(LogLevel::debug), 5);
}

TEST(LogTest, EveryLevelDeliversItsLineAtThatLevel) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);

    logger.critical() << "one";
    logger.error() << "two";
    logger.warning() << "three";
    logger.notice() << "four";
    logger.info() << "five";
    logger.debug() << "six";

    EXPECT_THAT(sink.lines, ElementsAre(Pair(LogLevel::critical, "Component: one"),
                                        Pair(LogLevel::error, "Component: two"),
                                        Pair(LogLevel::warning, "Component: three"),
                                        Pair(LogLevel::notice, "Component: four"),
                                        Pair(LogLevel::info, "Component: five"),
                                        Pair(LogLevel::debug, "Component: six")));
}

TEST(LogTest, StatementWithoutPiecesDeliversNameAndColon) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);

    logger.info();

    EXPECT_THAT(sink.lines, ElementsAre(Pair(LogLevel::info, "Component: ")));
}

TEST(LogTest, LineIsDeliveredAtTheEndOfItsStatement) {
    LineSink sink;
    {
        LogStream line(&sink, LogLevel::notice, "Component", true);
        line << "send"
             << ": Enter";
        EXPECT_TRUE(sink.lines.empty());
    }
    EXPECT_THAT(sink.lines, ElementsAre(Pair(LogLevel::notice, "Component: send: Enter")));
}

TEST(LogTest, ChainOfPiecesDeliversExactlyOneLine) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);

    logger.info() << "a"
                  << "b"
                  << "c"
                  << "d";

    EXPECT_THAT(sink.lines, ElementsAre(Pair(LogLevel::info, "Component: abcd")));
}

TEST(LogTest, FlushDeliversAndKeepsTheLine) {
    LineSink sink;
    {
        LogStream line(&sink, LogLevel::info, "Component", true);
        line << "first";
        line.flush();
        line << " second";
    }
    EXPECT_THAT(sink.lines, ElementsAre(Pair(LogLevel::info, "Component: first"),
                                        Pair(LogLevel::info, "Component: first second")));
}

TEST(LogTest, DiscardedLineIsNotDelivered) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);

    {
        LogStream stream = logger.info();
        stream << "stored";
        stream.discard();
        stream << " after all";
    }

    EXPECT_TRUE(sink.lines.empty());
}

TEST(LogTest, ErrorTagStandsDirectlyAfterTheOperationName) {
    LineSink sink;
    const Logger logger(&sink, "HeadsetInventoryMetricsImpl", true);

    logger.error() << "get_post_url"
                   << "[PLUGIN-ERR]"
                   << " system info has no url for inventory";

    EXPECT_THAT(sink.lines,
                ElementsAre(Pair(LogLevel::error,
                                 "HeadsetInventoryMetricsImpl: get_post_url[PLUGIN-ERR] system "
                                 "info has no url for inventory")));
}

TEST(LogTest, BoolIsWrittenAsTrueOrFalse) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);

    logger.info() << true << "/" << false;

    EXPECT_THAT(sink.lines, ElementsAre(Pair(LogLevel::info, "Component: true/false")));
}

TEST(LogTest, DoubleIsWrittenWithSixDigits) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);

    logger.info() << 1732176000.0;

    EXPECT_THAT(sink.lines, ElementsAre(Pair(LogLevel::info, "Component: 1.73218e+09")));
}

TEST(LogTest, EveryKindOfPieceIsWrittenAsItStands) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);
    const std::string text = "text ";
    const char* constant_characters = "constant ";
    char characters[] = "array ";
    char* pointer = characters;

    logger.info() << text << constant_characters << characters << pointer << -7 << " "
                  << 4294967295U << " " << 18446744073709551615UL << " " << 2.5;

    EXPECT_THAT(
        sink.lines,
        ElementsAre(
            Pair(LogLevel::info,
                 "Component: text constant array array -7 4294967295 18446744073709551615 2.5")));
}

/// Groups digits by threes and has a comma for a point.
class Continental : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(LogTest, NumbersAreWrittenAlikeInEveryLocale) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new Continental));

    logger.info() << -1234567 << " " << 4294967295U << " " << 18446744073709551615UL << " " << 2.5
                  << " " << 1e300 << " " << -0.0 << " " << -12345L << " " << 123456789012LL << " "
                  << 1234567890123ULL << " " << short{-1234} << " "
                  << static_cast<unsigned short>(54321);

    std::locale::global(before);
    EXPECT_THAT(sink.lines,
                ElementsAre(Pair(LogLevel::info, "Component: -1234567 4294967295 "
                                                 "18446744073709551615 2.5 1e+300 -0 -12345 "
                                                 "123456789012 1234567890123 -1234 54321")));
}

TEST(LogTest, ManipulatorsWorkAsOnAStream) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);

    logger.info() << std::hex << 255 << std::dec << "|" << std::setw(4) << 7 << "|" << std::setw(4)
                  << "ab"
                  << "|" << std::setprecision(3) << 1.23456 << "|" << std::fixed << 1.5;

    EXPECT_THAT(sink.lines,
                ElementsAre(Pair(LogLevel::info, "Component: ff|   7|  ab|1.23|1.500")));
}

TEST(LogTest, NullTextEndsTheLine) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);
    const char* nothing = nullptr;

    logger.info() << "before" << nothing << "after" << 7;

    EXPECT_THAT(sink.lines, ElementsAre(Pair(LogLevel::info, "Component: before")));
}

/// Has a text of its own, and one that it passes for.
struct TwoFaced {
    operator std::string_view() const { return "view"; }
};

std::ostream& operator<<(std::ostream& stream, const TwoFaced& /*piece*/) {
    return stream << "own text";
}

TEST(LogTest, OtherPiecesAreWrittenAsAStreamWritesThem) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);

    logger.info() << nullptr << " " << TwoFaced() << " " << 'c' << " " << std::string_view("view");

    EXPECT_THAT(sink.lines,
                ElementsAre(Pair(LogLevel::info, "Component: nullptr own text c view")));
}

TEST(LogTest, FinishedLineIsTheOneThatAStreamMakesAndIsDeliveredEachTime) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);
    const Logger disabled(&sink, "Component", false);
    const Logger without_host(nullptr, "Component", true);

    const std::string line = logger.line("send: Enter");
    logger.write(LogLevel::notice, line);
    logger.write(LogLevel::notice, line);
    disabled.write(LogLevel::notice, line);
    without_host.write(LogLevel::notice, line);

    EXPECT_THAT(sink.lines, ElementsAre(Pair(LogLevel::notice, "Component: send: Enter"),
                                        Pair(LogLevel::notice, "Component: send: Enter")));
}

TEST(LogTest, LineEndsWithoutTerminatorUnlessItsWriterPutOneIn) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);

    logger.info() << "without";
    logger.info() << "with\n";

    EXPECT_THAT(sink.lines, ElementsAre(Pair(LogLevel::info, "Component: without"),
                                        Pair(LogLevel::info, "Component: with\n")));
}

TEST(LogTest, DisabledLoggerDeliversNothing) {
    LineSink sink;
    const Logger logger(&sink, "Component", false);

    logger.critical() << "lost";
    logger.debug() << 1;

    EXPECT_TRUE(sink.lines.empty());
}

TEST(LogTest, DisabledStreamFlushesNothing) {
    LineSink sink;
    {
        LogStream line(&sink, LogLevel::info, "Component", false);
        line << "lost";
        line.flush();
    }
    EXPECT_TRUE(sink.lines.empty());
}

TEST(LogTest, NullHostDropsEveryLine) {
    Logger* logger = create_logger(nullptr, "Component", true);

    EXPECT_NO_THROW(logger->critical() << "lost" << 1);
    EXPECT_NO_THROW(logger->info().flush());

    delete_logger(logger);
}

TEST(LogTest, CreatedLoggerWritesToItsHostUnderItsOwnCopyOfTheName) {
    LineSink sink;
    std::string name = "ConfigFactory";
    Logger* logger = create_logger(&sink, name, true);
    name = "changed";

    logger->warning() << "create"
                      << ": Enter";

    EXPECT_THAT(sink.lines, ElementsAre(Pair(LogLevel::warning, "ConfigFactory: create: Enter")));
    delete_logger(logger);
}

TEST(LogTest, CreatedLoggerMayBeDisabled) {
    LineSink sink;
    Logger* logger = create_logger(&sink, "Component", false);

    logger->error() << "lost";

    EXPECT_TRUE(sink.lines.empty());
    delete_logger(logger);
}

TEST(LogTest, DeletingNullDoesNothing) {
    EXPECT_NO_THROW(delete_logger(nullptr));
}

TEST(LogTest, DeletingGoesThroughTheVirtualDestructor) {
    class Watched : public Logger {
    public:
        explicit Watched(bool& deleted) : Logger(nullptr, "Watched", true), was_deleted(deleted) {}
        ~Watched() override { was_deleted = true; }

    private:
        bool& was_deleted;
    };
    bool deleted = false;

    delete_logger(std::make_unique<Watched>(deleted).release());

    EXPECT_TRUE(deleted);
}

TEST(LogTest, SeveralThreadsMayUseOneLogger) {
    constexpr int threads = 4;
    constexpr int lines_each = 200;
    LineSink sink;
    const Logger logger(&sink, "Component", true);
    std::vector<std::thread> writers;
    for (int writer = 0; writer < threads; ++writer) {
        writers.emplace_back([&logger, writer] {
            for (int line = 0; line < lines_each; ++line) {
                logger.info() << "writer " << writer;
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }

    std::vector<int> count(threads, 0);
    for (const auto& [level, line] : sink.lines) {
        ASSERT_EQ(level, LogLevel::info);
        ASSERT_EQ(line.substr(0, 18), "Component: writer ");
        ++count.at(static_cast<std::size_t>(std::stoi(line.substr(18))));
    }
    EXPECT_THAT(count, ElementsAre(lines_each, lines_each, lines_each, lines_each));
}

TEST(LogDeathTest, HostThatThrowsEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    ThrowingSink sink;
    const Logger logger(&sink, "Component", true);

    EXPECT_DEATH(logger.info() << "line", "the host failed");
    EXPECT_DEATH(logger.write(LogLevel::info, "line"), "the host failed");
    EXPECT_DEATH((logger.info() << "line").flush(), "the host failed");
}

}  // namespace
