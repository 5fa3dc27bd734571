// SPDX-License-Identifier: Apache-2.0
// Tests of what the host asks of the manager besides a run: settings, reset, removal.

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "config/config_manager_impl.h"
#include "support/fake_config.h"
#include "support/manager_bench.h"

namespace headsetmgmt::test_support {
namespace {

TEST(ConfigManagerHostUpdate, GoesToTheAccessorysObjectUnchanged) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");

    EXPECT_TRUE(bench.manager().update_config_from_host("a", "Sidetone", 34, "3"));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: update_config_from_host: ENTER",
                     "notice Lib::ConfigManagerImpl: get_accessory: Found accessory config object "
                     "for id: a"}),
              bench.take_lines());
    EXPECT_EQ((Lines{"Sidetone|34|3"}), object->script->host_settings);
}

TEST(ConfigManagerHostUpdate, ReturnsTrueWhateverTheObjectReturned) {
    ManagerBench bench;
    bench.add_fake("a")->script->accepts_setting = false;

    EXPECT_TRUE(bench.manager().update_config_from_host("a", "Bluetooth", 39, "1"));
}

TEST(ConfigManagerHostUpdate, OfAnUnknownAccessoryReturnsFalse) {
    ManagerBench bench;

    EXPECT_FALSE(bench.manager().update_config_from_host("a", "Sidetone", 34, "3"));

    EXPECT_EQ(
        (Lines{"notice Lib::ConfigManagerImpl: update_config_from_host: ENTER",
               "warning Lib::ConfigManagerImpl: get_config_object: Cannot find config object"}),
        bench.take_lines());
}

TEST(ConfigManagerHostUpdate, ThatThrowsAnExceptionLogsItsTextAndReturnsFalse) {
    ManagerBench bench;
    bench.add_fake("a")->script->on_setting = [] { throw std::runtime_error("no room left"); };

    EXPECT_FALSE(bench.manager().update_config_from_host("a", "Sidetone", 34, "3"));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: update_config_from_host: ENTER",
                     "notice Lib::ConfigManagerImpl: get_accessory: Found accessory config object "
                     "for id: a",
                     "error Lib::ConfigManagerImpl: update_config_from_host: no room left"}),
              bench.take_lines());
}

TEST(ConfigManagerHostUpdate, LetsAnythingElseThatIsThrownPassAndTheRegistryFree) {
    ManagerBench bench;
    bench.add_fake("a")->script->on_setting = [] { throw 7; };

    EXPECT_THROW(bench.manager().update_config_from_host("a", "Sidetone", 34, "3"), int);

    EXPECT_EQ(0, bench.plugins.mutex_factory.held());
}

TEST(ConfigManagerRetrieval, ReturnsTheObjectsSettings) {
    ManagerBench bench;
    bench.add_fake("a")->script->settings = {{34, {34, "Sidetone", "3", "User"}}};

    const std::map<int, ConfigParam> settings = bench.manager().retrieve_config("a");

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: retrieve_config: ENTER"}), bench.take_lines());
    ASSERT_EQ(1u, settings.size());
    EXPECT_EQ(34, settings.at(34).usage_id);
    EXPECT_EQ("Sidetone", settings.at(34).name);
    EXPECT_EQ("3", settings.at(34).value);
    EXPECT_EQ("User", settings.at(34).access);
}

TEST(ConfigManagerRetrieval, OfAnUnknownAccessoryWarnsAndReturnsNothing) {
    ManagerBench bench;

    EXPECT_TRUE(bench.manager().retrieve_config("a").empty());

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: retrieve_config: ENTER",
                     "warning Lib::ConfigManagerImpl: get_config_object: Cannot find config object",
                     "warning Lib::ConfigManagerImpl: retrieve_config: No config object"}),
              bench.take_lines());
}

TEST(ConfigManagerRetrieval, OfOneSettingReturnsItsNameAndEntersTwice) {
    ManagerBench bench;
    bench.add_fake("a")->script->settings = {{34, {34, "Sidetone", "3", "User"}}};

    EXPECT_EQ("Sidetone", bench.manager().retrieve_config("a", 34));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: retrieve_config: ENTER",
                     "notice Lib::ConfigManagerImpl: retrieve_config: ENTER"}),
              bench.take_lines());
}

TEST(ConfigManagerRetrieval, OfASettingThatTheAccessoryLacksReturnsAnEmptyText) {
    ManagerBench bench;
    bench.add_fake("a")->script->settings = {{34, {34, "Sidetone", "3", "User"}}};

    EXPECT_EQ("", bench.manager().retrieve_config("a", 35));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: retrieve_config: ENTER",
                     "notice Lib::ConfigManagerImpl: retrieve_config: ENTER"}),
              bench.take_lines());
}

TEST(ConfigManagerRetrieval, OfOneSettingOfAnUnknownAccessoryWarnsAndReturnsAnEmptyText) {
    ManagerBench bench;

    EXPECT_EQ("", bench.manager().retrieve_config("a", 34));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: retrieve_config: ENTER",
                     "notice Lib::ConfigManagerImpl: retrieve_config: ENTER",
                     "warning Lib::ConfigManagerImpl: get_config_object: Cannot find config object",
                     "warning Lib::ConfigManagerImpl: retrieve_config: No config object"}),
              bench.take_lines());
}

TEST(ConfigManagerReset, ReturnsTheObjectsResult) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");

    EXPECT_TRUE(bench.manager().reset_to_admin_defaults("a"));
    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: reset_to_admin_defaults: ENTER"}),
              bench.take_lines());

    object->script->accepts_reset = false;
    EXPECT_FALSE(bench.manager().reset_to_admin_defaults("a"));
    EXPECT_EQ(2, object->script->resets);
}

TEST(ConfigManagerReset, OfAnUnknownAccessoryReturnsFalse) {
    ManagerBench bench;

    EXPECT_FALSE(bench.manager().reset_to_admin_defaults("a"));

    EXPECT_EQ(
        (Lines{"notice Lib::ConfigManagerImpl: reset_to_admin_defaults: ENTER",
               "warning Lib::ConfigManagerImpl: get_config_object: Cannot find config object",
               "notice Lib::ConfigManagerImpl: reset_to_admin_defaults: Config object of this "
               "type does not exist"}),
        bench.take_lines());
}

TEST(ConfigManagerRemoval, OfAnUnknownAccessoryChangesNothing) {
    ManagerBench bench;
    bench.add_fake("b");
    bench.manager().set_configure_accessory_pending(true);

    bench.manager().remove_accessory("a");

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: remove_accessory: ENTER"}),
              bench.take_lines());
    EXPECT_EQ(1u, bench.manager().get_number_of_configs());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigManagerRemoval, DeletesTheObjectAndForgetsTheId) {
    ManagerBench bench;
    const int live = FakeConfig::live_count();
    bench.add_fake("a");

    bench.manager().remove_accessory("a");

    EXPECT_EQ(live, FakeConfig::live_count());
    EXPECT_EQ(0u, bench.manager().get_number_of_configs());
}

TEST(ConfigManagerRemoval, OfTheOnlyPendingAccessoryClearsTheFlagSoThatALateAnswerIsDropped) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_PENDING, "");
    bench.run_tasks();
    bench.take_lines();

    bench.manager().remove_accessory("a");
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
    EXPECT_FALSE(bench.succeed("document"));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: remove_accessory: ENTER",
                     "notice Lib::ConfigManagerImpl: remove_accessory: erased [1] pending config",
                     "error Lib::ConfigManagerImpl: on_fetch_config_success: no configuration in "
                     "progress, dropping data"}),
              bench.take_lines());
}

/// The manager as somebody sees it who is called in the middle of something.
std::string state_of(ManagerBench& bench) {
    config::ConfigManagerImpl& manager = bench.manager();
    return std::to_string(manager.get_number_of_configs()) + " registered, " +
           std::to_string(manager.get_number_of_pending_configs()) + " pending, " +
           (manager.is_configure_accessory_pending() ? "run under way" : "no run");
}

TEST(ConfigManagerRemoval, ForgetsTheObjectThenWritesTheLineThenClearsTheFlagThenDeletes) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    bench.manager().configure_accessory("a", "");
    bench.plugins.executor.drop_all();
    Lines steps;
    object->script->on_end = [&] { steps.push_back("deleted: " + state_of(bench)); };
    bench.plugins.log.hook = [&](const LogLine& line) {
        if (line.text.find("remove_accessory") != std::string::npos) {
            steps.push_back(line.text + ": " + state_of(bench));
        }
    };

    bench.manager().remove_accessory("a");

    EXPECT_EQ((Lines{"Lib::ConfigManagerImpl: remove_accessory: ENTER: "
                     "1 registered, 1 pending, run under way",
                     "Lib::ConfigManagerImpl: remove_accessory: erased [1] pending config: "
                     "0 registered, 0 pending, run under way",
                     "deleted: 0 registered, 0 pending, no run"}),
              steps);
}

TEST(ConfigManagerRemoval, LeavesTheRunToAnAccessoryThatIsAttachedOnItsLine) {
    ManagerBench bench;
    bench.add_fake("a");
    FakeConfig* other = bench.add_fake("b");
    bench.manager().configure_accessory("a", "");
    bench.answer_with(REQUEST_PENDING, "");
    bench.run_tasks();
    bench.plugins.log.hook = [&](const LogLine& line) {
        if (line.text.find("erased [1]") != std::string::npos) {
            EXPECT_TRUE(bench.manager().configure_accessory("b", ""));
        }
    };

    bench.manager().remove_accessory("a");

    EXPECT_TRUE(bench.succeed("document"));
    EXPECT_EQ((Lines{"document"}), other->script->documents);
    EXPECT_EQ(0u, bench.queued());
}

TEST(ConfigManagerRemoval, OfOnePendingAccessoryOfTwoLeavesTheRunOpen) {
    ManagerBench bench;
    bench.add_fake("a");
    FakeConfig* other = bench.add_fake("b");
    bench.manager().configure_accessory("a", "stamp-170");
    bench.take_lines();

    bench.manager().remove_accessory("a");

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: remove_accessory: ENTER",
                     "notice Lib::ConfigManagerImpl: remove_accessory: erased [1] pending config"}),
              bench.take_lines());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(other, bench.manager().get_pending_config_object(0));
}

TEST(ConfigManagerRemoval, OfAnAccessoryThatIsNotPendingLeavesTheRunOfAnotherOpen) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.add_fake("b");
    bench.manager().configure_accessory("b", "");
    bench.take_lines();

    bench.manager().remove_accessory("a");

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: remove_accessory: ENTER",
                     "notice Lib::ConfigManagerImpl: remove_accessory: erased [0] pending config"}),
              bench.take_lines());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigManagerRemoval, OfAnAccessoryThatIsNotPendingClearsTheFlagOverAnEmptyPendingSet) {
    ManagerBench bench;
    bench.add_fake("a");
    bench.manager().set_configure_accessory_pending(true);

    bench.manager().remove_accessory("a");

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: remove_accessory: ENTER",
                     "notice Lib::ConfigManagerImpl: remove_accessory: erased [0] pending config"}),
              bench.take_lines());
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
}

TEST(ConfigManagerRemoval, IsFollowedByARunOfItsOwnWhenTheAccessoryIsAttachedAgain) {
    ManagerBench bench;
    bench.attach("a");
    bench.manager().remove_accessory("a");

    EXPECT_EQ("a", bench.attach("a"));

    EXPECT_EQ(2u, bench.queued());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
}

}  // namespace
}  // namespace headsetmgmt::test_support
