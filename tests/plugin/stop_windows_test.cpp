// SPDX-License-Identifier: Apache-2.0
// Stopping at the worst moment: each place where a configuration run or a report can be when the
// stop comes.

#include <chrono>
#include <future>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "headsetmgmt/plugins.h"

#include "config/config_manager_impl.h"
#include "plugin/stop_under_way.h"
#include "support/event.h"
#include "support/watched_task.h"

namespace headsetmgmt::test_support {
namespace {

constexpr char document_with_upgrade[] = R"({"templateConfiguration": {
    "modelSpecificSettings": [{"models": ["K30"], "modelFirmware": [
        {"firmwareName": "k30.bin", "firmwareVersion": "2-0-1", "firmwareParams": [
            {"name": "Sidetone", "usageId": 34, "value": 2, "access": "Admin"}]}]}]}})";

constexpr std::chrono::milliseconds pause_of_the_worker(50);

void nothing(PhoneHost& /*host*/) {}

void attach() {
    EXPECT_TRUE(configure_headset(shared(headset_1())));
}

/// Its firmware data are not known, so its fetch is held back for 60 seconds at most.
void attach_without_version() {
    AccessoryCache record = headset_1();
    record.software_version = "";
    EXPECT_TRUE(configure_headset(shared(record)));
}

void report() {
    send_inventory(shared(headset_1()));
}

void answer_with_document() {
    httpResponse(document_with_upgrade, 200);
}

void request_document(PhoneHost& host) {
    attach();
    host.run_worker();
    host.run_worker();
}

void configure(PhoneHost& host) {
    request_document(host);
    answer_with_document();
}

// --- The host blocks: on the worker, inside a task. ---

struct WorkerWindow {
    const char* name;
    void (*prepare)(PhoneHost& host);
    void (*queue_task)();
    Moment moment;
    std::chrono::seconds passing;  // between queueing the task and the worker's look at it
    int tasks_left;                // that begin although the stop has come: that of the moment
    int requests_left;
};

void PrintTo(const WorkerWindow& window, std::ostream* stream) {
    *stream << window.name;
}

class StopWhileTheWorkerIs : public ::testing::TestWithParam<WorkerWindow> {};

const WorkerWindow worker_windows[] = {
    {"InTheLineThatATaskBegins", nothing, attach, {task_begins}, {}, 0, 1},
    {"InALineOfAFetch",
     nothing,
     attach,
     {"log 5 Lib::ConfigManagerImpl: configure_accessory_task id:headset-1"},
     {},
     0,
     1},
    {"RequestingADocument", nothing, attach, {"httpRequest 0"}, {}, 0, 0},
    {"RequestingADocumentAgain",
     [](PhoneHost& host) {
         request_document(host);
         httpResponse("", 404);
     },
     [] {},
     {"httpRequest 0", 1},
     {},
     0,
     0},
    {"InTheLineThatATaskHasEnded",
     nothing,
     attach,
     {"log 5 ExecutorImpl::threadLoop, complete executing task\n"},
     {},
     0,
     0},
    {"InTheLineOfAPass", nothing, attach, {"log 5 ExecutorImpl::threadLoop exiting.\n"}, {}, 0, 0},
    {"InTheLineOfATaskThatWaitedTooLong",
     [](PhoneHost& host) {
         attach_without_version();
         host.run_worker();
     },
     [] {},
     {"log 5 ExecutorImpl: threadloop timeout reached\n"},
     std::chrono::seconds(60),
     1,
     1},
    {"InALineOfAReport",
     nothing,
     report,
     {"log 5 HeadsetInventoryMetricsImpl: assemble_metrics: Enter"},
     {},
     0,
     1},
    {"AskingForTheSerialNumber", nothing, report, {"fact", 1}, {}, 0, 1},
    {"AskingForThePhonesVersion", nothing, report, {"fact", 2}, {}, 0, 1},
    {"AskingForTheSystemsVersion", nothing, report, {"fact", 3}, {}, 0, 1},
    {"PostingAReport", nothing, report, {"httpRequest 2"}, {}, 0, 0},
};

INSTANTIATE_TEST_SUITE_P(Windows, StopWhileTheWorkerIs, ::testing::ValuesIn(worker_windows),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(StopWhileTheWorkerIs, EndsWithTheTaskThatIsUnderWay) {
    BlockingHost blocking(GetParam().moment);
    PhoneHost host;
    host.start_up();
    GetParam().prepare(host);
    fake_host().behave(blocking.behaviour());
    GetParam().queue_task();
    host.move_clock(GetParam().passing);
    host.release_worker();
    ASSERT_TRUE(blocking.wait_until_blocked());
    report();
    report();

    StopUnderWay stop;
    EXPECT_TRUE(stop.wait_until_worker_is_joined());
    const int tasks = blocking.count(task_begins);
    const std::size_t requests = fake_host().http_requests().size();
    host.take();

    EXPECT_FALSE(stop.has_ended());
    EXPECT_FALSE(any_call_is_let_in());
    EXPECT_EQ(host.take(), Lines{});

    blocking.release();
    EXPECT_TRUE(stop.wait_for_end());
    EXPECT_FALSE(blocking.was_let_in());
    EXPECT_EQ(blocking.count(task_begins) - tasks, GetParam().tasks_left);
    EXPECT_EQ(fake_host().http_requests().size() - requests,
              static_cast<std::size_t>(GetParam().requests_left));
    expect_works_afresh(host);
}

// --- The host blocks: on a thread of its own, inside a call of the flat interface. ---

struct CallWindow {
    const char* name;
    void (*prepare)(PhoneHost& host);
    void (*call)();
    Moment moment;
};

void PrintTo(const CallWindow& window, std::ostream* stream) {
    *stream << window.name;
}

class StopWhileAHostThreadIs : public ::testing::TestWithParam<CallWindow> {};

const CallWindow call_windows[] = {
    {"Attaching", nothing, attach, {"log 5 PhonePluginImpl::configure_headset ENTER\n"}},
    {"QueueingAFetch", nothing, attach, {"log 5 ExecutorImpl::ExecutorImpl adding a task\n"}},
    {"AttachingTheSecondOfARun",
     request_document,
     [] { EXPECT_TRUE(configure_headset(shared(camera_1()))); },
     {"log 5 Lib::ConfigManagerImpl: configure_accessory: previous configure_accessory is in "
      "progress, ignore this one"}},
    {"Reporting", nothing, report, {"log 5 HeadsetInventoryMetricsImpl: send: Enter"}},
    {"QueueingAReport", nothing, report, {"log 5 ExecutorImpl::ExecutorImpl adding a task\n"}},
    {"DeliveringADocument",
     request_document,
     answer_with_document,
     {"log 5 HeadsetConfigImpl: update_from_server Enter:"}},
    {"ChangingASetting", request_document, answer_with_document, {"apply_changes"}},
    {"UpgradingTheFirmware", request_document, answer_with_document, {"request_firmware_upgrade"}},
    {"EndingARun",
     request_document,
     answer_with_document,
     {"log 5 Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER"}},
    {"DeliveringAFailure",
     request_document,
     [] { httpResponse("", 500); },
     {"log 5 Lib::ConfigManagerImpl: on_fetch_config_failure reason code: 500"}},
    {"DeliveringAnAnswerThatNobodyWaitsFor",
     nothing,
     answer_with_document,
     {"log 5 Lib::ConfigManagerImpl: on_fetch_config_success: no configuration in progress, "
      "dropping data"}},
    {"ReadingASetting",
     configure,
     [] {
         int value = 17;
         EXPECT_TRUE(retrieve_config("headset-1", USAGE_SIDETONE, &value));
         EXPECT_EQ(value, 0);
     },
     {"log 5 Lib::ConfigManagerImpl: retrieve_config: ENTER"}},
    {"ResettingAnAccessory",
     configure,
     [] { EXPECT_TRUE(factory_reset("headset-1")); },
     {"apply_changes"}},
    {"RemovingAnAccessory",
     configure,
     [] { EXPECT_TRUE(remove_peripheral("headset-1")); },
     {"log 5 Lib::ConfigManagerImpl: remove_accessory: erased [0] pending config"}},
};

INSTANTIATE_TEST_SUITE_P(Windows, StopWhileAHostThreadIs, ::testing::ValuesIn(call_windows),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(StopWhileAHostThreadIs, LetsThatCallEndAndBeginsNoTask) {
    BlockingHost blocking(GetParam().moment);
    PhoneHost host;
    host.start_up();
    GetParam().prepare(host);
    fake_host().behave(blocking.behaviour());
    auto call = std::async(std::launch::async, GetParam().call);
    ASSERT_TRUE(blocking.wait_until_blocked());
    report();
    report();

    StopUnderWay stop;
    host.take();
    EXPECT_FALSE(stop.has_ended());
    EXPECT_FALSE(any_call_is_let_in());
    // Not even the stop's own line: it waits for the call before it begins.
    EXPECT_EQ(host.take(), Lines{});

    blocking.release();
    call.get();
    EXPECT_FALSE(blocking.was_let_in());
    EXPECT_TRUE(stop.wait_until_worker_is_joined());
    host.take();
    host.move_clock(pause_of_the_worker);
    EXPECT_TRUE(stop.wait_for_end());
    EXPECT_EQ(host.take(), Lines{});
    expect_works_afresh(host);
}

TEST(StopWindowsTest, CallThatWaitsForAnotherOnesAccessoriesEndsBeforeTheStop) {
    BlockingHost blocking({"apply_changes"});
    PhoneHost host;
    host.start_up();
    request_document(host);
    fake_host().behave(blocking.behaviour());
    auto answered = std::async(std::launch::async, answer_with_document);
    ASSERT_TRUE(blocking.wait_until_blocked());
    // Its first line is said without the lock that the other call holds.
    auto removed = std::async(std::launch::async, [] { return remove_peripheral("headset-1"); });
    EXPECT_TRUE(blocking.wait_for("log 5 PhonePluginImpl::removePeripheral ENTER\n", 1));

    StopUnderWay stop;
    EXPECT_FALSE(stop.has_ended());
    EXPECT_FALSE(any_call_is_let_in());

    blocking.release();
    answered.get();
    EXPECT_TRUE(removed.get());
    host.release_worker();
    EXPECT_TRUE(stop.wait_for_end());
    expect_works_afresh(host);
}

TEST(StopWindowsTest, StopDuringAStartStopsWhatHasStarted) {
    BlockingHost blocking({"log 5 ExecutorImpl::ExecutorImpl: ENTER.\n"});
    PhoneHost host;
    host.release_worker();
    fake_host().behave(blocking.behaviour());
    create_headset_mgmt(record_host_log_line);
    auto started = std::async(std::launch::async, [] { return start_headset_mgmt("", "", ""); });
    ASSERT_TRUE(blocking.wait_until_blocked());

    StopUnderWay stop;
    EXPECT_FALSE(stop.has_ended());
    EXPECT_FALSE(any_call_is_let_in());

    blocking.release();
    EXPECT_TRUE(started.get());
    EXPECT_TRUE(stop.wait_for_end());
    EXPECT_FALSE(blocking.was_let_in());
    EXPECT_FALSE(set_urls());
    expect_works_afresh(host);
}

// --- Nothing blocks: a task waits for its time. ---

struct WaitingTask {
    const char* name;
    void (*prepare)(PhoneHost& host);
};

void PrintTo(const WaitingTask& task, std::ostream* stream) {
    *stream << task.name;
}

class StopWhileATaskWaits : public ::testing::TestWithParam<WaitingTask> {};

const WaitingTask waiting_tasks[] = {
    {"NothingAtAll", nothing},
    {"FetchForTheWorkerToWakeUp", [](PhoneHost&) { attach(); }},
    {"ReportForTheWorkerToWakeUp", [](PhoneHost&) { report(); }},
    {"FetchThatWasTriedBeforeForItsThirtySeconds",
     [](PhoneHost& host) {
         request_document(host);
         config::ConfigManagerImpl::get_instance()
             ->get_config_object("headset-1")
             ->set_config_retries(1);
         httpResponse("", 404);
         host.run_worker();
         host.move_clock(std::chrono::seconds(29));
         host.run_worker();
     }},
    {"FetchForFirmwareDataForTheFirstTime",
     [](PhoneHost& host) {
         attach_without_version();
         host.run_worker();
     }},
    {"FetchForFirmwareDataAlmostTooLong",
     [](PhoneHost& host) {
         attach_without_version();
         host.run_worker();
         host.move_clock(std::chrono::seconds(59));
         host.run_worker();
     }},
};

INSTANTIATE_TEST_SUITE_P(Windows, StopWhileATaskWaits, ::testing::ValuesIn(waiting_tasks),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(StopWhileATaskWaits, EndsWithTheWorkersPause) {
    PhoneHost host;
    host.start_up();
    GetParam().prepare(host);
    const std::size_t requests = fake_host().http_requests().size();

    StopUnderWay stop;
    EXPECT_TRUE(stop.wait_until_worker_is_joined());
    host.take();
    EXPECT_FALSE(any_call_is_let_in());
    EXPECT_FALSE(stop.has_ended());
    host.move_clock(pause_of_the_worker);

    EXPECT_TRUE(stop.wait_for_end());
    EXPECT_EQ(host.take(), Lines{});
    EXPECT_EQ(fake_host().http_requests().size(), requests);
    expect_works_afresh(host);
}

TEST(StopWindowsTest, TaskThatIsAskedWhetherItIsReadyIsTheLast) {
    for (const int answer : {TaskParametersInterface::ready, TaskParametersInterface::not_ready,
                             TaskParametersInterface::drop}) {
        SCOPED_TRACE(answer);
        Event asked;
        Event may_answer;
        Work work{[] {}};
        Watched watched;
        watched.timeout = 60;
        watched.status = [&] {
            asked.happen();
            EXPECT_TRUE(may_answer.wait());
            return answer;
        };
        PhoneHost host;
        host.start_up();
        add_watched(*globals::plugins.executor, work, watched);
        report();
        host.release_worker();
        ASSERT_TRUE(asked.wait());

        StopUnderWay stop;
        EXPECT_TRUE(stop.wait_until_worker_is_joined());
        EXPECT_FALSE(any_call_is_let_in());
        may_answer.happen();

        EXPECT_TRUE(stop.wait_for_end());
        EXPECT_EQ(watched.checks, 1);
        EXPECT_EQ(watched.alive, 0);
        EXPECT_TRUE(fake_host().http_requests().empty());
        expect_works_afresh(host);
    }
}

}  // namespace
}  // namespace headsetmgmt::test_support
