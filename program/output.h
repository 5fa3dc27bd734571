// SPDX-License-Identifier: Apache-2.0
// The program's output: one stream of events, as sentences or as JSON lines.

#pragma once

#include <atomic>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "program/line_writer.h"

namespace headsetmgmt::program {

using Event = nlohmann::ordered_json;

/// Version of the JSON lines: every object carries it as "format".
inline constexpr int output_format = 1;

/// `text` in printable ASCII. A character beyond is written as \u009b or \U0001f3a7, a control
/// character as \n, \t or \x1b, a byte that is not UTF-8 as \xff, a backslash as two.
std::string escaped(const std::string& text);

/// Writes `text` to standard output, as it is. When it cannot be written, standard error says so,
/// unless the reader has closed its end, and the answer is false.
bool print(const std::string& text);

/// Writes "headsetmgmt: <message>" to standard error, as one line, unless it takes nothing for half
/// a second. Takes no memory.
void complain(std::string_view message);

/// Writes events to standard output: a sentence each, or with `json` one JSON object a
/// line and nothing else, in ASCII. Both are made from the same event. Any thread.
///
/// Events are written by a thread of their own, in their order. When nobody reads, they wait in a
/// queue (`LineWriter`) and those that do not fit are lost: the event `lost` stands in their place.
/// When events cannot be written, standard error says so once, unless the reader has closed its
/// end.
class Output {
public:
    /// Makes the sentence of an event.
    using Wording = std::function<std::string(const Event&)>;

    Output(bool json, Wording wording, LineWriter::Limits limits = {});

    /// `event` carries its kind as "event".
    void write(const Event& event);

    /// The program is asked to end: `end` waits for a reader for 1.5 s at most.
    void hurry() { lines.hurry(); }

    /// Waits until everything is read, but no longer than the limits say; reports on standard error
    /// how much was lost. `last`, unless it is null, is the last event: later ones are discarded, a
    /// second `last` too. Returns the exit code of a program that would end with `code`:
    /// `exit_failed` for `exit_done` when an event was lost.
    int end(int code, const Event& last = nullptr);

private:
    std::string line_of(const Event& event) const;

    bool as_json;
    Wording in_words;
    std::atomic<bool> is_loss_reported{false};
    LineWriter lines;
};

}  // namespace headsetmgmt::program
