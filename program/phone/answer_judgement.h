// What the library made of a document, read from the log lines of the answer's own call.

#pragma once

#include <string>
#include <vector>

namespace headsetmgmt::program {

/// No function of the library tells a host whether a document was taken; the lines that arrive on
/// the calling thread inside `httpResponse` do. Shown each of them, this counts. One thread.
class AnswerJudgement {
public:
    void on_line(const std::string& line);

    /// Accessories that took the document.
    int taken() const { return taken_count; }

    /// Accessories that could not use it, each with the library's reason.
    const std::vector<std::string>& failures() const { return failure_reasons; }

    /// Nobody was waiting for the answer.
    bool was_dropped() const { return dropped; }

    /// What was decided on the firmware, once for each accessory that got so far.
    const std::vector<std::string>& firmware_decisions() const { return decisions; }

private:
    int taken_count = 0;
    bool dropped = false;
    bool is_parsed = false;  // a text that is no JSON is told in a line that may read like success
    std::string latest_reason;
    std::vector<std::string> failure_reasons;
    std::vector<std::string> decisions;
};

}  // namespace headsetmgmt::program
