// SPDX-License-Identifier: Apache-2.0
// The mark of a call into the host.

#pragma once

namespace headsetmgmt::plugin {

/// Marks the calling thread as inside a host function or the log callback, for the lifetime of the
/// object. Every call of one is made with such an object.
class HostCall {
public:
    HostCall();
    ~HostCall();

    HostCall(const HostCall&) = delete;
    HostCall& operator=(const HostCall&) = delete;

    /// Whether the calling thread is inside a host function.
    static bool is_under_way();

private:
    int& depth;  // the thread's own; a reference, because finding it is slower than counting
};

}  // namespace headsetmgmt::plugin
