// SPDX-License-Identifier: Apache-2.0
// Tests of what an hour without a server costs: how many requests the library makes of a host that
// answers each with a failure, and how many transfers a host makes of them that joins them.

#include <chrono>
#include <cstddef>
#include <ctime>
#include <deque>
#include <string>

#include <gtest/gtest.h>

#include "headsetmgmt/plugins.h"

#include "config/config_manager_impl.h"
#include "runtime/executor_impl.h"
#include "support/fake_accessory.h"
#include "support/fake_plugins.h"
#include "support/virtual_time.h"

namespace headsetmgmt::test_support {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono_literals::operator""s;

/// A sink that keeps nothing: an hour has millions of lines.
class NoLog : public log::HostLogInterface {
public:
    int map_to_host_log_level(log::LogLevel /*level*/) const override { return 0; }
    void print(log::LogLevel /*level*/, const std::string& /*line*/) override {}
};

enum class Replug { never, every_minute };

/// How a host deals with requests for a URL that it is about to fetch, or is fetching, already.
enum class Requests { each_by_itself, joined };

struct Outage {
    std::size_t requests = 0;   ///< that the library made
    std::size_t transfers = 0;  ///< that the host made for them
    std::size_t waiting = 0;    ///< requests without an answer at the end
};

/// A host whose server does not answer: it reports each failure, once, a pause after the request.
class FailingHost {
public:
    FailingHost(milliseconds pause_before_failure, Requests how)
        : pause(pause_before_failure), joins(how == Requests::joined) {}

    void request(milliseconds now) {
        ++seen.requests;
        if (joins && !transfers.empty()) {
            ++transfers.front().requests;
            return;
        }
        ++seen.transfers;
        transfers.push_back({now + pause, 1});
    }

    void report_failures(milliseconds now, config::ConfigManagerImpl& manager) {
        while (!transfers.empty() && transfers.front().due <= now) {
            const Transfer ended = transfers.front();
            transfers.pop_front();
            for (std::size_t answer = 0; answer < ended.requests; ++answer) {
                EXPECT_TRUE(manager.on_fetch_config_failure(503));
            }
        }
    }

    Outage outage() const {
        Outage result = seen;
        for (const Transfer& transfer : transfers) {
            result.waiting += transfer.requests;
        }
        return result;
    }

private:
    struct Transfer {
        milliseconds due;
        std::size_t requests;
    };

    milliseconds pause;
    bool joins;
    std::deque<Transfer> transfers;  // in the order in which they are due
    Outage seen;
};

/// An hour of a phone with one headset, from its attach on. The worker's passes, of 50 milliseconds
/// each, run on the test's thread.
Outage hour_without_server(seconds pause, Replug replug, Requests how) {
    VirtualTime clock(1000, VirtualTime::Sleepers::move_the_clock);
    FakePlugins plugins;
    NoLog no_log;
    ExecutorImpl executor(nullptr);
    plugins.record.log = &no_log;
    plugins.record.executor = &executor;
    init(plugins.record);
    FakeAccessory headset;
    headset.shared->firmware_data_ready = true;
    config::ConfigManagerImpl& manager = *config::ConfigManagerImpl::get_instance();

    FailingHost host(pause, how);
    constexpr milliseconds pass(50);
    milliseconds now(0);
    plugins.dispatcher.hook = [&](const DispatchedRequest&) { host.request(now); };
    manager.initialize_accessory("headset", &headset);
    for (; now < hours(1); now += pass) {
        host.report_failures(now, manager);
        if (replug == Replug::every_minute && now.count() != 0 &&
            now % minutes(1) == milliseconds(0)) {
            manager.remove_accessory("headset");
            manager.initialize_accessory("headset", &headset);
        }
        executor.threadLoop();
    }
    config::delete_config_manager();
    return host.outage();
}

struct Row {
    seconds pause;
    std::size_t expected;
};

TEST(Outage, CostsOneRequestAPause) {
    for (const Row& row : {Row{1s, 3600}, Row{10s, 360}, Row{60s, 60}}) {
        const Outage hour = hour_without_server(row.pause, Replug::never, Requests::each_by_itself);

        EXPECT_EQ(row.expected, hour.requests);
        EXPECT_EQ(1u, hour.waiting);
    }
}

TEST(Outage, CostsOneMoreRequestAPauseFromEachReplugOn) {
    for (const Row& row : {Row{1s, 109800}, Row{10s, 10980}, Row{60s, 1830}}) {
        const Outage hour =
            hour_without_server(row.pause, Replug::every_minute, Requests::each_by_itself);

        EXPECT_EQ(row.expected, hour.requests);
        EXPECT_EQ(60u, hour.waiting) << "the first attach, and 59 more";
    }
}

TEST(Outage, CostsOneTransferAPauseInAHostThatJoinsRequestsHoweverOftenItIsReplugged) {
    for (const Row& row : {Row{1s, 3600}, Row{10s, 360}, Row{60s, 60}}) {
        const Outage hour = hour_without_server(row.pause, Replug::every_minute, Requests::joined);

        EXPECT_EQ(row.expected, hour.transfers);
        EXPECT_EQ(60u, hour.waiting);
    }
}

TEST(HeldBackRetry, LetsALaterOneRunAndRunsAfterAMinute) {
    VirtualTime clock(1000, VirtualTime::Sleepers::move_the_clock);
    FakePlugins plugins;
    ExecutorImpl executor(nullptr);
    plugins.record.executor = &executor;
    init(plugins.record);
    FakeAccessory headset;
    config::ConfigManagerImpl& manager = *config::ConfigManagerImpl::get_instance();
    manager.initialize_accessory("headset", &headset);
    executor.threadLoop();
    ASSERT_EQ(1u, plugins.dispatcher.requests().size());

    headset.shared->firmware_data_ready = false;
    manager.on_fetch_config_failure(503);
    executor.threadLoop();
    ASSERT_EQ(1u, plugins.dispatcher.requests().size()) << "held back";
    headset.shared->firmware_data_ready = true;
    manager.on_fetch_config_failure(503);
    executor.threadLoop();
    EXPECT_EQ(2u, plugins.dispatcher.requests().size()) << "the second one alone";

    headset.shared->firmware_data_ready = false;
    const std::time_t queued = clock.now();
    while (plugins.dispatcher.requests().size() < 3 && clock.now() < queued + 100) {
        executor.threadLoop();
    }
    EXPECT_EQ(60, clock.now() - queued);
    config::delete_config_manager();
}

}  // namespace
}  // namespace headsetmgmt::test_support
