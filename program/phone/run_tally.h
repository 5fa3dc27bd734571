// SPDX-License-Identifier: Apache-2.0
// The result of a run so far.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "program/output.h"

namespace headsetmgmt::program {

/// Counts, and the reasons why a run will not end well. One thread at a time.
struct RunTally {
    int attached = 0;
    int configured = 0;
    int not_configured = 0;
    std::size_t passed_over = 0;  ///< settings that could not be read, of each document
    int reports_wanted = 0;
    int reports_accepted = 0;
    int reports_failed = 0;
    bool gave_up = false;              ///< no document is fetched any more
    std::vector<std::string> reasons;  ///< each once

    void note_reason(const std::string& reason);

    /// Whether an accessory waits for a document that may still come.
    bool wants_document() const;

    /// Whether everything that was begun has come to its end.
    bool is_complete() const;

    /// The event `result`. `interruption` is what the run was broken off in, and comes before the
    /// other reasons; empty: it was not.
    Event result(const std::string& interruption) const;
};

}  // namespace headsetmgmt::program
