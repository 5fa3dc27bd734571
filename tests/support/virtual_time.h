// SPDX-License-Identifier: Apache-2.0
// The clock of a test program: the test decides what `usleep` and `time` do.
//
// A program that uses `VirtualTime` gets its own `usleep` and `time` in the place of the system's.
// Code of a shared library that the program links or loads gets them too: the linker puts a
// program's symbol into the dynamic symbol table when a library on its command line, here the C
// library, has one of that name. Linkers that do not do so need the CMake property
// `ENABLE_EXPORTS` on the program.

#pragma once

#include <chrono>
#include <cstddef>
#include <ctime>
#include <sys/types.h>
#include <vector>

namespace headsetmgmt::test_support {

/// Stops the clock for its own life: `time` answers the same second until the test moves it, and
/// `usleep` waits for the test, not for the system.
///
/// One at a time (`std::logic_error`). While there is none, `usleep` and `time` are the real ones.
/// Any thread. Waiting operations give up after 20 seconds with a `std::runtime_error` that names
/// what did not come. The owner of a sleeping thread calls `release` before it joins it.
class VirtualTime {
public:
    using Duration = std::chrono::microseconds;

    /// What a call of `usleep` does.
    enum class Sleepers {
        park,           ///< it waits until the test has moved the clock far enough
        move_the_clock  ///< it moves the clock by what it asked for and goes on: for one thread
    };

    /// Stops the clock at the beginning of the second `epoch_second`.
    explicit VirtualTime(std::time_t epoch_second, Sleepers sleepers = Sleepers::park);

    /// Sets the clock going again; whoever still sleeps goes on at once.
    ~VirtualTime();

    VirtualTime(const VirtualTime&) = delete;
    VirtualTime& operator=(const VirtualTime&) = delete;

    /// The second that `time` answers.
    std::time_t now() const;

    /// Moves the clock and wakes those whose time has come.
    void advance(Duration duration);
    void advance(unsigned int seconds) { advance(std::chrono::seconds(seconds)); }

    /// Waits until as many `threads` sleep, all with an end in the future.
    void wait_until_parked(std::size_t threads = 1);

    /// Waits until a thread sleeps, moves the clock, and waits until as many threads sleep as
    /// before. What the woken threads had to do is then done.
    void advance_and_settle(Duration duration);
    void advance_and_settle(unsigned int seconds) {
        advance_and_settle(std::chrono::seconds(seconds));
    }

    /// From now on `usleep` returns at once to everybody, and is not recorded.
    void release();

    /// What `usleep` was asked for so far, in microseconds, in the order of the calls.
    std::vector<useconds_t> sleeps() const;

    /// The same, and forgets them.
    std::vector<useconds_t> take_sleeps();

private:
    void wait_for_sleepers(std::size_t threads, const char* occasion);
};

}  // namespace headsetmgmt::test_support
