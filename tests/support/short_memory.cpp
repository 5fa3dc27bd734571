// SPDX-License-Identifier: Apache-2.0
// Memory that runs out for one thread.

#include "support/short_memory.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool memory_is_out = false;

}  // namespace

void* operator new(std::size_t size) {
    void* const memory = memory_is_out ? nullptr : std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    ::operator delete(memory);
}

namespace headsetmgmt::test_support {

ShortMemory::ShortMemory() {
    memory_is_out = true;
}

ShortMemory::~ShortMemory() {
    memory_is_out = false;
}

}  // namespace headsetmgmt::test_support
