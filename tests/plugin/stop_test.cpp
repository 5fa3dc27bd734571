// SPDX-License-Identifier: Apache-2.0
// Stopping at any moment, and what other calls see of it.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>

#include <gtest/gtest.h>

#include "support/event.h"
#include "support/phone_host.h"

namespace headsetmgmt::test_support {
namespace {

constexpr char stop_line[] = "log 5 stop headset mgmt\n";

bool is_said(const std::string& line) {
    const Lines lines = fake_host().transcript();
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

bool is_running(const std::future<void>& work) {
    return work.wait_for(std::chrono::seconds(0)) == std::future_status::timeout;
}

std::future<void> stop_on_another_thread() {
    return std::async(std::launch::async, [] { stop_headset_mgmt(); });
}

/// The worker is inside `httpRequest` until the test ends the call.
class WorkerInsideHttpRequest : public ::testing::Test {
protected:
    WorkerInsideHttpRequest() {
        HostBehaviour behaviour = usual_behaviour();
        behaviour.on_http_request = [this](const HttpRequestCall&) {
            EXPECT_TRUE(may_return.wait());
        };
        fake_host().behave(behaviour);
        host.start_up();
        configure_headset(shared(headset_1()));
        host.release_worker();
        EXPECT_TRUE(fake_host().wait_for_http_requests(1));
    }

    std::future<void> begin_to_stop() {
        std::future<void> stopped = stop_on_another_thread();
        EXPECT_TRUE(fake_host().wait_until([] { return is_said(stop_line); }));
        return stopped;
    }

    PhoneHost host;
    Event may_return;
};

TEST_F(WorkerInsideHttpRequest, SecondStopAtTheSameTimeReturnsAtOnce) {
    std::future<void> stopped = begin_to_stop();
    host.take();

    stop_headset_mgmt();

    EXPECT_EQ(host.take(), Lines{});
    EXPECT_TRUE(is_running(stopped));
    may_return.happen();
    stopped.get();
}

TEST_F(WorkerInsideHttpRequest, StopLeavesTheRestOfAFullQueue) {
    constexpr std::size_t reports = 2000;
    for (std::size_t i = 0; i < reports; ++i) {
        send_inventory(shared(headset_1()));
    }
    std::future<void> stopped = begin_to_stop();

    may_return.happen();
    stopped.get();

    EXPECT_LT(fake_host().http_requests().size(), reports);
}

TEST(StopTest, HostThatFailsForeverFromInsideHttpRequestCannotHoldAStopUp) {
    PhoneHost host;
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_http_request = [](const HttpRequestCall&) { httpResponse("", 404); };
    fake_host().behave(behaviour);
    host.start_up();
    configure_headset(shared(headset_1()));
    host.release_worker();
    ASSERT_TRUE(fake_host().wait_for_http_requests(100));

    stop_headset_mgmt();

    const std::size_t requests = fake_host().http_requests().size();
    ASSERT_TRUE(start_headset_mgmt("", "", ""));
    stop_headset_mgmt();
    EXPECT_EQ(fake_host().http_requests().size(), requests);
}

TEST(StopTest, StartAndStopInsideAHostFunctionOnTheWorkerDoNothing) {
    std::atomic<bool> is_started{false};
    PhoneHost host;
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_http_request = [&](const HttpRequestCall&) {
        stop_headset_mgmt();
        is_started = start_headset_mgmt("", "", "");
    };
    fake_host().behave(behaviour);
    host.start_up();

    configure_headset(shared(headset_1()));
    host.run_worker();

    EXPECT_TRUE(is_started);
    EXPECT_FALSE(is_said(stop_line));
    EXPECT_TRUE(factory_reset("headset-1"));
}

TEST(StopTest, StartAndStopInsideAHostFunctionOnAHostThreadDoNothing) {
    bool is_started = false;
    PhoneHost host;
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_apply_changes = [&](const ApplyChangesCall&) {
        stop_headset_mgmt();
        is_started = start_headset_mgmt("", "", "");
    };
    fake_host().behave(behaviour);
    host.start_up();
    configure_headset(shared(headset_1()));
    host.run_worker();

    httpResponse(document_with_sidetone, 200);

    EXPECT_TRUE(is_started);
    EXPECT_FALSE(is_said(stop_line));
    EXPECT_TRUE(factory_reset("headset-1"));
}

TEST(StopTest, StartAndStopInsideTheLogCallbackDoNothing) {
    std::atomic<int> lines{0};
    std::atomic<int> started{0};
    PhoneHost host;
    host.start_up();
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_log_line = [&](int, const std::string&) {
        ++lines;
        stop_headset_mgmt();
        started += start_headset_mgmt("", "", "") ? 1 : 0;
    };
    fake_host().behave(behaviour);

    // Lines of the test's thread, and of the worker.
    configure_headset(shared(headset_1()));
    host.run_worker();

    EXPECT_GT(lines, 0);
    EXPECT_EQ(started, lines);
    fake_host().behave(usual_behaviour());
    EXPECT_FALSE(is_said(stop_line));
    EXPECT_TRUE(factory_reset("headset-1"));
}

TEST(StopTest, LogCallbackDuringAStartAndAStopIsTurnedAway) {
    PhoneHost host;
    bool anything_true = false;
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_log_line = [&](int, const std::string&) {
        stop_headset_mgmt();
        anything_true = anything_true || start_headset_mgmt("", "", "") || set_urls() ||
                        remove_peripheral("headset-1") || create_headset_mgmt(nullptr);
    };
    fake_host().behave(behaviour);
    create_headset_mgmt(record_host_log_line);

    EXPECT_TRUE(host.start());
    host.stop();

    EXPECT_FALSE(anything_true);
    EXPECT_EQ(host.take(),
              (Lines{"log 5 init_headsetmgmt_lib.\n", "log 5 ExecutorImpl::ExecutorImpl: ENTER.\n",
                     "log 5 stop headset mgmt\n"}));
}

TEST(StopTest, SecondStopSaysItsLineAgain) {
    PhoneHost host;
    host.start_up();
    host.stop();
    host.take();

    stop_headset_mgmt();

    EXPECT_EQ(host.take(), (Lines{"log 5 stop headset mgmt\n"}));
}

}  // namespace
}  // namespace headsetmgmt::test_support
