// SPDX-License-Identifier: Apache-2.0
// Tests of how a configuration run goes on when its answer comes later: success, failure, retries.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/plugins.h"

#include "config/config_manager_impl.h"
#include "runtime/executor_impl.h"
#include "support/fake_config.h"
#include "support/manager_bench.h"

namespace headsetmgmt::test_support {
namespace {

/// A run of one accessory whose fetch the host was given.
FakeConfig* start_pending_run(ManagerBench& bench) {
    FakeConfig* object = bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_PENDING, "");
    bench.run_tasks();
    bench.take_lines();
    bench.take_driver_calls();
    return object;
}

/// Runs what is queued; how many documents that requests.
std::size_t requests_of_queued_tasks(ManagerBench& bench) {
    const std::size_t before = bench.urls().size();
    bench.run_tasks();
    return bench.urls().size() - before;
}

TEST(ConfigurationRunSuccess, IsDroppedWhenNoRunIsUnderWay) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    bench.manager().mark_config_object_pending(object);

    EXPECT_FALSE(bench.succeed("document"));

    EXPECT_EQ((Lines{"error Lib::ConfigManagerImpl: on_fetch_config_success: no configuration in "
                     "progress, dropping data"}),
              bench.take_lines());
    EXPECT_EQ(Lines{}, object->script->documents);
    EXPECT_EQ(1u, bench.manager().get_number_of_pending_configs());
}

TEST(ConfigurationRunSuccess, HandsTheLateDocumentToEveryPendingObjectAndEndsTheRun) {
    ManagerBench bench;
    FakeConfig* first = bench.add_fake("a");
    FakeConfig* second = bench.add_fake("b");
    FakeConfig* bystander = bench.add_fake("c");
    bench.manager().configure_accessory("a", "");
    bench.manager().configure_accessory("b", "");
    bench.answer_with(REQUEST_PENDING, "");
    bench.run_tasks();
    bench.take_lines();

    EXPECT_TRUE(bench.succeed("document"));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
                     "notice Lib::ConfigManagerImpl: on_fetch_config_successExit"}),
              bench.take_lines());
    EXPECT_EQ((Lines{"document"}), first->script->documents);
    EXPECT_EQ((Lines{"document"}), second->script->documents);
    EXPECT_EQ(Lines{}, bystander->script->documents);
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(0u, bench.manager().get_number_of_pending_configs());
}

TEST(ConfigurationRunSuccess, IsDroppedTheSecondTime) {
    ManagerBench bench;
    FakeConfig* object = start_pending_run(bench);
    bench.succeed("first");
    bench.take_lines();

    EXPECT_FALSE(bench.succeed("second"));

    EXPECT_EQ((Lines{"error Lib::ConfigManagerImpl: on_fetch_config_success: no configuration in "
                     "progress, dropping data"}),
              bench.take_lines());
    EXPECT_EQ((Lines{"first"}), object->script->documents);
}

TEST(ConfigurationRunSuccess,
     TellsTheDriverOfAnAccessoryThatCannotUseTheDocumentAndServesTheOther) {
    ManagerBench bench;
    FakeConfig* refusing = bench.add_fake("a");
    refusing->script->accepts_document = false;
    FakeConfig* other = bench.add_fake("b");
    bench.manager().configure_accessory("a", "stamp-170");
    bench.answer_with(REQUEST_DONE, "document");
    bench.take_lines();

    bench.run_tasks();

    EXPECT_EQ(
        (Lines{"notice Lib::ConfigManagerImpl: configure_accessory_task2 pending accessories",
               "error Lib::ConfigManagerImpl: on_fetch_config_success: unable to update config "
               "retrieved from server in library",
               "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
               "notice Lib::ConfigManagerImpl: on_fetch_config_successExit"}),
        bench.take_lines());
    EXPECT_EQ((Lines{R"(on_failure("a", REQUEST_REFUSED))"}), bench.take_driver_calls());
    EXPECT_EQ((Lines{"document"}), other->script->documents);
}

TEST(ConfigurationRunSuccess, LogsAnEmptyPlaceInThePendingSetAndGoesOn) {
    ManagerBench bench;
    FakeConfig* object = start_pending_run(bench);
    bench.manager().mark_config_object_pending(nullptr);

    EXPECT_TRUE(bench.succeed("document"));

    EXPECT_EQ(
        (Lines{"error Lib::ConfigManagerImpl: on_fetch_config_success: No pending config object",
               "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
               "notice Lib::ConfigManagerImpl: on_fetch_config_successExit"}),
        bench.take_lines());
    EXPECT_EQ((Lines{"document"}), object->script->documents);
}

TEST(ConfigurationRunSuccess, EndsARunWhosePendingSetIsEmpty) {
    ManagerBench bench;
    bench.manager().set_configure_accessory_pending(true);

    EXPECT_TRUE(bench.succeed("document"));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
                     "notice Lib::ConfigManagerImpl: on_fetch_config_successExit"}),
              bench.take_lines());
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigurationRunFailure, IsDroppedWhenNoRunIsUnderWay) {
    ManagerBench bench;
    bench.manager().mark_config_object_pending(bench.add_fake("a"));

    EXPECT_FALSE(bench.manager().on_fetch_config_failure(404));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: on_fetch_config_failure reason code: 404",
                     "error Lib::ConfigManagerImpl: on_fetch_config_failure: no configuration in "
                     "progress, dropping data"}),
              bench.take_lines());
    EXPECT_EQ(0u, bench.queued());
}

TEST(ConfigurationRunFailure, WithAnEmptyPendingSetEndsTheRunAndReturnsFalse) {
    ManagerBench bench;
    bench.manager().set_configure_accessory_pending(true);

    EXPECT_FALSE(bench.manager().on_fetch_config_failure(-1));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: on_fetch_config_failure reason code: -1",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER"}),
              bench.take_lines());
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(0u, bench.queued());
}

TEST(ConfigurationRunFailure, QueuesTheFetchAgainAtOnceAndLeavesTheRunOpen) {
    ManagerBench bench;
    start_pending_run(bench);

    EXPECT_TRUE(bench.manager().on_fetch_config_failure(500));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: on_fetch_config_failure reason code: 500"}),
              bench.take_lines());
    ASSERT_EQ(1u, bench.queued());
    EXPECT_EQ(0u, bench.queued_defer_time());
    EXPECT_EQ(60u, bench.queued_timeout());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(1u, bench.manager().get_number_of_pending_configs());
}

TEST(ConfigurationRunFailure, IsRetriedWithoutEndOrBackOffFromTheFirstServer) {
    ManagerBench bench;
    FakeConfig* object = start_pending_run(bench);

    for (int round = 0; round < 100; ++round) {
        ASSERT_TRUE(bench.manager().on_fetch_config_failure(500));
        ASSERT_EQ(1u, bench.queued());
        ASSERT_EQ(0u, bench.queued_defer_time());
        bench.run_tasks();
    }

    EXPECT_EQ(std::vector<int>(101, 0), object->script->retries_at_url);
    EXPECT_EQ(0u, bench.queued());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigurationRunFailure, AsksServerZeroForeveryRetryOfAHeadset) {
    ManagerBench bench;
    bench.plugins.system_info.config_url = "tftp://{tftp}/file.json";
    bench.plugins.system_info.tftp_servers = {"first", "second"};
    bench.attach("a");
    bench.answer_with(REQUEST_PENDING, "");
    bench.run_tasks();

    bench.manager().on_fetch_config_failure(500);
    bench.run_tasks();

    EXPECT_EQ((Lines{"tftp://first/file.json", "tftp://first/file.json"}), bench.urls());
}

TEST(ConfigurationRunFailure, BacksOffWhenTheRegisteredCounterWasRaised) {
    for (int retries = 1; retries <= 2; ++retries) {
        ManagerBench bench;
        FakeConfig* object = start_pending_run(bench);
        object->set_config_retries(retries);

        EXPECT_TRUE(bench.manager().on_fetch_config_failure(500));

        ASSERT_EQ(1u, bench.queued());
        EXPECT_LE(30u, bench.queued_defer_time());
        EXPECT_GE(40u, bench.queued_defer_time());
    }
}

TEST(ConfigurationRunFailure, GivesTheRunUpWhenTheRegisteredCounterIsPastTheLimit) {
    ManagerBench bench;
    FakeConfig* object = start_pending_run(bench);
    object->set_config_retries(3);

    EXPECT_FALSE(bench.manager().on_fetch_config_failure(500));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: on_fetch_config_failure reason code: 500",
                     "error Lib::ConfigManagerImpl: on_fetch_config_failure : retry limit reached, "
                     "abort",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER"}),
              bench.take_lines());
    EXPECT_EQ(0u, bench.queued());
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(0u, bench.manager().get_number_of_pending_configs());
    EXPECT_EQ(0, object->get_config_retries());
}

TEST(ConfigurationRunFailure, IsQueuedAtOnceHoweverOftenItIsReported) {
    ManagerBench bench;
    start_pending_run(bench);

    for (std::size_t reported = 1; reported <= 100; ++reported) {
        ASSERT_TRUE(bench.manager().on_fetch_config_failure(500));
        ASSERT_EQ(reported, bench.queued());
        ASSERT_EQ(0u, bench.plugins.executor.params(reported - 1)->get_defer_time());
    }
    EXPECT_EQ(100u, requests_of_queued_tasks(bench));
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigurationRunFailure, ReportedTwiceBeforeTheWorkerLooksIsFetchedTwice) {
    ManagerBench bench;
    start_pending_run(bench);

    bench.manager().on_fetch_config_failure(500);
    bench.manager().on_fetch_config_failure(500);

    EXPECT_EQ(2u, requests_of_queued_tasks(bench));
    EXPECT_EQ(0u, bench.queued());
}

TEST(ConfigurationRunFailure, ReportedTwiceForEachRequestDoublesTheRequests) {
    ManagerBench bench;
    start_pending_run(bench);
    std::vector<std::size_t> requests;
    std::size_t outstanding = 1;

    for (int round = 0; round < 8; ++round) {
        for (std::size_t answer = 0; answer < 2 * outstanding; ++answer) {
            ASSERT_TRUE(bench.manager().on_fetch_config_failure(500));
        }
        outstanding = requests_of_queued_tasks(bench);
        requests.push_back(outstanding);
    }

    EXPECT_EQ((std::vector<std::size_t>{2, 4, 8, 16, 32, 64, 100, 100}), requests);
}

TEST(ConfigurationRunFailure, ReportedFromInsideTheRequestIsFetchedInTheNextPass) {
    ManagerBench bench;
    start_pending_run(bench);
    bench.plugins.dispatcher.hook = [&bench](const DispatchedRequest&) {
        bench.manager().on_fetch_config_failure(500);
    };
    bench.manager().on_fetch_config_failure(500);

    for (int pass = 0; pass < 100; ++pass) {
        ASSERT_EQ(1u, requests_of_queued_tasks(bench));
        ASSERT_EQ(1u, bench.queued());
    }
}

/// A run whose accessory left and came back before the answer: two requests are unanswered.
FakeConfig* start_run_beside_an_earlier_request(ManagerBench& bench) {
    start_pending_run(bench);
    bench.manager().remove_accessory("a");
    return start_pending_run(bench);
}

TEST(ConfigurationRunFailure, BesideAnUnansweredRequestIsFetchedAgain) {
    ManagerBench bench;
    start_run_beside_an_earlier_request(bench);

    EXPECT_TRUE(bench.manager().on_fetch_config_failure(500));

    ASSERT_EQ(1u, bench.queued());
    EXPECT_EQ(0u, bench.queued_defer_time());
    EXPECT_EQ(1u, requests_of_queued_tasks(bench));
}

TEST(ConfigurationRunFailure, IsFetchedAgainAtOnceForAHostThatLostAnAnswer) {
    ManagerBench bench;
    start_run_beside_an_earlier_request(bench);  // one of the two answers never comes

    for (int round = 0; round < 10; ++round) {
        EXPECT_TRUE(bench.manager().on_fetch_config_failure(500));
        ASSERT_EQ(1u, bench.queued());
        EXPECT_EQ(0u, bench.queued_defer_time());
        ASSERT_EQ(1u, requests_of_queued_tasks(bench));
    }
}

TEST(ConfigurationRunFailure, AddsAChainOfRequestsEachTimeItsAccessoryComesBackBeforeTheAnswer) {
    ManagerBench bench;
    start_pending_run(bench);
    std::size_t outstanding = 1;

    for (std::size_t replugs = 1; replugs <= 10; ++replugs) {
        bench.manager().remove_accessory("a");
        start_pending_run(bench);
        for (std::size_t answer = 0; answer < replugs + 1; ++answer) {
            bench.manager().on_fetch_config_failure(500);
        }
        outstanding = requests_of_queued_tasks(bench);
        ASSERT_EQ(replugs + 1, outstanding);
    }
    bench.succeed("document");
    for (std::size_t answer = 1; answer < outstanding; ++answer) {
        bench.manager().on_fetch_config_failure(500);
    }
    EXPECT_EQ(0u, bench.queued()) << "a success ends every chain";
}

TEST(ConfigurationRunFailure, IsFetchedAgainAfterARetryThatNeverRan) {
    ManagerBench bench;
    start_pending_run(bench);
    bench.manager().on_fetch_config_failure(500);
    bench.plugins.executor.drop_all();

    EXPECT_TRUE(bench.manager().on_fetch_config_failure(500));

    EXPECT_EQ(1u, requests_of_queued_tasks(bench));
}

TEST(ConfigurationRunFailure, BeyondAHundredQueuedFetchesQueuesNothingAndReturnsTrue) {
    ManagerBench bench;
    start_pending_run(bench);
    for (int reported = 0; reported < 100; ++reported) {
        bench.manager().on_fetch_config_failure(500);
    }
    bench.take_lines();

    EXPECT_TRUE(bench.manager().on_fetch_config_failure(404));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: on_fetch_config_failure reason code: 404"}),
              bench.take_lines());
    EXPECT_EQ(100u, bench.queued());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigurationRunFailure, IsQueuedAgainOnceAQueuedFetchHasBegun) {
    ManagerBench bench;
    start_pending_run(bench);
    for (int reported = 0; reported < 100; ++reported) {
        bench.manager().on_fetch_config_failure(500);
    }
    bench.plugins.dispatcher.hook = [&bench](const DispatchedRequest&) {
        bench.manager().on_fetch_config_failure(500);
    };

    bench.plugins.executor.run_next();

    EXPECT_EQ(100u, bench.queued()) << "99 and the one that the request's failure queued";
}

TEST(ConfigurationRunFailure, CountsNoFetchesThatWereDroppedUnrun) {
    ManagerBench bench;
    start_pending_run(bench);
    for (int round = 0; round < 3; ++round) {
        for (int reported = 0; reported < 200; ++reported) {
            bench.manager().on_fetch_config_failure(500);
        }
        ASSERT_EQ(100u, bench.queued());
        bench.plugins.executor.drop_all();
    }
}

TEST(ConfigurationRunFailure, CountsAFetchThatIsBeingAddedOnce) {
    ManagerBench bench;
    start_pending_run(bench);
    ExecutorImpl executor(&bench.plugins.log);
    bench.plugins.record.executor = &executor;
    init(bench.plugins.record);
    int reported = 0;
    bench.plugins.log.hook = [&](const LogLine& line) {
        // Between the clone of the parameters and their place in the queue.
        if (line.text == "ExecutorImpl::ExecutorImpl adding a task\n" && ++reported < 150) {
            bench.manager().on_fetch_config_failure(500);
        }
    };

    bench.manager().on_fetch_config_failure(500);

    EXPECT_EQ(100, reported);
    bench.plugins.log.hook = nullptr;
    bench.plugins.record.executor = &bench.plugins.executor;
    init(bench.plugins.record);
}

TEST(ConfigurationRunFailure, OfAnEarlierRunsRequestQueuesAFetchBesideTheFirst) {
    ManagerBench bench;
    start_pending_run(bench);
    bench.manager().remove_accessory("a");
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");

    EXPECT_TRUE(bench.manager().on_fetch_config_failure(500));

    EXPECT_EQ(2u, requests_of_queued_tasks(bench));
}

TEST(ConfigurationRunFailure, IsFetchedAgainAlthoughTheRunHasEndedMeanwhile) {
    ManagerBench bench;
    start_pending_run(bench);
    bench.manager().on_fetch_config_failure(500);
    bench.succeed("document");

    EXPECT_EQ(1u, requests_of_queued_tasks(bench));

    bench.take_lines();
    EXPECT_FALSE(bench.succeed("document"));
    EXPECT_EQ((Lines{"error Lib::ConfigManagerImpl: on_fetch_config_success: no configuration in "
                     "progress, dropping data"}),
              bench.take_lines());
}

TEST(ConfigurationRun, IsServedByTheQueuedFetchesWhenAHundredAreQueued) {
    ManagerBench bench;
    start_pending_run(bench);
    for (int reported = 0; reported < 100; ++reported) {
        bench.manager().on_fetch_config_failure(500);
    }
    bench.manager().remove_accessory("a");
    FakeConfig* object = bench.add_fake("a");
    bench.take_lines();

    EXPECT_TRUE(bench.manager().configure_accessory("a", ""));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory: ENTER",
                     "notice Lib::ConfigManagerImpl: configure_accessory:a",
                     "notice Lib::ConfigManagerImpl: configure_accessory: added async task"}),
              bench.take_lines());
    EXPECT_EQ(100u, bench.queued());
    bench.plugins.executor.run_next();
    bench.succeed("document");
    EXPECT_EQ((Lines{"document"}), object->script->documents);
}

TEST(ConfigurationRunFailure, IsFollowedByASuccessOfTheSameRun) {
    ManagerBench bench;
    FakeConfig* object = start_pending_run(bench);
    bench.manager().on_fetch_config_failure(500);
    bench.run_tasks();

    EXPECT_TRUE(bench.succeed("document"));

    EXPECT_EQ((Lines{"document"}), object->script->documents);
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigurationRunReplies, DocumentInsideTheHandOutIsDropped) {
    ManagerBench bench;
    FakeConfig* object = start_pending_run(bench);
    object->script->on_document = [&bench] { EXPECT_FALSE(bench.succeed("second")); };

    EXPECT_TRUE(bench.succeed("first"));

    EXPECT_EQ((Lines{"first"}), object->script->documents);
    EXPECT_EQ((Lines{"error Lib::ConfigManagerImpl: on_fetch_config_success: no configuration in "
                     "progress, dropping data",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
                     "notice Lib::ConfigManagerImpl: on_fetch_config_successExit"}),
              bench.take_lines());
    EXPECT_EQ(0u, bench.queued());
}

TEST(ConfigurationRunReplies, FailureInsideTheHandOutQueuesAFetch) {
    ManagerBench bench;
    FakeConfig* object = start_pending_run(bench);
    object->script->on_document = [&bench] {
        EXPECT_TRUE(bench.manager().on_fetch_config_failure(500));
    };

    EXPECT_TRUE(bench.succeed("document"));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: on_fetch_config_failure reason code: 500",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
                     "notice Lib::ConfigManagerImpl: on_fetch_config_successExit"}),
              bench.take_lines());
    EXPECT_EQ(1u, requests_of_queued_tasks(bench));
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigurationRunReplies, AccessoryThatTakesTheLastOnesPlaceInTheHandOutIsFetchedForOnce) {
    ManagerBench bench;
    FakeConfig* object = start_pending_run(bench);
    object->script->on_document = [&bench] {
        bench.manager().remove_accessory("a");
        bench.add_fake("b");
        EXPECT_TRUE(bench.manager().configure_accessory("b", ""));
    };

    EXPECT_TRUE(bench.succeed("first"));

    EXPECT_EQ(1u, bench.queued());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(1u, bench.manager().get_number_of_pending_configs());
}

TEST(ConfigurationRunCleanUp, ClearsTheFlagThenTheCountersThenTheSetThenWritesTheLine) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    Lines steps;
    const auto note = [&](const std::string& step) {
        steps.push_back(
            step + (bench.manager().is_configure_accessory_pending() ? ", flag" : ", no flag") +
            ", pending " + std::to_string(bench.manager().get_number_of_pending_configs()));
    };
    object->script->on_retries = [&] { note("counter"); };
    bench.plugins.log.hook = [&](const LogLine&) { note("line"); };

    bench.manager().clean_up_pending_config_requests();

    EXPECT_EQ((Lines{"counter, no flag, pending 1", "line, no flag, pending 0"}), steps);
    object->script->on_retries = nullptr;
}

TEST(ConfigurationRunCleanUp, ResetsTheCountersOfThePendingObjectsAlone) {
    ManagerBench bench;
    FakeConfig* pending = bench.add_fake("a");
    FakeConfig* bystander = bench.add_fake("b");
    pending->set_config_retries(2);
    bystander->set_config_retries(2);
    bench.manager().mark_config_object_pending(pending);
    bench.manager().set_configure_accessory_pending(true);

    bench.manager().clean_up_pending_config_requests();

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER"}),
              bench.take_lines());
    EXPECT_EQ(0, pending->get_config_retries());
    EXPECT_EQ(2, bystander->get_config_retries());
    EXPECT_EQ(0u, bench.manager().get_number_of_pending_configs());
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
}

}  // namespace
}  // namespace headsetmgmt::test_support
