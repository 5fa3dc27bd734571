// A start for which there is no memory. A program of its own: it stands before operator new.

#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "plugin/phone_host.h"

namespace {

/// Whether the thread's allocations fail.
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
namespace {

bool start_without_memory() {
    memory_is_out = true;
    const bool started = start_headset_mgmt("", "", "");
    memory_is_out = false;
    return started;
}

TEST(ShortageTest, StartWithoutMemoryAnswersFalseAndTheNextOneWorks) {
    PhoneHost host;
    create_headset_mgmt(nullptr);

    EXPECT_FALSE(start_without_memory());

    EXPECT_TRUE(create_headset_mgmt(nullptr));
    EXPECT_FALSE(tell_urls());
    EXPECT_TRUE(host.start());
    EXPECT_TRUE(tell_urls());
}

TEST(ShortageTest, StopAfterAStartWithoutMemoryIsHarmless) {
    PhoneHost host;
    create_headset_mgmt(nullptr);
    EXPECT_FALSE(start_without_memory());

    stop_headset_mgmt();

    EXPECT_TRUE(host.start());
}

}  // namespace
}  // namespace headsetmgmt::test_support
