// SPDX-License-Identifier: Apache-2.0
// Tests of a host side that throws, and of a manager that is used forever.

#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "config/config_manager_impl.h"
#include "support/fake_config.h"
#include "support/manager_bench.h"

namespace headsetmgmt::test_support {
namespace {

/// That no run is open, no lock is held, and a new accessory gets its document.
void expect_new_runs(ManagerBench& bench) {
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(0, bench.plugins.mutex_factory.held());
    FakeConfig* object = bench.add_fake("new");
    EXPECT_TRUE(bench.manager().configure_accessory("new", ""));
    bench.answer_with(REQUEST_DONE, "document");
    bench.run_tasks();
    EXPECT_EQ((Lines{"document"}), object->script->documents);
}

/// An object that has no memory left to report its id.
class NamelessConfig : public FakeConfig {
public:
    using FakeConfig::FakeConfig;

    std::string get_accessory_id() const override { throw std::bad_alloc(); }
};

TEST(ConfigManagerFaults, OfTheExecutorAtTheStartOfARunPassOnAndLeaveNoRunOpen) {
    ManagerBench bench;
    bench.plugins.executor.throw_at(1);

    EXPECT_THROW(bench.attach("a"), std::runtime_error);

    expect_new_runs(bench);
}

TEST(ConfigManagerFaults, OfTheExecutorAtTheStartOfARunAreNotTakenForAQueuedFetch) {
    ManagerBench bench;
    bench.plugins.executor.throw_at(1);
    EXPECT_THROW(bench.attach("a"), std::runtime_error);
    bench.attach("a");
    bench.answer_with(REQUEST_PENDING, "");
    bench.run_tasks();

    EXPECT_TRUE(bench.manager().on_fetch_config_failure(500));

    EXPECT_EQ(1u, bench.queued());
}

TEST(ConfigManagerFaults, OfTheExecutorAtARetryPassOnAndEndTheRun) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_PENDING, "");
    bench.run_tasks();
    bench.plugins.executor.throw_at(1);

    EXPECT_THROW(bench.manager().on_fetch_config_failure(500), std::runtime_error);

    EXPECT_EQ(0u, bench.manager().get_number_of_pending_configs());
    expect_new_runs(bench);
}

TEST(ConfigManagerFaults, OfCloningAtTheStartOfARunPassOnAndLeaveNoRunOpen) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    object->script->on_clone = [] { throw std::bad_alloc(); };

    EXPECT_THROW(bench.manager().configure_accessory("a", ""), std::bad_alloc);

    object->script->on_clone = nullptr;
    expect_new_runs(bench);
}

/// A run of `a` whose request is unanswered.
FakeConfig* start_pending_run(ManagerBench& bench) {
    FakeConfig* object = bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_PENDING, "");
    bench.run_tasks();
    return object;
}

TEST(ConfigManagerFaults, OfCloningAtARetryPassOnAndEndTheRun) {
    ManagerBench bench;
    FakeConfig* object = start_pending_run(bench);
    object->script->on_clone = [] { throw std::bad_alloc(); };

    EXPECT_THROW(bench.manager().on_fetch_config_failure(500), std::bad_alloc);

    object->script->on_clone = nullptr;
    expect_new_runs(bench);
}

TEST(ConfigManagerFaults, OfARetryLeaveTheRunToItsQueuedFetch) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.plugins.executor.throw_at(1);

    EXPECT_THROW(bench.manager().on_fetch_config_failure(500), std::runtime_error);

    bench.answer_with(REQUEST_DONE, "document");
    bench.run_tasks();
    EXPECT_EQ((Lines{"document"}), object->script->documents);
}

TEST(ConfigManagerFaults, OfARetryLeaveTheRunToTheRetryBeforeIt) {
    ManagerBench bench;
    FakeConfig* object = start_pending_run(bench);
    bench.manager().on_fetch_config_failure(500);
    bench.plugins.executor.throw_at(1);

    EXPECT_THROW(bench.manager().on_fetch_config_failure(500), std::runtime_error);

    bench.answer_with(REQUEST_DONE, "document");
    bench.run_tasks();
    EXPECT_EQ((Lines{"document"}), object->script->documents);
}

TEST(ConfigManagerFaults, OfTheLastRetryEndTheRunAlthoughARequestIsUnanswered) {
    for (const bool exhausted : {false, true}) {
        ManagerBench bench;
        start_pending_run(bench);
        bench.manager().remove_accessory("a");
        FakeConfig* object = start_pending_run(bench);
        if (exhausted) {
            object->script->on_clone = [] { throw std::bad_alloc(); };
        } else {
            bench.plugins.executor.throw_at(1);
        }

        EXPECT_ANY_THROW(bench.manager().on_fetch_config_failure(500));

        EXPECT_EQ(0u, bench.queued());
        EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
        EXPECT_FALSE(bench.succeed("document"));
        object->script->on_clone = nullptr;
        expect_new_runs(bench);
    }
}

TEST(ConfigManagerFaults, OfAStartLeaveARunThatTheLogCallbackBeganMeanwhile) {
    ManagerBench bench;
    bench.add_fake("a");
    FakeConfig* other = nullptr;
    bool hooked = false;
    bench.plugins.executor.hook = [&] {
        if (std::exchange(hooked, true)) {
            return;
        }
        bench.manager().remove_accessory("a");
        other = bench.add_fake("a");
        bench.manager().configure_accessory("a", "");
        throw std::runtime_error("no room");
    };

    EXPECT_THROW(bench.manager().configure_accessory("a", ""), std::runtime_error);

    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
    bench.answer_with(REQUEST_DONE, "document");
    bench.run_tasks();
    EXPECT_EQ((Lines{"document"}), other->script->documents);
}

TEST(ConfigManagerFaults, OfAnyCloneOfTheFactsDuringAnAttachLeakNothing) {
    bool threw = true;
    int n = 1;
    for (; threw && n < 100; ++n) {
        SCOPED_TRACE("clone " + std::to_string(n));
        ManagerBench bench;
        bench.headset.throw_at_clone(n);
        threw = false;

        try {
            bench.attach("a");
        } catch (const std::runtime_error&) {
            threw = true;
        }

        bench.headset.throw_at_clone(0);
        if (threw) {
            expect_new_runs(bench);
        }
        config::delete_config_manager();
        bench.plugins.executor.drop_all();
        EXPECT_EQ(1, bench.headset.shared->alive);
    }
    EXPECT_LT(3, n) << "the object, the parameters and the queue clone the facts";
}

TEST(ConfigManagerFaults, OfTheDispatcherPassOnAndEndTheRun) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.plugins.dispatcher.throw_at(1);
    bench.take_lines();

    EXPECT_THROW(bench.run_tasks(), std::runtime_error);

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory_task id:a",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER"}),
              bench.take_lines());
    EXPECT_EQ(0u, bench.manager().get_number_of_pending_configs());
    expect_new_runs(bench);
}

TEST(ConfigManagerFaults, OfAnEarlierRunsFetchLeaveARunItsOwn) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.manager().remove_accessory("a");
    FakeConfig* object = bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_PENDING, "");
    bench.plugins.dispatcher.throw_at(1);

    EXPECT_THROW(bench.plugins.executor.run_next(), std::runtime_error);
    bench.run_tasks();

    EXPECT_TRUE(bench.succeed("document"));
    EXPECT_EQ((Lines{"document"}), object->script->documents);
}

TEST(ConfigManagerFaults, OfAnExhaustedDispatcherPassOnAndEndTheRun) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.plugins.dispatcher.hook = [](const DispatchedRequest&) { throw std::bad_alloc(); };

    EXPECT_THROW(bench.run_tasks(), std::bad_alloc);

    bench.plugins.dispatcher.hook = nullptr;
    expect_new_runs(bench);
}

TEST(ConfigManagerFaults, OfTheDriverThatIsNotifiedOfARefusedFetchEndTheRun) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_REFUSED, "");
    bench.plugins.config_driver.throw_at(1);

    EXPECT_THROW(bench.run_tasks(), std::runtime_error);

    expect_new_runs(bench);
}

TEST(ConfigManagerFaults, OfTheDriverThatIsNotifiedOfAPendingFetchLeaveTheRunToItsAnswer) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_PENDING, "");
    bench.plugins.config_driver.throw_at(1);

    EXPECT_THROW(bench.run_tasks(), std::runtime_error);

    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
    EXPECT_TRUE(bench.succeed("document"));
    expect_new_runs(bench);
}

TEST(ConfigManagerFaults, OfTheDriverThatIsNotifiedOfAnUnusableDocumentEndTheRun) {
    ManagerBench bench;
    bench.add_fake("a")->script->accepts_document = false;
    bench.manager().configure_accessory("a", "");
    bench.plugins.executor.drop_all();
    bench.plugins.config_driver.throw_at(1);
    bench.take_lines();

    EXPECT_TRUE(bench.succeed("document"));

    EXPECT_EQ((Lines{"error Lib::ConfigManagerImpl: on_fetch_config_success: unable to update "
                     "config retrieved from server in library",
                     "error Lib::ConfigManagerImpl: on_fetch_config_success: fake config driver",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
                     "notice Lib::ConfigManagerImpl: on_fetch_config_successExit"}),
              bench.take_lines());
    expect_new_runs(bench);
}

TEST(ConfigManagerFaults, OfTheDriverThatAreNotExceptionsEndTheRun) {
    ManagerBench bench;
    bench.add_fake("a")->script->accepts_document = false;
    bench.manager().configure_accessory("a", "");
    bench.plugins.executor.drop_all();
    bench.plugins.config_driver.hook = [](const std::string&) { throw 7; };
    bench.take_lines();

    EXPECT_TRUE(bench.succeed("document"));

    EXPECT_EQ((Lines{"error Lib::ConfigManagerImpl: on_fetch_config_success: unable to update "
                     "config retrieved from server in library",
                     "error Lib::ConfigManagerImpl: on_fetch_config_success: unknown exception",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
                     "notice Lib::ConfigManagerImpl: on_fetch_config_successExit"}),
              bench.take_lines());
    bench.plugins.config_driver.hook = nullptr;
    expect_new_runs(bench);
}

TEST(ConfigManagerFaults, OfAskingWhoJoinedPassOnAndEndTheRun) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.plugins.executor.drop_all();
    object->script->on_document = [&bench] {
        auto* nameless = new NamelessConfig("b", &bench.headset);
        bench.manager().add_config_object("b", nameless);
        bench.manager().mark_config_object_pending(nameless);
    };

    EXPECT_THROW(bench.succeed("document"), std::bad_alloc);

    EXPECT_EQ(0u, bench.manager().get_number_of_pending_configs());
    object->script->on_document = nullptr;
    bench.manager().remove_accessory("b");
    expect_new_runs(bench);
}

TEST(ConfigManagerFaults, OfARequestThatWasAnsweredLeaveTheNextRunAlone) {
    ManagerBench bench;
    bench.add_fake("a");
    FakeConfig* other = bench.add_fake("b");
    bench.manager().configure_accessory("a", "");
    bench.plugins.dispatcher.hook = [&bench](const DispatchedRequest&) {
        bench.succeed("first");
        bench.manager().configure_accessory("b", "");
        throw std::runtime_error("the line went dead");
    };

    EXPECT_THROW(bench.plugins.executor.run_next(), std::runtime_error);

    EXPECT_TRUE(bench.succeed("second"));
    EXPECT_EQ((Lines{"second"}), other->script->documents);
}

TEST(ConfigManagerFaults, OfOneObjectsParseLetTheOtherHaveItsDocument) {
    ManagerBench bench;
    FakeConfig* faulty = bench.add_fake("a");
    faulty->script->on_document = [] { throw std::runtime_error("no room left"); };
    FakeConfig* other = bench.add_fake("b");
    bench.manager().configure_accessory("a", "stamp-1");
    bench.plugins.executor.drop_all();
    bench.take_lines();

    EXPECT_TRUE(bench.succeed("document"));

    EXPECT_EQ((Lines{"document"}), other->script->documents);
    EXPECT_EQ((Lines{R"(on_failure("a", REQUEST_REFUSED))"}), bench.take_driver_calls());
    EXPECT_EQ((Lines{"error Lib::ConfigManagerImpl: on_fetch_config_success: no room left",
                     "error Lib::ConfigManagerImpl: on_fetch_config_success: unable to update "
                     "config retrieved from server in library",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
                     "notice Lib::ConfigManagerImpl: on_fetch_config_successExit"}),
              bench.take_lines());
    expect_new_runs(bench);
}

TEST(ConfigManagerFaults, OfOneObjectsParseThatAreNotExceptionsLetTheOtherHaveItsDocument) {
    ManagerBench bench;
    bench.add_fake("a")->script->on_document = [] { throw 7; };
    FakeConfig* other = bench.add_fake("b");
    bench.manager().configure_accessory("a", "stamp-1");
    bench.plugins.executor.drop_all();

    EXPECT_TRUE(bench.succeed("document"));

    EXPECT_EQ((Lines{"document"}), other->script->documents);
    EXPECT_EQ((Lines{R"(on_failure("a", REQUEST_REFUSED))"}), bench.take_driver_calls());
    bench.manager().remove_accessory("a");
    expect_new_runs(bench);
}

TEST(ConfigManagerFaults, OfAnObjectsParseEndTheRunOfAnImmediateFetchOnce) {
    ManagerBench bench;
    bench.add_fake("a")->script->on_document = [] { throw 7; };
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_DONE, "document");
    bench.take_lines();

    bench.run_tasks();

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: configure_accessory_task id:a",
                     "error Lib::ConfigManagerImpl: on_fetch_config_success: unknown exception",
                     "error Lib::ConfigManagerImpl: on_fetch_config_success: unable to update "
                     "config retrieved from server in library",
                     "notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
                     "notice Lib::ConfigManagerImpl: on_fetch_config_successExit"}),
              bench.take_lines())
        << "a second clean-up would end the run of an accessory that was attached in between";
}

TEST(ConfigManagerFaults, OfTheMutexFactoryLeaveNoHalfMadeManager) {
    for (int n = 1; n <= 2; ++n) {
        ManagerBench bench;
        bench.plugins.mutex_factory.throw_at_create(n);

        EXPECT_THROW(config::create_config_manager(), std::runtime_error);

        EXPECT_EQ(bench.plugins.mutex_factory.made(), bench.plugins.mutex_factory.deleted());
        expect_new_runs(bench);
    }
}

TEST(ConfigManagerEndurance, AttachingAndRemovingTenThousandTimesLeavesNothing) {
    ManagerBench bench;
    bench.answer_with(REQUEST_PENDING, "");

    for (int round = 0; round < 10000; ++round) {
        ASSERT_EQ("a", bench.attach("a"));
        ASSERT_EQ(1u, bench.run_tasks());
        bench.manager().remove_accessory("a");
        bench.plugins.log.take();
    }

    EXPECT_EQ(1, bench.headset.shared->alive);
    EXPECT_EQ(0u, bench.queued());
    EXPECT_EQ(2u, bench.plugins.mutex_factory.made() - bench.plugins.mutex_factory.deleted())
        << "the manager's own two";
    EXPECT_EQ(0u, bench.manager().get_number_of_configs());
    EXPECT_EQ(0u, bench.manager().get_number_of_pending_configs());
}

TEST(ConfigManagerEndurance, FailingTenThousandTimesLeavesOneTaskAndOneObject) {
    ManagerBench bench;
    const int live = FakeConfig::live_count();
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_PENDING, "");
    bench.run_tasks();

    for (int round = 0; round < 10000; ++round) {
        ASSERT_TRUE(bench.manager().on_fetch_config_failure(500));
        ASSERT_EQ(1u, bench.run_tasks());
        bench.plugins.log.take();
    }

    EXPECT_EQ(0u, bench.queued());
    EXPECT_EQ(live + 1, FakeConfig::live_count());
    EXPECT_EQ(1u, bench.manager().get_number_of_pending_configs());
}

}  // namespace
}  // namespace headsetmgmt::test_support
