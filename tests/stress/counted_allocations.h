// SPDX-License-Identifier: Apache-2.0
// How many blocks of memory the whole process holds, the library it has loaded included.

#pragma once

namespace headsetmgmt::stress {

/// Begins to count. Before any other thread runs.
void count_allocations();

/// Blocks that were taken since the count began and are not given back, less those that were taken
/// before and given back since. Any thread.
long live_allocations();

}  // namespace headsetmgmt::stress
