// SPDX-License-Identifier: Apache-2.0
// A thread with the smallest stack that the library promises to need.

#pragma once

#include <cstddef>
#include <functional>
#include <pthread.h>
#include <stdexcept>
#include <string>

namespace headsetmgmt::test_support {

/// Enough to read any document, with a few kilobytes of the thread's own; the deepest take some 100
/// KiB, nearly all of it in the parser. Sanitizers make frames larger.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr std::size_t small_stack_size = 256 * 1024;
#else
inline constexpr std::size_t small_stack_size = 128 * 1024;
#endif

/// Runs `body` on a thread with a small stack, below which lies a guard page: a body that needs
/// more ends the program. `body` must not throw.
inline void on_a_small_stack(const std::function<void()>& body) {
    const auto entry = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, small_stack_size);
    pthread_t thread = 0;
    const int error =
        pthread_create(&thread, &attributes, entry, const_cast<std::function<void()>*>(&body));
    pthread_attr_destroy(&attributes);
    if (error != 0) {
        throw std::runtime_error("small stack: no thread, error " + std::to_string(error));
    }
    pthread_join(thread, nullptr);
}

}  // namespace headsetmgmt::test_support
