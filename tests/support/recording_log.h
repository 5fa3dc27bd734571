// SPDX-License-Identifier: Apache-2.0
// A log sink that records its lines.

#pragma once

#include <functional>
#include <iosfwd>
#include <mutex>
#include <string>
#include <vector>

#include "headsetmgmt/log.h"

#include "support/lines.h"

namespace headsetmgmt::test_support {

/// One line as it was delivered.
struct LogLine {
    log::LogLevel level;
    std::string text;
};

inline bool operator==(const LogLine& left, const LogLine& right) {
    return left.level == right.level && left.text == right.text;
}
inline bool operator!=(const LogLine& left, const LogLine& right) {
    return !(left == right);
}

/// Shows the level's name and the text with its line ends and quotes escaped.
void PrintTo(const LogLine& line, std::ostream* stream);

/// Each as "<level> <text>", such as "notice Lib::ConfigManagerImpl: remove_accessory: ENTER".
Lines with_levels(const std::vector<LogLine>& lines);

/// Keeps every line in the order of its delivery. Any thread.
class RecordingLog : public log::HostLogInterface {
public:
    /// What is called with a line after it was recorded, on the thread that delivers it and without
    /// any lock. Set it while nobody logs.
    using Hook = std::function<void(const LogLine& line)>;
    Hook hook;

    /// Answers the level's own number.
    int map_to_host_log_level(log::LogLevel level) const override;

    void print(log::LogLevel level, const std::string& line) override;

    /// All lines so far.
    std::vector<LogLine> lines() const;

    /// The texts of all lines so far, for tests to which the level does not matter.
    Lines texts() const;

    /// All lines so far, and forgets them.
    std::vector<LogLine> take();

    /// Whether a line is exactly `text`, whatever its level.
    bool contains(const std::string& text) const;

private:
    mutable std::mutex mutex;  // guards the lines
    std::vector<LogLine> recorded;
};

}  // namespace headsetmgmt::test_support
