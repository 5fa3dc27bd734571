// Tests of what a host reads from the library's log lines about a document that it handed in.

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "program/phone/answer_judgement.h"

namespace headsetmgmt::program {
namespace {

using Texts = std::vector<std::string>;

constexpr char unable[] =
    "Lib::ConfigManagerImpl: on_fetch_config_success: unable to update config "
    "retrieved from server in library";

AnswerJudgement judge(const Texts& lines, std::string_view document = "") {
    AnswerJudgement judgement(document);
    for (const std::string& line : lines) {
        judgement.on_line(line);
    }
    return judgement;
}

Texts reasons(const AnswerJudgement& judged) {
    Texts texts;
    for (const DocumentFailure& failure : judged.failures()) {
        texts.push_back(failure.reason);
    }
    return texts;
}

Texts decisions(const AnswerJudgement& judged) {
    Texts texts;
    for (const FirmwareDecision& firmware : judged.firmware_decisions()) {
        texts.push_back(firmware.decision);
    }
    return texts;
}

TEST(AnswerJudgement, NoLinesAreNoVerdict) {
    const AnswerJudgement judged = judge({});

    EXPECT_EQ(0, judged.taken());
    EXPECT_EQ(Texts{}, reasons(judged));
    EXPECT_FALSE(judged.was_dropped());
    EXPECT_EQ(Texts{}, decisions(judged));
}

TEST(AnswerJudgement, DocumentWithAnUpgradeIsTaken) {
    const AnswerJudgement judged = judge({
        "HeadsetConfigImpl: update_from_server Enter:",
        "HeadsetConfigImpl: parse_remote_default_config Enter:",
        "HeadsetConfigImpl: parse_remote_default_config parsed updated_time:",
        "HeadsetConfigImpl: parse_remote_default_config: Current accessory plugged in: Varos K20",
        "HeadsetConfigImpl: parse_remote_default_config: Updated time: 1700",
        "HeadsetConfigImpl: save_common_settings_params: success",
        "HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K20",
        "HeadsetConfigImpl: extract_model_firmware_settings config_model_name: Varos, "
        "device_model_name: Varos K20",
        "HeadsetConfigImpl: save_model_specific_settings_params: Success.",
        "HeadsetConfigImpl: upgrade_firmware: received 3 entries for model firmware",
        "HeadsetConfigImpl: check_firmware_upgrade: FW ver candidate from Configuration: 2-1-0",
        "HeadsetConfigImpl: check_firmware_upgrade: System info reported FW: 2-0-4",
        "HeadsetConfigImpl: upgrade_firmware: Requesting upgrade to 2-1-0",
        "HeadsetConfigImpl: upgrade_firmware: Done",
        "HeadsetConfigImpl: upgrade_firmware: Success.",
        "HeadsetConfigImpl: parse_remote_default_config: Success",
        "HeadsetConfigImpl: update_from_server: success",
        "Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
        "Lib::ConfigManagerImpl: on_fetch_config_successExit",
    });

    EXPECT_EQ(1, judged.taken());
    EXPECT_EQ(Texts{}, reasons(judged));
    EXPECT_FALSE(judged.was_dropped());
    EXPECT_EQ((Texts{"upgrade requested to 2-1-0"}), decisions(judged));
}

TEST(AnswerJudgement, CameraTakesADocumentToo) {
    const AnswerJudgement judged = judge({
        "CameraConfigImpl: update_from_server Enter:",
        "CameraConfigImpl: upgrade_firmware: Requesting upgrade to 3-0-2",
        "CameraConfigImpl: update_from_server: success",
    });

    EXPECT_EQ(1, judged.taken());
    EXPECT_EQ((Texts{"upgrade requested to 3-0-2"}), decisions(judged));
}

TEST(AnswerJudgement, AnswerThatNobodyAwaitsIsDropped) {
    const AnswerJudgement judged = judge({
        "Lib::ConfigManagerImpl: on_fetch_config_success: no configuration in progress, dropping "
        "data",
    });

    EXPECT_TRUE(judged.was_dropped());
    EXPECT_EQ(0, judged.taken());
    EXPECT_EQ(Texts{}, reasons(judged));
}

TEST(AnswerJudgement, EmptyDocumentFailsAsEmpty) {
    const AnswerJudgement judged =
        judge({"HeadsetConfigImpl: update_from_server: Nothing to parse", unable});

    EXPECT_EQ(0, judged.taken());
    EXPECT_EQ((Texts{"the document is empty (0 bytes)"}), reasons(judged));
}

// What is told of a text that cannot be parsed is the text itself.
TEST(AnswerJudgement, UnparsableDocumentThatReadsNothingToParseIsNotEmpty) {
    const AnswerJudgement judged = judge(
        {"HeadsetConfigImpl: update_from_server: Nothing to parse", unable}, "Nothing to parse");

    EXPECT_EQ((Texts{"no JSON: line 1, column 1: \"Nothing to parse\""}), reasons(judged));
}

TEST(AnswerJudgement, UnparsableDocumentFailsWithThePlaceOfTheError) {
    const AnswerJudgement judged = judge(
        {"HeadsetConfigImpl: update_from_server: 502: no</html>", unable}, "[1,\n  502: no</html>");

    EXPECT_EQ(0, judged.taken());
    EXPECT_EQ((Texts{"no JSON: line 2, column 3: \"502: no</html>\""}), reasons(judged));
}

TEST(AnswerJudgement, UnparsableDocumentFailsForEachAccessoryAlike) {
    const AnswerJudgement judged = judge({"HeadsetConfigImpl: update_from_server: oops", unable,
                                          "CameraConfigImpl: update_from_server: oops", unable},
                                         "oops");

    EXPECT_EQ((Texts{"no JSON: line 1, column 1: \"oops\"", "no JSON: line 1, column 1: \"oops\""}),
              reasons(judged));
}

// The parser fails at the place where memory ran out.
TEST(AnswerJudgement, LackOfMemoryIsNoFaultOfTheDocument) {
    AnswerJudgement judged("[1,\n  2]");
    judged.on_lack_of_memory();
    judged.on_line("HeadsetConfigImpl: update_from_server: 2]");
    judged.on_line(unable);
    judged.on_line("CameraConfigImpl: update_from_server Enter:");
    judged.on_line("CameraConfigImpl: update_from_server: success");

    EXPECT_EQ((Texts{"memory ran out while the library read the document"}), reasons(judged));
    EXPECT_EQ(1, judged.taken());
}

TEST(AnswerJudgement, WhatTheLibraryThrewIsTheReason) {
    const AnswerJudgement judged =
        judge({"HeadsetConfigImpl: update_from_server Enter:",
               "Lib::ConfigManagerImpl: on_fetch_config_success: std::bad_alloc", unable});

    EXPECT_EQ(0, judged.taken());
    EXPECT_EQ((Texts{"std::bad_alloc"}), reasons(judged));
}

// What is told of a text that cannot be parsed is the text itself.
TEST(AnswerJudgement, UnparsableDocumentThatReadsSuccessIsNotTaken) {
    const AnswerJudgement judged =
        judge({"HeadsetConfigImpl: update_from_server: success", unable}, "success");

    EXPECT_EQ(0, judged.taken());
    EXPECT_EQ((Texts{"no JSON: line 1, column 1: \"success\""}), reasons(judged));
}

TEST(AnswerJudgement, DocumentWithoutATemplateFailsWithTheFirstOfItsTwoLines) {
    const AnswerJudgement judged = judge({
        "HeadsetConfigImpl: update_from_server Enter:",
        "HeadsetConfigImpl: update_from_server: No template config found.",
        "HeadsetConfigImpl: update_from_server: No config found.",
        unable,
    });

    EXPECT_EQ((Texts{"No template config found."}), reasons(judged));
}

TEST(AnswerJudgement, DocumentWithoutFirmwareForTheModelFails) {
    const AnswerJudgement judged = judge({
        "HeadsetConfigImpl: update_from_server Enter:",
        "HeadsetConfigImpl: parse_remote_default_config: Model specific settings were not saved",
        "HeadsetConfigImpl: upgrade_firmware[PARSING-ERR]: Model_firmware_settings do not exist",
        "HeadsetConfigImpl: parse_remote_default_config: Failed",
        "HeadsetConfigImpl: update_from_server: Parsing remote config failed.",
        unable,
    });

    EXPECT_EQ((Texts{"Model_firmware_settings do not exist"}), reasons(judged));
    EXPECT_EQ(Texts{}, decisions(judged));
}

TEST(AnswerJudgement, FirmwareIsTheReasonOfADocumentThatHasNoSettingsEither) {
    const AnswerJudgement judged = judge({
        "HeadsetConfigImpl: update_from_server Enter:",
        "HeadsetConfigImpl: parse_remote_default_config[PARSING-ERR]: No settings found to save.",
        "HeadsetConfigImpl: upgrade_firmware[PARSING-ERR]: Model_firmware_settings do not exist",
        "HeadsetConfigImpl: parse_remote_default_config: Failed",
        "HeadsetConfigImpl: update_from_server: Parsing remote config failed.",
        unable,
    });

    EXPECT_EQ((Texts{"Model_firmware_settings do not exist"}), reasons(judged));
}

TEST(AnswerJudgement, FirmwareWithoutANameFails) {
    const AnswerJudgement judged = judge({
        "CameraConfigImpl: update_from_server Enter:",
        "CameraConfigImpl: upgrade_firmware: received 0 entries for model firmware",
        "CameraConfigImpl: upgrade_firmware[KORM-ERR]: no/null firmare name in JSON",
        "CameraConfigImpl: parse_remote_default_config: Failed",
        "CameraConfigImpl: update_from_server: Parsing remote config failed.",
        unable,
    });

    EXPECT_EQ((Texts{"its modelFirmware has no entries"}), reasons(judged));
}

TEST(AnswerJudgement, FailureThatNoLineExplainsIsSaidToBeUnexplained) {
    const AnswerJudgement judged = judge({unable});

    EXPECT_EQ((Texts{"not said"}), reasons(judged));
}

TEST(AnswerJudgement, EqualVersionsNeedNoUpgrade) {
    const AnswerJudgement judged = judge({
        "HeadsetConfigImpl: check_firmware_upgrade: versions are the same, do nothing",
        "HeadsetConfigImpl: upgrade_firmware: No upgrade required. This firmware's settings have "
        "been applied.",
    });

    EXPECT_EQ((Texts{"no upgrade required"}), decisions(judged));
}

TEST(AnswerJudgement, RefusedDowngradeIsADecision) {
    const AnswerJudgement judged = judge({
        "HeadsetConfigImpl: upgrade_firmware: No support for firmware downgrade. Exiting.",
    });

    EXPECT_EQ((Texts{"downgrade refused"}), decisions(judged));
}

// The line has no separator.
TEST(AnswerJudgement, CurrentVersionStays) {
    const AnswerJudgement judged =
        judge({"HeadsetConfigImpl: upgrade_firmwarestay on current version, skip upgrade"});

    EXPECT_EQ((Texts{"stays on the current version, as the document says"}), decisions(judged));
}

TEST(AnswerJudgement, LatestFirmwareIsLeftToThePhone) {
    const AnswerJudgement judged = judge({
        "HeadsetConfigImpl: upgrade_firmware: Legacy Flow - delegate upgrade to config driver",
    });

    EXPECT_EQ((Texts{"left to the phone"}), decisions(judged));
}

TEST(AnswerJudgement, VersionThatNobodyTellsIsNoDecision) {
    const AnswerJudgement judged =
        judge({"HeadsetConfigImpl: check_firmware_upgrade: firmware version is empty"});

    EXPECT_EQ((Texts{"none: the document or the accessory tells no version"}), decisions(judged));
}

TEST(AnswerJudgement, TwoAccessoriesThatTakeADocumentBothCount) {
    const AnswerJudgement judged = judge({
        "HeadsetConfigImpl: update_from_server Enter:",
        "HeadsetConfigImpl: upgrade_firmware: Requesting upgrade to 2-1-0",
        "HeadsetConfigImpl: update_from_server: success",
        "CameraConfigImpl: update_from_server Enter:",
        "CameraConfigImpl: upgrade_firmwarestay on current version, skip upgrade",
        "CameraConfigImpl: update_from_server: success",
    });

    EXPECT_EQ(2, judged.taken());
    EXPECT_EQ(Texts{}, reasons(judged));
    EXPECT_EQ(
        (Texts{"upgrade requested to 2-1-0", "stays on the current version, as the document says"}),
        decisions(judged));
}

TEST(AnswerJudgement, AccessoriesMayFareDifferentlyWithOneDocument) {
    const AnswerJudgement judged = judge({
        "CameraConfigImpl: update_from_server Enter:",
        "CameraConfigImpl: upgrade_firmware[PARSING-ERR]: Model_firmware_settings do not exist",
        "CameraConfigImpl: update_from_server: Parsing remote config failed.",
        unable,
        "HeadsetConfigImpl: update_from_server Enter:",
        "HeadsetConfigImpl: upgrade_firmware: Requesting upgrade to 2-1-0",
        "HeadsetConfigImpl: update_from_server: success",
    });

    EXPECT_EQ(1, judged.taken());
    EXPECT_EQ((Texts{"Model_firmware_settings do not exist"}), reasons(judged));
}

TEST(AnswerJudgement, EachFailureHasTheReasonOfItsOwnAccessory) {
    const AnswerJudgement judged = judge({
        "HeadsetConfigImpl: update_from_server Enter:",
        "HeadsetConfigImpl: upgrade_firmware[KORM-ERR]: no/null firmare name in JSON",
        "HeadsetConfigImpl: update_from_server: Parsing remote config failed.",
        unable,
        "CameraConfigImpl: update_from_server Enter:",
        "CameraConfigImpl: upgrade_firmware[PARSING-ERR]: Model_firmware_settings do not exist",
        "CameraConfigImpl: update_from_server: Parsing remote config failed.",
        unable,
        unable,
    });

    EXPECT_EQ(
        (Texts{"the first entry of its modelFirmware has no firmwareName, or one that is no text",
               "Model_firmware_settings do not exist", "not said"}),
        reasons(judged));
}

TEST(AnswerJudgement, AccessoryThatLacksSettingsButTookTheDocumentLeavesNoReason) {
    const AnswerJudgement judged = judge({
        "HeadsetConfigImpl: update_from_server Enter:",
        "HeadsetConfigImpl: parse_remote_default_config[PARSING-ERR]: No settings found to save.",
        "HeadsetConfigImpl: upgrade_firmware: Requesting upgrade to 2-1-0",
        "HeadsetConfigImpl: update_from_server: success",
        unable,
    });

    EXPECT_EQ(1, judged.taken());
    EXPECT_EQ((Texts{"not said"}), reasons(judged));
}

TEST(AnswerJudgement, LinesOfOtherComponentsSayNothing) {
    const AnswerJudgement judged = judge({
        "update_from_server: success",
        ": update_from_server: success",
        "Lib::ConfigManagerImpl: update_from_server: success",
        "InventoryMetricImpl: upgrade_firmware: Requesting upgrade to 9-9-9",
        "Lib::ConfigManagerImpl: on_fetch_config_failure: no configuration in progress, dropping "
        "data",
        "HeadsetConfigImpl: on_fetch_config_success: no configuration in progress, dropping data",
    });

    EXPECT_EQ(0, judged.taken());
    EXPECT_EQ(Texts{}, reasons(judged));
    EXPECT_FALSE(judged.was_dropped());
    EXPECT_EQ(Texts{}, decisions(judged));
}

}  // namespace
}  // namespace headsetmgmt::program
