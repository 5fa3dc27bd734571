// SPDX-License-Identifier: Apache-2.0
// Tests that no document can hurt the phone: any bytes, any nesting, any width.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "headsetmgmt/config.h"

#include "support/config_bench.h"

namespace headsetmgmt::test_support {
namespace {

constexpr int many = 100000;

std::string repeated(const std::string& piece, int times) {
    std::string text;
    text.reserve(piece.size() * static_cast<std::size_t>(times));
    for (int i = 0; i < times; ++i) {
        text += piece;
    }
    return text;
}

TEST(HostileDocument, DeepArraysAreRefused) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.update_from_server(repeated("[", many)));
    EXPECT_FALSE(config.update_from_server(repeated("[", many) + repeated("]", many)));
    EXPECT_EQ(2U, bench.lines().size());
}

TEST(HostileDocument, DeepObjectsAreRefused) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.update_from_server(repeated(R"({"a":)", many) + "1" + repeated("}", many)));
    EXPECT_EQ(1U, bench.lines().size());
}

TEST(HostileDocument, DeepValueBesideGoodOnesRefusesTheWholeDocument) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.update_from_server(
        R"({"templateConfiguration": {"commonSettings": [
            {"name": "a", "usageId": 1, "value": 1, "access": "Admin"}], "deep": )" +
        repeated("[", many) + repeated("]", many) + "}}"));
    EXPECT_EQ(Settings{}, settings_of(config));
}

TEST(HostileDocument, TemplateBelowManyWrappersIsFound) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    config.update_from_server(repeated(R"({"a":)", 900) +
                              R"({"templateConfiguration": {"updatedTime": 7}})" +
                              repeated("}", 900));

    EXPECT_EQ(7.0, config.last_updated_time);
}

TEST(HostileDocument, WideSettingsAreAllStored) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    std::string parameters;
    for (int i = 0; i < many; ++i) {
        parameters += (i == 0 ? "" : ",");
        parameters +=
            R"({"name":"n","usageId":)" + std::to_string(i) + R"(,"value":1,"access":"Admin"})";
    }

    config.update_from_server(R"({"templateConfiguration":{"commonSettings":[)" + parameters +
                              "]}}");

    EXPECT_EQ(static_cast<std::size_t>(many), config.retrieve_config().size());
}

TEST(HostileDocument, WideModelListIsWalkedToItsEnd) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_TRUE(
        config.update_from_server(R"({"templateConfiguration":{"modelSpecificSettings":[)" +
                                  repeated(R"({"models":["Arlo"]},)", many / 2) + R"({"models":[)" +
                                  repeated(R"("Arlo",)", many / 2) +
                                  R"("Varos"],"modelFirmware":[{"firmwareName":"latest"}]}]}})"));
    EXPECT_EQ((Calls{R"(check_legacy_upgrade("acc-1"))"}), bench.driver_calls());
}

TEST(HostileDocument, WideObjectIsSearchedToItsEnd) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    config.update_from_server(R"({"templateConfiguration":{)" + repeated(R"("x":0,)", many) +
                              R"("updatedTime":7}})");

    EXPECT_EQ(7.0, config.last_updated_time);
}

TEST(HostileDocument, ManyFirmwareObjectsAreCountedAndTheFirstIsUsed) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_TRUE(config.update_from_server(
        R"({"templateConfiguration":{"modelSpecificSettings":[{"models":["K20"],"modelFirmware":[)"
        R"({"firmwareName":"latest"})" +
        repeated(",{}", many - 1) + "]}]}}"));
    const Lines lines = bench.lines();
    EXPECT_EQ(1, std::count(lines.begin(), lines.end(),
                            "notice HeadsetConfigImpl: upgrade_firmware: received 100000 entries "
                            "for model firmware"));
    EXPECT_EQ((Calls{R"(check_legacy_upgrade("acc-1"))"}), bench.driver_calls());
}

TEST(HostileDocument, LongTextsAreKeptWhole) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const std::string long_text(10 * many, 'x');

    config.update_from_server(R"({"templateConfiguration":{"commonSettings":[{"name":")" +
                              long_text + R"(","usageId":1,"value":")" + long_text +
                              R"(","access":"Admin"}]}})");

    const ConfigParam stored = config.retrieve_config().at(1);
    EXPECT_EQ(1000000U, stored.name.size());
    EXPECT_EQ(1000000U, stored.value.size());
}

TEST(HostileDocument, TextEndsAtItsFirstNul) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    std::string followed = R"({"templateConfiguration": {"updatedTime": 7}})";
    followed += '\0';
    followed += "]]]] no JSON";
    std::string cut = R"({"templateConfiguration": {)";
    cut += '\0';
    cut += R"("updatedTime": 8}})";
    const std::string only_nul(3, '\0');

    config.update_from_server(followed);
    EXPECT_EQ(7.0, config.last_updated_time);
    EXPECT_FALSE(config.update_from_server(cut));
    EXPECT_FALSE(config.update_from_server(only_nul));
    EXPECT_EQ(7.0, config.last_updated_time);
}

TEST(HostileDocument, EveryCutOfADocumentIsRefusedAndChangesNothing) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const std::string whole =
        R"({"templateConfiguration": {"updatedTime": 7, "commonSettings": [{"name": "\u00e9\n",)"
        R"( "usageId": 1, "value": -1.5e3, "access": "Admin"}]}})";

    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(config.update_from_server(whole.substr(0, length))) << length;
    }
    EXPECT_EQ(Settings{}, settings_of(config));
    EXPECT_EQ(0.0, config.last_updated_time);
}

TEST(HostileDocument, RandomBytesAreRefusedOrReadButNeverStored) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const std::string alphabet = "{}[]\",:\\u0d8-+.eEtrufalsn \n\t\x80\xff\xc3";
    std::uint32_t state = 12345;  // fixed: the same texts at each run

    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (int i = 0; i < 40; ++i) {
            state = state * 1664525U + 1013904223U;
            text += alphabet[(state >> 16U) % alphabet.size()];
        }
        EXPECT_FALSE(config.update_from_server(text));
    }
    EXPECT_EQ(Settings{}, settings_of(config));
}

TEST(HostileDocument, WrongTypesEverywhereAreRefused) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);

    for (const char* node : {"null", "true", "5", "\"text\"", "[]", "{}", "[null]", "[[[]]]",
                             "[{\"models\": {\"a\": {}}, \"modelFirmware\": 5}]"}) {
        const std::string value = node;
        EXPECT_FALSE(config.update_from_server(R"({"templateConfiguration": )" + value + "}"))
            << value;
        EXPECT_FALSE(config.update_from_server(R"({"templateConfiguration": {"updatedTime": )" +
                                               value + R"(, "commonSettings": )" + value +
                                               R"(, "modelSpecificSettings": )" + value + "}}"))
            << value;
        EXPECT_FALSE(config.update_from_server(
            R"({"templateConfiguration": {"modelSpecificSettings": [{"models": ["K20"],)"
            R"( "modelFirmware": )" +
            value + "}]}}"))
            << value;
        EXPECT_FALSE(config.update_from_server(
            R"({"templateConfiguration": {"modelSpecificSettings": [{"models": )" + value +
            R"(, "modelFirmware": [{"firmwareName": "latest"}]}]}})"))
            << value;
    }
    EXPECT_EQ(Settings{}, settings_of(config));
    EXPECT_EQ(Calls{}, bench.driver_calls());
}

}  // namespace
}  // namespace headsetmgmt::test_support
