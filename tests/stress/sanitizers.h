// SPDX-License-Identifier: Apache-2.0
// What the program asks of the sanitizers that it is built with.

#pragma once

#include <cstddef>

namespace headsetmgmt::stress {

/// Has the sanitizer call these for every block of memory that is taken and given back. Aborts when
/// it does not take them. With a sanitizer only.
void hook_allocator(void (*taken)(const volatile void* block, std::size_t size),
                    void (*given_back)(const volatile void* block));

/// Writes function, file and line of an address into `text`; false without a sanitizer.
bool symbolize(void* address, char* text, std::size_t size);

/// Looks for leaked blocks and reports them. False if there are none, and without a sanitizer that
/// looks for them.
bool leaks_are_found();

}  // namespace headsetmgmt::stress
