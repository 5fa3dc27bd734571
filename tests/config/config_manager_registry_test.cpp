// SPDX-License-Identifier: Apache-2.0
// Tests of the manager's one instance, of its registry, and of accessories that are attached.

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/config_manager.h"
#include "headsetmgmt/plugins.h"

#include "config/config_manager_impl.h"
#include "support/fake_config.h"
#include "support/manager_bench.h"

namespace headsetmgmt::test_support {
namespace {

using config::ConfigInterface;
using config::ConfigManagerImpl;

/// Numbers its locks as it makes them. They lock nothing: for one thread.
class NumberingMutexFactory : public MutexFactoryInterface {
public:
    Lines calls;

    MutexInterface* create_mutex(bool recursive) override {
        calls.push_back((recursive ? "create recursive " : "create plain ") +
                        std::to_string(made.size()));
        made.push_back(new FreeMutex());
        return made.back();
    }

    void delete_mutex(MutexInterface* mutex) override {
        const auto place = std::find(made.begin(), made.end(), mutex);
        calls.push_back("delete " + std::to_string(place - made.begin()));
        delete mutex;
    }

private:
    class FreeMutex : public MutexInterface {
    public:
        bool lock() override { return true; }
        void unlock() override {}
    };

    std::vector<MutexInterface*> made;
};

/// What the registered object knows of its accessory.
std::string software_version_of(const std::string& id) {
    ConfigInterface* object = ConfigManagerImpl::get_instance()->get_config_object(id);
    return const_cast<AccessoryInfoInterface*>(object->get_accessory())->get_software_version();
}

/// What `get_instance` throws, "nothing" when it does not.
std::string refusal_of_get_instance() {
    try {
        ConfigManagerImpl::get_instance();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "nothing";
}

TEST(ConfigManagerInstance, IsRefusedWithoutPlugins) {
    const ManagerBench bench;
    config::delete_config_manager();
    globals::plugins = Plugins();

    EXPECT_EQ("plugins hasn't been initialized properly", refusal_of_get_instance());
}

TEST(ConfigManagerInstance, IsRefusedWhenOnlyTheMutexFactoryIsMissing) {
    const ManagerBench bench;
    config::delete_config_manager();
    globals::plugins.mutex_factory = nullptr;

    EXPECT_EQ("plugins hasn't been initialized properly", refusal_of_get_instance());
}

TEST(ConfigManagerInstance, IsMadeOnTheFirstCallAndAnsweredFromThenOn) {
    const ManagerBench bench;

    EXPECT_EQ(ConfigManagerImpl::get_instance(), ConfigManagerImpl::get_instance());
    EXPECT_EQ(ConfigManagerImpl::get_instance(), config::create_config_manager());
}

TEST(ConfigManagerInstance, IsMadeAfreshAfterItWasDeleted) {
    ManagerBench bench;
    bench.attach("a");

    config::delete_config_manager();

    EXPECT_EQ(0u, ConfigManagerImpl::get_instance()->get_number_of_configs());
    EXPECT_EQ(0u, ConfigManagerImpl::get_instance()->get_number_of_pending_configs());
    EXPECT_FALSE(ConfigManagerImpl::get_instance()->is_configure_accessory_pending());
}

TEST(ConfigManagerInstance, MayBeDeletedTwice) {
    ManagerBench bench;
    config::delete_config_manager();
    config::delete_config_manager();

    EXPECT_EQ(Lines{}, bench.take_lines());
}

TEST(ConfigManagerInstance, MakesARecursiveMutexAndThenAPlainOne) {
    ManagerBench bench;

    bench.manager();

    EXPECT_EQ((std::vector<bool>{true, false}), bench.plugins.mutex_factory.recursive_choices());
}

TEST(ConfigManagerInstance, DeletesTheRegistryMutexBeforeTheFlagMutex) {
    ManagerBench bench;
    NumberingMutexFactory factory;
    Plugins record = bench.plugins.record;
    record.mutex_factory = &factory;
    init(record);
    ConfigManagerImpl::get_instance();

    config::delete_config_manager();

    EXPECT_EQ((Lines{"create recursive 0", "create plain 1", "delete 0", "delete 1"}),
              factory.calls);
}

TEST(ConfigManagerInstance, DeletesEveryObjectWithoutALineBeforeItsMutexes) {
    ManagerBench bench;
    const int live = FakeConfig::live_count();
    bench.add_fake("a");
    bench.add_fake("b");
    bench.manager().configure_accessory("a", "");
    bench.take_lines();

    config::delete_config_manager();

    EXPECT_EQ(Lines{}, bench.take_lines());
    bench.plugins.executor.drop_all();
    EXPECT_EQ(live, FakeConfig::live_count());
    EXPECT_EQ(bench.plugins.mutex_factory.made(), bench.plugins.mutex_factory.deleted());
}

TEST(ConfigManagerRegistry, WarnsOfAnUnknownIdAndReturnsNull) {
    ManagerBench bench;

    EXPECT_EQ(nullptr, bench.manager().get_config_object("a"));
    EXPECT_EQ(
        (Lines{"warning Lib::ConfigManagerImpl: get_config_object: Cannot find config object"}),
        bench.take_lines());
}

TEST(ConfigManagerRegistry, ReturnsTheObjectThatWasAddedWithoutALine) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");

    EXPECT_EQ(object, bench.manager().get_config_object("a"));
    EXPECT_EQ(1u, bench.manager().get_number_of_configs());
    EXPECT_EQ(Lines{}, bench.take_lines());
}

TEST(ConfigManagerRegistry, ReplacesAnObjectUnderATakenIdWithoutDeletingIt) {
    ManagerBench bench;
    const std::unique_ptr<FakeConfig> first(bench.add_fake("a"));

    FakeConfig* second = bench.add_fake("a");

    EXPECT_EQ(second, bench.manager().get_config_object("a"));
    EXPECT_EQ(1u, bench.manager().get_number_of_configs());
    EXPECT_EQ("a", first->get_accessory_id());
}

TEST(ConfigManagerRegistry, LogsAnAccessoryThatItFound) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");

    EXPECT_EQ(object, bench.manager().get_accessory("a"));
    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: get_accessory: Found accessory config object "
                     "for id: a"}),
              bench.take_lines());
}

TEST(ConfigManagerRegistry, LogsNothingMoreOfAnAccessoryThatItDidNotFind) {
    ManagerBench bench;

    EXPECT_EQ(nullptr, bench.manager().get_accessory("a"));
    EXPECT_EQ(
        (Lines{"warning Lib::ConfigManagerImpl: get_config_object: Cannot find config object"}),
        bench.take_lines());
}

TEST(ConfigManagerRegistry, CreatesAndKeepsTheObjectOfAnAccessory) {
    ManagerBench bench;

    ConfigInterface* object = bench.manager().create_accessory("a", &bench.headset);

    EXPECT_EQ(
        (Lines{"info Lib::ConfigManagerImpl: create_accessory: Creating Config object for id: a",
               "notice Lib::ConfigManagerImpl: create_accessory: Config object created"}),
        bench.take_lines());
    ASSERT_NE(nullptr, object);
    EXPECT_EQ(object, bench.manager().get_config_object("a"));
    EXPECT_EQ(HEADSET, object->get_type());
    EXPECT_EQ(0u, bench.manager().get_number_of_pending_configs());
}

TEST(ConfigManagerRegistry, CreatesNothingForAnAccessoryOfNoKnownType) {
    ManagerBench bench;
    bench.headset.type = MAX_ACCESSORY_TYPE;

    EXPECT_EQ(nullptr, bench.manager().create_accessory("a", &bench.headset));

    EXPECT_EQ(
        (Lines{"info Lib::ConfigManagerImpl: create_accessory: Creating Config object for id: a",
               "info ConfigFactory: ::create_config: Unknown accessory type",
               "error Lib::ConfigManagerImpl: create_accessory: failed to create Config object"}),
        bench.take_lines());
    EXPECT_EQ(0u, bench.manager().get_number_of_configs());
}

TEST(ConfigManagerAttach, OfNoAccessoryInfoCreatesNothing) {
    ManagerBench bench;

    EXPECT_EQ("", bench.manager().initialize_accessory("a", nullptr));

    EXPECT_EQ(
        (Lines{"notice Lib::ConfigManagerImpl: initialize_accessory: called for id: a",
               "error Lib::ConfigManagerImpl: initialize_accessoryno accessory info for id: a"}),
        bench.take_lines());
    EXPECT_EQ(0u, bench.manager().get_number_of_configs());
    EXPECT_EQ(0u, bench.queued());
}

TEST(ConfigManagerAttach, ForTheFirstTimeWarnsCreatesTheObjectAndStartsARun) {
    ManagerBench bench;

    EXPECT_EQ("a", bench.manager().initialize_accessory("a", &bench.headset));

    EXPECT_EQ(
        (Lines{"notice Lib::ConfigManagerImpl: initialize_accessory: called for id: a",
               "warning Lib::ConfigManagerImpl: get_config_object: Cannot find config object",
               "info Lib::ConfigManagerImpl: create_accessory: Creating Config object for id: a",
               "notice Lib::ConfigManagerImpl: create_accessory: Config object created",
               "notice Lib::ConfigManagerImpl: configure_accessory: ENTER",
               "notice Lib::ConfigManagerImpl: configure_accessory:a",
               "info HeadsetConfigImpl: is_config_required: No version timestamp to compare, "
               "proceed with configure",
               "notice Lib::ConfigManagerImpl: configure_accessory: added async task"}),
        bench.take_lines());
    EXPECT_EQ(1u, bench.queued());
    EXPECT_TRUE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(1u, bench.manager().get_number_of_pending_configs());
}

TEST(ConfigManagerAttach, ForTheSecondTimeRefreshesTheOneObject) {
    ManagerBench bench;
    bench.headset.software_version = "1-0";
    bench.manager().initialize_accessory("a", &bench.headset);
    ConfigInterface* object = bench.manager().get_config_object("a");
    object->set_config_retries(2);
    bench.take_lines();
    bench.headset.software_version = "2-0";

    EXPECT_EQ("a", bench.manager().initialize_accessory("a", &bench.headset));

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: initialize_accessory: called for id: a",
                     "notice Lib::ConfigManagerImpl: configure_accessory: ENTER",
                     "notice Lib::ConfigManagerImpl: configure_accessory:a",
                     "info HeadsetConfigImpl: is_config_required: No version timestamp to compare, "
                     "proceed with configure",
                     "notice Lib::ConfigManagerImpl: configure_accessory: previous "
                     "configure_accessory is in progress, ignore this one"}),
              bench.take_lines());
    EXPECT_EQ(1u, bench.manager().get_number_of_configs());
    EXPECT_EQ(object, bench.manager().get_config_object("a"));
    EXPECT_EQ("2-0", software_version_of("a"));
    EXPECT_EQ(0, object->get_config_retries());
    EXPECT_EQ(1u, bench.queued());
}

TEST(ConfigManagerAttach, OfAnAccessoryOfNoKnownTypeReturnsNothingAndConfiguresNothing) {
    ManagerBench bench;
    bench.headset.type = UNKNOWN;

    EXPECT_EQ("", bench.manager().initialize_accessory("a", &bench.headset));

    EXPECT_EQ(
        (Lines{"notice Lib::ConfigManagerImpl: initialize_accessory: called for id: a",
               "warning Lib::ConfigManagerImpl: get_config_object: Cannot find config object",
               "info Lib::ConfigManagerImpl: create_accessory: Creating Config object for id: a",
               "info ConfigFactory: ::create_config: Unknown accessory type",
               "error Lib::ConfigManagerImpl: create_accessory: failed to create Config object"}),
        bench.take_lines());
    EXPECT_EQ(0u, bench.queued());
}

TEST(ConfigManagerAttach, OfAnAccessoryThatNeedsNoConfiguringReturnsNothing) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    object->script->required = false;

    EXPECT_EQ("", bench.manager().initialize_accessory("a", &bench.headset));

    EXPECT_EQ(1, object->script->updates);
    EXPECT_EQ((Lines{""}), object->script->stamps);
    EXPECT_EQ(0u, bench.queued());
}

TEST(ConfigManagerAttach, OfACameraMakesACamerasObject) {
    ManagerBench bench;
    bench.headset.type = CAMERA;

    EXPECT_EQ("a", bench.manager().initialize_accessory("a", &bench.headset));

    EXPECT_EQ(CAMERA, bench.manager().get_config_object("a")->get_type());
}

}  // namespace
}  // namespace headsetmgmt::test_support
