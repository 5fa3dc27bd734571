// Tests of log lines for which there is no memory. A program of its own: it stands before operator
// new.

#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/log.h"

namespace {

/// How many of the thread's next allocations succeed; from then on all fail. Negative: all succeed.
thread_local int allocations_left = -1;

}  // namespace

void* operator new(std::size_t size) {
    if (allocations_left == 0) {
        throw std::bad_alloc();
    }
    if (allocations_left > 0) {
        --allocations_left;
    }
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    ::operator delete(memory);
}

namespace headsetmgmt::log {
namespace {

class LineSink : public HostLogInterface {
public:
    int map_to_host_log_level(LogLevel level) const override { return static_cast<int>(level); }
    void print(LogLevel /*level*/, const std::string& line) override {
        allocations_left = -1;
        lines.push_back(line);
    }

    std::vector<std::string> lines;
};

TEST(LogMemoryTest, LineIsCutShortWhereMemoryRanOutAlthoughItComesBack) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);
    const std::string long_piece(10000, 'x');

    {
        LogStream stream = logger.info();
        stream << "begin";
        allocations_left = 0;
        stream << long_piece;
        allocations_left = -1;
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
        LogStream stream = logger.info();
        stream << "a line that is longer than what a string holds without memory";
        allocations_left = 0;
    }
    allocations_left = -1;

    EXPECT_EQ(sink.lines, std::vector<std::string>());
}

TEST(LogMemoryTest, FinishedLineThatFindsNoMemoryIsEmptyAndNotDelivered) {
    LineSink sink;
    const Logger logger(&sink, "Component", true);

    allocations_left = 0;
    const std::string line = logger.line("one that is longer than what a string holds");
    allocations_left = -1;
    logger.write(LogLevel::info, line);

    EXPECT_EQ(line, "");
    EXPECT_EQ(sink.lines, std::vector<std::string>());
}

}  // namespace
}  // namespace headsetmgmt::log
