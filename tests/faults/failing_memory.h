// SPDX-License-Identifier: Apache-2.0
// Memory that runs out for the library, and for nobody else, at a chosen allocation.
//
// A program that is linked with this has its own `operator new` and `operator delete`, in all their
// forms, and allocates for cJSON as well. Each allocation of the library is counted, and listed
// until it is freed.

#pragma once

#include <cstddef>
#include <vector>

namespace headsetmgmt::test_support {

/// How long memory is short.
enum class Shortage {
    one,  ///< for one allocation
    rest  ///< for that one and all later ones, until there is memory again
};

/// What the library allocated. Any thread.
class LibraryMemory {
public:
    /// Marks the calling thread as inside the library, or as back in the host, for its own life. A
    /// thread that was never marked is the library's own; the thread that loads this program is
    /// the host's.
    class Inside;
    class Outside;

    /// Has cJSON allocate here too.
    static void install();

    /// Counts allocations from now on; the `nth`, 1 being the first, fails, and with
    /// `Shortage::rest` all after it. 0 fails none.
    static void begin(long nth, Shortage shortage);

    /// From now on, no allocation fails.
    static void end_shortage();

    /// Has `stack` return where the `nth` allocation was made, failing or not; 0 for none.
    static void watch(long nth);

    /// Allocations since `begin`, those that failed among them.
    static long allocations();

    /// Allocations of cJSON alone, since `begin`.
    static long json_allocations();

    /// Allocations that are not freed.
    static long alive();

    /// The number of the latest of them; 0 when there is none.
    static long latest_alive();

    /// Return addresses of the watched allocation, the innermost first; empty when it has not been
    /// made.
    static std::vector<void*> stack();

private:
    LibraryMemory() = delete;
};

class LibraryMemory::Inside {
public:
    Inside();
    ~Inside();

    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

private:
    int before;
};

class LibraryMemory::Outside {
public:
    Outside();
    ~Outside();

    Outside(const Outside&) = delete;
    Outside& operator=(const Outside&) = delete;

private:
    int before;
};

}  // namespace headsetmgmt::test_support
