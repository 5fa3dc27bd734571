// SPDX-License-Identifier: Apache-2.0
// Making, starting, stopping and ending the library: by one thread at a time, with no flat call
// inside.

#include "plugin/lifecycle.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <type_traits>
#include <unistd.h>

#include "core/locks.h"
#include "plugin/host_call.h"
#include "plugin/host_text.h"

namespace headsetmgmt::plugin {

namespace {

CallGate gate;

// Held while the library is made, starts, stops or ends; nobody else takes it.
Mutex lifecycle_mutex;
std::atomic<bool> stopping{false};

static_assert(std::is_trivially_destructible_v<Mutex>, "locked while the process exits");

using LifecycleLock = ScopedLock<Mutex>;

/// Whether the caller is inside a host function, the log callback or another call.
bool called_from_inside() {
    return HostCall::is_under_way() || CallGate::is_inside();
}

/// The owner of the one plug-in object, which the first create or start makes; changed only while
/// the gate is closed. `end_library` deletes the object, or leaves it for good. Nothing destroys
/// the owner, so that calls may read it while the process exits. The first call makes it, so that
/// loading the library runs no code.
std::shared_ptr<PhonePluginImpl>& plugin_instance() {
    using Owner = std::shared_ptr<PhonePluginImpl>;
    alignas(Owner) static std::byte room[sizeof(Owner)];
    static Owner& owner = *new (room) Owner();
    return owner;
}

/// The process that the library's threads are in: the one that made it, or started it since.
std::atomic<pid_t> library_process{0};

void delete_plugin_instance() REQUIRES(lifecycle_mutex) {
    gate.close_and_wait();
    plugin_instance().reset();
}

/// Ends the library when the process exits, or unloads it, without a stop: as safe as a stop.
void end_library() {
    if (library_process != getpid()) {
        // A forked child exits: the threads that are inside, and the worker, are its parent's.
        return;
    }
    gate.close_for_good();
    if (called_from_inside()) {
        // A host function or the log callback called exit. Its callers and the worker's current
        // task use the object until the process has ended, so it is not deleted.
        if (plugin_instance() != nullptr) {
            plugin_instance()->dismiss_worker();
        }
        return;
    }
    const LifecycleLock lifecycle_lock(lifecycle_mutex);
    delete_plugin_instance();
}

struct EndOfLibrary {
    EndOfLibrary() = default;
    ~EndOfLibrary() { end_library(); }

    EndOfLibrary(const EndOfLibrary&) = delete;
    EndOfLibrary& operator=(const EndOfLibrary&) = delete;
};

void make_plugin_instance() REQUIRES(lifecycle_mutex) {
    plugin_instance() = std::make_shared<PhonePluginImpl>();
    library_process = getpid();
    // Made now, not when the library is loaded: so the library ends before objects are destroyed
    // that the host has already made, and that its host functions may use.
    static const EndOfLibrary end_of_library;
}

/// Changes the library's state with no call inside: runs `change`, which returns whether the
/// library is started afterwards, and returns the same; false when it throws.
template <typename Change>
bool with_gate_closed(Change change) noexcept REQUIRES(lifecycle_mutex) {
    gate.close_and_wait();
    bool started = false;
    try {
        started = change();
    } catch (...) {
        // Memory ran out, or a host function threw: nothing was started.
    }
    gate.reopen(started);
    return started;
}

bool is_made() {
    return answer([](PhonePluginImpl& /*plugin*/) { return true; });
}

}  // namespace

LibraryCall::LibraryCall() : passage(gate), object(passage ? plugin_instance().get() : nullptr) {}

void make_library() noexcept {
    // If the caller is inside, the object exists.
    if (called_from_inside() || is_made()) {
        return;
    }
    if (!lifecycle_mutex.try_lock()) {
        return;
    }
    const LifecycleLock lifecycle_lock(lifecycle_mutex, std::adopt_lock);
    if (gate.is_closed_for_good() || plugin_instance() != nullptr) {
        return;
    }
    with_gate_closed([]() REQUIRES(lifecycle_mutex) {
        make_plugin_instance();
        return false;
    });
}

bool start_library(const char* phone_model, const char* phone_version,
                   const char* storage_path) noexcept {
    if (called_from_inside() || gate.is_started()) {
        return gate.is_started();
    }
    if (!lifecycle_mutex.try_lock()) {
        return false;
    }
    const LifecycleLock lifecycle_lock(lifecycle_mutex, std::adopt_lock);
    if (gate.is_closed_for_good()) {
        return false;
    }
    if (gate.is_started()) {
        return true;  // by another thread, just now
    }
    return with_gate_closed([&]() REQUIRES(lifecycle_mutex) {
        if (plugin_instance() == nullptr) {
            make_plugin_instance();
        }
        library_process = getpid();
        return plugin_instance()->init_headsetmgmt_lib(
            text_or_empty(phone_model), text_or_empty(phone_version), text_or_empty(storage_path));
    });
}

void stop_library() noexcept {
    // A second stop at the same time, or at the end of the process, has nothing to do and nothing
    // to wait for.
    if (called_from_inside() || gate.is_closed_for_good() || stopping.exchange(true)) {
        return;
    }
    // Waits for a start that is under way; not for another stop.
    const LifecycleLock lifecycle_lock(lifecycle_mutex);
    if (!gate.is_closed_for_good() && plugin_instance() != nullptr) {
        with_gate_closed([] {
            plugin_instance()->stop_headset_mgmt();
            return false;
        });
    }
    // Before the lock is released: a stop that comes after the next start is not a second one.
    stopping = false;
}

}  // namespace headsetmgmt::plugin
