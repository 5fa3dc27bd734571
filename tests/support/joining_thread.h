// SPDX-License-Identifier: Apache-2.0
// Finds out that a thread waits for another one's end.
//
// A program that uses it gets its own `pthread_join`, which passes every call on to the system's
// (or the sanitizer's).

#pragma once

#include <pthread.h>

namespace headsetmgmt::test_support {

/// Waits until `thread` is inside `pthread_join`, 20 seconds at most; whether it is. Any thread.
bool wait_until_joining(pthread_t thread);

}  // namespace headsetmgmt::test_support
