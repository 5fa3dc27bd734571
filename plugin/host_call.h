// What crossing the boundary between library and host takes.

#pragma once

#include <string>

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
    int& depth;  // the thread's own; to find it takes longer than to count
};

/// The host's text; empty for null.
inline std::string text_or_empty(const char* text) {
    return text != nullptr ? text : "";
}

}  // namespace headsetmgmt::plugin
