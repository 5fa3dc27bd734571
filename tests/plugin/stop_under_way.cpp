// SPDX-License-Identifier: Apache-2.0
// A stop that is under way while the host does something else, and a host that blocks meanwhile.

#include "plugin/stop_under_way.h"

#include <chrono>
#include <utility>

#include <gtest/gtest.h>

#include "support/joining_thread.h"

namespace headsetmgmt::test_support {

namespace {

constexpr std::chrono::seconds patience(20);

bool begins_with(const std::string& text, const std::string& beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

/// What the host was asked to do, without the log lines and the body of the report.
Lines deeds(const Lines& lines) {
    Lines asked;
    for (const std::string& line : lines) {
        if (!begins_with(line, "log ")) {
            asked.push_back(line.substr(0, line.find(" {")));
        }
    }
    return asked;
}

}  // namespace

const char task_begins[] = "log 5 ExecutorImpl::threadLoop, start executing task\n";

bool holds_soon(const std::function<bool()>& condition) {
    const auto limit = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

bool any_call_is_let_in() {
    int value = 17;
    bool let_in = create_headset_mgmt(record_host_log_line);
    let_in |= start_headset_mgmt("", "", "");
    let_in |= set_urls();
    let_in |= configure_headset(shared(headset_1()));
    let_in |= update_config("headset-1", USAGE_SIDETONE, 1);
    let_in |= retrieve_config("headset-1", USAGE_SIDETONE, &value);
    let_in |= factory_reset("headset-1");
    let_in |= remove_peripheral("headset-1");
    // These two have no answer: if they did anything, the host's transcript shows it.
    httpResponse(document_with_sidetone, 200);
    send_inventory(shared(headset_1()));
    return let_in || value != 17;
}

void expect_works_afresh(PhoneHost& host) {
    fake_host().behave(usual_behaviour());
    host.stop();  // once more, which is harmless, and the clock stands still again
    host.start_up();

    EXPECT_FALSE(factory_reset("headset-1"));
    EXPECT_TRUE(configure_headset(shared(headset_1())));
    host.run_worker();
    httpResponse(document_with_sidetone, 200);
    send_inventory(shared(headset_1()));
    host.run_worker();
    host.run_worker();
    EXPECT_TRUE(remove_peripheral("headset-1"));

    EXPECT_EQ(deeds(host.take()), (Lines{"httpRequest 0 http://[fe80::1]/4711/headsets.json null",
                                         "apply_changes headset-1|Sidetone|34|2",
                                         "httpRequest 2 https://korm-1/inventory"}));
    host.stop();
}

HostBehaviour BlockingHost::behaviour() {
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_http_request = [this](const HttpRequestCall& call) {
        called("httpRequest " + std::to_string(call.type));
    };
    behaviour.on_apply_changes = [this](const ApplyChangesCall&) { called("apply_changes"); };
    behaviour.on_firmware_upgrade = [this](const FirmwareUpgradeCall&) {
        called("request_firmware_upgrade");
    };
    behaviour.on_fact = [this] { called("fact"); };
    behaviour.on_log_line = [this](int, const std::string& line) { called("log 5 " + line); };
    return behaviour;
}

void BlockingHost::called(const std::string& event) {
    std::unique_lock<std::mutex> lock(mutex);
    const Moment now{event, ++counts[event]};
    seen.push_back(now);
    changed.notify_all();
    if (now.event != chosen.event || now.occurrence != chosen.occurrence) {
        return;
    }
    if (instead) {
        lock.unlock();
        instead();
        return;
    }
    blocked = true;
    inside = std::this_thread::get_id();
    changed.wait(lock, [this] { return free; });
    lock.unlock();
    const bool was_let_in = any_call_is_let_in();
    lock.lock();
    let_in = was_let_in;
    through = true;
}

bool BlockingHost::wait_until_blocked() {
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, patience, [this] { return blocked; });
}

std::thread::id BlockingHost::blocked_thread() {
    const std::lock_guard<std::mutex> lock(mutex);
    return inside;
}

void BlockingHost::release() {
    const std::lock_guard<std::mutex> lock(mutex);
    free = true;
    changed.notify_all();
}

bool BlockingHost::is_through() {
    const std::lock_guard<std::mutex> lock(mutex);
    return through;
}

bool BlockingHost::was_let_in() {
    const std::lock_guard<std::mutex> lock(mutex);
    return let_in;
}

int BlockingHost::count(const std::string& event) {
    const std::lock_guard<std::mutex> lock(mutex);
    return counts[event];
}

bool BlockingHost::wait_for(const std::string& event, int times) {
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, patience, [&] { return free || counts[event] >= times; });
}

std::vector<Moment> BlockingHost::calls() {
    const std::lock_guard<std::mutex> lock(mutex);
    return seen;
}

StopUnderWay::StopUnderWay() {
    std::packaged_task<void()> stop(stop_headset_mgmt);
    ended = stop.get_future();
    stopper = std::thread(std::move(stop));
    thread = stopper.native_handle();
    EXPECT_TRUE(holds_soon([] { return !set_urls(); }));
}

bool StopUnderWay::wait_until_worker_is_joined() const {
    return wait_until_joining(thread);
}

bool StopUnderWay::has_ended() const {
    return ended.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

bool StopUnderWay::wait_for_end() const {
    return ended.wait_for(patience) == std::future_status::ready;
}

}  // namespace headsetmgmt::test_support
