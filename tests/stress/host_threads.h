// SPDX-License-Identifier: Apache-2.0
// The threads that call the library, and what they do.

#pragma once

#include <array>
#include <atomic>
#include <thread>

#include "stress/meeting.h"

namespace headsetmgmt::stress {

/// Eight threads that call any function of the flat interface, again and again, until the object
/// goes. They begin in the meeting.
class HostThreads {
public:
    HostThreads();

    /// While they are in no meeting.
    ~HostThreads();

    HostThreads(const HostThreads&) = delete;
    HostThreads& operator=(const HostThreads&) = delete;

    /// Where they wait between two calls while it is convened.
    Meeting& meeting() { return their_meeting; }

    /// From now on every other call of theirs starts or stops the library, or no longer does.
    void start_and_stop(bool wanted) { starting_and_stopping = wanted; }

private:
    static constexpr int number = 8;

    void run(int index);

    Meeting their_meeting{number};
    std::atomic<bool> starting_and_stopping{false};
    std::atomic<bool> leaving{false};
    std::array<std::thread, number> threads;
};

}  // namespace headsetmgmt::stress
