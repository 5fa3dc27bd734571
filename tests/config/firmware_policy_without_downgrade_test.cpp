// SPDX-License-Identifier: Apache-2.0
// Tests of the firmware decision for accessories that take no older version: a program of its own,
// which answers in the library's place whether an accessory may be moved to one.

#include <string>

#include <gtest/gtest.h>

#include "headsetmgmt/utilities.h"

#include "support/config_bench.h"

namespace {

headsetmgmt::AccessoryInfoInterface* asked_accessory = nullptr;

}  // namespace

bool headset_support_downgrade(headsetmgmt::AccessoryInfoInterface* accessory) {
    asked_accessory = accessory;
    return false;
}

namespace headsetmgmt::test_support {
namespace {

TEST(FirmwareDecisionWithoutDowngrade, OlderVersionIsRefused) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(2, config.check_firmware_upgrade("1-2-3", "1-2-4"));
    EXPECT_EQ(
        (Lines{
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-3",
            "notice HeadsetConfigImpl: check_firmware_upgrade: FW ver candidate from "
            "Configuration: 1-2-3",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-4",
            "notice HeadsetConfigImpl: check_firmware_upgrade: System info reported FW: 1-2-4",
        }),
        bench.lines());
}

TEST(FirmwareDecisionWithoutDowngrade, ObjectsOwnAccessoryIsAskedAbout) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    config.check_firmware_upgrade("1-2-3", "1-2-4");

    EXPECT_EQ(config.get_accessory(), asked_accessory);
}

TEST(FirmwareDecisionWithoutDowngrade, NewerVersionIsAChange) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(1, config.check_firmware_upgrade("1-2-3", "1-1-9"));
}

TEST(FirmwareDecisionWithoutDowngrade, FieldsAreComparedAsNumbersFromTheFirstOn) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(1, config.check_firmware_upgrade("1-10", "1-9"));
    EXPECT_EQ(2, config.check_firmware_upgrade("1-9", "1-10"));
    EXPECT_EQ(1, config.check_firmware_upgrade("2-0-0", "1-9-9"));
    EXPECT_EQ(2, config.check_firmware_upgrade("1-9-9", "2-0-0"));
}

TEST(FirmwareDecisionWithoutDowngrade, FieldsMayBeWiderThanThirtyTwoBits) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(1, config.check_firmware_upgrade("20260101120001", "20260101120000"));
    EXPECT_EQ(2, config.check_firmware_upgrade("4294967296", "4294967297"));
    EXPECT_EQ(1, config.check_firmware_upgrade("4294967297", "5"));
    EXPECT_EQ(2, config.check_firmware_upgrade("5", "4294967297"));
}

TEST(FirmwareDecisionWithoutDowngrade, FieldsAreDecimalWhateverTheirLeadingZeros) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(1, config.check_firmware_upgrade("1-010", "1-9"));
    EXPECT_EQ(2, config.check_firmware_upgrade("1-9", "1-010"));
}

TEST(FirmwareDecisionWithoutDowngrade, FieldOfTheReportMayHaveBlanksAndASign) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(2, config.check_firmware_upgrade("1-2", "1- 3"));
    EXPECT_EQ(2, config.check_firmware_upgrade("1-2", "1-+3"));
}

TEST(FirmwareDecisionWithoutDowngrade, FieldWithoutDigitsCountsAsZero) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(1, config.check_firmware_upgrade("1-1-3", "1--3"));
    EXPECT_EQ(2, config.check_firmware_upgrade("1--3", "1-1-3"));
}

TEST(FirmwareDecisionWithoutDowngrade, FieldOfTheReportEndsAtItsFirstNonDigit) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(2, config.check_firmware_upgrade("1-2", "1-3.9"));
    EXPECT_EQ(1, config.check_firmware_upgrade("1-3", "1-3.9"));
    EXPECT_EQ(1, config.check_firmware_upgrade("1-4", "1- 3.9"));
}

TEST(FirmwareDecisionWithoutDowngrade, OtherSpellingOfTheSameVersionIsAChange) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(1, config.check_firmware_upgrade("1-01", "1-1"));
}

TEST(FirmwareDecisionWithoutDowngrade, OtherNumberOfFieldsIsAChangeAllTheSame) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(1, config.check_firmware_upgrade("1-2-3", "1-2"));
    EXPECT_EQ("warning HeadsetConfigImpl: check_firmware_upgrade: name formats do not match, allow "
              "anyway",
              bench.lines().back());
}

TEST(FirmwareDecisionWithoutDowngrade, DevelopmentBuildIsAChangeInEitherDirection) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(1, config.check_firmware_upgrade("1-2-3dev", "1-2-4"));
    EXPECT_EQ("info HeadsetConfigImpl: check_firmware_upgrade: switching between dev and release, "
              "allow",
              bench.lines().back());
    EXPECT_EQ(1, config.check_firmware_upgrade("1-2-3", "1-2-4dev"));
    EXPECT_EQ(1, config.check_firmware_upgrade("1-2-3dev", "1-2-4dev"));
}

TEST(FirmwareDecisionWithoutDowngrade, FieldsAreCountedBeforeDevelopmentBuildsAreLookedAt) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(1, config.check_firmware_upgrade("1-2dev", "1-2-4"));
    EXPECT_EQ("warning HeadsetConfigImpl: check_firmware_upgrade: name formats do not match, allow "
              "anyway",
              bench.lines().back());
}

TEST(FirmwareDecisionWithoutDowngrade, EarlierTestsStillDecideFirst) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    asked_accessory = nullptr;

    EXPECT_EQ(3, config.check_firmware_upgrade("", "1-2-4"));
    EXPECT_EQ(0, config.check_firmware_upgrade("1-2-4", "1-2-4"));
    EXPECT_EQ(0, config.check_firmware_upgrade("1_2_3", "1-2-4"));
    EXPECT_EQ(nullptr, asked_accessory);
}

TEST(FirmwareUpgradeWithoutDowngrade, OlderVersionIsLoggedAndNotRequestedFromTheHost) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner firmware =
        parse(R"([{"firmwareName": "k20.bin", "firmwareVersion": "1-2-3"}])");

    EXPECT_TRUE(config.upgrade_firmware(firmware.get(), "1-2-4"));
    EXPECT_EQ(
        (Lines{
            "notice HeadsetConfigImpl: upgrade_firmware: received 1 entries for model firmware",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-3",
            "notice HeadsetConfigImpl: check_firmware_upgrade: FW ver candidate from "
            "Configuration: 1-2-3",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-4",
            "notice HeadsetConfigImpl: check_firmware_upgrade: System info reported FW: 1-2-4",
            "notice HeadsetConfigImpl: upgrade_firmware: No support for firmware downgrade. "
            "Exiting.",
            "debug HeadsetConfigImpl: upgrade_firmware: Done",
            "debug HeadsetConfigImpl: upgrade_firmware: Success.",
        }),
        bench.lines());
    EXPECT_EQ(Calls{}, bench.driver_calls());
    EXPECT_EQ("1-2-3", config.pending_firmware);
}

TEST(FirmwareUpgradeWithoutDowngrade, NewerVersionIsRequestedFromTheHost) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    config.upgrade_firmware("1-2-5", "k20.bin", "1-2-4");

    EXPECT_EQ((Calls{R"(request_upgrade("acc-1", "1-2-5", "k20.bin"))"}), bench.driver_calls());
}

}  // namespace
}  // namespace headsetmgmt::test_support
