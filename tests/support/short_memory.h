// Memory that runs out for one thread.
//
// A program that is linked with short_memory.cpp has `operator new` and `operator delete` of its
// own.

#pragma once

namespace headsetmgmt::test_support {

/// While it lives, the calling thread's allocations fail. Not one inside the other.
class ShortMemory {
public:
    ShortMemory();
    ~ShortMemory();

    ShortMemory(const ShortMemory&) = delete;
    ShortMemory& operator=(const ShortMemory&) = delete;
};

}  // namespace headsetmgmt::test_support
