// SPDX-License-Identifier: Apache-2.0
// The clock of a test program: the test decides what `usleep` and `time` do.

#include "support/virtual_time.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <mutex>
#include <sched.h>
#include <stdexcept>
#include <string>
#include <time.h>
#include <unistd.h>

namespace headsetmgmt::test_support {

namespace {

constexpr std::int64_t microseconds_per_second = 1000000;
constexpr std::chrono::seconds patience(20);

using Microseconds = std::int64_t;

/// What all threads share. It is never deleted: a thread may sleep until the program ends.
struct Clock {
    std::mutex mutex;
    std::condition_variable moved;           // the sleepers wait for it
    std::condition_variable parked_changed;  // the test waits for it

    bool stopped = false;
    bool released = false;
    VirtualTime::Sleepers sleepers = VirtualTime::Sleepers::park;
    std::uint64_t stops = 0;  // distinguishes one stopped clock from the next
    Microseconds now = 0;
    std::list<Microseconds> ends;  // of those who sleep
    std::vector<useconds_t> sleeps;

    std::size_t parked() const {
        return static_cast<std::size_t>(std::count_if(
            ends.begin(), ends.end(), [this](Microseconds end) { return end > now; }));
    }
};

Clock& the_clock() {
    static auto* clock = new Clock;
    return *clock;
}

using ClockLock = std::unique_lock<std::mutex>;

int sleep_really(useconds_t duration) {
    timespec left = {};
    left.tv_sec = duration / microseconds_per_second;
    left.tv_nsec = static_cast<long>(duration % microseconds_per_second * 1000);
    const int error = clock_nanosleep(CLOCK_REALTIME, 0, &left, nullptr);
    if (error != 0) {
        errno = error;
        return -1;
    }
    return 0;
}

void park(Clock& clock, ClockLock& clock_lock, useconds_t duration) {
    const std::uint64_t stop = clock.stops;
    const auto entry = clock.ends.insert(clock.ends.end(), clock.now + duration);
    clock.parked_changed.notify_all();
    clock.moved.wait(clock_lock, [&] {
        return !clock.stopped || clock.stops != stop || clock.released || clock.now >= *entry;
    });
    clock.ends.erase(entry);
    clock.parked_changed.notify_all();
}

int sleep_virtually(useconds_t duration) {
    Clock& clock = the_clock();
    ClockLock clock_lock(clock.mutex);
    if (!clock.stopped) {
        clock_lock.unlock();
        return sleep_really(duration);
    }
    if (clock.released) {
        clock_lock.unlock();
        sched_yield();
        return 0;
    }
    clock.sleeps.push_back(duration);
    if (clock.sleepers == VirtualTime::Sleepers::move_the_clock) {
        clock.now += duration;
    } else {
        park(clock, clock_lock, duration);
    }
    return 0;
}

std::time_t read_clock() {
    Clock& clock = the_clock();
    {
        const ClockLock clock_lock(clock.mutex);
        if (clock.stopped) {
            return clock.now / microseconds_per_second;
        }
    }
    timespec real = {};
    clock_gettime(CLOCK_REALTIME, &real);
    return real.tv_sec;
}

}  // namespace

VirtualTime::VirtualTime(std::time_t epoch_second, Sleepers sleepers) {
    Clock& clock = the_clock();
    const ClockLock clock_lock(clock.mutex);
    if (clock.stopped) {
        throw std::logic_error("virtual time: the clock is stopped already");
    }
    clock.stopped = true;
    clock.released = false;
    clock.sleepers = sleepers;
    ++clock.stops;
    clock.now = epoch_second * microseconds_per_second;
    clock.sleeps.clear();
}

VirtualTime::~VirtualTime() {
    Clock& clock = the_clock();
    const ClockLock clock_lock(clock.mutex);
    clock.stopped = false;
    clock.moved.notify_all();
}

std::time_t VirtualTime::now() const {
    return read_clock();
}

void VirtualTime::advance(Duration duration) {
    Clock& clock = the_clock();
    const ClockLock clock_lock(clock.mutex);
    clock.now += duration.count();
    clock.moved.notify_all();
}

void VirtualTime::wait_until_parked(std::size_t threads) {
    wait_for_sleepers(threads, "to sleep");
}

void VirtualTime::advance_and_settle(Duration duration) {
    wait_for_sleepers(1, "to sleep before the clock moves");
    std::size_t threads = 0;
    {
        Clock& clock = the_clock();
        const ClockLock clock_lock(clock.mutex);
        threads = clock.parked();
        clock.now += duration.count();
        clock.moved.notify_all();
    }
    wait_for_sleepers(threads, "to sleep again after the clock moved");
}

void VirtualTime::release() {
    Clock& clock = the_clock();
    const ClockLock clock_lock(clock.mutex);
    clock.released = true;
    clock.moved.notify_all();
}

std::vector<useconds_t> VirtualTime::sleeps() const {
    Clock& clock = the_clock();
    const ClockLock clock_lock(clock.mutex);
    return clock.sleeps;
}

std::vector<useconds_t> VirtualTime::take_sleeps() {
    Clock& clock = the_clock();
    const ClockLock clock_lock(clock.mutex);
    std::vector<useconds_t> taken;
    taken.swap(clock.sleeps);
    return taken;
}

void VirtualTime::wait_for_sleepers(std::size_t threads, const char* occasion) {
    Clock& clock = the_clock();
    ClockLock clock_lock(clock.mutex);
    if (!clock.parked_changed.wait_for(clock_lock, patience,
                                       [&] { return clock.parked() >= threads; })) {
        throw std::runtime_error("virtual time: waited 20 seconds for " + std::to_string(threads) +
                                 " threads " + occasion + ", and " +
                                 std::to_string(clock.parked()) + " do");
    }
}

}  // namespace headsetmgmt::test_support

// The system's own names: the linker takes these for the whole program.
extern "C" {

__attribute__((visibility("default"))) int usleep(useconds_t duration) {
    return headsetmgmt::test_support::sleep_virtually(duration);
}

__attribute__((visibility("default"))) time_t time(time_t* result) noexcept {
    const time_t now = headsetmgmt::test_support::read_clock();
    if (result != nullptr) {
        *result = now;
    }
    return now;
}

}  // extern "C"
