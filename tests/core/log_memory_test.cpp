// SPDX-License-Identifier: Apache-2.0
// Tests of log lines for which there is no memory.

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/log.h"

#include "support/short_memory.h"

namespace headsetmgmt::log {
namespace {

using test_support::ShortMemory;

class LineSink : public HostLogInterface {
public:
    int map_to_host_log_level(LogLevel level) const override { return static_cast<int>(level); }
    void print(LogLevel /*level*/, const std::string& line) override { lines.push_back(line); }

    std::vector<std::string> lines;
};

TEST(LogMemoryTest, LineIsCutShortWhereMemoryRanOutAlthoughItComesBack) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);
    const std::string long_piece(10000, 'x');

    {
        LogStream stream = logger.info();
        stream << "begin";
        {
            const ShortMemory short_memory;
            stream << long_piece;
        }
        stream << "end" << 7;
    }

    ASSERT_EQ(sink.lines.size(), 1U);
    EXPECT_EQ(sink.lines[0].rfind("Component: begin", 0), 0U);
    EXPECT_EQ(sink.lines[0].find("end"), std::string::npos);
    EXPECT_EQ(sink.lines[0].find('7'), std::string::npos);
}

TEST(LogMemoryTest, LineThatFindsNoMemoryAtItsEndIsLost) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);

    {
        std::optional<ShortMemory> short_memory;
        LogStream stream = logger.info();
        stream << "a line that is longer than what a string holds without memory";
        short_memory.emplace();
    }

    EXPECT_EQ(sink.lines, std::vector<std::string>());
}

TEST(LogMemoryTest, FinishedLineThatFindsNoMemoryIsEmptyAndNotDelivered) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);

    const std::string line = [&logger] {
        const ShortMemory short_memory;
        return logger.line("one that is longer than what a string holds");
    }();
    logger.write(LogLevel::info, line);

    EXPECT_EQ(line, "");
    EXPECT_EQ(sink.lines, std::vector<std::string>());
}

}  // namespace
}  // namespace headsetmgmt::log
