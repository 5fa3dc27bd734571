// Counts what the whole program allocates, the shared libraries included.

#pragma once

#include <cstddef>
#include <functional>

namespace headsetmgmt::benchmarks {

/// How many blocks all threads take from the heap while `work` runs, blocks that grow included.
std::size_t allocations_of(const std::function<void()>& work);

/// The same, of blocks of `smallest` to `largest` bytes only.
std::size_t allocations_of(const std::function<void()>& work, std::size_t smallest,
                           std::size_t largest);

}  // namespace headsetmgmt::benchmarks
