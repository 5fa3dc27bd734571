// SPDX-License-Identifier: Apache-2.0
// What the process holds of the system: memory, threads, descriptors.

#pragma once

namespace headsetmgmt::stress {

struct Footprint {
    long allocations;  // live, see counted_allocations.h
    int threads;
    int descriptors;
};

/// What is held just now. Other threads that run may move it.
Footprint footprint();

}  // namespace headsetmgmt::stress
