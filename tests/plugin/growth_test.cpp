// SPDX-License-Identifier: Apache-2.0
// Nothing grows: live allocations, threads and the queue, over many rounds. A program of its own,
// for it counts what the whole program allocates.

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <dirent.h>
#include <new>

#include <gtest/gtest.h>

#include "support/phone_host.h"

namespace {

std::atomic<long> live_allocations{0};

}  // namespace

void* operator new(std::size_t size) {
    void* memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ++live_allocations;
    return memory;
}

void operator delete(void* memory) noexcept {
    if (memory != nullptr) {
        --live_allocations;
        std::free(memory);
    }
}

void operator delete(void* memory, std::size_t) noexcept {
    ::operator delete(memory);
}

namespace headsetmgmt::test_support {
namespace {

/// What must not grow.
struct Footprint {
    long allocations;
    int threads;
};

int count_threads() {
    int count = 0;
    DIR* tasks = opendir("/proc/self/task");
    while (const dirent* entry = readdir(tasks)) {
        count += entry->d_name[0] != '.' ? 1 : 0;
    }
    closedir(tasks);
    return count;
}

/// Once the host has forgotten what it recorded.
Footprint footprint() {
    fresh_fake_host().behave(usual_behaviour());
    return {live_allocations, count_threads()};
}

/// The footprint after `rounds` of `round`; some were run before the first one is taken.
template <typename Round>
void expect_no_growth(int rounds, Round round, int rounds_before = 10) {
    for (int i = 0; i < rounds_before; ++i) {
        round();
    }
    const Footprint before = footprint();
    for (int i = 0; i < rounds; ++i) {
        round();
    }
    Footprint after = footprint();
    // A thread that was joined stays in the system's list for a moment more.
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (after.threads > before.threads && std::chrono::steady_clock::now() < limit) {
        after = footprint();
    }
    EXPECT_EQ(after.allocations, before.allocations);
    EXPECT_LE(after.threads, before.threads);
}

TEST(GrowthTest, StartingAndStopping) {
    PhoneHost host;
    host.start_up();
    create_headset_mgmt(nullptr);
    host.stop();

    expect_no_growth(200, [&] {
        host.start();
        set_urls();
        configure_headset(shared(headset_1()));
        host.run_worker();
        // The stop drops this one, or the worker is quicker.
        send_inventory(shared(headset_1()));
        host.stop();
    });
}

TEST(GrowthTest, AttachingAndRemoving) {
    PhoneHost host;
    host.start_up();
    create_headset_mgmt(nullptr);

    expect_no_growth(1000, [&] {
        configure_headset(shared(headset_1()));
        host.run_worker();
        remove_peripheral("headset-1");
    });
}

TEST(GrowthTest, AttachingAndRemovingWhileTheWorkerIsBusy) {
    PhoneHost host;
    host.start_up();
    create_headset_mgmt(nullptr);
    // The worker does not run, so each round leaves a fetch in the queue, until it is full.
    const int rounds_to_fill_the_queue = 200;

    expect_no_growth(
        1000,
        [&] {
            configure_headset(shared(headset_1()));
            remove_peripheral("headset-1");
        },
        rounds_to_fill_the_queue);
}

TEST(GrowthTest, FailuresThatAreReportedTwice) {
    PhoneHost host;
    host.start_up();
    create_headset_mgmt(nullptr);
    configure_headset(shared(headset_1()));
    host.run_worker();

    expect_no_growth(200, [&] {
        for (int report = 0; report < 200; ++report) {
            httpResponse("", 404);
        }
        host.run_worker();
    });
}

TEST(GrowthTest, ConfiguringTheSameAccessory) {
    PhoneHost host;
    host.start_up();
    create_headset_mgmt(nullptr);

    expect_no_growth(300, [&] {
        configure_headset(shared(headset_1()));
        host.run_worker();
        httpResponse(document_with_sidetone, 200);
    });
}

TEST(GrowthTest, FailingForever) {
    PhoneHost host;
    host.start_up();
    create_headset_mgmt(nullptr);
    configure_headset(shared(headset_1()));
    host.run_worker();

    expect_no_growth(1000, [&] {
        httpResponse("", 404);
        host.run_worker();
    });
}

TEST(GrowthTest, TellingTheSameServers) {
    PhoneHost host;
    host.start_up();
    create_headset_mgmt(nullptr);

    expect_no_growth(1000, [] { set_urls(); });
}

TEST(GrowthTest, ReportsOfATypeThatHasNone) {
    PhoneHost host;
    host.start_up();
    create_headset_mgmt(nullptr);
    AccessoryCache other = headset_1();
    other.accessory_type = 0;

    expect_no_growth(1000, [&] { send_inventory(shared(other)); });
}

}  // namespace
}  // namespace headsetmgmt::test_support
