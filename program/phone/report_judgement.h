// Why a report was not built, read from the library's log lines.

#pragma once

#include <optional>
#include <string>

namespace headsetmgmt::program {

/// No function of the library tells a host that a report was not built; log lines do. Shown every
/// line, in the order in which the worker writes its own, this finds them. One thread at a time.
class ReportJudgement {
public:
    /// Why, as far as the lines tell, when this one says that a report was not built.
    std::optional<std::string> on_line(const std::string& line);

private:
    std::string cause;  // of the report that is being built; empty while nothing is known
};

}  // namespace headsetmgmt::program
