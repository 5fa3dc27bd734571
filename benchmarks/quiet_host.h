// The host functions of programs that measure the library at rest.

#pragma once

#include <atomic>

namespace headsetmgmt::benchmarks {

extern std::atomic<int> settings_applied;
extern std::atomic<int> documents_requested;

}  // namespace headsetmgmt::benchmarks
