// SPDX-License-Identifier: Apache-2.0
// Tests of what the document reader says: entries, settings, places, reasons.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "program/document/outcome.h"

namespace headsetmgmt::program {
namespace {

using Texts = std::vector<std::string>;

AccessoryCache accessory(const std::string& model) {
    AccessoryCache facts;
    facts.model = model;
    facts.software_version = "2-0-4";
    return facts;
}

DocumentOutcome read(const std::string& text, const std::string& model = "Varos K30") {
    return read_document(text, {accessory(model)}, 100);
}

/// Why the one accessory cannot use the document.
std::string failure(const std::string& text, const std::string& model = "Varos K30") {
    return read(text, model).accessories.front().failure;
}

/// A document with these model entries.
std::string with_entries(const std::string& entries) {
    return R"({"templateConfiguration": {"modelSpecificSettings": [)" + entries + "]}}";
}

/// A document whose one entry has this modelFirmware.
std::string with_firmware(const std::string& firmware) {
    return with_entries(R"({"models": ["Varos"], "modelFirmware": )" + firmware + "}");
}

std::string at(const json::Place& place) {
    return std::to_string(place.line) + ":" + std::to_string(place.column);
}

constexpr char document_of_two_lists[] = R"({"templateConfiguration": {
  "commonSettings": [
    {"name": "Volume", "usageId": 32, "value": 7, "access": "guest"},
    {"name": "Sidetone", "usageId": "34", "value": "low", "access": "ADMIN"},
    {"name": "Ringer", "usageId": 40, "access": "Admin"}
  ],
  "modelSpecificSettings": [
    {"models": ["Eye"]},
    {"models": [7, "K20", "K30"], "modelFirmware": [{
      "firmwareName": "a.img", "firmwareVersion": "2-1-0",
      "firmwareParams": [
        {"name": "Band", "usageId": 36.5, "value": 2.5, "access": "Admin"}, {},
        {"name": "Sidetone", "usageId": 34, "value": "high", "access": "Admin"}
      ]}]}
  ]
}}
)";

TEST(DocumentOutcome, TemplateHasAPlace) {
    EXPECT_EQ("1:27", at(read(document_of_two_lists).template_place));
}

TEST(DocumentOutcome, EntryThatServesHasItsNumberItsNameAndItsPlace) {
    const DocumentOutcome outcome = read(document_of_two_lists);

    ASSERT_TRUE(outcome.accessories.front().settings_entry.has_value());
    EXPECT_EQ("K30", outcome.accessories.front().settings_entry->name);
    ASSERT_EQ(1U, outcome.entries.size());
    EXPECT_EQ(1U, outcome.entries[0].index);
    EXPECT_EQ("9:5", at(outcome.entries[0].place));
}

TEST(DocumentOutcome, EntryOfSeveralAccessoriesIsThereOnce) {
    const DocumentOutcome outcome = read_document(
        document_of_two_lists, {accessory("K30"), accessory("Eye"), accessory("K20")}, 100);

    ASSERT_EQ(2U, outcome.entries.size());
    EXPECT_EQ(0U, outcome.accessories[0].settings_entry->entry);
    EXPECT_EQ(1U, outcome.accessories[1].settings_entry->entry);
    EXPECT_EQ(0U, outcome.accessories[2].settings_entry->entry);
    EXPECT_EQ("K20", outcome.accessories[2].settings_entry->name);
}

TEST(DocumentOutcome, KeptSettingsAreInTheOrderInWhichTheyAreSent) {
    const DocumentOutcome outcome = read(document_of_two_lists);

    Texts kept;
    for (const KeptSetting& one : kept_settings(outcome, outcome.accessories.front())) {
        const ConfigParam& param = one.setting->param;
        kept.push_back(std::to_string(param.usage_id) + " " + param.name + " = " + param.value +
                       ", " + one.setting->access + ", " + (one.is_common ? "common " : "model ") +
                       std::to_string(one.setting->index) + " at " + at(one.setting->place) +
                       (is_sent(*one.setting) ? ", sent" : ""));
    }
    EXPECT_EQ((Texts{"32 Volume = 7, guest, common 0 at 3:5",
                     "34 Sidetone = high, Admin, model 2 at 13:9, sent",
                     "36 Band = 2, Admin, model 0 at 12:9, sent"}),
              kept);
}

TEST(DocumentOutcome, FaultySettingsHaveTheirPlaces) {
    const DocumentOutcome outcome = read(document_of_two_lists);

    ASSERT_EQ(1U, outcome.common.faulty.size());
    EXPECT_EQ(2U, outcome.common.faulty[0].index);
    EXPECT_EQ("Ringer", outcome.common.faulty[0].name);
    EXPECT_EQ("its value is missing or null", in_words(outcome.common.faulty[0].fault));
    EXPECT_EQ("5:5", at(outcome.common.faulty[0].place));
    ASSERT_EQ(1U, outcome.entries[0].params.faulty.size());
    EXPECT_EQ(1U, outcome.entries[0].params.faulty[0].index);
    EXPECT_EQ("", outcome.entries[0].params.faulty[0].name);
    EXPECT_EQ("12:77", at(outcome.entries[0].params.faulty[0].place));
}

TEST(DocumentOutcome, FaultySettingsBeyondTheLimitAreCounted) {
    const DocumentOutcome outcome =
        read_document(R"({"templateConfiguration": {"commonSettings": [1, 2, 3]}})", {}, 2);

    EXPECT_EQ(2U, outcome.common.faulty.size());
    EXPECT_EQ(3U, outcome.common.faulty_count);
    EXPECT_EQ("1:50", at(outcome.common.faulty[1].place));
}

TEST(DocumentOutcome, EachFaultOfASettingHasItsReason) {
    using Fault = document::ParameterFault;

    EXPECT_EQ("its name is missing, empty or no text", in_words(Fault::missing_name));
    EXPECT_EQ("its usageId is missing or null", in_words(Fault::null_usage_id));
    EXPECT_EQ("its value is missing or null", in_words(Fault::null_value));
    EXPECT_EQ("its access is missing, empty or no text", in_words(Fault::invalid_access));
    EXPECT_EQ("its usageId is neither a number nor a text of digits",
              in_words(Fault::invalid_usage_id));
    EXPECT_EQ("its value is neither a number nor a text", in_words(Fault::invalid_value));
}

TEST(DocumentOutcome, TextThatIsNotJsonFailsForAll) {
    const DocumentOutcome outcome =
        read_document("[1,\n  oops]", {accessory("K30"), accessory("Eye")}, 100);

    EXPECT_EQ("no JSON: line 2, column 3: \"oops]\"", outcome.fault);
    ASSERT_EQ(2U, outcome.accessories.size());
    EXPECT_EQ("no JSON: line 2, column 3: \"oops]\"", outcome.accessories[1].failure);
    EXPECT_EQ("", outcome.accessories[1].model);
}

TEST(DocumentOutcome, EmptyTextIsReportedAsSuch) {
    EXPECT_EQ("the document is empty (0 bytes)", failure(""));
    EXPECT_EQ("the document begins with a NUL byte, so it counts as empty",
              failure(std::string("\0{}", 3)));
}

TEST(DocumentOutcome, TextIsReadUpToItsFirstNul) {
    EXPECT_EQ("", failure(std::string(document_of_two_lists) + std::string("\0oops", 5)));
}

TEST(DocumentOutcome, DocumentWithoutATemplateFails) {
    EXPECT_EQ("no \"templateConfiguration\" in the document, nor in what its first members hold",
              failure(R"({"a": {"b": 1}, "templateconfig": {}})"));
}

TEST(DocumentOutcome, TemplateWithoutEntriesMayBeTheWrongOne) {
    EXPECT_EQ("the template has no modelSpecificSettings; is templateConfiguration the first "
              "member of its object?",
              failure(R"({"updatedTime": 1, "templateConfiguration": {}})"));
}

TEST(DocumentOutcome, FailedSearchNamesWhatWasCompared) {
    EXPECT_EQ(
        "no entry of modelSpecificSettings serves it; compared with \"Varos K20\", "
        "\"varos k30\"; capitals count",
        failure(with_entries(R"({"models": ["Varos K20", "", 7]}, {"models": ["varos k30"]})")));
}

TEST(DocumentOutcome, FailedSearchNamesTheFirstEightNamesOnly) {
    EXPECT_EQ("no entry of modelSpecificSettings serves it; compared with \"1\", \"2\", \"4\", "
              "\"5\", \"6\", \"7\", \"8\", \"9\" and 2 more; capitals count",
              failure(with_entries(
                  R"({"models": ["1", "2", "4", "5", "6", "7", "8", "9", "10", "11"]})")));
}

TEST(DocumentOutcome, FailedSearchNamesAnEntryWhoseModelsIsAText) {
    EXPECT_EQ("no entry of modelSpecificSettings serves it; compared with \"Varos K20\"; capitals "
              "count; entry 1 is not compared: its models is the text \"Varos K30\", write "
              "[\"Varos K30\"]",
              failure(with_entries(R"({"models": ["Varos K20"]}, {"models": "Varos K30"})")));
    EXPECT_EQ("no entry of modelSpecificSettings serves it; not one has an array \"models\" with a "
              "name in it; entry 0 is not compared: its models is the text \"a\", write [\"a\"]; "
              "nor are 1 more",
              failure(with_entries(R"({"models": "a"}, {"models": "b"})")));
}

TEST(DocumentOutcome, EntriesThatAreNoArrayAreTheReason) {
    const auto with_model_settings = [](const std::string& value) {
        return R"({"templateConfiguration": {"modelSpecificSettings": )" + value + "}}";
    };

    EXPECT_EQ("modelSpecificSettings is a text, and must be an array with an entry for each model",
              failure(with_model_settings(R"("K30")")));
    EXPECT_EQ("modelSpecificSettings is null, and must be an array with an entry for each model",
              failure(with_model_settings("null")));
    EXPECT_EQ("modelSpecificSettings is an object, and must be an array with an entry for each "
              "model",
              failure(with_model_settings(R"({"models": ["K30"], "modelFirmware": []})")));
    EXPECT_EQ("", failure(with_model_settings(
                      R"({"a": {"models": ["K30"], "modelFirmware": [{"firmwareName": "a"}]}})")));
}

TEST(DocumentOutcome, AccessoriesOfSeveralModelsAreSearchedTogether) {
    const std::string text = with_entries(
        R"({"models": ["A", "K3"]}, {"models": "Q"}, {"models": ["K30", "K2", "K20"]})");

    const DocumentOutcome outcome = read_document(
        text, {accessory("K20"), accessory("Eye"), accessory("K30"), accessory("K20")}, 100);

    EXPECT_EQ("K2", outcome.accessories[0].settings_entry->name);
    EXPECT_EQ(2U, outcome.entries[outcome.accessories[0].settings_entry->entry].index);
    EXPECT_EQ("no entry of modelSpecificSettings serves it; compared with \"A\", \"K3\", \"K30\", "
              "\"K2\", \"K20\"; capitals count; entry 1 is not compared: its models is the text "
              "\"Q\", write [\"Q\"]",
              outcome.accessories[1].failure);
    EXPECT_EQ("K3", outcome.accessories[2].settings_entry->name);
    EXPECT_EQ("K2", outcome.accessories[3].settings_entry->name);
}

TEST(DocumentOutcome, EntryWithoutFirmwareIsTheReason) {
    EXPECT_EQ("its entry has no modelFirmware", failure(with_entries(R"({"models": ["K30"]})")));
}

TEST(DocumentOutcome, FirmwareThatIsNoArrayIsTheReason) {
    EXPECT_EQ("its modelFirmware is an object, and must be an array with a firmware object",
              failure(with_firmware(R"({"firmwareName": "a.img", "firmwareVersion": "2-1-0"})")));
    EXPECT_EQ("its modelFirmware is a text, and must be an array with a firmware object",
              failure(with_firmware(R"("a.img")")));
    EXPECT_EQ("its modelFirmware is null, and must be an array with a firmware object",
              failure(with_firmware("null")));
}

TEST(DocumentOutcome, FirmwareWithoutANameIsTheReason) {
    EXPECT_EQ("its modelFirmware has no entries", failure(with_firmware("[]")));
    EXPECT_EQ("the first entry of its modelFirmware has no firmwareName, or one that is no text",
              failure(with_firmware(R"([{"firmwareName": 7}])")));
}

TEST(DocumentOutcome, DongleHasAnEntryOfItsOwn) {
    AccessoryCache with_dongle = accessory("Varos K30");
    with_dongle.dongle_model = "Varos Link";
    with_dongle.dongle_version = "1-0-0";
    const std::string text = with_entries(
        R"({"models": ["K30"], "modelFirmware": [{"firmwareName": "a", "firmwareVersion": "9"}]},
           {"models": ["Link"], "modelFirmware": [{"firmwareName": "b", "firmwareVersion": "8"}]})");

    const DocumentOutcome outcome = read_document(text, {with_dongle}, 100);

    EXPECT_EQ("K30", outcome.accessories[0].settings_entry->name);
    EXPECT_EQ("Link", outcome.accessories[0].dongle_entry->name);
    EXPECT_EQ("b", outcome.accessories[0].firmware.firmware_name);
    EXPECT_EQ("8", outcome.accessories[0].firmware.wanted);
    EXPECT_EQ("1-0-0", outcome.accessories[0].firmware.reported);
    EXPECT_TRUE(outcome.accessories[0].firmware.is_dongles);
}

TEST(DocumentOutcome, SearchForADongleIsItsOwnReason) {
    AccessoryCache with_dongle = accessory("Varos K30");
    with_dongle.dongle_model = "Varos Link";

    EXPECT_EQ("dongle Varos Link: no entry of modelSpecificSettings serves it; compared with "
              "\"Varos K\"; capitals count",
              read_document(with_entries(R"({"models": ["Varos K"], "modelFirmware": []})"),
                            {with_dongle}, 100)
                  .accessories[0]
                  .failure);
}

TEST(DocumentOutcome, SettingsThatAreNotSentHaveTheirReason) {
    const auto unsent = [](const std::string& text) {
        return read(text).accessories.front().unsent_reason;
    };

    EXPECT_EQ("no entry of modelSpecificSettings serves it", unsent(with_entries("")));
    EXPECT_EQ("the first entry of its modelFirmware has no firmwareParams",
              unsent(with_firmware(R"([{"firmwareName": "a"}])")));
    EXPECT_EQ("its firmwareParams have no setting that can be read",
              unsent(with_firmware(R"([{"firmwareName": "a", "firmwareParams": [{}]}])")));
    EXPECT_EQ("", unsent(document_of_two_lists));
}

std::string decision(const std::string& firmware, const std::string& version) {
    AccessoryCache facts = accessory("Varos K30");
    facts.software_version = version;
    return in_words(read_document(with_firmware("[" + firmware + "]"), {facts}, 100)
                        .accessories.front()
                        .firmware);
}

TEST(DocumentOutcome, EachFirmwareDecisionIsASentence) {
    EXPECT_EQ("no upgrade requested: the document says LATEST",
              decision(R"({"firmwareName": "latest"})", "1-0"));
    EXPECT_EQ("stays on the current version, as the document says",
              decision(R"({"firmwareName": "a", "firmwareVersion": "current"})", "1-0"));
    EXPECT_EQ("no upgrade required",
              decision(R"({"firmwareName": "a", "firmwareVersion": "1-0"})", "1-0"));
    EXPECT_EQ("upgrade requested to 0-9",
              decision(R"({"firmwareName": "a", "firmwareVersion": "0-9"})", "1-0"));
    EXPECT_EQ("\"2.1.0\" is not a version (only letters, digits and hyphens): 1-0 is kept",
              decision(R"({"firmwareName": "a", "firmwareVersion": "2.1.0"})", "1-0"));
    EXPECT_EQ("none: firmwareVersion is missing, empty or not a text",
              decision(R"({"firmwareName": "a", "firmwareVersion": 2})", "1-0"));
    EXPECT_EQ("none: firmwareVersion is missing, empty or not a text",
              decision(R"({"firmwareName": "a", "firmwareVersion": ""})", "1-0"));
    EXPECT_EQ("none: the accessory reports no version",
              decision(R"({"firmwareName": "a", "firmwareVersion": "1-0"})", ""));
    EXPECT_EQ("none: firmwareVersion is missing, empty or not a text, and the accessory "
              "reports no version",
              decision(R"({"firmwareName": "a"})", ""));
}

}  // namespace
}  // namespace headsetmgmt::program
