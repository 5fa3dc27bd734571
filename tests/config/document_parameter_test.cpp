// SPDX-License-Identifier: Apache-2.0
// Tests of the pure reader of configuration documents: one parameter object.

#include <string>

#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include "config/document.h"
#include "core/json.h"

namespace headsetmgmt::document {

// For messages of failed tests.
void PrintTo(ParameterFault fault, std::ostream* stream) {
    *stream << "fault " << static_cast<int>(fault);
}

}  // namespace headsetmgmt::document

namespace {

using headsetmgmt::JsonOwner;
using headsetmgmt::document::Parameter;
using headsetmgmt::document::ParameterFault;

Parameter read(const std::string& text) {
    const JsonOwner node(cJSON_Parse(text.c_str()));
    EXPECT_NE(nullptr, node) << text;
    return headsetmgmt::document::read_parameter(node.get());
}

ParameterFault fault_of(const std::string& text) {
    return read(text).fault;
}

TEST(DocumentParameter, CompleteOneGivesItsFourFields) {
    const Parameter parameter =
        read(R"({"name": "volume", "usageId": 12, "value": 3, "access": "Admin"})");

    EXPECT_EQ(ParameterFault::none, parameter.fault);
    EXPECT_EQ(12, parameter.usage_id_number);
    EXPECT_EQ(12, parameter.setting.usage_id);
    EXPECT_EQ("volume", parameter.setting.name);
    EXPECT_EQ("3", parameter.setting.value);
    EXPECT_EQ("Admin", parameter.setting.access);
}

TEST(DocumentParameter, KeysAreFoundWhateverTheirCaseAndTheFirstWins) {
    const Parameter parameter = read(
        R"({"NAME": "first", "name": "second", "USAGEID": 12, "Value": "on", "aCCess": "Admin"})");

    EXPECT_EQ(ParameterFault::none, parameter.fault);
    EXPECT_EQ("first", parameter.setting.name);
    EXPECT_EQ(12, parameter.setting.usage_id);
    EXPECT_EQ("on", parameter.setting.value);
    EXPECT_EQ("Admin", parameter.setting.access);
}

TEST(DocumentParameter, KeysThatBeginLikeItsOwnAreOthers) {
    const Parameter parameter = read(
        R"({"nameOld": "no", "name": "volume", "usageIdOld": 9, "usageId": 12, "valueOld": 4,
            "value": 3, "accessOld": "User", "access": "Admin", "nam": "no", "": "no"})");

    EXPECT_EQ(ParameterFault::none, parameter.fault);
    EXPECT_EQ("volume", parameter.setting.name);
    EXPECT_EQ(12, parameter.setting.usage_id);
    EXPECT_EQ("3", parameter.setting.value);
    EXPECT_EQ("Admin", parameter.setting.access);
}

TEST(DocumentParameter, UsageIdGivenAsDigitsIsTheSameIdButHasNoNumber) {
    const Parameter parameter =
        read(R"({"name": "volume", "usageId": "12", "value": 3, "access": "Admin"})");

    EXPECT_EQ(ParameterFault::none, parameter.fault);
    EXPECT_EQ(12, parameter.setting.usage_id);
    EXPECT_EQ(0, parameter.usage_id_number);
}

TEST(DocumentParameter, UsageIdTextIsDecimalWhateverItsLeadingZeros) {
    EXPECT_EQ(
        12,
        read(R"({"name": "n", "usageId": "0012", "value": 1, "access": "a"})").setting.usage_id);
}

TEST(DocumentParameter, UsageIdNumberLosesItsFraction) {
    EXPECT_EQ(
        12, read(R"({"name": "n", "usageId": 12.9, "value": 1, "access": "a"})").setting.usage_id);
    EXPECT_EQ(
        -1, read(R"({"name": "n", "usageId": -1.9, "value": 1, "access": "a"})").setting.usage_id);
}

TEST(DocumentParameter, UsageIdTextWithASignIsRefused) {
    EXPECT_EQ(ParameterFault::invalid_usage_id,
              fault_of(R"({"name": "n", "usageId": "-12", "value": 1, "access": "a"})"));
    EXPECT_EQ(ParameterFault::invalid_usage_id,
              fault_of(R"({"name": "n", "usageId": "+12", "value": 1, "access": "a"})"));
}

TEST(DocumentParameter, UsageIdTextWithABlankIsRefused) {
    EXPECT_EQ(ParameterFault::invalid_usage_id,
              fault_of(R"({"name": "n", "usageId": " 12", "value": 1, "access": "a"})"));
    EXPECT_EQ(ParameterFault::invalid_usage_id,
              fault_of(R"({"name": "n", "usageId": "12 ", "value": 1, "access": "a"})"));
}

TEST(DocumentParameter, UsageIdTextWithALetterOrAPointIsRefused) {
    EXPECT_EQ(ParameterFault::invalid_usage_id,
              fault_of(R"({"name": "n", "usageId": "12a", "value": 1, "access": "a"})"));
    EXPECT_EQ(ParameterFault::invalid_usage_id,
              fault_of(R"({"name": "n", "usageId": "1.2", "value": 1, "access": "a"})"));
}

TEST(DocumentParameter, EmptyUsageIdTextIsRefused) {
    EXPECT_EQ(ParameterFault::invalid_usage_id,
              fault_of(R"({"name": "n", "usageId": "", "value": 1, "access": "a"})"));
}

TEST(DocumentParameter, UsageIdOfAnotherTypeIsRefused) {
    EXPECT_EQ(ParameterFault::invalid_usage_id,
              fault_of(R"({"name": "n", "usageId": true, "value": 1, "access": "a"})"));
    EXPECT_EQ(ParameterFault::invalid_usage_id,
              fault_of(R"({"name": "n", "usageId": [12], "value": 1, "access": "a"})"));
    EXPECT_EQ(ParameterFault::invalid_usage_id,
              fault_of(R"({"name": "n", "usageId": {}, "value": 1, "access": "a"})"));
}

TEST(DocumentParameter, NullUsageIdIsAFaultOfItsOwn) {
    EXPECT_EQ(ParameterFault::null_usage_id,
              fault_of(R"({"name": "n", "usageId": null, "value": 1, "access": "a"})"));
    EXPECT_EQ(ParameterFault::null_usage_id,
              fault_of(R"({"name": "n", "value": 1, "access": "a"})"));
}

TEST(DocumentParameter, NumberValueIsTheDecimalTextOfItsIntegerPart) {
    EXPECT_EQ("1",
              read(R"({"name": "n", "usageId": 1, "value": 1.7, "access": "a"})").setting.value);
    EXPECT_EQ("-1",
              read(R"({"name": "n", "usageId": 1, "value": -1.7, "access": "a"})").setting.value);
    EXPECT_EQ("0", read(R"({"name": "n", "usageId": 1, "value": 0, "access": "a"})").setting.value);
}

TEST(DocumentParameter, NumberTooLargeForAnIntegerIsTheLargestOne) {
    EXPECT_EQ("2147483647",
              read(R"({"name": "n", "usageId": 1, "value": 1e300, "access": "a"})").setting.value);
    EXPECT_EQ("-2147483648",
              read(R"({"name": "n", "usageId": 1, "value": -1e300, "access": "a"})").setting.value);
}

TEST(DocumentParameter, TextValueStaysAsItStands) {
    EXPECT_EQ("on",
              read(R"({"name": "n", "usageId": 1, "value": "on", "access": "a"})").setting.value);
    EXPECT_EQ(
        " 1.7 ",
        read(R"({"name": "n", "usageId": 1, "value": " 1.7 ", "access": "a"})").setting.value);
}

TEST(DocumentParameter, EmptyTextIsAValue) {
    const Parameter parameter = read(R"({"name": "n", "usageId": 1, "value": "", "access": "a"})");

    EXPECT_EQ(ParameterFault::none, parameter.fault);
    EXPECT_EQ("", parameter.setting.value);
}

TEST(DocumentParameter, ValueOfAnotherTypeIsRefused) {
    EXPECT_EQ(ParameterFault::invalid_value,
              fault_of(R"({"name": "n", "usageId": 1, "value": [1], "access": "a"})"));
    EXPECT_EQ(ParameterFault::invalid_value,
              fault_of(R"({"name": "n", "usageId": 1, "value": {}, "access": "a"})"));
    EXPECT_EQ(ParameterFault::invalid_value,
              fault_of(R"({"name": "n", "usageId": 1, "value": true, "access": "a"})"));
    EXPECT_EQ(ParameterFault::invalid_value,
              fault_of(R"({"name": "n", "usageId": 1, "value": false, "access": "a"})"));
}

TEST(DocumentParameter, NullValueIsAFaultOfItsOwn) {
    EXPECT_EQ(ParameterFault::null_value,
              fault_of(R"({"name": "n", "usageId": 1, "value": null, "access": "a"})"));
    EXPECT_EQ(ParameterFault::null_value,
              fault_of(R"({"name": "n", "usageId": 1, "access": "a"})"));
}

TEST(DocumentParameter, AdminAccessKeepsItsSpelling) {
    EXPECT_EQ("ADMIN",
              read(R"({"name": "n", "usageId": 1, "value": 1, "access": "ADMIN"})").setting.access);
    EXPECT_EQ("admin",
              read(R"({"name": "n", "usageId": 1, "value": 1, "access": "admin"})").setting.access);
}

TEST(DocumentParameter, EveryOtherAccessIsTheUsers) {
    EXPECT_EQ("User",
              read(R"({"name": "n", "usageId": 1, "value": 1, "access": "guest"})").setting.access);
    EXPECT_EQ("User",
              read(R"({"name": "n", "usageId": 1, "value": 1, "access": "USER"})").setting.access);
    EXPECT_EQ(
        "User",
        read(R"({"name": "n", "usageId": 1, "value": 1, "access": "Admin "})").setting.access);
}

TEST(DocumentParameter, MissingOrEmptyAccessIsRefused) {
    EXPECT_EQ(ParameterFault::invalid_access,
              fault_of(R"({"name": "n", "usageId": 1, "value": 1})"));
    EXPECT_EQ(ParameterFault::invalid_access,
              fault_of(R"({"name": "n", "usageId": 1, "value": 1, "access": ""})"));
    EXPECT_EQ(ParameterFault::invalid_access,
              fault_of(R"({"name": "n", "usageId": 1, "value": 1, "access": null})"));
}

TEST(DocumentParameter, AccessThatIsNotATextIsRefused) {
    EXPECT_EQ(ParameterFault::invalid_access,
              fault_of(R"({"name": "n", "usageId": 1, "value": 1, "access": 1})"));
    EXPECT_EQ(ParameterFault::invalid_access,
              fault_of(R"({"name": "n", "usageId": 1, "value": 1, "access": ["Admin"]})"));
}

TEST(DocumentParameter, MissingOrEmptyNameIsRefused) {
    EXPECT_EQ(ParameterFault::missing_name,
              fault_of(R"({"usageId": 1, "value": 1, "access": "a"})"));
    EXPECT_EQ(ParameterFault::missing_name,
              fault_of(R"({"name": "", "usageId": 1, "value": 1, "access": "a"})"));
    EXPECT_EQ(ParameterFault::missing_name,
              fault_of(R"({"name": null, "usageId": 1, "value": 1, "access": "a"})"));
}

TEST(DocumentParameter, NameThatIsNotATextIsRefused) {
    EXPECT_EQ(ParameterFault::missing_name,
              fault_of(R"({"name": 5, "usageId": 1, "value": 1, "access": "a"})"));
}

TEST(DocumentParameter, ElementThatIsNotAnObjectHasNoName) {
    EXPECT_EQ(ParameterFault::missing_name, fault_of("5"));
    EXPECT_EQ(ParameterFault::missing_name, fault_of(R"("volume")"));
    EXPECT_EQ(ParameterFault::missing_name, fault_of(R"(["volume", 1, 1, "Admin"])"));
    EXPECT_EQ(ParameterFault::missing_name, fault_of("null"));
    EXPECT_EQ(ParameterFault::missing_name, headsetmgmt::document::read_parameter(nullptr).fault);
}

TEST(DocumentParameter, FaultsAreLookedForInAFixedOrder) {
    EXPECT_EQ(ParameterFault::missing_name,
              fault_of(R"({"name": "", "usageId": null, "value": null, "access": ""})"));
    EXPECT_EQ(ParameterFault::null_usage_id,
              fault_of(R"({"name": "n", "usageId": null, "value": null, "access": ""})"));
    EXPECT_EQ(ParameterFault::null_value,
              fault_of(R"({"name": "n", "usageId": true, "value": null, "access": ""})"));
    EXPECT_EQ(ParameterFault::invalid_access,
              fault_of(R"({"name": "n", "usageId": true, "value": [], "access": ""})"));
    EXPECT_EQ(ParameterFault::invalid_usage_id,
              fault_of(R"({"name": "n", "usageId": true, "value": [], "access": "a"})"));
    EXPECT_EQ(ParameterFault::invalid_value,
              fault_of(R"({"name": "n", "usageId": 1, "value": [], "access": "a"})"));
}

TEST(DocumentParameter, FaultyOneStillGivesItsName) {
    EXPECT_EQ("volume", read(R"({"name": "volume"})").setting.name);
    EXPECT_EQ("volume",
              read(R"({"name": "volume", "usageId": 1, "value": [], "access": "a"})").setting.name);
}

}  // namespace
