// SPDX-License-Identifier: Apache-2.0
// Tests of the firmware decision for accessories that take any other version.

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "config/config_impl.h"
#include "support/config_bench.h"

namespace headsetmgmt::test_support {
namespace {

using config::ConfigImpl;
using Fields = std::vector<std::string>;

TEST(FirmwareVersion, IsCutAtItsHyphens) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ((Fields{"1", "2", "30"}), config.parse_firmware_version("1-2-30"));
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-30"}),
              bench.lines());
}

TEST(FirmwareVersion, KeepsItsEmptyFields) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ((Fields{"1", "", "2"}), config.parse_firmware_version("1--2"));
    EXPECT_EQ((Fields{"", "1", ""}), config.parse_firmware_version("-1-"));
    EXPECT_EQ((Fields{"", ""}), config.parse_firmware_version("-"));
}

TEST(FirmwareVersion, WithoutAHyphenIsOneField) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ((Fields{"1.2.3"}), config.parse_firmware_version("1.2.3"));
    EXPECT_EQ((Fields{""}), config.parse_firmware_version(""));
}

TEST(FirmwareDecision, CodesAreWhatTheyAlwaysWere) {
    EXPECT_EQ(0, static_cast<int>(ConfigImpl::keep));
    EXPECT_EQ(1, static_cast<int>(ConfigImpl::change));
    EXPECT_EQ(2, static_cast<int>(ConfigImpl::downgrade_refused));
    EXPECT_EQ(3, static_cast<int>(ConfigImpl::version_unknown));
}

TEST(FirmwareDecision, EmptyCandidateIsUnknown) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(3, config.check_firmware_upgrade("", "1-2-3"));
    EXPECT_EQ(
        (Lines{
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: ",
            "notice HeadsetConfigImpl: check_firmware_upgrade: FW ver candidate from "
            "Configuration: ",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-3",
            "notice HeadsetConfigImpl: check_firmware_upgrade: System info reported FW: 1-2-3",
            "info HeadsetConfigImpl: check_firmware_upgrade: firmware version is empty",
        }),
        bench.lines());
}

TEST(FirmwareDecision, EmptyReportIsUnknown) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(3, config.check_firmware_upgrade("1-2-3", ""));
    EXPECT_EQ(3, config.check_firmware_upgrade("", ""));
}

TEST(FirmwareDecision, SameVersionIsKept) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(0, config.check_firmware_upgrade("1-2-3", "1-2-3"));
    EXPECT_EQ("info HeadsetConfigImpl: check_firmware_upgrade: versions are the same, do nothing",
              bench.lines().back());
}

TEST(FirmwareDecision, SameVersionIsLookedAtBeforeItsName) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(0, config.check_firmware_upgrade("1.2.3", "1.2.3"));
    EXPECT_EQ("info HeadsetConfigImpl: check_firmware_upgrade: versions are the same, do nothing",
              bench.lines().back());
}

TEST(FirmwareDecision, CandidateWithAnUnusableNameIsKeptBeforeDowngradesAreAsked) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(0, config.check_firmware_upgrade("1.2.4", "1-2-3"));
    EXPECT_EQ("warning HeadsetConfigImpl: check_firmware_upgrade: naming format not supported, "
              "candidate<1.2.4>, reported<1-2-3>",
              bench.lines().back());
}

TEST(FirmwareDecision, ReportWithAnUnusableNameIsLetThrough) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(1, config.check_firmware_upgrade("1-2-4", "1.2 (3)"));
}

TEST(FirmwareDecision, AnyOtherVersionIsAChangeAndLogsNoMore) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(1, config.check_firmware_upgrade("1-2-3", "1-2-4"));
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

TEST(FirmwareDecision, VersionThatOnlyChangesItsCaseIsAnotherOne) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(1, config.check_firmware_upgrade("1-2-3-RC", "1-2-3-rc"));
}

TEST(FirmwareUpgrade, WithoutAFirmwareBlockFails) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.upgrade_firmware(nullptr, "1-2-3"));
    EXPECT_EQ((Lines{"notice HeadsetConfigImpl: upgrade_firmware[PARSING-ERR]: "
                     "Model_firmware_settings do not exist"}),
              bench.lines());
}

TEST(FirmwareUpgrade, WithoutAFirmwareNameFails) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner firmware = parse(R"([{"firmwareVersion": "1-2-4"}, {"firmwareName": "b"}])");

    EXPECT_FALSE(config.upgrade_firmware(firmware.get(), "1-2-3"));
    EXPECT_EQ((Lines{
                  "notice HeadsetConfigImpl: upgrade_firmware: received 2 entries for model "
                  "firmware",
                  "error HeadsetConfigImpl: upgrade_firmware[KORM-ERR]: no/null firmare name in "
                  "JSON",
              }),
              bench.lines());
    EXPECT_EQ(Calls{}, bench.driver_calls());
}

TEST(FirmwareUpgrade, EmptyFirmwareBlockFails) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner firmware = parse("[]");

    EXPECT_FALSE(config.upgrade_firmware(firmware.get(), "1-2-3"));
    EXPECT_EQ((Lines{
                  "notice HeadsetConfigImpl: upgrade_firmware: received 0 entries for model "
                  "firmware",
                  "error HeadsetConfigImpl: upgrade_firmware[KORM-ERR]: no/null firmare name in "
                  "JSON",
              }),
              bench.lines());
}

TEST(FirmwareUpgrade, LatestInAnyCaseIsLeftToTheHostWhateverTheVersion) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner firmware =
        parse(R"([{"firmwareName": "lAtEsT", "firmwareVersion": "Current"}])");

    EXPECT_TRUE(config.upgrade_firmware(firmware.get(), "1-2-3"));
    EXPECT_EQ((Lines{
                  "notice HeadsetConfigImpl: upgrade_firmware: received 1 entries for model "
                  "firmware",
                  "notice HeadsetConfigImpl: upgrade_firmware: Legacy Flow - delegate upgrade to "
                  "config driver",
                  "debug HeadsetConfigImpl: upgrade_firmware: Success.",
              }),
              bench.lines());
    EXPECT_EQ((Calls{R"(check_legacy_upgrade("acc-1"))"}), bench.driver_calls());
    EXPECT_EQ("", config.pending_firmware);
}

TEST(FirmwareUpgrade, CurrentInAnyCaseSkipsTheDecision) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.pending_firmware = "0-9";
    const JsonOwner firmware =
        parse(R"([{"firmwareName": "k20.bin", "firmwareVersion": "CURRENT"}])");

    EXPECT_TRUE(config.upgrade_firmware(firmware.get(), "1-2-3"));
    EXPECT_EQ((Lines{
                  "notice HeadsetConfigImpl: upgrade_firmware: received 1 entries for model "
                  "firmware",
                  "debug HeadsetConfigImpl: upgrade_firmwarestay on current version, skip upgrade",
                  "debug HeadsetConfigImpl: upgrade_firmware: Success.",
              }),
              bench.lines());
    EXPECT_EQ(Calls{}, bench.driver_calls());
    EXPECT_EQ("0-9", config.pending_firmware);
}

TEST(FirmwareUpgrade, OtherVersionIsRequestedFromTheHost) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner firmware =
        parse(R"([{"firmwareName": "k20.bin", "firmwareVersion": "1-2-2"}])");

    EXPECT_TRUE(config.upgrade_firmware(firmware.get(), "1-2-3"));
    EXPECT_EQ((Calls{R"(request_upgrade("acc-1", "1-2-2", "k20.bin"))"}), bench.driver_calls());
    EXPECT_EQ("1-2-2", config.pending_firmware);
}

TEST(FirmwareUpgrade, SameVersionRequestsNothingAndStillPasses) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner firmware =
        parse(R"([{"firmwareName": "k20.bin", "firmwareVersion": "1-2-3"}])");

    EXPECT_TRUE(config.upgrade_firmware(firmware.get(), "1-2-3"));
    EXPECT_EQ(Calls{}, bench.driver_calls());
    EXPECT_EQ("1-2-3", config.pending_firmware);
}

TEST(FirmwareUpgrade, UnusableCandidateIsLoggedAsNoUpgradeAndStillPasses) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner firmware =
        parse(R"([{"firmwareName": "k20.bin", "firmwareVersion": "1.2.4"}])");

    EXPECT_TRUE(config.upgrade_firmware(firmware.get(), "1-2-3"));
    EXPECT_EQ(
        (Lines{
            "notice HeadsetConfigImpl: upgrade_firmware: received 1 entries for model firmware",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1.2.4",
            "notice HeadsetConfigImpl: check_firmware_upgrade: FW ver candidate from "
            "Configuration: 1.2.4",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-3",
            "notice HeadsetConfigImpl: check_firmware_upgrade: System info reported FW: 1-2-3",
            "warning HeadsetConfigImpl: check_firmware_upgrade: naming format not supported, "
            "candidate<1.2.4>, reported<1-2-3>",
            "notice HeadsetConfigImpl: upgrade_firmware: No upgrade required. This firmware's "
            "settings have been applied.",
            "debug HeadsetConfigImpl: upgrade_firmware: Done",
            "debug HeadsetConfigImpl: upgrade_firmware: Success.",
        }),
        bench.lines());
    EXPECT_EQ(Calls{}, bench.driver_calls());
    EXPECT_EQ("1.2.4", config.pending_firmware);
}

TEST(FirmwareUpgrade, MissingVersionIsUnknownAndStillPasses) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.pending_firmware = "0-9";
    const JsonOwner firmware = parse(R"([{"firmwareName": "k20.bin"}])");

    EXPECT_TRUE(config.upgrade_firmware(firmware.get(), "1-2-3"));
    EXPECT_EQ(
        (Lines{
            "notice HeadsetConfigImpl: upgrade_firmware: received 1 entries for model firmware",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: ",
            "notice HeadsetConfigImpl: check_firmware_upgrade: FW ver candidate from "
            "Configuration: ",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-3",
            "notice HeadsetConfigImpl: check_firmware_upgrade: System info reported FW: 1-2-3",
            "info HeadsetConfigImpl: check_firmware_upgrade: firmware version is empty",
            "debug HeadsetConfigImpl: upgrade_firmware: Done",
            "debug HeadsetConfigImpl: upgrade_firmware: Success.",
        }),
        bench.lines());
    EXPECT_EQ(Calls{}, bench.driver_calls());
    EXPECT_EQ("", config.pending_firmware);
}

TEST(FirmwareUpgrade, HostIsAskedWithoutAnyLockHeld) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    int held = -1;
    std::string pending;
    bench.plugins.config_driver.hook = [&](const std::string& /*call*/) {
        held = bench.locks_held();
        pending = config.pending_firmware;
    };

    config.upgrade_firmware("1-2-4", "k20.bin", "1-2-3");

    EXPECT_EQ(0, held);
    EXPECT_EQ("1-2-4", pending);
}

TEST(FirmwareUpgrade, CandidateIsNotedUnderTheLock) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    bench.plugins.mutex_factory.throw_at_lock(1);

    EXPECT_THROW(config.upgrade_firmware("1-2-4", "k20.bin", "1-2-3"), std::runtime_error);
    EXPECT_EQ("", config.pending_firmware);
    EXPECT_EQ(Calls{}, bench.driver_calls());
}

}  // namespace
}  // namespace headsetmgmt::test_support
