// SPDX-License-Identifier: Apache-2.0
// Random numbers: each thread has a sequence of its own.

#include "stress/dice.h"

#include <atomic>

namespace headsetmgmt::stress {

namespace {

constexpr std::uint64_t golden_gap = 0x9e3779b97f4a7c15;

std::atomic<std::uint64_t> next_thread_seed{golden_gap};

}  // namespace

// splitmix64: a counter and a mixer.
unsigned int Dice::below(unsigned int sides) {
    state += golden_gap;
    std::uint64_t mixed = state;
    mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111eb;
    mixed ^= mixed >> 31U;
    return static_cast<unsigned int>(mixed % sides);
}

void seed_dice(std::uint64_t seed) {
    next_thread_seed = seed * golden_gap;
}

Dice& dice() {
    // Threads lie half of the counter's range apart, so that their sequences do not overlap.
    constexpr std::uint64_t thread_gap = 0x8000000000000001;
    thread_local Dice dice_of_thread(next_thread_seed.fetch_add(thread_gap));
    return dice_of_thread;
}

}  // namespace headsetmgmt::stress
