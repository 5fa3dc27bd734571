// Tests of the details that a host reads from the library's log lines about a document: settings,
// the search for a model's entry, versions.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "program/phone/answer_judgement.h"

namespace headsetmgmt::program {
namespace {

using Texts = std::vector<std::string>;

constexpr char unable[] =
    "Lib::ConfigManagerImpl: on_fetch_config_success: unable to update config "
    "retrieved from server in library";

/// Shows the lines to a judgement, with a headset's name before each but the manager's.
AnswerJudgement judge(const Texts& lines) {
    AnswerJudgement judgement("");
    for (const std::string& line : lines) {
        judgement.on_line(line == unable ? line : "HeadsetConfigImpl: " + line);
    }
    return judgement;
}

Texts beginning(const std::string& model) {
    return {"update_from_server Enter:",
            "parse_remote_default_config: Current accessory plugged in: " + model};
}

Texts operator+(Texts left, const Texts& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

const Texts failed_search = {
    "save_model_specific_settings_params : Model_firmware_settings do not exist",
    "upgrade_firmware[PARSING-ERR]: Model_firmware_settings do not exist", unable};

Texts comparisons(const std::string& model, const Texts& names) {
    Texts lines = {"extract_model_firmware_settings: MODEL NAME " + model};
    for (const std::string& name : names) {
        std::string line = "extract_model_firmware_settings config_model_name: ";
        line.append(name).append(", device_model_name: ").append(model);
        lines.push_back(line);
    }
    return lines;
}

/// The reason of the one failure, after its model.
std::string failure(const AnswerJudgement& judged) {
    return judged.failures().size() == 1
               ? judged.failures().front().model + " - " + judged.failures().front().reason
               : std::to_string(judged.failures().size()) + " failures";
}

TEST(AnswerDetails, EachFaultOfASettingHasItsReason) {
    const AnswerJudgement judged =
        judge(beginning("M") +
              Texts{
                  ("save_config_to_map[KORM-ERR]: Parameter extracted has missing KEY name. Cannot "
                   "identify which parameter."),
                  "save_config_to_map[KORM-ERR]: Null Usage ID for param A",
                  "save_config_to_map[KORM-ERR]: Null Value for param B",
                  "save_config_to_map[KORM-ERR]: Invalid Access field for param C",
                  "save_config_to_map[KORM-ERR]: Invalid Usage ID for param D",
                  "save_config_to_map[KORM-ERR]: Invalid Value for param E: F",
              });

    Texts told;
    for (const PassedOverSetting& setting : judged.passed_over()) {
        told.push_back(setting.name + " - " + setting.reason);
    }
    EXPECT_EQ(
        (Texts{" - its name is missing, empty or no text", "A - its usageId is missing or null",
               "B - its value is missing or null", "C - its access is missing, empty or no text",
               "D - its usageId is neither a number nor a text of digits",
               "E: F - its value is neither a number nor a text"}),
        told);
}

TEST(AnswerDetails, SettingsAreOfTheFirmwareOnceItsEntryIsSearchedFor) {
    const AnswerJudgement judged = judge(
        beginning("M") + Texts{"save_config_to_map[KORM-ERR]: Null Value for param B"} +
        comparisons("M", {"M"}) + Texts{"save_config_to_map[KORM-ERR]: Null Value for param B"});

    ASSERT_EQ(2U, judged.passed_over().size());
    EXPECT_EQ("commonSettings", judged.passed_over()[0].list);
    EXPECT_EQ("firmwareParams", judged.passed_over()[1].list);
}

TEST(AnswerDetails, CommonSettingThatTwoAccessoriesPassOverIsOne) {
    const Texts one_turn = Texts{"save_config_to_map[KORM-ERR]: Null Value for param B",
                                 "update_from_server: success"};
    const AnswerJudgement judged = judge(beginning("M") + one_turn + beginning("N") + one_turn);

    ASSERT_EQ(1U, judged.passed_over().size());
    EXPECT_EQ((Texts{"M", "N"}), judged.passed_over()[0].models);
}

TEST(AnswerDetails, AlikeSettingsOfOneAccessoryAreTwo) {
    const Texts one_turn = Texts{"save_config_to_map[KORM-ERR]: Null Value for param B",
                                 "save_config_to_map[KORM-ERR]: Null Value for param B",
                                 "update_from_server: success"};
    const AnswerJudgement judged = judge(beginning("M") + one_turn + beginning("N") + one_turn);

    ASSERT_EQ(2U, judged.passed_over().size());
    EXPECT_EQ((Texts{"M", "N"}), judged.passed_over()[0].models);
    EXPECT_EQ((Texts{"M", "N"}), judged.passed_over()[1].models);
}

TEST(AnswerDetails, FirmwareSettingsOfTwoModelsAreTwo) {
    const Texts fault = {"save_config_to_map[KORM-ERR]: Null Value for param B"};
    const AnswerJudgement judged = judge(beginning("M") + comparisons("M", {"M"}) + fault +
                                         Texts{"update_from_server: success"} + beginning("N") +
                                         comparisons("N", {"N"}) + fault);

    ASSERT_EQ(2U, judged.passed_over().size());
    EXPECT_EQ((Texts{"M"}), judged.passed_over()[0].models);
    EXPECT_EQ((Texts{"N"}), judged.passed_over()[1].models);
}

TEST(AnswerDetails, SettingsPassedOverBeyondAHundredAreCounted) {
    const Texts fault = {"save_config_to_map[KORM-ERR]: Null Value for param B"};
    Texts faults;
    for (int i = 0; i < 150; ++i) {
        faults = faults + fault;
    }
    const AnswerJudgement judged =
        judge(beginning("M") + faults + comparisons("M", {"M"}) + fault +
              Texts{"update_from_server: success"} + beginning("N") + faults);

    EXPECT_EQ(151U, judged.passed_over_count());
    ASSERT_EQ(100U, judged.passed_over().size());
    EXPECT_EQ((Texts{"M", "N"}), judged.passed_over()[99].models);
}

TEST(AnswerDetails, AccessoriesThatLackASettingBeyondAHundredAreCounted) {
    Texts lines;
    for (int i = 0; i < 150; ++i) {
        lines = lines + beginning("M") +
                Texts{"save_config_to_map[KORM-ERR]: Null Value for param B",
                      "update_from_server: success"};
    }
    const AnswerJudgement judged = judge(lines);

    EXPECT_EQ(1U, judged.passed_over_count());
    ASSERT_EQ(1U, judged.passed_over().size());
    EXPECT_EQ(150U, judged.passed_over()[0].accessories);
    EXPECT_EQ(100U, judged.passed_over()[0].models.size());
}

TEST(AnswerDetails, SettingsWithoutAnEntryAreKeptButNotSent) {
    const AnswerJudgement judged =
        judge(beginning("M") + Texts{"save_config_to_map: Saved 3 settings. current map size: 12"} +
              comparisons("M", {"K"}) + failed_search);

    ASSERT_EQ(1U, judged.unsent().size());
    EXPECT_EQ("M", judged.unsent()[0].model);
    EXPECT_EQ(12, judged.unsent()[0].count);
    EXPECT_EQ("no entry of modelSpecificSettings serves it", judged.unsent()[0].reason);
}

TEST(AnswerDetails, SettingsBesideFirmwareWithoutAReadableOneAreKeptButNotSent) {
    const AnswerJudgement judged =
        judge(beginning("M") + Texts{"save_config_to_map: Saved 3 settings. current map size: 3"} +
              comparisons("M", {"M"}) +
              Texts{"save_config_to_map: Saved 0 settings. current map size: 3",
                    "apply_settings: Failed to apply current firmware version settings."});

    ASSERT_EQ(1U, judged.unsent().size());
    EXPECT_EQ("its firmwareParams have no setting that can be read", judged.unsent()[0].reason);
}

TEST(AnswerDetails, SettingsBesideFirmwareWithoutAnyAreKeptButNotSent) {
    const AnswerJudgement judged = judge(
        beginning("M") + Texts{"save_config_to_map: Saved 3 settings. current map size: 3"} +
        comparisons("M", {"M"}) + Texts{"apply_settings: No settings available for firmware"});

    ASSERT_EQ(1U, judged.unsent().size());
    EXPECT_EQ("the first entry of its modelFirmware has no firmwareParams",
              judged.unsent()[0].reason);
}

TEST(AnswerDetails, WithoutSettingsNoneAreUnsent) {
    const AnswerJudgement judged =
        judge(beginning("M") + Texts{"save_config_to_map: Saved 0 settings. current map size: 0",
                                     "apply_settings: Failed to apply current firmware version "
                                     "settings."});

    EXPECT_TRUE(judged.unsent().empty());
}

TEST(AnswerDetails, FailedSearchNamesWhatWasCompared) {
    EXPECT_EQ(
        "Varos K20 - no entry of modelSpecificSettings serves it; compared with "
        "\"Varos K30\", \"varos k20\"; capitals count",
        failure(judge(beginning("Varos K20") +
                      comparisons("Varos K20", {"Varos K30", "varos k20", ""}) + failed_search)));
}

TEST(AnswerDetails, FailedSearchNamesTheFirstEightNamesOnly) {
    EXPECT_EQ("M - no entry of modelSpecificSettings serves it; compared with "
              "\"1\", \"2\", \"3\", \"4\", \"5\", \"6\", \"7\", \"8\" and 2 more; capitals count",
              failure(judge(beginning("M") +
                            comparisons("M", {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"}) +
                            failed_search)));
}

TEST(AnswerDetails, FailedSearchWithoutNamesSaysSo) {
    EXPECT_EQ("M - no entry of modelSpecificSettings serves it; not one has an array \"models\" "
              "with a name in it",
              failure(judge(beginning("M") + comparisons("M", {}) + failed_search)));
    EXPECT_EQ("M - no entry of modelSpecificSettings serves it; not one has an array \"models\" "
              "with a name in it",
              failure(judge(beginning("M") + comparisons("M", {"", ""}) + failed_search)));
}

TEST(AnswerDetails, TemplateWithoutEntriesMayBeTheWrongOne) {
    EXPECT_EQ("M - the template has no modelSpecificSettings; is templateConfiguration the first "
              "member of its object?",
              failure(judge(beginning("M") + comparisons("M", {}) +
                            Texts{"extract_model_firmware_settings[KORM-ERR]: Model specific "
                                  "settings not found in config"} +
                            failed_search)));
}

TEST(AnswerDetails, EntryThatServesButHasNoFirmwareIsTheReason) {
    EXPECT_EQ("Varos K30 - its entry has no modelFirmware",
              failure(judge(beginning("Varos K30") + comparisons("Varos K30", {"Eye", "K30"}) +
                            failed_search)));
}

TEST(AnswerDetails, SearchForADongleIsItsOwn) {
    EXPECT_EQ("Varos K30 - dongle Varos Link: no entry of modelSpecificSettings serves it; "
              "compared with \"Varos K\"; capitals count",
              failure(judge(beginning("Varos K30") + comparisons("Varos K30", {"Varos K"}) +
                            comparisons("Varos Link", {"Varos K"}) +
                            Texts{"parse_remote_default_config: found dongle [Varos Link], will "
                                  "upgrade dongle only",
                                  "upgrade_firmware[PARSING-ERR]: Model_firmware_settings do not "
                                  "exist",
                                  unable})));
}

TEST(AnswerDetails, DecisionHasItsAccessoryAndItsVersions) {
    const AnswerJudgement judged =
        judge(beginning("Varos K30") +
              Texts{"parse_remote_default_config: found dongle [Varos Link], will upgrade dongle "
                    "only",
                    "check_firmware_upgrade: FW ver candidate from Configuration: 1-0-0",
                    "check_firmware_upgrade: System info reported FW: 2-0-4",
                    "upgrade_firmware: Requesting upgrade to 1-0-0"});

    ASSERT_EQ(1U, judged.firmware_decisions().size());
    const FirmwareDecision& firmware = judged.firmware_decisions().front();
    EXPECT_EQ("Varos K30", firmware.model);
    EXPECT_EQ("Varos Link", firmware.dongle_model);
    EXPECT_EQ("upgrade requested to 1-0-0", firmware.decision);
    EXPECT_EQ("2-0-4", firmware.reported);
    EXPECT_EQ("1-0-0", firmware.wanted);
}

TEST(AnswerDetails, DecisionOfOneAccessoryHasNothingOfTheOneBefore) {
    const AnswerJudgement judged =
        judge(beginning("M") +
              Texts{"check_firmware_upgrade: System info reported FW: 1-1",
                    "update_from_server: success"} +
              beginning("N") +
              Texts{"upgrade_firmware: Legacy Flow - delegate upgrade to config driver"});

    ASSERT_EQ(1U, judged.firmware_decisions().size());
    EXPECT_EQ("N", judged.firmware_decisions().front().model);
    EXPECT_FALSE(judged.firmware_decisions().front().reported.has_value());
}

std::string decision_on(const std::string& wanted, const std::string& reported,
                        const Texts& lines) {
    const AnswerJudgement judged =
        judge(beginning("M") +
              Texts{"check_firmware_upgrade: FW ver candidate from Configuration: " + wanted,
                    "check_firmware_upgrade: System info reported FW: " + reported} +
              lines);
    return judged.firmware_decisions().size() == 1 ? judged.firmware_decisions().front().decision
                                                   : "not one decision";
}

TEST(AnswerDetails, RefusedSpellingOfAVersionIsToldAsSuch) {
    EXPECT_EQ(
        "\"2.1.0\" is no version (letters, digits and hyphens), so 2-0-4 stays",
        decision_on("2.1.0", "2-0-4",
                    {"check_firmware_upgrade: naming format not supported, candidate<2.1.0>, "
                     "reported<2-0-4>",
                     "upgrade_firmware: No upgrade required. This firmware's settings have been "
                     "applied."}));
}

TEST(AnswerDetails, MissingVersionIsToldByWhoseItIs) {
    const Texts empty = {"check_firmware_upgrade: firmware version is empty"};

    EXPECT_EQ("none: the document tells no version, or one that is no text",
              decision_on("", "1-0", empty));
    EXPECT_EQ("none: the accessory tells no version", decision_on("1-0", "", empty));
    EXPECT_EQ(
        "none: the document tells no version, or one that is no text, and the accessory tells none",
        decision_on("", "", empty));
}

}  // namespace
}  // namespace headsetmgmt::program
