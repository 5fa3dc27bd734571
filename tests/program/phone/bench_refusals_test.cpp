// SPDX-License-Identifier: Apache-2.0
// Tests of wrong bench files: each is refused with the file, the line, the member and what was
// expected.

#include <cstddef>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program/phone/bench_refusal.h"

namespace headsetmgmt::program {
namespace {

/// The same of the members of one accessory, which stand on line 3.
std::string accessory_refusal(const std::string& members) {
    return refusal("{\"accessories\": [\n{\n" + members + "\n}\n]}");
}

// What follows the expectation is the parser's.
TEST(BenchRefusals, TextThatIsNoJsonIsReportedWithLineAndColumn) {
    EXPECT_EQ("bench.json:2:8: expected JSON: syntax error while parsing value - invalid literal; "
              "last read: '\"urls\":o'",
              refusal("{\n\"urls\":oops}"));
    EXPECT_EQ("bench.json:2:1: expected JSON: syntax error while parsing object key - unexpected "
              "'}'; expected string literal",
              refusal("{\"urls\": {},\n}"));
}

TEST(BenchRefusals, LineFeedInATextIsReportedWhereItStands) {
    EXPECT_THAT(refusal("{\n\"ur\nls\": {}}"),
                testing::StartsWith("bench.json:2:4: expected JSON: "));
}

TEST(BenchRefusals, EmptyTextIsNoJson) {
    EXPECT_EQ("bench.json:1: expected JSON, found an empty file", refusal(""));
}

TEST(BenchRefusals, TextThatEndsEarlyIsReportedWithItsLastLine) {
    EXPECT_THAT(refusal("{\n\"urls\": {\n"),
                testing::StartsWith("bench.json:3:1: expected JSON: "));
}

TEST(BenchRefusals, NulCharacterBetweenMembersIsNoJson) {
    EXPECT_EQ("bench.json:2:1: expected JSON: found a NUL byte", refusal(std::string("{\n\0}", 4)));
}

TEST(BenchRefusals, NulByteBehindTheDocumentIsNotItsEnd) {
    EXPECT_EQ("bench.json:2:1: expected JSON: found a NUL byte",
              refusal(std::string("{}\n\0oops", 8)));
}

TEST(BenchRefusals, NumberThatNoDoubleHoldsIsReportedWithItsLine) {
    EXPECT_EQ("bench.json:3:11: expected JSON: number overflow parsing '1e999'",
              refusal("{\n\"phone\": {\n\"userId\": 1e999}}"));
}

TEST(BenchRefusals, BytesThatAreNoUtf8AreNoJson) {
    EXPECT_THAT(refusal("{\"phone\": {\"userId\": \"\xff\"}}"),
                testing::StartsWith("bench.json:1:23: expected JSON: "));
}

TEST(BenchRefusals, DocumentThatIsNoObject) {
    EXPECT_EQ("bench.json:1: the document: expected an object, found an array of 2",
              refusal("[1, 2]"));
    EXPECT_EQ("bench.json:1: the document: expected an object, found null", refusal("null"));
}

TEST(BenchRefusals, UnknownMemberOfTheDocument) {
    EXPECT_EQ("bench.json:3: member /phones: not known here; expected one of: accessories, phone, "
              "servers, urls",
              refusal("{\n\"phone\": {},\n\"phones\": {}}"));
}

TEST(BenchRefusals, UnknownMemberOfThePhone) {
    EXPECT_EQ("bench.json:2: member /phone/serial: not known here; expected one of: osVersion, "
              "serialNumber, softwareVersion, userId",
              refusal("{\"phone\": {\n\"serial\": \"x\"}}"));
}

TEST(BenchRefusals, UnknownUrl) {
    EXPECT_EQ("bench.json:1: member /urls/metrics: not known here; expected one of: config, "
              "inventory, service",
              refusal(R"({"urls": {"metrics": "x"}})"));
}

TEST(BenchRefusals, UnknownKindOfServer) {
    EXPECT_EQ("bench.json:1: member /servers/http: not known here; expected one of: korm, tftp",
              refusal(R"({"servers": {"http": []}})"));
}

TEST(BenchRefusals, UnknownMemberOfAnAccessory) {
    EXPECT_EQ("bench.json:3: member /accessories/0/colour: not known here; expected one of: "
              "connectionStatus, connectionType, dockModel, dockSerialNumber, dongleModel, "
              "dongleSerialNumber, dongleVersion, hardwareVersion, id, model, serialNumber, "
              "softwareVersion, type, vendor, vendorId",
              accessory_refusal(R"("id": "a", "type": "headset", "colour": "red")"));
}

TEST(BenchRefusals, SectionThatIsNoObject) {
    EXPECT_EQ("bench.json:2: member /phone: expected an object, found \"mine\"",
              refusal("{\n\"phone\": \"mine\"}"));
    EXPECT_EQ("bench.json:1: member /urls: expected an object, found an array of 0",
              refusal(R"({"urls": []})"));
    EXPECT_EQ("bench.json:1: member /servers: expected an object, found true",
              refusal(R"({"servers": true})"));
}

TEST(BenchRefusals, MemberThatIsNoText) {
    EXPECT_EQ("bench.json:1: member /phone/userId: expected a text, found 17",
              refusal(R"({"phone": {"userId": 17}})"));
    EXPECT_EQ("bench.json:1: member /urls/service: expected a text, found null",
              refusal(R"({"urls": {"service": null}})"));
    EXPECT_EQ("bench.json:3: member /accessories/0/model: expected a text, found an object",
              accessory_refusal(R"("id": "a", "type": "headset", "model": {})"));
}

// Where a number ends shows only in the character after it, here on the next line.
TEST(BenchRefusals, NumberAtTheEndOfALineIsOnThatLine) {
    EXPECT_EQ("bench.json:3: member /phone/osVersion: expected a text, found 5.5",
              refusal("{\n\"phone\": {\n\"osVersion\": 5.5\n}\n}"));
}

TEST(BenchRefusals, NumberInAListAtTheEndOfALineIsOnThatLine) {
    EXPECT_EQ("bench.json:3: member /servers/tftp/1: expected the name or address of a server, "
              "found 7",
              refusal("{\"servers\": {\"tftp\": [\n\"a\",\n7\n]}}"));
    EXPECT_EQ("bench.json:2: member /accessories/0: expected an object, found 7",
              refusal("{\"accessories\": [\n7\n]}"));
}

TEST(BenchRefusals, TextWithANulCharacter) {
    EXPECT_EQ("bench.json:1: member /phone/userId: expected a text without a NUL character",
              refusal(R"({"phone": {"userId": "an\u0000na"}})"));
    EXPECT_EQ("bench.json:3: member /accessories/0/id: expected a text without a NUL character",
              accessory_refusal(R"("id": "\u0000", "type": "headset")"));
}

TEST(BenchRefusals, ServerWithANulCharacter) {
    EXPECT_EQ("bench.json:1: member /servers/tftp/0: expected a text without a NUL character",
              refusal(R"({"servers": {"tftp": ["a\u0000b"]}})"));
}

TEST(BenchRefusals, ServersThatAreNoList) {
    EXPECT_EQ("bench.json:1: member /servers/tftp: expected an array of at most 3 texts, found "
              "\"10.0.0.1\"; write [\"10.0.0.1\"]",
              refusal(R"({"servers": {"tftp": "10.0.0.1"}})"));
}

TEST(BenchRefusals, FourServersOfAKind) {
    EXPECT_EQ("bench.json:2: member /servers/korm: expected an array of at most 3 texts, found an "
              "array of 4",
              refusal("{\"servers\": {\n\"korm\": [\"a\", \"b\", \"c\", \"d\"]}}"));
}

TEST(BenchRefusals, ServerThatIsEmptyOrNoText) {
    EXPECT_EQ("bench.json:4: member /servers/korm/1: expected the name or address of a server, "
              "found \"\"",
              refusal("{\"servers\": {\"korm\": [\n\n\"a\",\n\"\"]}}"));
    EXPECT_EQ("bench.json:1: member /servers/tftp/0: expected the name or address of a server, "
              "found an array of 1",
              refusal(R"({"servers": {"tftp": [["a"]]}})"));
}

TEST(BenchRefusals, AccessoriesThatAreNoList) {
    EXPECT_EQ("bench.json:1: member /accessories: expected an array of objects, found an object",
              refusal(R"({"accessories": {}})"));
}

TEST(BenchRefusals, AccessoryWithoutAnId) {
    EXPECT_EQ("bench.json:2: member /accessories/0: expected a member \"id\" with a text that is "
              "not empty",
              accessory_refusal(R"("type": "headset")"));
}

TEST(BenchRefusals, AccessoryWithAnEmptyId) {
    EXPECT_EQ("bench.json:3: member /accessories/0/id: expected a member \"id\" with a text that "
              "is not empty",
              accessory_refusal(R"("id": "", "type": "headset")"));
}

TEST(BenchRefusals, AccessoryWithoutAType) {
    EXPECT_EQ("bench.json:2: member /accessories/0: expected a member \"type\" with \"headset\" or "
              "\"camera\"",
              accessory_refusal(R"("id": "a")"));
}

TEST(BenchRefusals, AccessoryOfAnUnknownType) {
    EXPECT_EQ("bench.json:3: member /accessories/0/type: expected a member \"type\" with "
              "\"headset\" or \"camera\", found \"Headset\" (capitals count)",
              accessory_refusal(R"("id": "a", "type": "Headset")"));
    EXPECT_EQ("bench.json:3: member /accessories/0/type: expected a member \"type\" with "
              "\"headset\" or \"camera\", found \"lamp\"",
              accessory_refusal(R"("id": "a", "type": "lamp")"));
}

TEST(BenchRefusals, VendorIdOutsideSixteenBits) {
    const std::string place = "bench.json:3: member /accessories/0/vendorId: expected a USB vendor "
                              "id, 0 to 65535, found ";
    const std::string members = R"("id": "a", "type": "headset", "vendorId": )";

    EXPECT_EQ(place + "65536", accessory_refusal(members + "65536"));
    EXPECT_EQ(place + "-1", accessory_refusal(members + "-1"));
    EXPECT_EQ(place + "18446744073709551615", accessory_refusal(members + "18446744073709551615"));
    EXPECT_EQ(place + "1.0", accessory_refusal(members + "1.0"));
    EXPECT_EQ(place + "null", accessory_refusal(members + "null"));
    EXPECT_EQ(place + "\"65536\"", accessory_refusal(members + "\"65536\""));
    EXPECT_EQ(place + "\"-1\"", accessory_refusal(members + "\"-1\""));
    EXPECT_EQ(place + "\"\"", accessory_refusal(members + "\"\""));
}

TEST(BenchRefusals, VendorIdInQuotationMarks) {
    EXPECT_EQ("bench.json:3: member /accessories/0/vendorId: expected a USB vendor id, 0 to 65535, "
              "found \"0xF055\"; write the number 61525, without quotation marks (JSON has no "
              "hexadecimal numbers)",
              accessory_refusal(R"("id": "a", "type": "headset", "vendorId": "0xF055")"));
}

TEST(BenchRefusals, SlashInANameIsNoLevel) {
    EXPECT_EQ("bench.json:1: member /a~1b: not known here; expected one of: accessories, phone, "
              "servers, urls",
              refusal("{\"a/b\": 1, \"phone\": {}}"));
    EXPECT_EQ("bench.json:2: member /phone/~0~1: not known here; expected one of: osVersion, "
              "serialNumber, softwareVersion, userId",
              refusal("{\"phone\": {\n\"~/\": 1}}"));
    EXPECT_EQ("bench.json:2: member /a: not known here; expected one of: accessories, phone, "
              "servers, urls",
              refusal("{\"a/b\": 1,\n\"a\": {\"b\": 2}}"));
    EXPECT_EQ("bench.json:2: member /a~1b: expected once, found on line 1 already",
              refusal("{\"a/b\": 1,\n\"a/b\": 2}"));
}

TEST(BenchRefusals, MemberGivenTwice) {
    EXPECT_EQ("bench.json:3: member /phone/userId: expected once, found on line 2 already",
              refusal("{\"phone\": {\n\"userId\": \"anna\",\n\"userId\": \"bert\"\n}}"));
    EXPECT_EQ("bench.json:3: member /phone: expected once, found on line 2 already",
              refusal("{\n\"phone\": {\"userId\": \"anna\"},\n\"phone\": {}}"));
}

TEST(BenchRefusals, PlacesDeepInAFileKeepTheirLines) {
    EXPECT_EQ("bench.json:10: member /accessories/1/vendor: expected a text, found false",
              refusal("{\n"
                      "  \"urls\": {},\n"
                      "  \"accessories\": [\n"
                      "    {\n"
                      "      \"id\": \"a\", \"vendorId\": 1,\n"
                      "      \"type\": \"headset\"\n"
                      "    },\n"
                      "    {\n"
                      "      \"id\": \"b\", \"type\": \"camera\",\n"
                      "      \"vendor\": false\n"
                      "    }\n"
                      "  ]\n"
                      "}\n"));
}

TEST(BenchRefusals, WindowsLineEndsCountOnce) {
    EXPECT_EQ("bench.json:3: member /phone/userId: expected a text, found 1",
              refusal("{\r\n\"phone\": {\r\n\"userId\": 1\r\n}\r\n}"));
}

TEST(BenchRefusals, DeepNestingIsRefusedLikeAnyOtherValue) {
    constexpr std::size_t depth = 5000;

    EXPECT_EQ("bench.json:1: member /urls/config: expected a text, found an array of 1",
              refusal("{\"urls\": {\"config\": " + std::string(depth, '[') +
                      std::string(depth, ']') + "}}"));
}

}  // namespace
}  // namespace headsetmgmt::program
