// How much stack a piece of work takes.

#pragma once

#include <cstddef>
#include <functional>

namespace headsetmgmt::benchmarks {

/// Runs `work` on a thread of its own, whose stack was painted before, and answers how many bytes
/// of it the thread has touched. Those that any thread takes from its stack are left out. `work`
/// must not throw.
std::size_t stack_used_by(const std::function<void()>& work);

}  // namespace headsetmgmt::benchmarks
