// SPDX-License-Identifier: Apache-2.0
// Memory that runs out for the library, and for nobody else, at a chosen allocation.

#include "faults/failing_memory.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <execinfo.h>
#include <new>

#include <cjson/cJSON.h>

namespace headsetmgmt::test_support {

namespace {

enum Side : int { library = 0, host = 1 };

// The thread that loads the program is the host's; a thread that nobody marked is the library's.
thread_local int side = library;
[[maybe_unused]] const int loading_thread = side = host;

/// Stands before every piece of memory.
struct Header {
    void* start;      // of what malloc gave
    Header* earlier;  // these two in the list of the counted
    Header* later;
    long number;  // 0: not counted
};

/// Held for a few instructions; never allocates.
class ListLock {
public:
    ListLock() {
        while (taken_.test_and_set(std::memory_order_acquire)) {
        }
    }
    ~ListLock() { taken_.clear(std::memory_order_release); }

    ListLock(const ListLock&) = delete;
    ListLock& operator=(const ListLock&) = delete;

private:
    static std::atomic_flag taken_;
};

std::atomic_flag ListLock::taken_ = ATOMIC_FLAG_INIT;

constexpr int deepest_stack = 48;
constexpr long never = 0;

std::atomic<long> failing{never};
std::atomic<bool> failing_on{false};
std::atomic<long> watched{never};
std::atomic<long> made{0};
std::atomic<long> made_for_json{0};

void* watched_stack[deepest_stack];
std::atomic<int> watched_depth{0};

Header* oldest = nullptr;  // both guarded by ListLock
Header* newest = nullptr;

void enter(Header* header) {
    const ListLock list_lock;
    header->earlier = newest;
    header->later = nullptr;
    (newest != nullptr ? newest->later : oldest) = header;
    newest = header;
}

void leave(Header* header) {
    const ListLock list_lock;
    (header->earlier != nullptr ? header->earlier->later : oldest) = header->later;
    (header->later != nullptr ? header->later->earlier : newest) = header->earlier;
}

/// Counts an allocation of the library: its number, or -1 when it fails.
long count() {
    const long number = ++made;
    if (number == watched) {
        const LibraryMemory::Outside outside;
        watched_depth = backtrace(watched_stack, deepest_stack);
    }
    const long first = failing;
    const bool fails = first != never && (failing_on ? number >= first : number == first);
    return fails ? -1 : number;
}

void* allocate(std::size_t size, std::size_t alignment) noexcept {
    const long number = side == library ? count() : 0;
    if (number < 0) {
        return nullptr;
    }
    const std::size_t unit = std::max(alignment, alignof(std::max_align_t));
    const std::size_t offset = (sizeof(Header) + unit - 1) / unit * unit;
    if (size > SIZE_MAX - offset - unit) {
        return nullptr;
    }
    void* start = nullptr;
    if (unit > alignof(std::max_align_t)) {
        start = std::aligned_alloc(unit, (offset + size + unit - 1) / unit * unit);
    } else {
        start = std::malloc(offset + size);
    }
    if (start == nullptr) {
        return nullptr;
    }
    char* const memory = static_cast<char*>(start) + offset;
    auto* const header = reinterpret_cast<Header*>(memory) - 1;
    header->start = start;
    header->number = number;
    if (number != 0) {
        enter(header);
    }
    return memory;
}

void release(void* memory) noexcept {
    if (memory == nullptr) {
        return;
    }
    auto* const header = static_cast<Header*>(memory) - 1;
    if (header->number != 0) {
        leave(header);
    }
    std::free(header->start);
}

void* allocate_or_throw(std::size_t size, std::size_t alignment) {
    void* const memory = allocate(size, alignment);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* allocate_for_json(std::size_t size) {
    if (side == library) {
        ++made_for_json;
    }
    return allocate(size, 0);
}

void release_for_json(void* memory) {
    release(memory);
}

}  // namespace

LibraryMemory::Inside::Inside() : before(side) {
    side = library;
}

LibraryMemory::Inside::~Inside() {
    side = before;
}

LibraryMemory::Outside::Outside() : before(side) {
    side = host;
}

LibraryMemory::Outside::~Outside() {
    side = before;
}

void LibraryMemory::install() {
    // Loads what it needs now, and not in the middle of a run.
    void* here = nullptr;
    backtrace(&here, 1);
    cJSON_Hooks hooks = {allocate_for_json, release_for_json};
    cJSON_InitHooks(&hooks);
}

void LibraryMemory::begin(long nth, Shortage shortage) {
    made = 0;
    made_for_json = 0;
    failing_on = shortage == Shortage::rest;
    failing = nth;
}

void LibraryMemory::end_shortage() {
    failing = never;
}

void LibraryMemory::watch(long nth) {
    watched_depth = 0;
    watched = nth;
}

long LibraryMemory::allocations() {
    return made;
}

long LibraryMemory::json_allocations() {
    return made_for_json;
}

long LibraryMemory::alive() {
    const ListLock list_lock;
    long count = 0;
    for (const Header* header = oldest; header != nullptr; header = header->later) {
        ++count;
    }
    return count;
}

long LibraryMemory::latest_alive() {
    const ListLock list_lock;
    return newest != nullptr ? newest->number : 0;
}

std::vector<void*> LibraryMemory::stack() {
    return std::vector<void*>(watched_stack, watched_stack + watched_depth);
}

}  // namespace headsetmgmt::test_support

using headsetmgmt::test_support::allocate;
using headsetmgmt::test_support::allocate_or_throw;
using headsetmgmt::test_support::release;

// All forms: sanitizers have each of their own.

void* operator new(std::size_t size) {
    return allocate_or_throw(size, 0);
}

void* operator new[](std::size_t size) {
    return allocate_or_throw(size, 0);
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocate_or_throw(size, static_cast<std::size_t>(alignment));
}

void* operator new[](std::size_t size, std::align_val_t alignment) {
    return allocate_or_throw(size, static_cast<std::size_t>(alignment));
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, 0);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, 0);
}

void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return allocate(size, static_cast<std::size_t>(alignment));
}

void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return allocate(size, static_cast<std::size_t>(alignment));
}

void operator delete(void* memory) noexcept {
    release(memory);
}

void operator delete[](void* memory) noexcept {
    release(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    release(memory);
}

void operator delete(void* memory, std::align_val_t) noexcept {
    release(memory);
}

void operator delete[](void* memory, std::align_val_t) noexcept {
    release(memory);
}

void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    release(memory);
}

void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    release(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    release(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    release(memory);
}

void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    release(memory);
}

void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    release(memory);
}
