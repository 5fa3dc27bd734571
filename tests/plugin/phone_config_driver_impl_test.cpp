// SPDX-License-Identifier: Apache-2.0
// The way to the devices: what reaches the host functions, and what the driver answers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/phone_config_driver_impl.h"
#include "support/fake_host.h"

using headsetmgmt::config::ConfigureResponse;
using headsetmgmt::config::HostConfigDriverInterface;
using headsetmgmt::config::PhoneConfigDriverImpl;
using headsetmgmt::test_support::ApplyChangesCall;
using headsetmgmt::test_support::FakeHost;
using headsetmgmt::test_support::FirmwareUpgradeCall;
using headsetmgmt::test_support::fresh_fake_host;
using headsetmgmt::test_support::HostBehaviour;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(PhoneConfigDriverImplTest, SettingReachesTheHostWithItsFourPartsInOrder) {
    const FakeHost& host = fresh_fake_host();
    const PhoneConfigDriverImpl driver;

    EXPECT_TRUE(driver.apply_config_to_device("device", "Speaker Volume", 32, "70"));

    EXPECT_THAT(host.applied_changes(),
                ElementsAre(ApplyChangesCall{"device", "Speaker Volume", 32, "70"}));
}

TEST(PhoneConfigDriverImplTest, SettingAnswersTrueAlsoWhenTheHostRejectsIt) {
    FakeHost& host = fresh_fake_host();
    HostBehaviour behaviour;
    behaviour.apply_changes_answer = false;
    host.behave(behaviour);
    const PhoneConfigDriverImpl driver;

    EXPECT_TRUE(driver.apply_config_to_device("device", "name", -1, ""));

    EXPECT_THAT(host.applied_changes(), ElementsAre(ApplyChangesCall{"device", "name", -1, ""}));
}

TEST(PhoneConfigDriverImplTest, UpgradeReachesTheHostWithItsThreePartsInOrder) {
    const FakeHost& host = fresh_fake_host();
    const PhoneConfigDriverImpl driver;

    EXPECT_TRUE(driver.request_upgrade("device", "2-0-1", "image.bin"));

    EXPECT_THAT(host.firmware_upgrades(),
                ElementsAre(FirmwareUpgradeCall{"device", "2-0-1", "image.bin"}));
}

TEST(PhoneConfigDriverImplTest, UpgradeAnswersTrueAlsoWhenTheHostRejectsIt) {
    FakeHost& host = fresh_fake_host();
    HostBehaviour behaviour;
    behaviour.firmware_upgrade_answer = false;
    host.behave(behaviour);
    const PhoneConfigDriverImpl driver;

    EXPECT_TRUE(driver.request_upgrade("device", "2-0-1", "image.bin"));

    EXPECT_THAT(host.firmware_upgrades(),
                ElementsAre(FirmwareUpgradeCall{"device", "2-0-1", "image.bin"}));
}

TEST(PhoneConfigDriverImplTest, LegacyCheckOfTheConcreteDriverIsTheHosts) {
    FakeHost& host = fresh_fake_host();
    HostBehaviour behaviour;
    behaviour.upgrade_check_answer = false;
    host.behave(behaviour);
    PhoneConfigDriverImpl driver;

    EXPECT_FALSE(driver.check_legacy_upgrade("device-1"));
    behaviour.upgrade_check_answer = true;
    host.behave(behaviour);
    EXPECT_TRUE(driver.check_legacy_upgrade("device-2"));

    EXPECT_THAT(host.upgrade_checks(), ElementsAre("device-1", "device-2"));
}

TEST(PhoneConfigDriverImplTest, LegacyCheckThroughTheInterfaceIsTrueWithoutAskingTheHost) {
    FakeHost& host = fresh_fake_host();
    HostBehaviour behaviour;
    behaviour.upgrade_check_answer = false;
    host.behave(behaviour);
    PhoneConfigDriverImpl driver;
    HostConfigDriverInterface& through_interface = driver;

    EXPECT_TRUE(through_interface.check_legacy_upgrade("device"));

    EXPECT_THAT(host.upgrade_checks(), IsEmpty());
}

TEST(PhoneConfigDriverImplTest, FailureAndPendingAreNotPassedOn) {
    const FakeHost& host = fresh_fake_host();
    const PhoneConfigDriverImpl driver;

    driver.on_failure("device", ConfigureResponse(headsetmgmt::REQUEST_REFUSED));
    driver.on_pending("device", ConfigureResponse(headsetmgmt::REQUEST_PENDING));

    EXPECT_THAT(host.transcript(), IsEmpty());
}

}  // namespace
