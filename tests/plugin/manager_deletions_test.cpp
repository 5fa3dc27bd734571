// SPDX-License-Identifier: Apache-2.0
// How often a stop deletes the configuration manager: a program of its own, in which the linker
// hands the plug-in's calls to the test first.

#include <gtest/gtest.h>

#include "support/phone_host.h"

namespace {

int deletions = 0;

}  // namespace

/// The core's headsetmgmt::config::delete_config_manager.
void delete_in_the_core() __asm__("__real__ZN11headsetmgmt6config21delete_config_managerEv");

/// What the plug-in calls in its place.
void count_and_delete() __asm__("__wrap__ZN11headsetmgmt6config21delete_config_managerEv");

void count_and_delete() {
    ++deletions;
    delete_in_the_core();
}

namespace headsetmgmt::test_support {
namespace {

TEST(ManagerDeletions, StopBeforeAnyStartMakesOne) {
    PhoneHost host;
    create_headset_mgmt(record_host_log_line);
    deletions = 0;

    stop_headset_mgmt();

    EXPECT_EQ(deletions, 1);
    EXPECT_EQ(host.take(), (Lines{"log 5 stop headset mgmt\n"}));
}

TEST(ManagerDeletions, StopAfterAStartMakesASecondOneThatDoesNoHarm) {
    PhoneHost host;
    host.start_up();
    deletions = 0;

    host.stop();

    EXPECT_EQ(deletions, 2);
    EXPECT_EQ(host.take(), (Lines{"log 5 stop headset mgmt\n"}));
}

}  // namespace
}  // namespace headsetmgmt::test_support
