// SPDX-License-Identifier: Apache-2.0
// Tests of a configuration run: how it starts, and what the task does on the worker.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/plugins.h"

#include "config/config_accessory_params.h"
#include "config/config_manager_impl.h"
#include "support/fake_config.h"
#include "support/manager_bench.h"

namespace headsetmgmt::test_support {
namespace {

TEST(ConfigurationRun, IsRefusedToAnIdThatWasNeverAttached) {
    ManagerBench bench;

    EXPECT_FALSE(bench.manager().configure_accessory("a", ""));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory: ENTER",
                     "warning Lib::ConfigManagerImpl: get_config_object: Cannot find config object",
                     "notice Lib::ConfigManagerImpl: configure_accessory:a",
                     "notice Lib::ConfigManagerImpl: configure_accessory: can't configure "
                     "uninitialized accessory!"}),
              bench.take_lines());
    EXPECT_EQ(0u, bench.queued());
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigurationRun, StartsWithOneTaskAndMarksTheOneAccessory) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    bench.add_fake("b");

    EXPECT_TRUE(bench.manager().configure_accessory("a", ""));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory: ENTER",
                     "notice Lib::ConfigManagerImpl: configure_accessory:a",
                     "notice Lib::ConfigManagerImpl: configure_accessory: added async task"}),
              bench.take_lines());
    EXPECT_EQ(1u, bench.queued());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(1u, bench.manager().get_number_of_pending_configs());
    EXPECT_EQ(object, bench.manager().get_pending_config_object(0));
}

TEST(ConfigurationRun, WithAStampMarksEveryRegisteredAccessory) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    FakeConfig* other = bench.add_fake("b");

    EXPECT_TRUE(bench.manager().configure_accessory("a", "stamp-170"));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory: ENTER",
                     "notice Lib::ConfigManagerImpl: configure_accessory:a",
                     "notice Lib::ConfigManagerImpl: configure_accessory for 2accessories",
                     "notice Lib::ConfigManagerImpl: configure_accessory: added async task"}),
              bench.take_lines());
    EXPECT_EQ(2u, bench.manager().get_number_of_pending_configs());
    EXPECT_EQ((Lines{"stamp-170"}), object->script->stamps);
    EXPECT_EQ(Lines{}, other->script->stamps);
}

TEST(ConfigurationRun, UnderWayTakesAnotherAccessoryInWithoutASecondTask) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.add_fake("b");
    bench.manager().configure_accessory("a", "");
    bench.take_lines();

    EXPECT_TRUE(bench.manager().configure_accessory("b", ""));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory: ENTER",
                     "notice Lib::ConfigManagerImpl: configure_accessory:b",
                     "notice Lib::ConfigManagerImpl: configure_accessory: previous "
                     "configure_accessory is in progress, ignore this one"}),
              bench.take_lines());
    EXPECT_EQ(1u, bench.queued());
    EXPECT_EQ(2u, bench.manager().get_number_of_pending_configs());
}

TEST(ConfigurationRun, IsRefusedToAnAccessoryThatNeedsNoneWhichStaysInThePendingSet) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    object->script->required = false;

    EXPECT_FALSE(bench.manager().configure_accessory("a", "stamp-170"));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory: ENTER",
                     "notice Lib::ConfigManagerImpl: configure_accessory:a",
                     "notice Lib::ConfigManagerImpl: configure_accessory: Config not required."}),
              bench.take_lines());
    EXPECT_EQ(object, bench.manager().get_pending_config_object(0));
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(0u, bench.queued());
}

TEST(ConfigurationRun, ServesAnAccessoryThatNeededNoneWhenItWasAsked) {
    ManagerBench bench;
    FakeConfig* idle = bench.add_fake("a");
    idle->script->required = false;
    bench.add_fake("b");
    bench.manager().configure_accessory("a", "");
    bench.manager().configure_accessory("b", "");
    bench.answer_with(REQUEST_DONE, "document");

    bench.run_tasks();

    EXPECT_EQ((Lines{"document"}), idle->script->documents);
}

TEST(ConfigurationRunPendingSet, HoldsAnObjectOnceHoweverOftenItIsMarked) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");

    bench.manager().mark_config_object_pending(object);
    bench.manager().mark_config_object_pending(object);

    EXPECT_EQ(1u, bench.manager().get_number_of_pending_configs());
    EXPECT_EQ(object, bench.manager().get_pending_config_object(0));
}

TEST(ConfigurationRunPendingSet, ReturnsNullPastItsLastObject) {
    ManagerBench bench;
    bench.manager().mark_config_object_pending(bench.add_fake("a"));

    EXPECT_EQ(nullptr, bench.manager().get_pending_config_object(1));
    EXPECT_EQ(nullptr, bench.manager().get_pending_config_object(-1));
}

TEST(ConfigurationRunPendingSet, IsOrderedByAddress) {
    ManagerBench bench;
    FakeConfig* first = bench.add_fake("a");
    FakeConfig* second = bench.add_fake("b");
    bench.manager().mark_config_object_pending(first);
    bench.manager().mark_config_object_pending(second);

    EXPECT_EQ(first < second ? first : second, bench.manager().get_pending_config_object(0));
    EXPECT_EQ(first < second ? second : first, bench.manager().get_pending_config_object(1));
}

TEST(ConfigurationRunFlag, IsReadAsItWasWritten) {
    ManagerBench bench;
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());

    bench.manager().set_configure_accessory_pending(true);
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());

    bench.manager().set_configure_accessory_pending(false);
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigurationRunFetch, AsksTheDispatcherWithUrlAndRequesterAlone) {
    ManagerBench bench;
    bench.answer_with(REQUEST_DONE, "document");
    std::string document;

    EXPECT_EQ(REQUEST_DONE, bench.manager().fetch_config("http://server/file.json", document));

    const std::vector<DispatchedRequest> requests = bench.plugins.dispatcher.requests();
    ASSERT_EQ(1u, requests.size());
    EXPECT_EQ("get", requests[0].operation);
    EXPECT_EQ("http://server/file.json", requests[0].context.url);
    EXPECT_EQ("CONFIGMGR", requests[0].context.requester);
    EXPECT_EQ("", requests[0].context.method);
    EXPECT_EQ("", requests[0].context.body);
    EXPECT_EQ(0, requests[0].context.response_code);
    EXPECT_EQ("", requests[0].context.extra);
    EXPECT_EQ("document", document);
}

TEST(ConfigurationRunFetch, ReturnsAnyStatusOfTheDispatcherUnchanged) {
    ManagerBench bench;
    std::string document;
    bench.answer_with(REQUEST_PENDING, "");
    EXPECT_EQ(REQUEST_PENDING, bench.manager().fetch_config("u", document));

    bench.answer_with(77, "");
    EXPECT_EQ(static_cast<RequestStatus>(77), bench.manager().fetch_config("u", document));
}

TEST(ConfigurationRunTask, WithoutParametersLeavesTheRunOpen) {
    ManagerBench bench;
    bench.manager().set_configure_accessory_pending(true);

    bench.manager().configure_accessory_task(nullptr);

    EXPECT_EQ((Lines{"error Lib::ConfigManagerImpl: configure_accessory_task: no task parameters"}),
              bench.take_lines());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigurationRunTask, WithoutAConfigurationEndsTheRun) {
    ManagerBench bench;
    bench.manager().mark_config_object_pending(bench.add_fake("a"));
    bench.manager().set_configure_accessory_pending(true);
    config::ConfigAccessoryParams params(nullptr);

    bench.manager().configure_accessory_task(&params);

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER"}),
              bench.take_lines());
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(0u, bench.manager().get_number_of_pending_configs());
    EXPECT_EQ(Lines{}, bench.urls());
}

TEST(ConfigurationRunTask, HandsOutADocumentThatIsThereAtOnce) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_DONE, "document");
    bench.take_lines();

    bench.run_tasks();

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory_task id:a",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
                     "notice Lib::ConfigManagerImpl: on_fetch_config_successExit"}),
              bench.take_lines());
    EXPECT_EQ((Lines{"document"}), object->script->documents);
    EXPECT_EQ(Lines{}, bench.take_driver_calls());
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(0u, bench.manager().get_number_of_pending_configs());
}

TEST(ConfigurationRunTask, EndsTheRunWhenTheDocumentCannotBeFetched) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_REFUSED, "");
    bench.take_lines();

    bench.run_tasks();

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory_task id:a",
                     "notice Lib::ConfigManagerImpl: configure_accessory_task: currently unable to "
                     "fetch config",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER"}),
              bench.take_lines());
    EXPECT_EQ((Lines{R"(on_failure("a", REQUEST_REFUSED))"}), bench.take_driver_calls());
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(0u, bench.manager().get_number_of_pending_configs());
}

TEST(ConfigurationRunTask, OfThreeAccessoriesLogsTheirNumberAndNoId) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.add_fake("b");
    bench.add_fake("c");
    bench.manager().configure_accessory("a", "stamp-170");
    bench.answer_with(REQUEST_REFUSED, "");
    bench.take_lines();

    bench.run_tasks();

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory_task3 pending accessories",
                     "notice Lib::ConfigManagerImpl: configure_accessory_task: currently unable to "
                     "fetch config",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER"}),
              bench.take_lines());
    EXPECT_EQ((Lines{R"(on_failure("", REQUEST_REFUSED))"}), bench.take_driver_calls());
}

TEST(ConfigurationRunTask, LeavesTheRunOpenWhenTheAnswerComesLater) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_PENDING, "");
    bench.take_lines();

    bench.run_tasks();

    EXPECT_EQ(
        (Lines{"notice Lib::ConfigManagerImpl: configure_accessory_task id:a",
               "notice Lib::ConfigManagerImpl: configure_accessory_task: pending fetch config"}),
        bench.take_lines());
    EXPECT_EQ((Lines{R"(on_pending("a", REQUEST_PENDING))"}), bench.take_driver_calls());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(1u, bench.manager().get_number_of_pending_configs());
}

TEST(ConfigurationRunTask, OfSeveralAccessoriesThatIsPendingGivesTheDriverNoId) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.add_fake("b");
    bench.manager().configure_accessory("a", "stamp-170");
    bench.answer_with(REQUEST_PENDING, "");

    bench.run_tasks();

    EXPECT_EQ((Lines{R"(on_pending("", REQUEST_PENDING))"}), bench.take_driver_calls());
}

TEST(ConfigurationRunTask, EndsTheRunOnAnUnknownStatusWithoutNotifyingTheDriver) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(3, "");
    bench.take_lines();

    bench.run_tasks();

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory_task id:a",
                     "notice Lib::ConfigManagerImpl: configure_accessory_task: unknown status from "
                     "fetch_config",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER"}),
              bench.take_lines());
    EXPECT_EQ(Lines{}, bench.take_driver_calls());
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigurationRunTask, RaisesTheRetryCounterOfItsOwnCopyAfterItTookTheUrl) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_PENDING, "");

    bench.run_tasks();

    EXPECT_EQ((std::vector<int>{0}), object->script->retries_at_url);
    EXPECT_EQ((std::vector<int>{1}), object->script->retries_set);
    EXPECT_EQ(0, object->get_config_retries());
}

TEST(ConfigurationRunTask, StillFetchesForAnAccessoryThatLeft) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.manager().remove_accessory("a");
    bench.answer_with(REQUEST_DONE, "document");
    bench.take_lines();

    bench.run_tasks();

    EXPECT_EQ(1u, bench.urls().size());
    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory_task id:a",
                     "error Lib::ConfigManagerImpl: on_fetch_config_success: no configuration in "
                     "progress, dropping data"}),
              bench.take_lines());
}

}  // namespace
}  // namespace headsetmgmt::test_support
