// SPDX-License-Identifier: Apache-2.0
// The plug-in record: when it is complete, and what installing it does.

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "headsetmgmt/plugins.h"

#include "support/fake_plugins.h"

using headsetmgmt::Plugins;
using headsetmgmt::test_support::FakePlugins;

namespace {

/// What `init` says to a record it refuses; empty when it takes it.
std::string refusal(Plugins record) {
    try {
        headsetmgmt::init(record);
        return {};
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

void expect_installed(const Plugins& expected) {
    const Plugins& installed = headsetmgmt::globals::plugins;
    EXPECT_EQ(installed.log, expected.log);
    EXPECT_EQ(installed.dispatcher, expected.dispatcher);
    EXPECT_EQ(installed.config_driver, expected.config_driver);
    EXPECT_EQ(installed.system_info, expected.system_info);
    EXPECT_EQ(installed.executor, expected.executor);
    EXPECT_EQ(installed.mutex_factory, expected.mutex_factory);
}

TEST(PluginsTest, NewRecordIsAllNullAndNotValid) {
    const Plugins record;

    EXPECT_EQ(record.log, nullptr);
    EXPECT_EQ(record.dispatcher, nullptr);
    EXPECT_EQ(record.config_driver, nullptr);
    EXPECT_EQ(record.system_info, nullptr);
    EXPECT_EQ(record.executor, nullptr);
    EXPECT_EQ(record.mutex_factory, nullptr);
    EXPECT_FALSE(record.is_valid());
}

TEST(PluginsTest, RecordHoldsItsSixPointersInOrder) {
    const FakePlugins fakes;
    const Plugins& record = fakes.record;

    const auto [log, dispatcher, config_driver, system_info, executor, mutex_factory] = record;

    EXPECT_EQ(log, &fakes.log);
    EXPECT_EQ(dispatcher, &fakes.dispatcher);
    EXPECT_EQ(config_driver, &fakes.config_driver);
    EXPECT_EQ(system_info, &fakes.system_info);
    EXPECT_EQ(executor, &fakes.executor);
    EXPECT_EQ(mutex_factory, &fakes.mutex_factory);
}

TEST(PluginsTest, CompleteRecordIsInstalledPointerByPointer) {
    const FakePlugins before;
    FakePlugins fakes;
    // Something else than what is to be installed stands there first.
    Plugins earlier = before.record;
    headsetmgmt::init(earlier);

    EXPECT_TRUE(headsetmgmt::init(fakes.record));

    expect_installed(fakes.record);
}

TEST(PluginsTest, InstallingAgainOverwritesAllSix) {
    FakePlugins first;
    FakePlugins second;
    ASSERT_TRUE(headsetmgmt::init(first.record));

    ASSERT_TRUE(headsetmgmt::init(second.record));

    expect_installed(second.record);
}

TEST(PluginsTest, InstalledRecordIsACopy) {
    FakePlugins fakes;
    Plugins record = fakes.record;
    ASSERT_TRUE(headsetmgmt::init(record));

    record = Plugins();

    expect_installed(fakes.record);
}

TEST(PluginsTest, EmptyRecordIsRefused) {
    const FakePlugins installed;

    EXPECT_EQ(refusal(Plugins()), "plugins is not initialized properly");

    expect_installed(installed.record);
}

TEST(PluginsTest, RecordWithoutLogIsRefusedAndTheEarlierOneStays) {
    const FakePlugins installed;
    Plugins record = installed.record;
    record.log = nullptr;

    EXPECT_FALSE(record.is_valid());
    EXPECT_EQ(refusal(record), "plugins is not initialized properly");

    expect_installed(installed.record);
}

TEST(PluginsTest, RecordWithoutDispatcherIsRefusedAndTheEarlierOneStays) {
    const FakePlugins installed;
    Plugins record = installed.record;
    record.dispatcher = nullptr;

    EXPECT_FALSE(record.is_valid());
    EXPECT_EQ(refusal(record), "plugins is not initialized properly");

    expect_installed(installed.record);
}

TEST(PluginsTest, RecordWithoutConfigDriverIsRefusedAndTheEarlierOneStays) {
    const FakePlugins installed;
    Plugins record = installed.record;
    record.config_driver = nullptr;

    EXPECT_FALSE(record.is_valid());
    EXPECT_EQ(refusal(record), "plugins is not initialized properly");

    expect_installed(installed.record);
}

TEST(PluginsTest, RecordWithoutSystemInfoIsRefusedAndTheEarlierOneStays) {
    const FakePlugins installed;
    Plugins record = installed.record;
    record.system_info = nullptr;

    EXPECT_FALSE(record.is_valid());
    EXPECT_EQ(refusal(record), "plugins is not initialized properly");

    expect_installed(installed.record);
}

TEST(PluginsTest, RecordWithoutExecutorIsRefusedAndTheEarlierOneStays) {
    const FakePlugins installed;
    Plugins record = installed.record;
    record.executor = nullptr;

    EXPECT_FALSE(record.is_valid());
    EXPECT_EQ(refusal(record), "plugins is not initialized properly");

    expect_installed(installed.record);
}

TEST(PluginsTest, RecordWithoutMutexFactoryIsRefusedAndTheEarlierOneStays) {
    const FakePlugins installed;
    Plugins record = installed.record;
    record.mutex_factory = nullptr;

    EXPECT_FALSE(record.is_valid());
    EXPECT_EQ(refusal(record), "plugins is not initialized properly");

    expect_installed(installed.record);
}

}  // namespace
