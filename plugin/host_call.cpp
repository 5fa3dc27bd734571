// SPDX-License-Identifier: Apache-2.0
// Counts how deep each thread is in host functions.

#include "plugin/host_call.h"

namespace headsetmgmt::plugin {

namespace {

thread_local int depth_of_thread = 0;  // host calls, one inside the other

}  // namespace

HostCall::HostCall() : depth(depth_of_thread) {
    ++depth;
}

HostCall::~HostCall() {
    --depth;
}

bool HostCall::is_under_way() {
    return depth_of_thread != 0;
}

}  // namespace headsetmgmt::plugin
