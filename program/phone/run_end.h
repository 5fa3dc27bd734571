// SPDX-License-Identifier: Apache-2.0
// Why a run did not end well, in words.

#pragma once

#include <string>

namespace headsetmgmt::program {

/// How far a run has come.
struct RunProgress {
    enum class UnderWay { nothing, fetch, document, report };

    UnderWay under_way = UnderWay::nothing;
    int attempt = 0;             ///< fetches since the last document, the one under way included
    bool waits = false;          ///< a failed fetch is held back until it is time for the next
    bool wants_document = true;  ///< an accessory is neither configured nor given up
    std::string last_failure;    ///< of the last fetch; empty when it brought a document
};

/// Why there is no document after so many attempts.
std::string no_document(int attempts, const std::string& last_failure);

/// What was going on when a run was interrupted.
std::string interruption(const RunProgress& progress);

}  // namespace headsetmgmt::program
