// The program's output: one stream of events, told in words or as JSON lines.

#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>

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

/// Tells events to whoever reads standard output: a sentence each, or with `json` one JSON object a
/// line and nothing else. Both are made from the same event. When they cannot be written, standard
/// error says so once, unless the reader has closed its end. Any thread.
class Output {
public:
    /// Makes the sentence of an event.
    using Wording = std::function<std::string(const Event&)>;

    Output(bool json, Wording wording);

    /// `event` carries its kind as "event".
    void tell(const Event& event);

    /// The exit code of a program that would end with `code`: `exit_failed` for `exit_done` when an
    /// event could not be written.
    int exit_code(int code) const;

private:
    bool as_json;
    Wording in_words;
    std::mutex line_mutex;  // one line at a time
    std::atomic<bool> lost{false};
};

}  // namespace headsetmgmt::program
