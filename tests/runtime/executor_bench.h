// SPDX-License-Identifier: Apache-2.0
// An executor without a thread, driven by the test.

#pragma once

#include <chrono>
#include <deque>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "runtime/executor_impl.h"
#include "support/recording_log.h"
#include "support/virtual_time.h"
#include "support/watched_task.h"

namespace headsetmgmt::test_support {

using Names = std::vector<std::string>;

inline std::vector<LogLine> debug_lines(const std::vector<std::string>& texts) {
    std::vector<LogLine> lines;
    for (const std::string& text : texts) {
        lines.push_back({log::LogLevel::debug, text});
    }
    return lines;
}

/// The test makes the passes, each of which moves the clock by 50 milliseconds, beginning with
/// second 1000.
struct ExecutorBench : testing::Test {
    VirtualTime time{1000, VirtualTime::Sleepers::move_the_clock};
    RecordingLog log;
    RunRecord record;
    std::deque<Watched> watched_tasks;  // they outlive what the executor still has queued
    ExecutorImpl executor{&log};

    Watched& watch() { return watched_tasks.emplace_back(); }

    /// One pass, and the rest of the second.
    void pass_second() {
        executor.threadLoop();
        time.advance(std::chrono::milliseconds(950));
    }
};

}  // namespace headsetmgmt::test_support
