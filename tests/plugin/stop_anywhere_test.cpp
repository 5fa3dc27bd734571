// SPDX-License-Identifier: Apache-2.0
// Stopping at every single call of the host, and among calls that never end.

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/stop_under_way.h"

namespace headsetmgmt::test_support {
namespace {

constexpr char document_with_upgrade[] = R"({"templateConfiguration": {
    "commonSettings": [{"name": "Bluetooth", "usageId": 39, "value": 1, "access": "User"}],
    "modelSpecificSettings": [{"models": ["K30"], "modelFirmware": [
        {"firmwareName": "k30.bin", "firmwareVersion": "2-0-1", "firmwareParams": [
            {"name": "Sidetone", "usageId": 34, "value": 2, "access": "Admin"}]}]}]}})";

constexpr char pass_ends[] = "log 5 ExecutorImpl::threadLoop exiting.\n";

/// From the start to the removal: a failure, a document, a reset, a reading and a report. Waits for
/// the worker after whatever gives it work, so that each time the host is called in the same order;
/// once the host is released, it waits for nothing.
void run_from_start_to_removal(BlockingHost& host) {
    int value = 0;
    start_headset_mgmt("", "", "");
    set_urls();
    configure_headset(shared(headset_1()));
    EXPECT_TRUE(host.wait_for(pass_ends, 1));
    httpResponse("", 404);
    EXPECT_TRUE(host.wait_for(pass_ends, 2));
    httpResponse(document_with_upgrade, 200);
    factory_reset("headset-1");
    retrieve_config("headset-1", USAGE_SIDETONE, &value);
    send_inventory(shared(headset_1()));
    EXPECT_TRUE(host.wait_for(pass_ends, 3));
    remove_peripheral("headset-1");
}

std::vector<Moment> moments_of_a_run() {
    BlockingHost watching({"", 0});
    PhoneHost host;
    host.release_worker();
    fake_host().behave(watching.behaviour());
    create_headset_mgmt(record_host_log_line);
    run_from_start_to_removal(watching);
    const std::vector<Moment> moments = watching.calls();
    host.stop();
    return moments;
}

/// The host blocks at `moment` of a run, and the stop comes there.
void stop_at(const Moment& moment) {
    BlockingHost blocking(moment);
    PhoneHost host;
    host.release_worker();
    fake_host().behave(blocking.behaviour());
    create_headset_mgmt(record_host_log_line);
    std::thread runner(run_from_start_to_removal, std::ref(blocking));
    EXPECT_TRUE(blocking.wait_until_blocked());
    const bool worker_is_blocked = blocking.blocked_thread() != runner.get_id();
    send_inventory(shared(headset_1()));

    int tasks = 0;
    {
        const StopUnderWay stop;
        if (worker_is_blocked) {
            EXPECT_TRUE(stop.wait_until_worker_is_joined());
        }
        EXPECT_FALSE(stop.has_ended());
        EXPECT_FALSE(any_call_is_let_in());
        tasks = blocking.count(task_begins);
        blocking.release();
        EXPECT_TRUE(stop.wait_for_end());
    }
    runner.join();
    EXPECT_FALSE(blocking.was_let_in());
    if (worker_is_blocked) {
        EXPECT_EQ(blocking.count(task_begins), tasks);
    }
    const std::size_t calls = blocking.calls().size();
    EXPECT_FALSE(set_urls());
    EXPECT_EQ(blocking.calls().size(), calls);
    expect_works_afresh(host);
}

TEST(StopAnywhereTest, StopComesAtEverySingleCallOfTheHost) {
    const std::vector<Moment> moments = moments_of_a_run();
    EXPECT_GT(moments.size(), 100U);

    for (const Moment& moment : moments) {
        SCOPED_TRACE(moment.event + " number " + std::to_string(moment.occurrence));
        stop_at(moment);
        if (HasFailure()) {
            break;  // the others would fail alike
        }
    }
}

// --- Calls that never end. ---

/// Threads that repeat the same call until they are ended.
class CallersWithoutEnd {
public:
    explicit CallersWithoutEnd(void (*call)()) {
        for (std::thread& thread : threads) {
            thread = std::thread([this, call] {
                while (!enough) {
                    call();
                }
            });
        }
    }
    ~CallersWithoutEnd() { end(); }

    CallersWithoutEnd(const CallersWithoutEnd&) = delete;
    CallersWithoutEnd& operator=(const CallersWithoutEnd&) = delete;

    void end() {
        enough = true;
        for (std::thread& thread : threads) {
            if (thread.joinable()) {
                thread.join();
            }
        }
    }

private:
    std::atomic<bool> enough{false};
    std::vector<std::thread> threads{3};
};

struct FlatFunction {
    const char* name;
    void (*call)();
};

void PrintTo(const FlatFunction& function, std::ostream* stream) {
    *stream << function.name;
}

class StopAmongCallsWithoutEnd : public ::testing::TestWithParam<FlatFunction> {};

const FlatFunction flat_functions[] = {
    {"OfCreate", [] { create_headset_mgmt(nullptr); }},
    {"OfSetUrl", [] { set_urls(); }},
    {"OfConfigure", [] { configure_headset(shared(headset_1())); }},
    {"OfSendInventory", [] { send_inventory(shared(headset_1())); }},
    {"OfUpdate", [] { update_config("headset-1", USAGE_SIDETONE, 1); }},
    {"OfRetrieve",
     [] {
         int value = 0;
         retrieve_config("headset-1", USAGE_SIDETONE, &value);
     }},
    {"OfHttpResponseWithADocument", [] { httpResponse(document_with_upgrade, 200); }},
    {"OfHttpResponseWithAFailure", [] { httpResponse("", 404); }},
    {"OfFactoryReset", [] { factory_reset("headset-1"); }},
    {"OfRemove", [] { remove_peripheral("headset-1"); }},
};

INSTANTIATE_TEST_SUITE_P(Functions, StopAmongCallsWithoutEnd, ::testing::ValuesIn(flat_functions),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(StopAmongCallsWithoutEnd, EndsEachTimeAndLetsTheLibraryStartAgain) {
    constexpr int rounds = 10;
    PhoneHost host;
    host.release_worker();
    create_headset_mgmt(nullptr);
    CallersWithoutEnd callers(GetParam().call);

    for (int round = 0; round < rounds; ++round) {
        EXPECT_TRUE(holds_soon([] { return start_headset_mgmt("", "", ""); }));
        set_urls();
        configure_headset(shared(headset_1()));
        stop_headset_mgmt();
    }
    callers.end();

    EXPECT_FALSE(set_urls());
    EXPECT_TRUE(create_headset_mgmt(record_host_log_line));
    expect_works_afresh(host);
}

TEST(StopAnywhereTest, StopThatFollowsTheNextStartIsNotTakenForASecondOne) {
    constexpr int rounds = 30;
    PhoneHost host;
    host.release_worker();
    create_headset_mgmt(nullptr);

    int lost = 0;
    for (int round = 0; round < rounds; ++round) {
        CallersWithoutEnd stoppers(stop_headset_mgmt);
        for (int i = 0; i < 10; ++i) {
            EXPECT_TRUE(holds_soon([] { return start_headset_mgmt("", "", ""); }));
            configure_headset(shared(headset_1()));
            stop_headset_mgmt();
        }
        stoppers.end();
        lost += set_urls() ? 1 : 0;
    }

    EXPECT_EQ(lost, 0);
}

/// Answers every fetch with a failure, on threads of its own and forever.
class FailingServer {
public:
    FailingServer() {
        for (std::thread& thread : threads) {
            thread = std::thread([this] { answer(); });
        }
    }
    ~FailingServer() {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            closing = true;
        }
        changed.notify_all();
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    FailingServer(const FailingServer&) = delete;
    FailingServer& operator=(const FailingServer&) = delete;

    void request() {
        const std::lock_guard<std::mutex> lock(mutex);
        ++requests;
        changed.notify_one();
    }

private:
    void answer() {
        std::unique_lock<std::mutex> lock(mutex);
        for (;;) {
            changed.wait(lock, [this] { return closing || requests != 0; });
            if (closing) {
                return;
            }
            --requests;
            lock.unlock();
            httpResponse("", 503);
            lock.lock();
        }
    }

    std::mutex mutex;  // guards the next three
    std::condition_variable changed;
    int requests = 0;
    bool closing = false;
    std::vector<std::thread> threads{3};
};

TEST(StopAnywhereTest, ServerThatFailsForeverFromItsOwnThreadsCannotHoldAStopUp) {
    FailingServer server;
    PhoneHost host;
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_http_request = [&](const HttpRequestCall&) { server.request(); };
    fake_host().behave(behaviour);
    host.start_up();
    host.release_worker();
    configure_headset(shared(headset_1()));
    ASSERT_TRUE(fake_host().wait_for_http_requests(50));

    {
        const StopUnderWay stop;
        EXPECT_TRUE(stop.wait_for_end());
    }

    const std::size_t requests = fake_host().http_requests().size();
    EXPECT_FALSE(set_urls());
    EXPECT_EQ(fake_host().http_requests().size(), requests);
    expect_works_afresh(host);
}

}  // namespace
}  // namespace headsetmgmt::test_support
