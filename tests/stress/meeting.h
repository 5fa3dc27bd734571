// SPDX-License-Identifier: Apache-2.0
// Where the threads that call the library meet and wait, so that nothing is under way.

#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace headsetmgmt::stress {

/// One thread convenes; a known number of others attend between two of their calls. A new meeting
/// is convened already, for others that come into being.
class Meeting {
public:
    explicit Meeting(int attendants) : expected(attendants) {}

    /// Waits until all are there.
    void convene();

    /// Lets them go on.
    void dismiss();

    /// For those others: waits here while a meeting is held.
    void attend();

private:
    const int expected;
    std::atomic<bool> convened{true};  // looked at without the mutex, before every call
    std::mutex mutex;                  // guards the count
    std::condition_variable changed;
    int present = 0;
};

}  // namespace headsetmgmt::stress
