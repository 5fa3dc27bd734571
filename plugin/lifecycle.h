// The library's life, from the first call to the end of the process, and the way of each host call
// into it.

#pragma once

#include "plugin/call_gate.h"
#include "plugin/phone_plugin_impl.h"

namespace headsetmgmt::plugin {

/// Makes the plug-in object if there is none. Does nothing while another thread makes, starts or
/// stops the library, and once the process exits. Any thread.
void make_library() noexcept;

/// Starts the library, and makes the plug-in object if there is none; whether the library runs.
/// Does not start it from inside a host function, while another thread makes, starts or stops the
/// library, or once the process exits. A null text counts as empty. Any thread.
bool start_library(const char* phone_model, const char* phone_version,
                   const char* storage_path) noexcept;

/// Stops the library, once all calls and the task under way have left. Does nothing from inside a
/// host function, while another thread stops the library, or once the process exits. Any thread.
void stop_library() noexcept;

/// One host call's way into the library. A stop waits for its end.
class LibraryCall {
public:
    LibraryCall();

    /// The plug-in object, valid until the call ends; null when there is none, or when the library
    /// is being started or stopped, or the process exits. Throws nothing.
    PhonePluginImpl* plugin() const { return object; }

private:
    CallGate::Passage passage;
    PhonePluginImpl* object;
};

/// Runs `body` on the plug-in object and passes its answer on; false when there is no object to
/// be had, and when `body` throws: memory ran out, or a host function threw.
template <typename Body>
bool answer(Body body) noexcept {
    try {
        const LibraryCall call;
        return call.plugin() != nullptr && body(*call.plugin());
    } catch (...) {
        return false;
    }
}

}  // namespace headsetmgmt::plugin
