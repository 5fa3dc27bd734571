// SPDX-License-Identifier: Apache-2.0
// Fetches of one URL that wait together: they share a transfer.

#pragma once

#include <map>
#include <string>

namespace headsetmgmt::program {

/// Counts the fetches that wait for an answer, by URL. One thread at a time.
///
/// The library may ask for a document again while its earlier request is out: an accessory left and
/// came back. With a transfer for each, there would be one more for as long as the server fails.
class JoinedFetches {
public:
    /// Adds a fetch. True when it needs a transfer; false when it waits for one that is queued,
    /// under way, or whose failure is still held back.
    bool add(const std::string& url) { return ++waiting[url] == 1; }

    /// How many fetches the end of the URL's transfer answers, each once. None of them waits any
    /// more.
    int take(const std::string& url) {
        const auto entry = waiting.find(url);
        const int fetches = entry != waiting.end() ? entry->second : 0;
        waiting.erase(url);
        return fetches;
    }

private:
    std::map<std::string, int> waiting;
};

}  // namespace headsetmgmt::program
