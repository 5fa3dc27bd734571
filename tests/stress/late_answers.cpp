// SPDX-License-Identifier: Apache-2.0
// Answers to fetches that come later than the request, from a thread of their own.

#include "stress/late_answers.h"

#include <algorithm>
#include <pthread.h>

#include "stress/random_calls.h"
#include "stress/watchdog.h"

namespace headsetmgmt::stress {

LateAnswers::LateAnswers()
    : thread([this] {
          pthread_setname_np(pthread_self(), "late answers");
          watch_this_thread();
          deliver();
      }) {}

LateAnswers::~LateAnswers() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        leaving = true;
        changed.notify_all();
    }
    thread.join();
}

void LateAnswers::add(const char* body, int status, Clock::duration delay) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (count == waiting.size()) {
        return;
    }
    waiting[count] = {body, status, Clock::now() + delay};
    ++count;
    changed.notify_all();
}

void LateAnswers::drain() {
    std::unique_lock<std::mutex> lock(mutex);
    draining = true;
    changed.notify_all();
    changed.wait(lock, [this] { return count == 0 && !delivering; });
    draining = false;
}

void LateAnswers::deliver() {
    std::unique_lock<std::mutex> lock(mutex);
    while (!leaving) {
        Answer* const due = next_due();
        if (due == nullptr) {
            changed.wait_for(lock, std::chrono::milliseconds(1));
            continue;
        }
        const Answer answer = *due;
        --count;
        *due = waiting[count];
        delivering = true;
        lock.unlock();
        deliver_answer(answer.body, answer.status);
        lock.lock();
        delivering = false;
        changed.notify_all();
    }
}

/// An answer whose time has come; null when there is none. The mutex is held.
LateAnswers::Answer* LateAnswers::next_due() {
    const Clock::time_point now = Clock::now();
    const auto end = waiting.begin() + count;
    const auto due = std::find_if(
        waiting.begin(), end, [&](const Answer& answer) { return draining || answer.due <= now; });
    return due != end ? &*due : nullptr;
}

LateAnswers& late_answers() {
    static LateAnswers answers;
    return answers;
}

}  // namespace headsetmgmt::stress
