// SPDX-License-Identifier: Apache-2.0
// Tests of the events about a document that was handed over.

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
    facts.software_version = "2-0-4";
    return facts;
}

const AccessoryCache k20 = headset("desk", "Varos K30", "ABCDEFG4");
const AccessoryCache k30 = headset("sofa", "Varos K30", "ABCDEFG5");

/// The document handed over to these, who took it unless it fails for them.
HandedOver hand_over(const std::string& text, const std::vector<AccessoryCache>& accessories) {
    HandedOver handed_over;
    handed_over.outcome = read_document(text, accessories, settings_in_an_event);
    for (std::size_t i = 0; i < accessories.size(); ++i) {
        const bool is_taken = handed_over.outcome.accessories[i].failure.empty();
        handed_over.turns.push_back({accessories[i], is_taken, false});
    }
    return handed_over;
}

/// A document for every Varos model.
std::string with_settings(const std::string& common, const std::string& of_model) {
    return R"({"templateConfiguration": {"commonSettings": [)" + common +
           R"(],
"modelSpecificSettings": [{"models": ["Varos"], "modelFirmware": [
{"firmwareName": "a.img", "firmwareVersion": "2-1-0", "firmwareParams": [)" +
           of_model + "]}]}]}}";
}

constexpr char sent_setting[] = R"({"name": "S", "usageId": 34, "value": 1, "access": "Admin"})";

TEST(DocumentEvents, DecisionHasItsAccessoryAndBothVersions) {
    const Event expected = {{"event", "firmware"}, {"model", "Varos K20"},
                            {"id", "desk"},        {"decision", "upgrade requested to 2-1-0"},
                            {"reported", "2-0-4"}, {"wanted", "2-1-0"},
                            {"requested", true}};

    EXPECT_EQ((std::vector<Event>{expected}),
              firmware_events(hand_over(with_settings("", ""), {k20})));
}

TEST(DocumentEvents, DecisionOnADongleNamesIt) {
    AccessoryCache with_dongle = k20;
    with_dongle.dongle_model = "Varos Link";
    const std::string text = R"({"templateConfiguration": {"modelSpecificSettings": [
        {"models": ["Link"], "modelFirmware": [{"firmwareName": "LATEST"}]}]}})";
    const Event expected = {{"event", "firmware"},
                            {"model", "Varos K20"},
                            {"id", "desk"},
                            {"dongleModel", "Varos Link"},
                            {"decision", "no upgrade requested: the document says LATEST"}};

    EXPECT_EQ((std::vector<Event>{expected}), firmware_events(hand_over(text, {with_dongle})));
}

TEST(DocumentEvents, FailureSaysThatItsModelIsReportedAsAnother) {
    const std::string text = R"({"templateConfiguration": {}})";
    const std::string reason =
        "the template has no modelSpecificSettings; is templateConfiguration "
        "the first member of its object?";
    const Event expected = {
        {"event", "document"},
        {"taken", 0},
        {"failed", 2},
        {"reasons",
         {"desk (Varos K20, reported as Varos K30: the eighth character of its serial number is a "
          "4): " +
              reason,
          "sofa (Varos K30): " + reason}},
        {"failures", Event::array({{{"model", "Varos K20"},
                                    {"id", "desk"},
                                    {"reportedModel", "Varos K30"},
                                    {"reason", reason}},
                                   {{"model", "Varos K30"}, {"id", "sofa"}, {"reason", reason}}})}};

    EXPECT_EQ(expected, document_event(hand_over(text, {k20, k30})));
}

TEST(DocumentEvents, FailureOfTheDocumentItselfIsNoAccessorys) {
    const Event event = document_event(hand_over("oops", {k20}));

    EXPECT_EQ((Event{"no JSON: line 1, column 1: \"oops\""}), event["reasons"]);
    EXPECT_EQ((Event::array({{{"reason", "no JSON: line 1, column 1: \"oops\""}}})),
              event["failures"]);
}

TEST(DocumentEvents, FirstHundredOfEitherListThatCannotBeReadAreListed) {
    const auto faulty = [](int count) {
        std::string list = "1";
        for (int i = 1; i < count; ++i) {
            list += ",1";
        }
        return list;
    };

    const Event event = document_event(hand_over(with_settings(faulty(150), faulty(105)), {k20}));

    EXPECT_EQ(255, event["settingsPassedOver"]);
    ASSERT_EQ(200U, event["passedOver"].size());
    EXPECT_EQ("commonSettings", event["passedOver"][99]["list"]);
    EXPECT_EQ("firmwareParams", event["passedOver"][100]["list"]);
}

TEST(DocumentEvents, LongNamesAreCut) {
    const std::string name(300, 'n');
    const std::string cut = std::string(200, 'n') + "... (300 bytes)";
    const std::string faulty = R"({"name": ")" + name + R"("})";
    const std::string unserved =
        R"({"templateConfiguration": {"modelSpecificSettings": [{"models": [")" + name +
        R"("]}]}})";

    const Event read = document_event(hand_over(with_settings(faulty, ""), {k20}));
    const Event failed = document_event(hand_over(unserved, {k30}));

    EXPECT_EQ(cut, read["passedOver"][0]["name"]);
    EXPECT_EQ("no entry of modelSpecificSettings serves it; compared with \"" + cut +
                  "\"; capitals count",
              failed["failures"][0]["reason"]);
}

TEST(DocumentEvents, LackOfMemoryIsNoFaultOfTheDocument) {
    HandedOver handed_over = hand_over(with_settings("1", ""), {k20, k30});
    handed_over.turns[0].is_taken = false;
    handed_over.turns[0].lacks_memory = true;

    const Event event = document_event(handed_over);

    EXPECT_EQ((Event{"desk (Varos K20, reported as Varos K30: the eighth character of its serial "
                     "number is a 4): memory ran out while the library read the document"}),
              event["reasons"]);
    EXPECT_EQ((Event::array({{{"model", "Varos K20"},
                              {"id", "desk"},
                              {"reportedModel", "Varos K30"},
                              {"reason", "memory ran out while the library read the document"}}})),
              event["failures"]);
    EXPECT_EQ(1, event["taken"]);
    EXPECT_EQ(1, event["passedOver"][0]["lackedBy"]);
    EXPECT_EQ(1U, firmware_events(handed_over).size());
}

TEST(DocumentEvents, FailureThatTheReaderDoesNotKnowIsUnexplained) {
    HandedOver handed_over = hand_over(with_settings("", ""), {k30});
    handed_over.turns[0].is_taken = false;

    EXPECT_EQ((Event{"sofa (Varos K30): the library does not say why"}),
              document_event(handed_over)["reasons"]);
}

TEST(DocumentEvents, AccessoryWithoutAModelIsNamedByItsId) {
    const Event event = document_event(
        hand_over(R"({"templateConfiguration": {"a": 1}})", {headset("desk", "", "ABCDEFG5")}));

    EXPECT_EQ((Event{"desk (model unknown): the template has no modelSpecificSettings; is "
                     "templateConfiguration the first member of its object?"}),
              event["reasons"]);
}

TEST(DocumentEvents, FailuresAndUnsentSettingsBeyondAHundredAreCounted) {
    const std::string text = R"({"templateConfiguration": {"commonSettings": [)" +
                             std::string(sent_setting) + R"(], "modelSpecificSettings": []}})";
    const std::vector<AccessoryCache> many(150, k30);

    const Event event = document_event(hand_over(text, many));

    EXPECT_EQ(150, event["failed"]);
    EXPECT_EQ(100U, event["reasons"].size());
    EXPECT_EQ(100U, event["failures"].size());
    EXPECT_EQ(150, event["keptUnsent"]);
    EXPECT_EQ(100U, event["notSent"].size());
}

TEST(DocumentEvents, UnsentSettingsAreTheCommonOnesWhateverTheReason) {
    const std::string text = R"({"templateConfiguration": {"commonSettings": [)" +
                             std::string(sent_setting) +
                             R"(], "modelSpecificSettings": [
        {"models": ["K20"], "modelFirmware": [{"firmwareName": "a", "firmwareParams": [{}]}]},
        {"models": ["Eye"]}]}})";

    const Event event = document_event(
        hand_over(text, {k20, k30, headset("room", "Varos Eye 2", "CM000991"), k20}));

    ASSERT_EQ(4U, event["notSent"].size());
    for (const Event& unsent : event["notSent"]) {
        EXPECT_EQ(1, unsent["settings"]);
    }
    EXPECT_EQ("its firmwareParams have no setting that can be read", event["notSent"][0]["reason"]);
    EXPECT_EQ("no entry of modelSpecificSettings serves it", event["notSent"][1]["reason"]);
    EXPECT_EQ("its entry has no modelFirmware", event["notSent"][2]["reason"]);
}

TEST(DocumentEvents, EntriesThatServeHaveTheirPlaces) {
    AccessoryCache with_dongle = k30;
    with_dongle.dongle_model = "Varos Link";
    const Event event = document_event(hand_over(with_settings("", ""), {k20, with_dongle}));
    const Event place = {{"entry", 0}, {"name", "Varos"}, {"line", 2}, {"column", 27}};
    Event desk = {{"model", "Varos K20"}, {"id", "desk"}};
    desk.update(place);
    Event sofa = {{"model", "Varos K30"}, {"id", "sofa"}};
    sofa.update(place);
    Event dongle = {{"model", "Varos K30"}, {"id", "sofa"}, {"dongleModel", "Varos Link"}};
    dongle.update(place);

    EXPECT_EQ((Event{desk, sofa, dongle}), event["entries"]);
    EXPECT_EQ(3, event["served"]);
}

TEST(DocumentEvents, EntriesBeyondAHundredAreCounted) {
    std::vector<AccessoryCache> many(150, k30);

    const Event event = document_event(hand_over(with_settings("", ""), many));

    EXPECT_EQ(100U, event["entries"].size());
    EXPECT_EQ(150, event["served"]);
}

TEST(DocumentEvents, PassedOverAndUnsentSettingsHaveTheirAccessories) {
    const Event event = document_event(hand_over(
        with_settings(
            R"({"name": "T", "usageId": 1}, {"usageId": 1}, )" + std::string(sent_setting), ""),
        {k20}));
    const Event desk = {{"model", "Varos K20"}, {"id", "desk"}};
    Event unsent = desk;
    unsent["settings"] = 1;
    unsent["reason"] = "its firmwareParams have no setting that can be read";

    EXPECT_EQ((Event::array({unsent})), event["notSent"]);
    EXPECT_EQ(1, event["keptUnsent"]);
    EXPECT_EQ(2, event["settingsPassedOver"]);
    EXPECT_EQ((Event::array({{{"list", "commonSettings"},
                              {"name", "T"},
                              {"reason", "its value is missing or null"},
                              {"line", 1},
                              {"column", 47},
                              {"accessories", Event::array({desk})},
                              {"lackedBy", 1}},
                             {{"list", "commonSettings"},
                              {"reason", "its name is missing, empty or no text"},
                              {"line", 1},
                              {"column", 76},
                              {"accessories", Event::array({desk})},
                              {"lackedBy", 1}}})),
              event["passedOver"]);
    EXPECT_FALSE(event.contains("keptBack"));
}

TEST(DocumentEvents, SettingOfAnEntryThatTwoAccessoriesPassOverIsOne) {
    const Event event = document_event(
        hand_over(with_settings("", std::string("{}, ") + sent_setting), {k20, k30}));

    EXPECT_EQ(1, event["settingsPassedOver"]);
    ASSERT_EQ(1U, event["passedOver"].size());
    EXPECT_EQ("firmwareParams", event["passedOver"][0]["list"]);
    EXPECT_EQ(2, event["passedOver"][0]["lackedBy"]);
    EXPECT_EQ(2U, event["passedOver"][0]["accessories"].size());
}

TEST(DocumentEvents, SettingsPassedOverAndTheirAccessoriesBeyondAHundredAreCounted) {
    std::string faulty = "1";
    for (int i = 1; i < 150; ++i) {
        faulty += ",1";
    }
    const std::vector<AccessoryCache> many(120, k30);

    const Event event = document_event(hand_over(with_settings(faulty, faulty), many));

    EXPECT_EQ(300, event["settingsPassedOver"]);
    EXPECT_EQ(200U, event["passedOver"].size());
    EXPECT_EQ(120, event["passedOver"][0]["lackedBy"]);
    EXPECT_EQ(100U, event["passedOver"][0]["accessories"].size());
}

TEST(DocumentEvents, SettingThatIsKeptBackForItsAccessIsReported) {
    const std::string kept =
        R"({"name": "V", "usageId": 32, "value": 1, "access": "Administrator"})";

    const Event event = document_event(hand_over(with_settings(kept, sent_setting), {k20, k30}));

    EXPECT_EQ(1, event["settingsKeptBack"]);
    EXPECT_EQ(
        (Event::array({{{"list", "commonSettings"},
                        {"name", "V"},
                        {"access", "Administrator"},
                        {"line", 1},
                        {"column", 47},
                        {"accessories", Event::array({{{"model", "Varos K20"}, {"id", "desk"}},
                                                      {{"model", "Varos K30"}, {"id", "sofa"}}})},
                        {"keptBy", 2}}})),
        event["keptBack"]);
}

TEST(DocumentEvents, SettingThatAnotherReplacesIsNotKeptBack) {
    const std::string replaced = R"({"name": "S", "usageId": 34, "value": 2, "access": "User"})";

    const Event event = document_event(hand_over(with_settings(replaced, sent_setting), {k20}));

    EXPECT_FALSE(event.contains("settingsKeptBack"));
}

TEST(DocumentEvents, DroppedDocumentSaysSo) {
    HandedOver handed_over;
    handed_over.was_dropped = true;

    const Event expected = {{"event", "document"}, {"taken", 0}, {"failed", 0}, {"dropped", true}};
    EXPECT_EQ(expected, document_event(handed_over));
}

}  // namespace
}  // namespace headsetmgmt::program
