// SPDX-License-Identifier: Apache-2.0
// What the program asks of the sanitizers that it is built with.

#include "stress/sanitizers.h"

#include <cstdio>
#include <cstdlib>

#ifdef STRESS_WITH_SANITIZERS

extern "C" {

// Of the sanitizers' runtime; not every compiler comes with all headers that declare these.
int __sanitizer_install_malloc_and_free_hooks(void (*taken)(const volatile void* block,
                                                            std::size_t size),
                                              void (*given_back)(const volatile void* block));
void __sanitizer_symbolize_pc(void* address, const char* format, char* text, std::size_t size);
__attribute__((weak)) int __lsan_do_recoverable_leak_check();

// The first race ends the program, so that its last line never reports success.
__attribute__((visibility("default"))) const char* __tsan_default_options() {
    return "halt_on_error=1:second_deadlock_stack=1";
}

// Code that is not instrumented, such as the standard library's, may read freed memory unnoticed.
// So freed memory is overwritten.
__attribute__((visibility("default"))) const char* __asan_default_options() {
    return "max_free_fill_size=65536:free_fill_byte=219:detect_stack_use_after_return=1:"
           "strict_string_checks=1";
}

__attribute__((visibility("default"))) const char* __ubsan_default_options() {
    return "print_stacktrace=1";
}

}  // extern "C"

namespace headsetmgmt::stress {

void hook_allocator(void (*taken)(const volatile void* block, std::size_t size),
                    void (*given_back)(const volatile void* block)) {
    if (__sanitizer_install_malloc_and_free_hooks(taken, given_back) == 0) {
        std::fputs("stress: the sanitizer takes no hooks\n", stderr);
        std::abort();
    }
}

bool symbolize(void* address, char* text, std::size_t size) {
    __sanitizer_symbolize_pc(address, "%F %L", text, size);
    return true;
}

bool leaks_are_found() {
    return __lsan_do_recoverable_leak_check != nullptr && __lsan_do_recoverable_leak_check() != 0;
}

}  // namespace headsetmgmt::stress

#else

namespace headsetmgmt::stress {

bool symbolize(void* /*address*/, char* /*text*/, std::size_t /*size*/) {
    return false;
}

bool leaks_are_found() {
    return false;
}

}  // namespace headsetmgmt::stress

#endif
