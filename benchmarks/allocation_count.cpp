// Counts what the whole program allocates, the shared libraries included.

#include "benchmarks/allocation_count.h"

#include <atomic>
#include <cstdint>

// The C library's own, under the names that it has for programs like this one.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}

namespace {

std::atomic<std::size_t> allocations{0};
std::atomic<std::size_t> smallest_counted{0};
std::atomic<std::size_t> largest_counted{SIZE_MAX};

void count(std::size_t size) {
    if (size >= smallest_counted && size <= largest_counted) {
        ++allocations;
    }
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    count(size);
    return __libc_malloc(size);
}

void* calloc(std::size_t members, std::size_t size) {
    count(members * size);
    return __libc_calloc(members, size);
}

void* realloc(void* memory, std::size_t size) {
    count(size);
    return __libc_realloc(memory, size);
}

}  // extern "C"

namespace headsetmgmt::benchmarks {

std::size_t allocations_of(const std::function<void()>& work) {
    return allocations_of(work, 0, SIZE_MAX);
}

std::size_t allocations_of(const std::function<void()>& work, std::size_t smallest,
                           std::size_t largest) {
    smallest_counted = smallest;
    largest_counted = largest;
    const std::size_t before = allocations;
    work();
    const std::size_t counted = allocations - before;
    smallest_counted = 0;
    largest_counted = SIZE_MAX;
    return counted;
}

}  // namespace headsetmgmt::benchmarks
