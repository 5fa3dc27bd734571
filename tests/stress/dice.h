// SPDX-License-Identifier: Apache-2.0
// Random numbers: each thread has a sequence of its own.

#pragma once

#include <cstdint>
#include <iterator>

namespace headsetmgmt::stress {

/// Random numbers. One thread.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : state(seed) {}

    /// Evenly from 0 to `sides` - 1; `sides` is not 0.
    unsigned int below(unsigned int sides);

    /// True once in `rolls` times.
    bool one_in(unsigned int rolls) { return below(rolls) == 0; }

    /// Any entry of an array or of a fixed sequence that is not empty.
    template <typename Sequence>
    const auto& any_of(const Sequence& sequence) {
        return sequence[below(static_cast<unsigned int>(std::size(sequence)))];
    }

private:
    std::uint64_t state;
};

/// What all sequences begin from. Before the first roll.
void seed_dice(std::uint64_t seed);

/// The calling thread's own. The nth thread that asks has the same sequence for the same seed; what
/// the threads make of it depends on the system's scheduling. Any thread.
Dice& dice();

}  // namespace headsetmgmt::stress
