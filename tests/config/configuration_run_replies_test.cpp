// Tests of how a configuration run goes on when its answer comes later: success, failure, retries.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "config/config_manager_impl.h"
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

TEST(ConfigurationRunSuccess, TellsOfAnEmptyPlaceInThePendingSetAndGoesOn) {
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

TEST(ConfigurationRunFailure, WithAnEmptyPendingSetEndsTheRunAndAnswersFalse) {
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

TEST(ConfigurationRunFailure, AsksServerZeroForEveryRetryOfAHeadset) {
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

TEST(ConfigurationRunFailure, IsQueuedAgainAtOnceHoweverOftenItIsTold) {
    ManagerBench bench;
    start_pending_run(bench);

    for (std::size_t told = 1; told <= 100; ++told) {
        ASSERT_TRUE(bench.manager().on_fetch_config_failure(500));
        ASSERT_EQ(told, bench.queued());
        ASSERT_EQ(0u, bench.plugins.executor.params(told - 1)->get_defer_time());
    }
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigurationRunFailure, ToldFasterThanTheWorkerLooksAtThemFillNoQueue) {
    ManagerBench bench;
    start_pending_run(bench);

    for (int told = 0; told < 1000; ++told) {
        ASSERT_TRUE(bench.manager().on_fetch_config_failure(500));
    }

    EXPECT_EQ(100u, bench.queued());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigurationRunFailure, ToldAgainAndAgainLeadsToOneRequest) {
    ManagerBench bench;
    start_pending_run(bench);

    for (int round = 0; round < 100; ++round) {
        bench.manager().on_fetch_config_failure(500);
        bench.manager().on_fetch_config_failure(500);
        bench.manager().on_fetch_config_failure(500);
        ASSERT_EQ(1u, requests_of_queued_tasks(bench));
        ASSERT_EQ(0u, bench.queued());
    }
}

TEST(ConfigurationRunFailure, ToldFromInsideTheRequestTwiceLeadsToOneRequestAPass) {
    ManagerBench bench;
    start_pending_run(bench);
    bench.plugins.dispatcher.hook = [&bench](const DispatchedRequest&) {
        bench.manager().on_fetch_config_failure(500);
        bench.manager().on_fetch_config_failure(500);
    };
    bench.manager().on_fetch_config_failure(500);

    for (int pass = 0; pass < 100; ++pass) {
        ASSERT_EQ(1u, requests_of_queued_tasks(bench));
        ASSERT_EQ(2u, bench.queued());
    }
}

TEST(ConfigurationRunFailure, OfAnEarlierRunsRequestQueuesAFetchBesideTheFirst) {
    ManagerBench bench;
    start_pending_run(bench);
    bench.manager().remove_accessory("a");
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");

    EXPECT_TRUE(bench.manager().on_fetch_config_failure(500));

    EXPECT_EQ(2u, bench.queued());
}

/// A run whose accessory left and came back before the answer: two requests are unanswered.
FakeConfig* start_run_beside_an_earlier_request(ManagerBench& bench) {
    start_pending_run(bench);
    bench.manager().remove_accessory("a");
    return start_pending_run(bench);
}

TEST(ConfigurationRunFailure, BesideAnEarlierRunsRequestLeavesTheNextOneToItsAnswer) {
    ManagerBench bench;
    start_run_beside_an_earlier_request(bench);

    EXPECT_TRUE(bench.manager().on_fetch_config_failure(500));

    EXPECT_EQ(0u, requests_of_queued_tasks(bench));
    ASSERT_EQ(1u, bench.queued()) << "the one in reserve";
    EXPECT_LE(30u, bench.queued_defer_time());
    EXPECT_GE(40u, bench.queued_defer_time());
}

TEST(ConfigurationRunFailure, OfTheLastRequestIsFollowedByOneRequest) {
    ManagerBench bench;
    start_run_beside_an_earlier_request(bench);
    bench.manager().on_fetch_config_failure(500);
    bench.run_tasks();

    EXPECT_TRUE(bench.manager().on_fetch_config_failure(500));

    EXPECT_EQ(1u, requests_of_queued_tasks(bench)) << "and none of the reserve";
    EXPECT_EQ(0u, bench.queued());
}

TEST(ConfigurationRunFailure, OfAllRequestsBeforeTheWorkerLooksIsFollowedByOneRequest) {
    ManagerBench bench;
    start_run_beside_an_earlier_request(bench);
    bench.manager().on_fetch_config_failure(500);
    bench.manager().on_fetch_config_failure(500);

    EXPECT_EQ(1u, requests_of_queued_tasks(bench));
    EXPECT_EQ(0u, bench.queued());
}

TEST(ConfigurationRunFailure, IsRetriedFromTheReserveForAHostThatLostAnAnswer) {
    ManagerBench bench;
    start_run_beside_an_earlier_request(bench);  // one of the two answers never comes

    for (int round = 0; round < 10; ++round) {
        EXPECT_TRUE(bench.manager().on_fetch_config_failure(500));
        ASSERT_EQ(0u, requests_of_queued_tasks(bench));
        ASSERT_EQ(1u, bench.queued());
        EXPECT_LE(30u, bench.queued_defer_time());
        ASSERT_EQ(1u, requests_of_queued_tasks(bench));
    }
}

TEST(ConfigurationRunFailure, ReserveIsNotMadeOfARunThatHasEnded) {
    ManagerBench bench;
    start_run_beside_an_earlier_request(bench);
    bench.manager().on_fetch_config_failure(500);
    bench.run_tasks();
    bench.manager().remove_accessory("a");
    bench.take_lines();
    ASSERT_EQ(1u, bench.queued());

    EXPECT_EQ(0u, requests_of_queued_tasks(bench));

    EXPECT_EQ(Lines{}, bench.take_lines());
}

/// The second of two requests is still unanswered, and one fetch is in reserve.
void start_run_with_a_reserve(ManagerBench& bench) {
    start_run_beside_an_earlier_request(bench);
    bench.manager().on_fetch_config_failure(500);
    bench.run_tasks();
    ASSERT_EQ(1u, bench.queued());
}

TEST(ConfigurationRunFailure, ReserveOfARunIsNotMadeInTheNext) {
    ManagerBench bench;
    start_run_with_a_reserve(bench);
    bench.manager().remove_accessory("a");
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.plugins.executor.run_next(1);  // the one in reserve is held back

    EXPECT_EQ(0u, requests_of_queued_tasks(bench));
}

TEST(ConfigurationRunFailure, ReserveIsNotMadeOnceAnAnswerHasCome) {
    ManagerBench bench;
    start_run_with_a_reserve(bench);
    bench.manager().on_fetch_config_failure(500);
    bench.plugins.executor.run_next(1);

    EXPECT_EQ(0u, requests_of_queued_tasks(bench)) << "the retry's own request is unanswered";
}

TEST(ConfigurationRunFailure, ReserveIsNotMadeBesideAQueuedRetry) {
    ManagerBench bench;
    start_run_with_a_reserve(bench);
    bench.manager().on_fetch_config_failure(500);
    const std::size_t before = bench.urls().size();

    bench.plugins.executor.run_next();

    EXPECT_EQ(before, bench.urls().size());
    EXPECT_EQ(1u, requests_of_queued_tasks(bench));
}

TEST(ConfigurationRunFailure, ReserveIsNotMadeBesideAQueuedFirstFetch) {
    ManagerBench bench;
    start_run_beside_an_earlier_request(bench);
    bench.manager().remove_accessory("a");
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.manager().on_fetch_config_failure(500);
    bench.plugins.executor.run_next(1);
    ASSERT_EQ(2u, bench.queued()) << "the one in reserve last";
    const std::size_t before = bench.urls().size();

    bench.plugins.executor.run_next(1);

    EXPECT_EQ(before, bench.urls().size());
    EXPECT_EQ(1u, requests_of_queued_tasks(bench));
}

TEST(ConfigurationRunFailure, LeavesOneFetchInReserveHoweverManyRequestsAreUnanswered) {
    ManagerBench bench;
    start_pending_run(bench);
    bench.manager().remove_accessory("a");
    start_run_with_a_reserve(bench);

    bench.manager().on_fetch_config_failure(500);
    bench.plugins.executor.run_next(1);

    EXPECT_EQ(1u, bench.queued());
}

TEST(ConfigurationRunFailure, AfterADocumentThatServedAnEarlierRunsRequestStaysOneFetch) {
    ManagerBench bench;
    start_pending_run(bench);
    for (int round = 1; round < 10; ++round) {
        bench.manager().remove_accessory("a");
        start_pending_run(bench);
    }
    bench.succeed("document");  // nine are still to be answered
    bench.manager().remove_accessory("a");
    start_pending_run(bench);

    for (int answer = 0; answer < 10; ++answer) {
        bench.manager().on_fetch_config_failure(500);
    }

    EXPECT_EQ(1u, requests_of_queued_tasks(bench));
}

TEST(ConfigurationRunFailure, OfARequestThatWasRefusedIsNotWaitedFor) {
    for (const int status : {static_cast<int>(REQUEST_REFUSED), 77}) {
        ManagerBench bench;
        bench.add_fake("a");
        bench.manager().configure_accessory("a", "");
        bench.answer_with(status, "");
        bench.run_tasks();
        bench.manager().remove_accessory("a");
        start_pending_run(bench);

        bench.manager().on_fetch_config_failure(500);

        EXPECT_EQ(1u, requests_of_queued_tasks(bench));
    }
}

TEST(ConfigurationRunFailure,
     LeavesNoMoreRequestsHoweverOftenItsAccessoryComesBackBeforeTheAnswer) {
    ManagerBench bench;
    start_pending_run(bench);
    for (int round = 1; round < 10; ++round) {
        bench.manager().remove_accessory("a");
        start_pending_run(bench);
    }
    std::size_t outstanding = 10;  // one for each time that it came

    while (outstanding > 1) {
        const std::size_t before = outstanding;
        for (; outstanding != 0; --outstanding) {
            bench.manager().on_fetch_config_failure(500);
        }
        outstanding = requests_of_queued_tasks(bench);
        ASSERT_LT(outstanding, before);
    }
    EXPECT_EQ(1u, outstanding);
}

TEST(ConfigurationRunFailure, LeavesOneFetchHoweverOftenItsAccessoryLeavesAndComesBack) {
    ManagerBench bench;
    start_pending_run(bench);
    std::size_t outstanding = 1;

    for (int round = 0; round < 100; ++round) {
        for (; outstanding != 0; --outstanding) {
            bench.manager().on_fetch_config_failure(500);
        }
        bench.manager().remove_accessory("a");
        bench.add_fake("a");
        bench.manager().configure_accessory("a", "");
        outstanding = requests_of_queued_tasks(bench);
        ASSERT_EQ(2u, outstanding) << "the retry, and the new run's own first one";
    }
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

TEST(ConfigurationRunReplies, InsideTheHandOutAreDropped) {
    ManagerBench bench;
    FakeConfig* object = start_pending_run(bench);
    object->script->on_document = [&bench] {
        EXPECT_FALSE(bench.succeed("second"));
        EXPECT_FALSE(bench.manager().on_fetch_config_failure(500));
    };

    EXPECT_TRUE(bench.succeed("first"));

    EXPECT_EQ((Lines{"first"}), object->script->documents);
    EXPECT_EQ((Lines{"error Lib::ConfigManagerImpl: on_fetch_config_success: no configuration in "
                     "progress, dropping data",
                     "notice Lib::ConfigManagerImpl: on_fetch_config_failure reason code: 500",
                     "error Lib::ConfigManagerImpl: on_fetch_config_failure: no configuration in "
                     "progress, dropping data",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
                     "notice Lib::ConfigManagerImpl: on_fetch_config_successExit"}),
              bench.take_lines());
    EXPECT_EQ(0u, bench.queued());
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
