// How deep each thread is in host functions.

#include "plugin/host_boundary.h"

namespace headsetmgmt::plugin {

namespace {

thread_local int depth = 0;  // host calls of this thread, one inside the other

}  // namespace

HostCall::HostCall() {
    ++depth;
}

HostCall::~HostCall() {
    --depth;
}

bool HostCall::is_under_way() {
    return depth != 0;
}

}  // namespace headsetmgmt::plugin
