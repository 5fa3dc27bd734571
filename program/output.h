// The program's output: one stream of events, told in words or as JSON lines.

#pragma once

#include <functional>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>

namespace headsetmgmt::program {

using Event = nlohmann::ordered_json;

/// Version of the JSON lines: every object carries it as "format".
inline constexpr int output_format = 1;

/// `text` with control characters, and bytes that are no UTF-8, written as \n, \t or \x1b, and a
/// backslash as two.
std::string escaped(const std::string& text);

/// Tells events to whoever reads standard output: a sentence each, or with `json` one JSON object a
/// line and nothing else. Both are made from the same event. Any thread.
class Output {
public:
    /// Makes the sentence of an event.
    using Wording = std::function<std::string(const Event&)>;

    Output(bool json, Wording wording);

    /// `event` carries its kind as "event".
    void tell(const Event& event);

private:
    bool as_json;
    Wording in_words;
    std::mutex line_mutex;  // one line at a time
};

}  // namespace headsetmgmt::program
