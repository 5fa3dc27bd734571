// SPDX-License-Identifier: Apache-2.0
// Makes calls of the threads library fail, and counts them.
//
// A program that uses `PthreadAnswer` gets its own `pthread_...` functions of the names below,
// which pass every call on to the system's (or the sanitizer's) but for the one that is answered.

#pragma once

namespace headsetmgmt::test_support {

/// The functions that can be answered.
enum class PthreadCall {
    create,
    attr_init,
    attr_setdetachstate,
    mutex_init,
    mutexattr_init,
    join,
    detach,
    getschedparam,
    setschedparam,
};

/// Answers the next call of one function, made by any thread, in the place of the system, which
/// does not see that call. Later calls, and all once the object is gone, reach the system.
///
/// One for each function at a time.
class PthreadAnswer {
public:
    /// `result` is an error number, or 0 to pretend that the call succeeded.
    PthreadAnswer(PthreadCall call, int result);
    ~PthreadAnswer();

    PthreadAnswer(const PthreadAnswer&) = delete;
    PthreadAnswer& operator=(const PthreadAnswer&) = delete;

    /// Whether the call came. Any thread.
    bool given() const;

private:
    PthreadCall answered;
};

/// How many calls of the function there were since the program began, answered or not. Any thread.
int calls_of(PthreadCall call);

/// The kind of the mutex that was made latest, or was to be made; -1 when there was none since the
/// program began. Any thread.
int latest_mutex_kind();

/// What a thread asked `pthread_setschedparam` for.
struct SchedulingRequest {
    int policy;
    int priority;
};

/// The latest one; both members -1 when there was none since the program began. Any thread.
SchedulingRequest latest_scheduling_request();

}  // namespace headsetmgmt::test_support
