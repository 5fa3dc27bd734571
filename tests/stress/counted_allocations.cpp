// SPDX-License-Identifier: Apache-2.0
// How many blocks of memory the whole process holds, the library it has loaded included.
//
// Counted where all memory comes from, below operator new and below the allocators of cJSON, so
// that neither has to be replaced: a sanitizer calls hooks for every block; without one, this file
// replaces the C library's allocator.

#include "stress/counted_allocations.h"

#include <atomic>
#include <cstddef>

#include "stress/sanitizers.h"

namespace {

// Relaxed: that counting put the threads into an order would hide races from ThreadSanitizer.
std::atomic<long> live{0};

void count_taken() {
    live.fetch_add(1, std::memory_order_relaxed);
}

void count_given_back() {
    live.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace

namespace headsetmgmt::stress {

long live_allocations() {
    return live.load(std::memory_order_relaxed);
}

}  // namespace headsetmgmt::stress

#ifdef STRESS_WITH_SANITIZERS

void headsetmgmt::stress::count_allocations() {
    hook_allocator([](const volatile void* /*block*/, std::size_t /*size*/) { count_taken(); },
                   [](const volatile void* /*block*/) { count_given_back(); });
}

#else

#include <cerrno>

void headsetmgmt::stress::count_allocations() {}

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

static void* counted(void* block) {
    if (block != nullptr) {
        count_taken();
    }
    return block;
}

void* malloc(std::size_t size) {
    return counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) {
    return counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) {
    void* const moved = __libc_realloc(block, size);
    if (block == nullptr) {
        return counted(moved);
    }
    if (moved == nullptr && size == 0) {
        count_given_back();
    }
    return moved;
}

void* memalign(std::size_t alignment, std::size_t size) {
    return counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return counted(__libc_memalign(alignment, size));
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = counted(__libc_memalign(alignment, size));
    return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block) {
    if (block != nullptr) {
        count_given_back();
    }
    __libc_free(block);
}

}  // extern "C"

#endif
