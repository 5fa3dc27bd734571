// SPDX-License-Identifier: Apache-2.0
// Answers to fetches that come later than the request, from a thread of their own.

#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <thread>

namespace headsetmgmt::stress {

/// Delivers answers with `httpResponse` when their time has come. Any thread.
class LateAnswers {
public:
    using Clock = std::chrono::steady_clock;

    LateAnswers();
    ~LateAnswers();

    LateAnswers(const LateAnswers&) = delete;
    LateAnswers& operator=(const LateAnswers&) = delete;

    /// Delivers `body` (a text that stays, or null) with `status` after `delay`. Beyond 64 that
    /// wait, the answer is lost: the host never answers.
    void add(const char* body, int status, Clock::duration delay);

    /// Delivers all that wait now, whatever their time, and returns when none is under way.
    void drain();

private:
    struct Answer {
        const char* body;
        int status;
        Clock::time_point due;
    };

    void deliver();
    Answer* next_due();

    std::mutex mutex;  // guards all of the below; not held while the library is called
    std::condition_variable changed;
    std::array<Answer, 64> waiting{};  // of fixed size: it must not count as the library's memory
    std::size_t count = 0;
    bool delivering = false;
    bool draining = false;
    bool leaving = false;
    std::thread thread;
};

/// Those of the stress host. Made on the first call, and not to be used after the end of main.
LateAnswers& late_answers();

}  // namespace headsetmgmt::stress
