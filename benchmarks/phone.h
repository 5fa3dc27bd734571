// The phone that the benchmarks play: host functions that count.
//
// It is linked to programs that export their symbols to the shared library, with a worker that
// rests until it is told to go on (resting_worker.h).

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "headsetmgmt/phone/host_types.h"

namespace headsetmgmt::benchmarks {

/// What the library has asked of its host and told it so far. The host functions and the log
/// callback add to it, from the thread that holds the library busy.
struct Counts {
    std::size_t lines = 0;
    std::size_t applied = 0;
    std::size_t fetches = 0;
    std::size_t posts = 0;
};

/// The library, started, and the host around it. One at a time, used from one thread.
class Phone {
public:
    /// Creates and starts the library, with the log callback that counts, and tells it its URLs.
    Phone();

    /// Stops the library.
    ~Phone();

    Phone(const Phone&) = delete;
    Phone& operator=(const Phone&) = delete;

    /// Attaches the accessory and runs the worker, which requests the document; the answer is
    /// awaited then.
    void attach_and_fetch(const std::shared_ptr<AccessoryCache>& accessory);

    Counts counts() const;

    /// The thread's processor time in the `n`th call of `apply_changes` from now, once it has come.
    void watch_apply(std::size_t n);
    double watched_apply() const;

    /// Called from inside each `httpRequest` for a document; set it while nothing is under way.
    std::function<void()> on_fetch;

    /// Keeps the texts of the lines of `body` instead of counting them.
    std::vector<std::string> lines_of(const std::function<void()>& body);
};

/// A headset of the model "Varos K20" with a dock, as a host describes it.
std::shared_ptr<AccessoryCache> headset(const std::string& device_id);

/// The log callback that only counts.
void count_line(int level, const char* text);

}  // namespace headsetmgmt::benchmarks
