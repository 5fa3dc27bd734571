// SPDX-License-Identifier: Apache-2.0
// Making, starting, stopping and ending the library, and the way of each flat call into it.

#pragma once

#include "plugin/call_gate.h"
#include "plugin/phone_plugin_impl.h"

namespace headsetmgmt::plugin {

/// Makes the plug-in object if there is none. Does nothing while another thread makes, starts or
/// stops the library, and once the process exits. Any thread.
void make_library() noexcept;

/// Starts the library, and makes the plug-in object if there is none; whether the library runs.
/// Does not start it from inside a host function, the log callback or another call, while another
/// thread makes, starts or stops the library, or once the process exits. A null text counts as
/// empty. Any thread.
bool start_library(const char* phone_model, const char* phone_version,
                   const char* storage_path) noexcept;

/// Stops the library after all calls and the task under way have ended. Does nothing from inside a
/// host function, the log callback or another call, while another thread stops the library, or once
/// the process exits. Any thread.
void stop_library() noexcept;

/// One flat call inside the library. A stop waits until it ends.
class LibraryCall {
public:
    LibraryCall();

    /// The plug-in object, valid until the call ends; null when there is none, or when the library
    /// is being started or stopped, or the process exits.
    PhonePluginImpl* plugin() const { return object; }

private:
    CallGate::Passage passage;
    PhonePluginImpl* object;
};

/// Calls `body` with the plug-in object and returns its result; false when there is no object (see
/// `LibraryCall`), and when `body` throws: memory ran out, or a host function threw.
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
