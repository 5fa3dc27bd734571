// The mark of a call into the host.

#pragma once

namespace headsetmgmt::plugin {

/// Marks the calling thread as inside a host function, or the log callback, for its own lifetime.
/// Stands around every call of one.
class HostCall {
public:
    HostCall();
    ~HostCall();

    HostCall(const HostCall&) = delete;
    HostCall& operator=(const HostCall&) = delete;

    /// Whether the calling thread is inside a host function.
    static bool is_under_way();

private:
    int& depth;  // the thread's own; finding it takes longer than counting
};

}  // namespace headsetmgmt::plugin
