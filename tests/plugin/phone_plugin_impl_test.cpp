// SPDX-License-Identifier: Apache-2.0
// The plug-in object: creating, starting, stopping, and its log.

#include <gtest/gtest.h>

#include "plugin/phone_plugin_impl.h"
#include "support/lock_attempt.h"
#include "support/phone_host.h"

namespace headsetmgmt::test_support {
namespace {

using log::LogLevel;
using plugin::PhonePluginImpl;

std::string line_of_second_callback;

void second_callback(int level, const char* text) {
    line_of_second_callback = std::to_string(level) + " " + text;
}

TEST(PhonePluginImplTest, CreatingSaysNothing) {
    PhoneHost host;

    EXPECT_TRUE(create_headset_mgmt(record_host_log_line));

    EXPECT_EQ(host.take(), Lines{});
}

TEST(PhonePluginImplTest, SecondStartAnswersTrueAndSaysNothing) {
    PhoneHost host;
    host.start_up();

    EXPECT_TRUE(start_headset_mgmt("other", "texts", "here"));

    EXPECT_EQ(host.take(), Lines{});
    EXPECT_EQ(threads_named(worker_name), 1);
}

TEST(PhonePluginImplTest, StartThatComesJustAfterAnotherOneAnswersTrueAndSaysNothing) {
    PhoneHost host;
    create_headset_mgmt(record_host_log_line);
    const LockAttempt attempt(TriedLock::sole, [&] {
        EXPECT_TRUE(on_another_thread([] { return start_headset_mgmt("", "", ""); }));
        host.take();
    });

    EXPECT_TRUE(start_headset_mgmt("", "", ""));

    EXPECT_EQ(host.take(), Lines{});
}

TEST(PhonePluginImplTest, CreateThatComesJustAfterAnotherOneReplacesTheCallback) {
    PhoneHost host;
    const LockAttempt attempt(TriedLock::sole, [] {
        EXPECT_TRUE(on_another_thread([] { return create_headset_mgmt(second_callback); }));
    });

    EXPECT_TRUE(create_headset_mgmt(record_host_log_line));

    stop_headset_mgmt();
    EXPECT_EQ(host.take(), (Lines{"log 5 stop headset mgmt\n"}));
}

TEST(PhonePluginImplTest, StopBeforeAnyStartSaysOneLine) {
    PhoneHost host;
    create_headset_mgmt(record_host_log_line);

    stop_headset_mgmt();

    EXPECT_EQ(host.take(), (Lines{"log 5 stop headset mgmt\n"}));
}

TEST(PhonePluginImplTest, StopBeforeTheObjectIsMadeDoesNothing) {
    PhoneHost host;

    stop_headset_mgmt();
    create_headset_mgmt(record_host_log_line);

    EXPECT_EQ(host.take(), Lines{});
}

TEST(PhonePluginImplTest, StartAfterAStopMakesAnotherWorker) {
    PhoneHost host;
    host.start_up();
    EXPECT_EQ(threads_named(worker_name), 1);

    host.stop();
    EXPECT_EQ(threads_named(worker_name), 0);
    EXPECT_TRUE(host.start());

    EXPECT_EQ(threads_named(worker_name), 1);
    EXPECT_EQ(host.take(), (Lines{"log 5 stop headset mgmt\n", "log 5 init_headsetmgmt_lib.\n",
                                  "log 5 ExecutorImpl::ExecutorImpl: ENTER.\n"}));
}

TEST(PhonePluginImplTest, StartWithoutACreateRunsWithoutLines) {
    PhoneHost host;

    EXPECT_TRUE(host.start());
    EXPECT_TRUE(configure_headset(shared(headset_1())));
    host.run_worker();

    EXPECT_EQ(host.take(), (Lines{"httpRequest 0 defaultheadsetconfig.json null"}));
}

TEST(PhonePluginImplTest, SecondCreateReplacesTheCallback) {
    PhoneHost host;
    host.start_up();

    EXPECT_TRUE(create_headset_mgmt(second_callback));
    remove_peripheral("nobody");

    EXPECT_EQ(line_of_second_callback, "5 Lib::ConfigManagerImpl: remove_accessory: ENTER");
    EXPECT_EQ(host.take(), Lines{});
}

TEST(PhonePluginImplTest, LinesVanishWithoutACallback) {
    PhoneHost host;
    host.start_up();

    EXPECT_TRUE(create_headset_mgmt(nullptr));
    EXPECT_TRUE(remove_peripheral("nobody"));

    EXPECT_EQ(host.take(), Lines{});
}

TEST(PhonePluginImplTest, CallbackSurvivesAStop) {
    PhoneHost host;
    host.start_up();
    host.stop();
    host.take();

    EXPECT_FALSE(remove_peripheral("headset-1"));

    EXPECT_EQ(host.take(), (Lines{"log 5 PhonePluginImpl::removePeripheral ENTER\n"}));
}

TEST(PhonePluginImplTest, LevelsOfTheHostAreNoOrder) {
    const PhonePluginImpl plugin;

    EXPECT_EQ(plugin.map_to_host_log_level(LogLevel::critical), 1);
    EXPECT_EQ(plugin.map_to_host_log_level(LogLevel::error), 2);
    EXPECT_EQ(plugin.map_to_host_log_level(LogLevel::warning), 3);
    EXPECT_EQ(plugin.map_to_host_log_level(LogLevel::notice), 5);
    EXPECT_EQ(plugin.map_to_host_log_level(LogLevel::info), 4);
    EXPECT_EQ(plugin.map_to_host_log_level(LogLevel::debug), 5);
}

TEST(PhonePluginImplTest, UnknownLevelIsTheHostsFifth) {
    const PhonePluginImpl plugin;

    EXPECT_EQ(plugin.map_to_host_log_level(static_cast<LogLevel>(6)), 5);
    EXPECT_EQ(plugin.map_to_host_log_level(static_cast<LogLevel>(-1)), 5);
}

TEST(PhonePluginImplTest, LineOfAnyLevelReachesTheHostAtLevelFive) {
    fresh_fake_host();
    PhonePluginImpl plugin;
    plugin.setLogCB(record_host_log_line);

    for (int level = 0; level <= 6; ++level) {
        plugin.print(static_cast<LogLevel>(level), "line");
    }

    EXPECT_EQ(fake_host().transcript(), Lines(7, "log 5 line"));
}

TEST(PhonePluginImplTest, LiteralAndComposedTextReachTheHostAlike) {
    fresh_fake_host();
    PhonePluginImpl plugin;
    plugin.setLogCB(record_host_log_line);

    plugin.debug("literal\n");
    plugin.debug(std::string("composed\n"));

    EXPECT_EQ(fake_host().transcript(), (Lines{"log 5 literal\n", "log 5 composed\n"}));
}

TEST(PhonePluginImplTest, WhatAStartMakesIsThereUntilTheStop) {
    PhonePluginImpl plugin;

    EXPECT_TRUE(plugin.init_headsetmgmt_lib("", "", ""));

    EXPECT_NE(PhonePluginImpl::config_mgr_, nullptr);
    EXPECT_EQ(PhonePluginImpl::phone_log_, &plugin);
    EXPECT_NE(PhonePluginImpl::dispatcher_, nullptr);
    EXPECT_NE(PhonePluginImpl::phone_config_driver_, nullptr);
    EXPECT_NE(PhonePluginImpl::phone_system_info_, nullptr);
    EXPECT_NE(PhonePluginImpl::executor_, nullptr);
    EXPECT_NE(PhonePluginImpl::mutex_factory_, nullptr);

    plugin.stop_headset_mgmt();

    EXPECT_EQ(PhonePluginImpl::config_mgr_, nullptr);
    EXPECT_EQ(PhonePluginImpl::phone_log_, &plugin);
    EXPECT_EQ(PhonePluginImpl::dispatcher_, nullptr);
    EXPECT_EQ(PhonePluginImpl::phone_config_driver_, nullptr);
    EXPECT_EQ(PhonePluginImpl::phone_system_info_, nullptr);
    EXPECT_EQ(PhonePluginImpl::executor_, nullptr);
    EXPECT_EQ(PhonePluginImpl::mutex_factory_, nullptr);
}

TEST(PhonePluginImplTest, StartedObjectIsNotStartedAgain) {
    fresh_fake_host();
    PhonePluginImpl plugin;
    plugin.setLogCB(record_host_log_line);
    EXPECT_TRUE(plugin.init_headsetmgmt_lib("", "", ""));

    EXPECT_TRUE(plugin.init_headsetmgmt_lib("", "", ""));

    EXPECT_EQ(fake_host().transcript(), (Lines{"log 5 init_headsetmgmt_lib.\n",
                                               "log 5 ExecutorImpl::ExecutorImpl: ENTER.\n"}));
}

TEST(PhonePluginImplTest, ResetOfAnObjectThatWasNeverStartedAnswersTrue) {
    PhonePluginImpl plugin;

    EXPECT_TRUE(plugin.reset_headsetmgmt_lib());
    EXPECT_TRUE(plugin.reset_headsetmgmt_lib());
}

}  // namespace
}  // namespace headsetmgmt::test_support
