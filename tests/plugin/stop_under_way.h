// SPDX-License-Identifier: Apache-2.0
// A stop that is under way while the host does something else, and a host that blocks meanwhile.

#pragma once

#include <condition_variable>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/phone_host.h"

namespace headsetmgmt::test_support {

/// What the worker logs before each task.
extern const char task_begins[];

/// Checks repeatedly. Returns whether it holds within 20 seconds.
bool holds_soon(const std::function<bool()>& condition);

/// Calls every function of the flat interface but the stop. Returns whether one of them did
/// anything but refuse the call.
bool any_call_is_let_in();

/// The library, which was stopped, configures and reports as if it had never run before.
void expect_works_afresh(PhoneHost& host);

/// A call of the host: what it is, and whether it is the first of its kind, the second, ...
///
/// `event` is "httpRequest <type>", "apply_changes", "request_firmware_upgrade", "fact" for any of
/// the three questions for a text, or "log 5 <line>".
struct Moment {
    std::string event;
    int occurrence = 1;
};

/// A host that blocks inside one of its functions, or in the log callback, until it is released.
///
/// Once it is released, and before it returns, it calls the flat interface from inside, as a host
/// that has waited for something may. Any thread.
class BlockingHost {
public:
    /// With a `deed`, the host does that at the moment, and does not block.
    explicit BlockingHost(Moment moment, std::function<void()> deed = {})
        : chosen(std::move(moment)), instead(std::move(deed)) {}

    /// How the host behaves; for as long as this lives.
    HostBehaviour behaviour();

    /// Waits until it blocks, 20 seconds at most; whether it does.
    bool wait_until_blocked();

    /// The thread that is inside it.
    std::thread::id blocked_thread();

    void release();

    /// Whether it was released and has made its calls from inside.
    bool is_through();

    /// Whether one of them was let in.
    bool was_let_in();

    /// How often the host was called so.
    int count(const std::string& event);

    /// Waits until the host was called so `times` times, or is released, 20 seconds at most.
    /// Returns whether either came.
    bool wait_for(const std::string& event, int times);

    /// All calls of the host until now.
    std::vector<Moment> calls();

private:
    void called(const std::string& event);

    const Moment chosen;
    const std::function<void()> instead;
    std::mutex mutex;  // guards all of the below
    std::condition_variable changed;
    std::vector<Moment> seen;
    std::map<std::string, int> counts;
    bool blocked = false;
    bool free = false;
    bool through = false;
    bool let_in = false;
    std::thread::id inside;
};

/// A stop on a thread of its own.
class StopUnderWay {
public:
    /// Returns once calls of other threads are turned away.
    StopUnderWay();
    ~StopUnderWay() { stopper.join(); }

    StopUnderWay(const StopUnderWay&) = delete;
    StopUnderWay& operator=(const StopUnderWay&) = delete;

    /// Waits until the worker was asked to leave, and its end is all that is waited for; 20 seconds
    /// at most. Whether it is so.
    bool wait_until_worker_is_joined() const;

    bool has_ended() const;

    /// Waits for its end, 20 seconds at most; whether it has ended.
    bool wait_for_end() const;

private:
    std::future<void> ended;
    std::thread stopper;
    std::thread::native_handle_type thread;
};

}  // namespace headsetmgmt::test_support
