// SPDX-License-Identifier: Apache-2.0
// Tests of the pure reader of configuration documents: the template and a model's nodes.

#include <string>
#include <vector>

#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include "config/document.h"
#include "core/json.h"

namespace {

using headsetmgmt::JsonOwner;
namespace document = headsetmgmt::document;

JsonOwner parse(const std::string& text) {
    return JsonOwner(cJSON_Parse(text.c_str()));
}

TEST(DocumentTemplate, IsTheValueOfTemplateConfigurationInTheRoot) {
    const JsonOwner root = parse(R"({"templateConfiguration": {"updatedTime": 7}})");

    EXPECT_EQ(7.0, document::read_updated_time(document::find_template(root.get())));
}

TEST(DocumentTemplate, IsFoundInTheFirstElementOfARootArray) {
    const JsonOwner root = parse(R"([{"templateConfiguration": {"updatedTime": 7}}, {}])");

    EXPECT_EQ(7.0, document::read_updated_time(document::find_template(root.get())));
}

TEST(DocumentTemplate, IsFoundInTheFirstMemberOfTheRoot) {
    const JsonOwner root =
        parse(R"({"wrapper": {"templateConfiguration": {"updatedTime": 7}}, "other": 1})");

    EXPECT_EQ(7.0, document::read_updated_time(document::find_template(root.get())));
}

TEST(DocumentTemplate, IsFoundInTheFirstElementOfAFirstMemberThatIsAnArray) {
    const JsonOwner root = parse(R"({"list": [{"templateConfiguration": {"updatedTime": 7}}]})");

    EXPECT_EQ(7.0, document::read_updated_time(document::find_template(root.get())));
}

TEST(DocumentTemplate, IsFoundUnderAnArrayInAnArray) {
    const JsonOwner root = parse(R"([[{"templateConfiguration": {"updatedTime": 7}}]])");

    EXPECT_EQ(7.0, document::read_updated_time(document::find_template(root.get())));
}

TEST(DocumentTemplate, IsFoundBelowManyWrappers) {
    const JsonOwner root =
        parse(R"({"a": {"b": [{"c": {"templateConfiguration": {"updatedTime": 7}}}]}})");

    EXPECT_EQ(7.0, document::read_updated_time(document::find_template(root.get())));
}

TEST(DocumentTemplate, IsNotLookedForBesideTheFirstChild) {
    const JsonOwner root =
        parse(R"({"first": {}, "second": {"templateConfiguration": {"updatedTime": 7}}})");

    EXPECT_EQ(nullptr, document::find_template(root.get()));
}

TEST(DocumentTemplate, IsTheFirstMemberOfItsHolderWhateverThatIsCalled) {
    const JsonOwner root =
        parse(R"({"anything": {"updatedTime": 1}, "templateConfiguration": {"updatedTime": 2}})");

    EXPECT_EQ(1.0, document::read_updated_time(document::find_template(root.get())));
}

TEST(DocumentTemplate, IsTheFirstMemberOfItsHolderEvenIfThatIsNotAnObject) {
    const JsonOwner number = parse(R"({"updatedTime": 1700, "templateConfiguration": {}})");
    const JsonOwner text = parse(R"({"name": "headsets", "templateConfiguration": {}})");

    ASSERT_NE(nullptr, document::find_template(number.get()));
    EXPECT_EQ(1700.0, cJSON_GetNumberValue(document::find_template(number.get())));
    ASSERT_NE(nullptr, document::find_template(text.get()));
    EXPECT_STREQ("headsets", cJSON_GetStringValue(document::find_template(text.get())));
}

TEST(DocumentTemplate, IsFoundWhateverTheCaseOfItsKey) {
    const JsonOwner root = parse(R"({"TEMPLATEconfiguration": {"updatedTime": 7}})");

    EXPECT_EQ(7.0, document::read_updated_time(document::find_template(root.get())));
}

TEST(DocumentTemplate, IsAbsentWhereNobodyHoldsOne) {
    const JsonOwner nested = parse(R"({"a": {"b": {"c": 1}}})");
    const JsonOwner text = parse(R"("templateConfiguration")");
    const JsonOwner empty_object = parse("{}");
    const JsonOwner empty_array = parse("[]");
    const JsonOwner array_with_empty_array = parse("[[]]");

    EXPECT_EQ(nullptr, document::find_template(nested.get()));
    EXPECT_EQ(nullptr, document::find_template(text.get()));
    EXPECT_EQ(nullptr, document::find_template(empty_object.get()));
    EXPECT_EQ(nullptr, document::find_template(empty_array.get()));
    EXPECT_EQ(nullptr, document::find_template(array_with_empty_array.get()));
    EXPECT_EQ(nullptr, document::find_template(nullptr));
}

TEST(DocumentTemplate, KeysAreFoundWhateverTheirCase) {
    const JsonOwner root = parse(R"({"UPDATEDTIME": 7, "CommonSETTINGS": [1],
                                     "modelspecificsettings": [2]})");

    EXPECT_EQ(7.0, document::read_updated_time(root.get()));
    EXPECT_NE(nullptr, document::find_common_settings(root.get()));
    EXPECT_NE(nullptr, document::find_model_entries(root.get()));
}

TEST(DocumentTemplate, FirstOfTwoMembersWithOneKeyWins) {
    const JsonOwner root = parse(R"({"UpdatedTime": 7, "updatedTime": 8})");

    EXPECT_EQ(7.0, document::read_updated_time(root.get()));
}

TEST(DocumentTemplate, MissingUpdatedTimeGivesNoTime) {
    const JsonOwner root = parse(R"({"commonSettings": []})");

    EXPECT_FALSE(document::read_updated_time(root.get()).has_value());
    EXPECT_FALSE(document::read_updated_time(nullptr).has_value());
}

TEST(DocumentTemplate, UpdatedTimeKeepsItsFraction) {
    const JsonOwner root = parse(R"({"updatedTime": 1700000000.25})");

    EXPECT_EQ(1700000000.25, document::read_updated_time(root.get()));
}

TEST(DocumentTemplate, UpdatedTimeThatIsNotANumberReadsAsZero) {
    const JsonOwner text = parse(R"({"updatedTime": "1700"})");
    const JsonOwner truth = parse(R"({"updatedTime": true})");
    const JsonOwner null = parse(R"({"updatedTime": null})");
    const JsonOwner array = parse(R"({"updatedTime": [1700]})");

    EXPECT_EQ(0.0, document::read_updated_time(text.get()));
    EXPECT_EQ(0.0, document::read_updated_time(truth.get()));
    EXPECT_EQ(0.0, document::read_updated_time(null.get()));
    EXPECT_EQ(0.0, document::read_updated_time(array.get()));
}

TEST(DocumentTemplate, EmptyCommonSettingsCountAsNone) {
    const JsonOwner empty = parse(R"({"commonSettings": []})");
    const JsonOwner missing = parse(R"({"updatedTime": 1})");
    const JsonOwner text = parse(R"({"commonSettings": "all"})");
    const JsonOwner null = parse(R"({"commonSettings": null})");

    EXPECT_EQ(nullptr, document::find_common_settings(empty.get()));
    EXPECT_EQ(nullptr, document::find_common_settings(missing.get()));
    EXPECT_EQ(nullptr, document::find_common_settings(text.get()));
    EXPECT_EQ(nullptr, document::find_common_settings(null.get()));
}

TEST(DocumentTemplate, CommonSettingsInAnObjectAreReadLikeThoseOfAnArray) {
    const JsonOwner object = parse(R"({"commonSettings": {"any": {"name": "Sidetone"}}})");

    EXPECT_NE(nullptr, document::find_common_settings(object.get()));
}

TEST(DocumentTemplate, KeysThatNobodyReadsChangeNothing) {
    const JsonOwner tree = parse(R"({
        "userConfiguration": {"updatedTime": 9}, "userId": "u", "time": 8, "settings": [1],
        "key": "k", "latest": true, "updatedTime": 7})");

    EXPECT_EQ(7.0, document::read_updated_time(tree.get()));
    EXPECT_EQ(nullptr, document::find_common_settings(tree.get()));
    EXPECT_EQ(nullptr, document::find_model_entries(tree.get()));
}

TEST(DocumentTemplate, ModelEntriesAreAbsentOrThereEvenWhenEmpty) {
    const JsonOwner missing = parse(R"({"commonSettings": []})");
    const JsonOwner empty = parse(R"({"modelSpecificSettings": []})");

    EXPECT_EQ(nullptr, document::find_model_entries(missing.get()));
    EXPECT_NE(nullptr, document::find_model_entries(empty.get()));
}

TEST(DocumentModels, AreReadInOrderAndWhatIsNotATextIsEmpty) {
    const JsonOwner entry = parse(R"({"models": ["Varos K30", 7, "", null, "Arlo"]})");

    const std::vector<std::string> expected{"Varos K30", "", "", "", "Arlo"};
    EXPECT_EQ(expected, document::read_model_names(entry.get()));
}

TEST(DocumentModels, EntryWithoutModelsHasNoNames) {
    const JsonOwner entry = parse(R"({"modelFirmware": []})");

    EXPECT_TRUE(document::read_model_names(entry.get()).empty());
    EXPECT_TRUE(document::read_model_names(nullptr).empty());
}

TEST(DocumentModels, NameServesADeviceWhoseModelHoldsIt) {
    EXPECT_TRUE(document::serves_model("K3", "Varos K30 Headset"));
    EXPECT_TRUE(document::serves_model("Varos K30 Headset", "Varos K30 Headset"));
}

TEST(DocumentModels, NameInAnotherCaseServesNoDevice) {
    EXPECT_FALSE(document::serves_model("k3", "Varos K30 Headset"));
}

TEST(DocumentModels, NameLongerThanTheDevicesServesNoDevice) {
    EXPECT_FALSE(document::serves_model("Varos K30 Headset", "Varos K30"));
}

TEST(DocumentModels, EmptyNameServesNoDevice) {
    EXPECT_FALSE(document::serves_model("", "Varos K30"));
    EXPECT_FALSE(document::serves_model("", ""));
}

TEST(DocumentFirmware, OnlyTheFirstObjectIsRead) {
    const JsonOwner firmware = parse(R"([
        {"firmwareName": "one.bin", "firmwareVersion": "1-0", "firmwareParams": [1]},
        {"firmwareName": "two.bin", "firmwareVersion": "2-0", "firmwareParams": [1, 2]}])");

    const document::Firmware reading = document::read_firmware(firmware.get());

    EXPECT_EQ("one.bin", reading.name);
    EXPECT_EQ("1-0", reading.version);
    EXPECT_EQ(1, cJSON_GetArraySize(document::find_firmware_params(firmware.get())));
}

TEST(DocumentFirmware, SecondObjectDoesNotSupplyWhatTheFirstLacks) {
    const JsonOwner firmware = parse(R"([{}, {"firmwareName": "two.bin", "firmwareVersion": "2-0",
                                              "firmwareParams": []}])");

    const document::Firmware reading = document::read_firmware(firmware.get());

    EXPECT_FALSE(reading.name.has_value());
    EXPECT_EQ("", reading.version);
    EXPECT_EQ(nullptr, document::find_firmware_params(firmware.get()));
}

TEST(DocumentFirmware, NameAndVersionThatAreNotTextsAreMissing) {
    const JsonOwner firmware = parse(R"([{"firmwareName": 5, "firmwareVersion": 6}])");

    const document::Firmware reading = document::read_firmware(firmware.get());

    EXPECT_FALSE(reading.name.has_value());
    EXPECT_EQ("", reading.version);
}

TEST(DocumentFirmware, EmptyNameIsAName) {
    const JsonOwner firmware = parse(R"([{"firmwareName": ""}])");

    EXPECT_EQ("", document::read_firmware(firmware.get()).name);
}

TEST(DocumentFirmware, EmptyArrayHasNeitherNameNorParameters) {
    const JsonOwner firmware = parse("[]");

    EXPECT_FALSE(document::read_firmware(firmware.get()).name.has_value());
    EXPECT_EQ(nullptr, document::find_firmware_params(firmware.get()));
    EXPECT_FALSE(document::read_firmware(nullptr).name.has_value());
}

TEST(DocumentFirmware, BelongsToItsModelEntry) {
    const JsonOwner with =
        parse(R"({"models": ["K"], "MODELFIRMWARE": [{"firmwareName": "k.bin"}]})");
    const JsonOwner without = parse(R"({"models": ["K"]})");

    EXPECT_EQ("k.bin", document::read_firmware(document::find_model_firmware(with.get())).name);
    EXPECT_EQ(nullptr, document::find_model_firmware(without.get()));
}

}  // namespace
