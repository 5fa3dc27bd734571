// SPDX-License-Identifier: Apache-2.0
// A log sink that records its lines.

#include "support/recording_log.h"

#include <ostream>

namespace headsetmgmt::test_support {

namespace {

using Lock = std::lock_guard<std::mutex>;

const char* name_of(log::LogLevel level) {
    switch (level) {
    case log::LogLevel::critical:
        return "critical";
    case log::LogLevel::error:
        return "error";
    case log::LogLevel::warning:
        return "warning";
    case log::LogLevel::notice:
        return "notice";
    case log::LogLevel::info:
        return "info";
    case log::LogLevel::debug:
        return "debug";
    }
    return "level out of range";
}

}  // namespace

void PrintTo(const LogLine& line, std::ostream* stream) {
    *stream << name_of(line.level) << " \"";
    for (const char character : line.text) {
        switch (character) {
        case '\n':
            *stream << "\\n";
            break;
        case '"':
            *stream << "\\\"";
            break;
        default:
            *stream << character;
        }
    }
    *stream << '"';
}

Lines with_levels(const std::vector<LogLine>& lines) {
    Lines texts;
    for (const LogLine& line : lines) {
        texts.push_back(name_of(line.level) + (" " + line.text));
    }
    return texts;
}

int RecordingLog::map_to_host_log_level(log::LogLevel level) const {
    return static_cast<int>(level);
}

void RecordingLog::print(log::LogLevel level, const std::string& line) {
    const LogLine delivered{level, line};
    {
        const Lock lock(mutex);
        recorded.push_back(delivered);
    }
    if (hook) {
        hook(delivered);
    }
}

std::vector<LogLine> RecordingLog::lines() const {
    const Lock lock(mutex);
    return recorded;
}

Lines RecordingLog::texts() const {
    Lines texts;
    for (const LogLine& line : lines()) {
        texts.push_back(line.text);
    }
    return texts;
}

std::vector<LogLine> RecordingLog::take() {
    std::vector<LogLine> taken;
    const Lock lock(mutex);
    taken.swap(recorded);
    return taken;
}

bool RecordingLog::contains(const std::string& text) const {
    const Lock lock(mutex);
    for (const LogLine& line : recorded) {
        if (line.text == text) {
            return true;
        }
    }
    return false;
}

}  // namespace headsetmgmt::test_support
