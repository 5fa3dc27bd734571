// The exported functions: each lets its caller in, or turns it away, and hands on to the plug-in
// object.

#include "headsetmgmt/phone/flat_interface.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <type_traits>
#include <unistd.h>

#include "headsetmgmt/utilities.h"

#include "plugin/call_gate.h"
#include "plugin/host_call.h"
#include "plugin/phone_plugin_impl.h"

using headsetmgmt::plugin::CallGate;
using headsetmgmt::plugin::HostCall;
using headsetmgmt::plugin::PhonePluginImpl;
using headsetmgmt::plugin::text_or_empty;

namespace {

CallGate gate;

// Held while the library is made, starts, stops or ends; nobody else takes it.
std::mutex lifecycle_mutex;
std::atomic<bool> stopping{false};

/// Whether the caller is inside a host function, the log callback or another call.
bool called_from_inside() {
    return HostCall::is_under_way() || CallGate::is_inside();
}

static_assert(std::is_trivially_destructible_v<std::mutex>, "locked while the process exits");

/// The owner of the one plug-in object, which the first create or start makes; changed only while
/// the gate is closed. `EndOfLibrary` deletes the object, or leaves it for good. Nothing destroys
/// the owner, so that calls may look at it while the process exits; and it is made by the first
/// call, so that loading the library runs no code.
std::shared_ptr<PhonePluginImpl>& plugin_instance() {
    using Owner = std::shared_ptr<PhonePluginImpl>;
    alignas(Owner) static std::byte room[sizeof(Owner)];
    static Owner& owner = *new (room) Owner();
    return owner;
}

/// The process that the library's threads are in: the one that made it, or started it since.
std::atomic<pid_t> library_process{0};

/// Ends the library when the process exits, or unloads it, without a stop: as safe as a stop.
struct EndOfLibrary {
    EndOfLibrary() = default;
    ~EndOfLibrary();

    EndOfLibrary(const EndOfLibrary&) = delete;
    EndOfLibrary& operator=(const EndOfLibrary&) = delete;
};

EndOfLibrary::~EndOfLibrary() {
    if (library_process != getpid()) {
        // A forked child exits: the threads that are inside, and the worker, are its parent's.
        return;
    }
    gate.close_for_good();
    if (called_from_inside()) {
        // A host function or the log callback called exit. Its callers, and the task that the
        // worker is in, use all that is there until the process is gone, so it stays.
        if (plugin_instance() != nullptr) {
            plugin_instance()->dismiss_worker();
        }
        return;
    }
    const std::lock_guard<std::mutex> lifecycle_lock(lifecycle_mutex);
    gate.close_and_wait();
    plugin_instance().reset();
}

void make_plugin_instance() {
    plugin_instance() = std::make_shared<PhonePluginImpl>();
    library_process = getpid();
    // From here on, and not from when the library was loaded: this ends the library before whatever
    // the host had made by now, and its host functions may use, is destroyed.
    static const EndOfLibrary end_of_library;
}

/// Changes the library's state with nobody inside: runs `change`, which answers whether the library
/// is started afterwards, and answers the same; false when it throws.
template <typename Change>
bool with_gate_closed(Change change) noexcept {
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

/// Lets the caller in and runs `body`; false when the gate is closed, when there is no plug-in
/// object, and when `body` throws: memory ran out, or a host function threw.
template <typename Body>
bool answer(Body body) noexcept {
    try {
        const CallGate::Passage passage(gate);
        return passage && plugin_instance() != nullptr && body();
    } catch (...) {
        return false;
    }
}

/// The lifecycle mutex, unless another thread has it.
std::unique_lock<std::mutex> try_lifecycle() {
    return std::unique_lock<std::mutex>(lifecycle_mutex, std::try_to_lock);
}

/// Runs `body`, which makes, starts or stops the library, under the lifecycle mutex; false when the
/// lock was not had, and when the library has ended for good.
template <typename Body>
bool as_only_one(const std::unique_lock<std::mutex>& lifecycle_lock, Body body) noexcept {
    return lifecycle_lock && !gate.is_closed_for_good() && body();
}

bool is_made() {
    return answer([] { return true; });
}

}  // namespace

bool create_headset_mgmt(HostLogCallback callback) {
    // A caller from inside proves that the object exists.
    if (!called_from_inside() && !is_made()) {
        as_only_one(try_lifecycle(), [] {
            if (plugin_instance() == nullptr) {
                with_gate_closed([] {
                    make_plugin_instance();
                    return false;
                });
            }
            return true;
        });
    }
    return answer([&] {
        plugin_instance()->setLogCB(callback);
        return true;
    });
}

bool start_headset_mgmt(const char* phone_model, const char* phone_version,
                        const char* storage_path) {
    if (called_from_inside() || gate.is_started()) {
        return gate.is_started();
    }
    return as_only_one(try_lifecycle(), [&] {
        if (gate.is_started()) {
            return true;  // by another thread, just now
        }
        return with_gate_closed([&] {
            if (plugin_instance() == nullptr) {
                make_plugin_instance();
            }
            library_process = getpid();
            return plugin_instance()->init_headsetmgmt_lib(text_or_empty(phone_model),
                                                           text_or_empty(phone_version),
                                                           text_or_empty(storage_path));
        });
    });
}

void stop_headset_mgmt() {
    // A second stop at the same time, or at the end of the process, has nothing to do and nothing
    // to wait for.
    if (called_from_inside() || gate.is_closed_for_good() || stopping.exchange(true)) {
        return;
    }
    // Waits for a start that is under way; not for another stop.
    const std::unique_lock<std::mutex> lifecycle_lock(lifecycle_mutex);
    as_only_one(lifecycle_lock, [] {
        if (plugin_instance() != nullptr) {
            with_gate_closed([] {
                plugin_instance()->stop_headset_mgmt();
                return false;
            });
        }
        return true;
    });
    // Before the lock is let go: a stop that comes after the next start is not a second one.
    stopping = false;
}

bool setHeadsetConfigUrl(const char* config_url, const char* inventory_post_url,
                         const char* service_url, const char** tftp_servers,
                         const char** korm_servers, const char* user_id) {
    return answer([&] {
        return plugin_instance()->onHeadsetConfigUrl(config_url, inventory_post_url, service_url,
                                                     tftp_servers, korm_servers, user_id);
    });
}

bool configure_headset(std::shared_ptr<AccessoryCache> accessory) {
    return answer([&] { return plugin_instance()->configure_headset(accessory); });
}

void send_inventory(std::shared_ptr<AccessoryCache> accessory) {
    answer([&] {
        plugin_instance()->sendInventory(accessory);
        return true;
    });
}

bool update_config(const char* device_id, CONFIG_SETTING_USAGE_ID usage_id, int value) {
    return answer([&] {
        return plugin_instance()->updateLocalConfig(device_id, usage_id,
                                                    stringconverter::to_string(value));
    });
}

bool retrieve_config(const char* device_id, CONFIG_SETTING_USAGE_ID usage_id, int* value) {
    return answer([&] {
        std::string text;
        if (value == nullptr || !plugin_instance()->retrieveConfig(device_id, usage_id, text)) {
            return false;
        }
        // What atoi answers where a long has 64 bits, and so on all systems.
        *value = static_cast<int>(std::strtoll(text.c_str(), nullptr, 10));
        return true;
    });
}

void httpResponse(const char* body, int status) {
    answer([&] {
        plugin_instance()->onHttpResponse(body, status);
        return true;
    });
}

bool factory_reset(const char* device_id) {
    return answer([&] { return plugin_instance()->factory_reset(device_id); });
}

bool remove_peripheral(const char* device_id) {
    return answer([&] { return plugin_instance()->removePeripheral(device_id); });
}
