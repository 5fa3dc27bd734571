// Log lines: how a component composes one and hands it to the host.

#pragma once

#include <cstdint>
#include <ios>
#include <new>
#include <sstream>
#include <string>

#include "headsetmgmt/export.h"

namespace headsetmgmt::log {

/// How grave a line is. The library filters nothing: every statement makes a line.
enum class LogLevel : std::int32_t {
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
    LogStream(HostLogInterface* sink, LogLevel line_level, const std::string& name, bool is_enabled)
        : host(sink), level(line_level), enabled(is_enabled) {
        buffer << std::boolalpha << name << ": ";
    }

    /// Delivers the line. A host that throws here ends the process.
    virtual ~LogStream() { flush(); }

    LogStream(const LogStream&) = delete;
    LogStream& operator=(const LogStream&) = delete;

    /// Appends `piece` as a standard stream writes it; `bool` as true or false. Nothing is put
    /// between pieces.
    template <typename T>
    LogStream& operator<<(const T& piece) {
        buffer << piece;
        return *this;
    }

    /// Delivers what the line holds so far and keeps it. When memory runs out the line is cut short
    /// where it did, or lost.
    void flush() {
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

private:
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
