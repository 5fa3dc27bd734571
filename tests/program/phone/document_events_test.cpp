// Tests of the events that tell what became of a document.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "program/phone/document_events.h"

namespace headsetmgmt::program {
namespace {

AccessoryCache headset(const std::string& id, const std::string& model,
                       const std::string& serial_number) {
    AccessoryCache facts;
    facts.device_id = id;
    facts.model = model;
    facts.serial_number = serial_number;
    return facts;
}

const AccessoryCache k20 = headset("desk", "Varos K30", "ABCDEFG4");
const AccessoryCache k30 = headset("sofa", "Varos K30", "ABCDEFG5");

/// A judgement of a headset's lines.
AnswerJudgement judge(const std::vector<std::string>& lines) {
    AnswerJudgement judged("");
    for (const std::string& line : lines) {
        judged.on_line("HeadsetConfigImpl: " + line);
    }
    return judged;
}

AnswerJudgement failure_of(const std::string& model) {
    AnswerJudgement judged =
        judge({"update_from_server Enter:",
               "parse_remote_default_config: Current accessory plugged in: " + model,
               "update_from_server: No reason"});
    judged.on_line("Lib::ConfigManagerImpl: on_fetch_config_success: unable to update config "
                   "retrieved from server in library");
    return judged;
}

AnswerJudgement decision_on(const std::string& model) {
    return judge({"update_from_server Enter:",
                  "parse_remote_default_config: Current accessory plugged in: " + model,
                  "check_firmware_upgrade: FW ver candidate from Configuration: 2-1-0",
                  "check_firmware_upgrade: System info reported FW: 2-0-4",
                  "upgrade_firmware: Requesting upgrade to 2-1-0"});
}

TEST(DocumentEvents, DecisionHasTheIdOfTheOnlyAccessoryOfItsModel) {
    const Event expected = {{"event", "firmware"}, {"model", "Varos K20"},
                            {"id", "desk"},        {"decision", "upgrade requested to 2-1-0"},
                            {"reported", "2-0-4"}, {"wanted", "2-1-0"}};

    EXPECT_EQ((std::vector<Event>{expected}),
              firmware_events(decision_on("Varos K20"), {k20, k30}));
}

TEST(DocumentEvents, DecisionOnOneOfTwoOfAModelHasNoId) {
    const std::vector<Event> events =
        firmware_events(decision_on("Varos K20"), {k20, headset("bed", "Varos K20", "1")});

    ASSERT_EQ(1U, events.size());
    EXPECT_EQ("Varos K20", events[0].value("model", ""));
    EXPECT_FALSE(events[0].contains("id"));
}

TEST(DocumentEvents, DecisionOnADongleNamesIt) {
    const std::vector<Event> events = firmware_events(
        judge({"update_from_server Enter:",
               "parse_remote_default_config: found dongle [Varos Link], will upgrade dongle only",
               "upgrade_firmware: Legacy Flow - delegate upgrade to config driver"}),
        {k20});
    const Event expected = {
        {"event", "firmware"}, {"dongleModel", "Varos Link"}, {"decision", "left to the phone"}};

    EXPECT_EQ((std::vector<Event>{expected}), events);
}

TEST(DocumentEvents, FailureSaysThatItsModelIsReportedAsAnother) {
    const Event expected = {
        {"event", "document"},
        {"taken", 0},
        {"failed", 1},
        {"reasons",
         {"Varos K20 (reported as Varos K30: the eighth character of its serial number is a 4): No "
          "reason"}},
        {"failures", Event::array({{{"model", "Varos K20"},
                                    {"id", "desk"},
                                    {"reportedModel", "Varos K30"},
                                    {"reason", "No reason"}}})}};

    EXPECT_EQ(expected, document_event(failure_of("Varos K20"), {k20, k30}));
}

TEST(DocumentEvents, FailureOfAModelThatOneOfTwoReportsAsAnotherDoesNotSaySo) {
    const AccessoryCache bed = headset("bed", "Varos K20", "1");

    EXPECT_EQ((Event{"Varos K20: No reason"}),
              document_event(failure_of("Varos K20"), {k20, bed})["reasons"]);
    EXPECT_EQ((Event{"Varos K20: No reason"}),
              document_event(failure_of("Varos K20"), {bed, k20})["reasons"]);
}

TEST(DocumentEvents, FailureWithoutAModelIsItsReason) {
    const Event told = document_event(failure_of(""), {k20});

    EXPECT_EQ((Event{"No reason"}), told["reasons"]);
    EXPECT_EQ((Event::array({{{"reason", "No reason"}}})), told["failures"]);
}

TEST(DocumentEvents, PassedOverAndUnsentSettingsHaveTheirAccessories) {
    const AnswerJudgement judged = judge(
        {"update_from_server Enter:",
         "parse_remote_default_config: Current accessory plugged in: Varos K20",
         "save_config_to_map[KORM-ERR]: Null Value for param T",
         ("save_config_to_map[KORM-ERR]: Parameter extracted has missing KEY name. Cannot "
          "identify which parameter."),
         "save_config_to_map: Saved 2 settings. current map size: 2",
         "apply_settings: No settings available for firmware", "update_from_server: success"});
    const Event desk = {{"model", "Varos K20"}, {"id", "desk"}};
    const Event expected = {
        {"event", "document"},
        {"taken", 1},
        {"failed", 0},
        {"notSent",
         Event::array(
             {{{"model", "Varos K20"},
               {"id", "desk"},
               {"settings", 2},
               {"reason", "the first entry of its modelFirmware has no firmwareParams"}}})},
        {"settingsPassedOver", 2},
        {"passedOver", Event::array({{{"list", "commonSettings"},
                                      {"name", "T"},
                                      {"reason", "its value is missing or null"},
                                      {"accessories", Event::array({desk})},
                                      {"lackedBy", 1}},
                                     {{"list", "commonSettings"},
                                      {"reason", "its name is missing, empty or no text"},
                                      {"accessories", Event::array({desk})},
                                      {"lackedBy", 1}}})}};

    EXPECT_EQ(expected, document_event(judged, {k20}));
}

TEST(DocumentEvents, DroppedDocumentSaysSo) {
    AnswerJudgement judged("");
    judged.on_line("Lib::ConfigManagerImpl: on_fetch_config_success: no configuration in progress, "
                   "dropping data");

    const Event expected = {{"event", "document"}, {"taken", 0}, {"failed", 0}, {"dropped", true}};
    EXPECT_EQ(expected, document_event(judged, {k20}));
}

}  // namespace
}  // namespace headsetmgmt::program
