// SPDX-License-Identifier: Apache-2.0
// Log lines: composed by a component, delivered to the host.

#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <ios>
#include <new>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

#include "headsetmgmt/export.h"

namespace headsetmgmt::log {

/// Severity of a line. The library does not filter: every log statement produces a line.
enum LogLevel : std::int32_t {
    critical = 0,
    error = 1,
    warning = 2,
    notice = 3,
    info = 4,
    debug = 5,
};

/// Receives finished lines.
///
/// Made and deleted by the plug-in; everyone else borrows it through `Plugins`. Called from any
/// thread, from several at once.
class HostLogInterface {
public:
    virtual ~HostLogInterface() = default;

    /// The host's own number for a level.
    virtual int map_to_host_log_level(LogLevel level) const = 0;

    /// Takes one finished line, which has a line terminator only if its writer added one. The text
    /// is borrowed for the call. An exception from this operation ends the process.
    virtual void print(LogLevel level, const std::string& line) = 0;
};

/// Composes one line from streamed pieces; the destructor delivers it.
///
/// Used within one statement, on one thread: `logger->info() << "send" << ": Enter";`
class LogStream {
public:
    /// Begins the line with `name` and ": ". `sink` is borrowed. The line is dropped when `sink` is
    /// null or `is_enabled` is false.
    [[gnu::noinline]] LogStream(HostLogInterface* sink, LogLevel line_level,
                                const std::string& name, bool is_enabled)
        : host(sink), level(line_level), enabled(is_enabled) {
        buffer.setf(std::ios_base::boolalpha);
        append(name);
        append(": ");
    }

    /// Delivers the line. A host that throws here ends the process.
    [[gnu::noinline]] virtual ~LogStream() { flush(); }

    LogStream(const LogStream&) = delete;
    LogStream& operator=(const LogStream&) = delete;

    /// Appends `piece` as a standard stream writes it; `bool` as true or false, and integers and
    /// `double` without the grouping and the decimal point of the process's locale. Nothing is put
    /// between pieces.
    template <typename T>
    LogStream& operator<<(const T& piece) {
        if constexpr (is_text_<T>) {
            append(piece);
        } else if constexpr (is_text_pointer_<T>) {
            if (piece != nullptr) {
                append(piece);
            } else {
                buffer << piece;
            }
        } else if constexpr (is_number_<T>) {
            append_number(piece);
        } else {
            buffer << piece;
        }
        return *this;
    }

    /// Delivers the line as it is so far and keeps it. When memory runs out, the line is truncated
    /// or lost. A host that throws ends the process.
    void flush() noexcept {
        if (!enabled || host == nullptr) {
            return;
        }
        std::string line;
        try {
            line = buffer.str();
        } catch (const std::bad_alloc&) {
            return;
        }
        host->print(level, line);
    }

    /// Drops the line: it will not be delivered.
    void discard() { enabled = false; }

private:
    template <typename T>
    static constexpr bool
        is_text_ = std::is_same_v<T, std::string> || std::is_same_v<T, std::string_view> ||
                   (std::is_array_v<T> && std::is_same_v<std::remove_extent_t<T>, char>);
    template <typename T>
    static constexpr bool is_text_pointer_ =
        std::is_same_v<T, const char*> || std::is_same_v<T, char*>;
    template <typename T>
    static constexpr bool is_number_ =
        std::is_same_v<T, short> || std::is_same_v<T, unsigned short> || std::is_same_v<T, int> ||
        std::is_same_v<T, unsigned int> || std::is_same_v<T, long> ||
        std::is_same_v<T, unsigned long> || std::is_same_v<T, long long> ||
        std::is_same_v<T, unsigned long long> || std::is_same_v<T, double>;

    /// Same as the stream's insertion of a text, and faster in the usual state of the stream. Not
    /// inline, like others here, so that the library has it once, not once for each line.
    [[gnu::noinline]] void append(std::string_view text) noexcept {
        if (!buffer.good() || buffer.width() != 0) {
            buffer << text;
            return;
        }
        try {
            const auto size = static_cast<std::streamsize>(text.size());
            if (buffer.rdbuf()->sputn(text.data(), size) == size) {
                return;
            }
        } catch (...) {
            // As the stream's own insertion does: later pieces are not written.
        }
        buffer.setstate(std::ios_base::badbit);
    }

    /// The same for numbers.
    template <typename T>
    [[gnu::noinline]] void append_number(T number) noexcept {
        constexpr std::ios_base::fmtflags usual_flags =
            std::ios_base::dec | std::ios_base::skipws | std::ios_base::boolalpha;
        constexpr int usual_precision = 6;
        if (buffer.flags() != usual_flags || buffer.precision() != usual_precision) {
            buffer << number;
            return;
        }
        std::array<char, 32> digits;
        char* const first = digits.data();
        char* const last = first + digits.size();
        char* end = nullptr;
        if constexpr (std::is_floating_point_v<T>) {
            end =
                std::to_chars(first, last, number, std::chars_format::general, usual_precision).ptr;
        } else {
            end = std::to_chars(first, last, number).ptr;
        }
        append({first, static_cast<std::size_t>(end - first)});
    }

    std::ostringstream buffer;
    HostLogInterface* host;
    LogLevel level;
    bool enabled;
};

/// Makes the log lines of one component; each begins with the component's name.
///
/// Any thread: immutable. Owned by the caller of `create_logger`.
class Logger {
public:
    /// `sink` is borrowed and may be null. A logger that is not enabled delivers nothing.
    Logger(HostLogInterface* sink, const std::string& component, bool is_enabled)
        : host(sink), name(component), enabled(is_enabled) {}
    virtual ~Logger() = default;

    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    LogStream critical() const { return {host, LogLevel::critical, name, enabled}; }
    LogStream error() const { return {host, LogLevel::error, name, enabled}; }
    LogStream warning() const { return {host, LogLevel::warning, name, enabled}; }
    LogStream notice() const { return {host, LogLevel::notice, name, enabled}; }
    LogStream info() const { return {host, LogLevel::info, name, enabled}; }
    LogStream debug() const { return {host, LogLevel::debug, name, enabled}; }

    /// A finished line with the one piece `text`, for `write`; empty if memory runs out.
    std::string line(std::string_view text) const noexcept {
        std::string made;
        try {
            made.reserve(name.size() + 2 + text.size());
            made.append(name).append(": ").append(text);
        } catch (const std::bad_alloc&) {
            // The line is lost, as a streamed one is.
        }
        return made;
    }

    /// Delivers a finished line, for lines that are written repeatedly. An empty one is ignored. A
    /// host that throws ends the process.
    void write(LogLevel level, const std::string& finished_line) const noexcept {
        if (enabled && host != nullptr && !finished_line.empty()) {
            host->print(level, finished_line);
        }
    }

private:
    HostLogInterface* host;
    std::string name;
    bool enabled;
};

}  // namespace headsetmgmt::log

/// Makes the logger of the component `name`; the caller deletes it with `delete_logger`. `host` is
/// borrowed for the lifetime of the logger and may be null. Any thread.
HEADSETMGMT_EXPORT headsetmgmt::log::Logger* create_logger(headsetmgmt::log::HostLogInterface* host,
                                                           const std::string& name, bool enabled);

/// Deletes a logger that `create_logger` made; null is ignored. Any thread.
HEADSETMGMT_EXPORT void delete_logger(headsetmgmt::log::Logger* logger);

namespace headsetmgmt::log {

// The same two functions, also in the namespace of their class.
using ::create_logger;
using ::delete_logger;

}  // namespace headsetmgmt::log
