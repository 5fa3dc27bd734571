// SPDX-License-Identifier: Apache-2.0
// A phone at the flat interface that owns the clock, and records the library's lines and calls.

#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "headsetmgmt/phone/flat_interface.h"

#include "support/fake_host.h"
#include "support/lines.h"
#include "support/virtual_time.h"

namespace headsetmgmt::test_support {

/// The one headset of most tests: a maker's "Varos K30" of version "1-0-2" with the id "headset-1".
AccessoryCache headset_1();

/// The same model under another id.
AccessoryCache headset_named(const std::string& device_id);

/// A camera of the maker, with the id "camera-1".
AccessoryCache camera_1();

/// As a host passes it to the flat interface.
std::shared_ptr<AccessoryCache> shared(const AccessoryCache& record);

/// A document that gives a "K30" the administrator's setting 34 "Sidetone" of the value 2.
extern const char document_with_sidetone[];

/// How the host of these tests answers; hooks are added to it.
HostBehaviour usual_behaviour();

/// Gives the library its URLs, servers and user.
bool set_urls();

/// The answer of `call` on another thread.
bool on_another_thread(const std::function<bool()>& call);

/// How many threads of the process have the name, of which the kernel keeps 15 characters.
int threads_named(const std::string& name);

/// The worker's name, once it runs.
constexpr char worker_name[] = "Headset-mgmt ta";

/// A host whose clock stands still until the test moves it, so that what happens on the test's
/// thread and on the worker has one order. Stops the library at the end. Steps are for the test's
/// thread.
class PhoneHost {
public:
    PhoneHost();
    ~PhoneHost();

    PhoneHost(const PhoneHost&) = delete;
    PhoneHost& operator=(const PhoneHost&) = delete;

    /// Creates and starts the library, gives it its URLs and waits for the worker's first pause;
    /// forgets the record so far.
    void start_up();

    /// Starts the library, and waits for the worker's first pause.
    bool start();

    /// Lets the worker run what is queued, to its next pause.
    void run_worker();

    /// Moves the clock and waits for nothing: the worker may not come to its next pause.
    void move_clock(std::chrono::microseconds duration) { time->advance(duration); }

    /// Has a worker that is at rest go on, so that it can leave, and stops the library.
    void stop();

    /// From now on the worker never pauses.
    void release_worker() { time->release(); }

    /// Lines and calls since the last `take`.
    Lines take();

private:
    std::optional<test_support::VirtualTime> time;
    std::size_t taken = 0;
};

}  // namespace headsetmgmt::test_support
