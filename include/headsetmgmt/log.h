// Log lines: how a component composes one and hands it to the host.

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

/// How grave a line is. The library filters nothing: every statement makes a line.
enum LogLevel : std::int32_t {
    critical = 0,
    error = 1,
    warning = 2,
    notice = 3,
    info = 4,
    debug = 5,
};

/// Where finished lines go.
///
/// Made and deleted by the plug-in; everyone else borrows it through `Plugins`. Called from any
/// thread, from several at once.
class HostLogInterface {
public:
    virtual ~HostLogInterface() = default;

    /// The host's own number for a level.
    virtual int map_to_host_log_level(LogLevel level) const = 0;

    /// Takes one finished line, without a line terminator unless its writer put one in. The text is
    /// borrowed for the call. An exception that leaves this operation ends the process.
    virtual void print(LogLevel level, const std::string& line) = 0;
};

/// One line in the making: pieces are streamed in, and the end of its life delivers it.
///
/// A value of one statement, on one thread: `logger->info() << "send" << ": Enter";`
class LogStream {
public:
    /// Begins the line with `name` and ": ". `sink` is borrowed and may be null: the line then goes
    /// nowhere, as it does when `is_enabled` is false.
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

    /// Delivers what the line holds so far and keeps it. When memory runs out the line is cut short
    /// where it did, or lost. A host that throws ends the process.
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

    /// Drops the line for good, for one that turned out not to be true.
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

    /// What the stream's own insertion of texts comes to where nothing is out of the ordinary.
    /// Once a library, like all that is not inline here, not once a line.
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
            // As the stream's own insertion does: what follows is not written.
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

/// Makes the lines of one component, each beginning with the component's name.
///
/// Any thread; it is only read once it is made. Whoever made it with `create_logger` owns it.
class Logger {
public:
    /// `sink` is borrowed and may be null; a logger that is not enabled delivers nothing.
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

    /// The line that a stream makes of the one piece `text`, to be handed to `write`; empty if
    /// memory runs out.
    std::string line(std::string_view text) const noexcept {
        std::string made;
        try {
            made.reserve(name.size() + 2 + text.size());
            made.append(name).append(": ").append(text);
        } catch (const std::bad_alloc&) {
            // Lost, as a line of a stream is.
        }
        return made;
    }

    /// Delivers a finished line, such as one that is written again and again, unless it is empty. A
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

/// A new logger of the component `name`; the caller deletes it with `delete_logger`. `host` is
/// borrowed for the logger's life and may be null. Any thread.
HEADSETMGMT_EXPORT headsetmgmt::log::Logger* create_logger(headsetmgmt::log::HostLogInterface* host,
                                                           const std::string& name, bool enabled);

/// Deletes a logger that `create_logger` made; null is ignored. Any thread.
HEADSETMGMT_EXPORT void delete_logger(headsetmgmt::log::Logger* logger);

namespace headsetmgmt::log {

// The same two functions, found beside what they make and delete as well.
using ::create_logger;
using ::delete_logger;

}  // namespace headsetmgmt::log
