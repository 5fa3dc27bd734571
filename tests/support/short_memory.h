// SPDX-License-Identifier: Apache-2.0
// Memory that runs out for one thread.
//
// A program that is linked with it has its own `operator new` and `operator delete`.

#pragma once

namespace headsetmgmt::test_support {

/// While it lives, the calling thread's allocations fail. One at a time.
class ShortMemory {
public:
    ShortMemory();
    ~ShortMemory();

    ShortMemory(const ShortMemory&) = delete;
    ShortMemory& operator=(const ShortMemory&) = delete;
};

}  // namespace headsetmgmt::test_support
