// SPDX-License-Identifier: Apache-2.0
// What the process holds of the system: memory, threads, descriptors.

#include "stress/footprint.h"

#include <dirent.h>

#include "stress/counted_allocations.h"

namespace headsetmgmt::stress {

namespace {

int count_entries(const char* folder_name) {
    DIR* const folder = opendir(folder_name);
    if (folder == nullptr) {
        return -1;
    }
    int count = 0;
    while (const dirent* entry = readdir(folder)) {
        count += entry->d_name[0] != '.' ? 1 : 0;
    }
    closedir(folder);
    return count;
}

}  // namespace

Footprint footprint() {
    const long allocations = live_allocations();
    return {allocations, count_entries("/proc/self/task"), count_entries("/proc/self/fd")};
}

}  // namespace headsetmgmt::stress
