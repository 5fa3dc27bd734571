// SPDX-License-Identifier: Apache-2.0
// How much of its stack a thread uses.

#pragma once

#include <cstddef>
#include <functional>

namespace headsetmgmt::benchmarks {

/// The stack of the thread that makes it, painted, so that what is used from then on differs
/// from what is not.
///
/// Asked by any thread while the painted one has not ended. Up to 1 KiB below the maker is not
/// painted, and counts as used.
class PaintedStack {
public:
    PaintedStack();

    PaintedStack(const PaintedStack&) = delete;
    PaintedStack& operator=(const PaintedStack&) = delete;

    /// Bytes from where the stack begins to the deepest that was used.
    std::size_t used() const;

    /// The same from where this was made.
    std::size_t used_below_maker() const;

private:
    const unsigned char* deepest() const;

    const unsigned char* begin = nullptr;  // a stack grows down: its high end
    const unsigned char* maker = nullptr;
    unsigned char* painted_from = nullptr;
    unsigned char* painted_to = nullptr;
};

/// How much stack `work` takes, on a thread of its own. `work` must not throw.
std::size_t stack_used_by(const std::function<void()>& work);

}  // namespace headsetmgmt::benchmarks
