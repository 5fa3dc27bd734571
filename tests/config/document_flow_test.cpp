// SPDX-License-Identifier: Apache-2.0
// Tests of what a document does to the object from one parse to the next, and of texts that are
// no documents.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include "headsetmgmt/config.h"

#include "support/config_bench.h"

namespace headsetmgmt::test_support {
namespace {

TEST(UpdateFromServer, EmptyTextIsNothingToParse) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.update_from_server(""));
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: update_from_server: Nothing to parse"}),
              bench.lines());
}

TEST(UpdateFromServer, UnparsableTextIsLoggedFromThePlaceOfTheErrorOn) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(1, ConfigParam{1, "kept", "1", "Admin"});

    EXPECT_FALSE(config.update_from_server("<html>502</html>"));
    EXPECT_FALSE(config.update_from_server("[1, oops]"));
    EXPECT_EQ((Lines{
                  "info HeadsetConfigImpl: update_from_server: <html>502</html>",
                  "info HeadsetConfigImpl: update_from_server: oops]",
              }),
              bench.lines());
    EXPECT_EQ((Settings{"1 kept=1 (Admin)"}), settings_of(config));
}

TEST(UpdateFromServer, DocumentWithoutATemplateIsLoggedTwice) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(1, ConfigParam{1, "kept", "1", "Admin"});

    EXPECT_FALSE(config.update_from_server(R"({"commonSettings": []})"));
    EXPECT_EQ((Lines{
                  "info HeadsetConfigImpl: update_from_server Enter:",
                  "info HeadsetConfigImpl: update_from_server: No template config found.",
                  "debug HeadsetConfigImpl: update_from_server: No config found.",
              }),
              bench.lines());
    EXPECT_EQ((Settings{"1 kept=1 (Admin)"}), settings_of(config));
}

TEST(UpdateFromServer, TimeBeforeTheTemplateIsReadAsTheTemplateAndYieldsNoSettings) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);

    const bool result =
        config.update_from_server(R"({"updatedTime": 1700, "templateConfiguration": {
        "commonSettings": [{"name": "a", "usageId": 1, "value": 1, "access": "Admin"}],
        "modelSpecificSettings": [{"models": ["Varos"],
                                   "modelFirmware": [{"firmwareName": "LATEST"}]}]}})");

    EXPECT_FALSE(result);
    EXPECT_EQ(Settings{}, settings_of(config));
    EXPECT_EQ(0.0, config.last_updated_time);
    EXPECT_EQ(Calls{}, bench.driver_calls());
    EXPECT_EQ(
        (Lines{
            "info HeadsetConfigImpl: update_from_server Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config parsed updated_time:",
            "info HeadsetConfigImpl: parse_remote_default_config: Current accessory plugged in: "
            "Varos K20",
            "notice HeadsetConfigImpl: parse_remote_default_config: No timestamp found on the "
            "config. Proceed with updating config.",
            "info HeadsetConfigImpl: save_common_settings_params: Common settings not found in "
            "config",
            "debug HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K20",
            "notice HeadsetConfigImpl: extract_model_firmware_settings[KORM-ERR]: Model specific "
            "settings not found in config",
            "info HeadsetConfigImpl: save_model_specific_settings_params : "
            "Model_firmware_settings do not exist",
            "notice HeadsetConfigImpl: parse_remote_default_config[PARSING-ERR]: No settings "
            "found to save.",
            "notice HeadsetConfigImpl: upgrade_firmware[PARSING-ERR]: Model_firmware_settings do "
            "not exist",
            "info HeadsetConfigImpl: parse_remote_default_config: Failed",
            "debug HeadsetConfigImpl: update_from_server: Parsing remote config failed.",
        }),
        bench.lines());
}

TEST(UpdateFromServer, TemplateInARootArrayIsUsed) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    config.update_from_server(R"([{"templateConfiguration": {
        "commonSettings": [{"name": "a", "usageId": 1, "value": 1, "access": "Admin"}]}}])");

    EXPECT_EQ((Settings{"1 a=1 (Admin)"}), settings_of(config));
}

TEST(UpdateFromServer, TemplateWithoutATimeKeepsTheTimeOfTheDocumentBefore) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.update_from_server(R"({"templateConfiguration": {"updatedTime": 1700.5}})");

    config.update_from_server(R"({"templateConfiguration": {"commonSettings": []}})");

    EXPECT_EQ(1700.5, config.last_updated_time);
}

TEST(UpdateFromServer, TimeThatIsNotANumberReadsAsZero) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.update_from_server(R"({"templateConfiguration": {"updatedTime": 1700}})");
    bench.clear_lines();

    config.update_from_server(R"({"templateConfiguration": {"updatedTime": "1800"}})");

    EXPECT_EQ(0.0, config.last_updated_time);
    EXPECT_EQ("info HeadsetConfigImpl: parse_remote_default_config: Updated time: 0",
              bench.lines().at(4));
}

TEST(UpdateFromServer, SettingsOfAnEarlierDocumentStay) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);
    config.update_from_server(R"({"templateConfiguration": {"commonSettings": [
        {"name": "a", "usageId": 1, "value": 1, "access": "Admin"},
        {"name": "b", "usageId": 2, "value": 1, "access": "Admin"}]}})");

    config.update_from_server(R"({"templateConfiguration": {"commonSettings": [
        {"name": "b", "usageId": 2, "value": 2, "access": "User"}]}})");

    EXPECT_EQ((Settings{"1 a=1 (Admin)", "2 b=2 (User)"}), settings_of(config));
}

TEST(UpdateFromServer, FirstParseIsNotAModelChange) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);
    config.update_from_host("volume", 32, "4");
    bench.clear_lines();

    config.update_from_server(R"({"templateConfiguration": {"updatedTime": 1}})");

    EXPECT_EQ((Settings{"32 volume=4 ()"}), settings_of(config));
    EXPECT_EQ("info HeadsetConfigImpl: parse_remote_default_config: Updated time: 1",
              bench.lines().at(4));
}

TEST(UpdateFromServer, ModelThatOnlyChangesItsCaseIsAnotherModel) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);
    config.update_from_server(R"({"templateConfiguration": {"commonSettings": [
        {"name": "a", "usageId": 1, "value": 1, "access": "Admin"}]}})");
    bench.accessory.model = "VAROS K20";
    config.update(&bench.accessory);

    config.update_from_server(R"({"templateConfiguration": {"updatedTime": 1}})");

    EXPECT_EQ(Settings{}, settings_of(config));
}

TEST(UpdateFromServer, ModelThatIsLostIsAChangeAndItsReturnIsNot) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);
    config.update_from_server(R"({"templateConfiguration": {"commonSettings": [
        {"name": "a", "usageId": 1, "value": 1, "access": "Admin"}]}})");
    bench.accessory.model = "";
    config.update(&bench.accessory);

    config.update_from_server(R"({"templateConfiguration": {"commonSettings": [
        {"name": "b", "usageId": 2, "value": 2, "access": "Admin"}]}})");
    EXPECT_EQ("", config.current_model);
    EXPECT_EQ((Settings{"2 b=2 (Admin)"}), settings_of(config));

    bench.accessory.model = "Varos K20";
    config.update(&bench.accessory);
    config.update_from_server(R"({"templateConfiguration": {"updatedTime": 1}})");
    EXPECT_EQ((Settings{"2 b=2 (Admin)"}), settings_of(config));
}

TEST(UpdateFromServer, ModelIsTheMarketedOneThatTheSerialNumberDetermines) {
    ConfigBench bench;
    bench.accessory.model = "Varos K30";
    bench.accessory.serial_number = "ABCDEFG4";
    OpenConfig config("acc-1", &bench.accessory);

    config.update_from_server(R"({"templateConfiguration": {"modelSpecificSettings": [
        {"models": ["Varos K30"], "modelFirmware": [{"firmwareName": "k30.bin",
                                                     "firmwareVersion": "30"}]},
        {"models": ["Varos K20"], "modelFirmware": [{"firmwareName": "k20.bin",
                                                     "firmwareVersion": "20"}]}]}})");

    EXPECT_EQ("Varos K20", config.current_model);
    EXPECT_EQ("20", config.pending_firmware);
}

TEST(UpdateFromServer, MissingFirmwareNameFailsTheDocument) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.update_from_server(R"({"templateConfiguration": {
        "commonSettings": [{"name": "a", "usageId": 1, "value": 1, "access": "Admin"}],
        "modelSpecificSettings": [{"models": ["Varos"], "modelFirmware": [{}]}]}})"));
}

TEST(UpdateFromServer, EmptyFirmwareVersionRequestsNothingAndPassesTheDocument) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    bench.accessory.software_version = "1-0";
    OpenConfig config("acc-1", &bench.accessory);
    config.pending_firmware = "0-9";

    EXPECT_TRUE(config.update_from_server(R"({"templateConfiguration": {
        "modelSpecificSettings": [{"models": ["Varos"], "modelFirmware": [
            {"firmwareName": "k20.bin", "firmwareVersion": ""}]}]}})"));
    EXPECT_EQ(Calls{}, bench.driver_calls());
    EXPECT_EQ("", config.pending_firmware);
    const Lines lines = bench.lines();
    ASSERT_LE(10U, lines.size());
    EXPECT_EQ(
        (Lines{
            "notice HeadsetConfigImpl: upgrade_firmware: received 1 entries for model firmware",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: ",
            "notice HeadsetConfigImpl: check_firmware_upgrade: FW ver candidate from "
            "Configuration: ",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-0",
            "notice HeadsetConfigImpl: check_firmware_upgrade: System info reported FW: 1-0",
            "info HeadsetConfigImpl: check_firmware_upgrade: firmware version is empty",
            "debug HeadsetConfigImpl: upgrade_firmware: Done",
            "debug HeadsetConfigImpl: upgrade_firmware: Success.",
            "info HeadsetConfigImpl: parse_remote_default_config: Success",
            "info HeadsetConfigImpl: update_from_server: success",
        }),
        Lines(lines.end() - 10, lines.end()));
}

TEST(UpdateFromServer, FirmwareResultReplacesTheFailureToFindSettings) {
    ConfigBench bench;
    bench.accessory.model = "Arlo 5";
    bench.accessory.dongle_model = "Link 2";
    bench.accessory.dongle_version = "3-0";
    OpenConfig config("acc-1", &bench.accessory);

    // Nothing for the headset, but firmware for its dongle.
    EXPECT_TRUE(config.update_from_server(R"({"templateConfiguration": {
        "modelSpecificSettings": [{"models": ["Link"], "modelFirmware": [
            {"firmwareName": "link.bin", "firmwareVersion": "3-1"}]}]}})"));
    EXPECT_TRUE(bench.plugins.log.contains(
        "HeadsetConfigImpl: parse_remote_default_config[PARSING-ERR]: No settings found to save."));
    EXPECT_EQ((Calls{R"(request_upgrade("acc-1", "3-1", "link.bin"))"}), bench.driver_calls());
}

TEST(UpdateFromServer, ErrorWhileStoringDoesNotHoldTheFirmwareBack) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    bench.accessory.software_version = "1-0";
    OpenConfig config("acc-1", &bench.accessory);
    bench.plugins.mutex_factory.throw_at_lock(1);

    EXPECT_TRUE(config.update_from_server(R"({"templateConfiguration": {
        "commonSettings": [{"name": "a", "usageId": 1, "value": 1, "access": "Admin"}],
        "modelSpecificSettings": [{"models": ["Varos"], "modelFirmware": [
            {"firmwareName": "k20.bin", "firmwareVersion": "1-1"}]}]}})"));
    EXPECT_TRUE(bench.plugins.log.contains(
        "HeadsetConfigImpl: parse_remote_default_config: Common settings were not saved"));
    EXPECT_EQ(Settings{}, settings_of(config));
    EXPECT_EQ((Calls{R"(request_upgrade("acc-1", "1-1", "k20.bin"))"}), bench.driver_calls());
}

TEST(UpdateFromServer, ObjectsThatParseAtTheSameTimeEachLogTheirOwnError) {
    constexpr std::ptrdiff_t rounds = 300;
    ConfigBench bench;
    OpenConfig first("acc-1", &bench.accessory);
    OpenConfig second("acc-2", &bench.accessory);
    const auto parse_again_and_again = [](OpenConfig& config, const std::string& document) {
        for (std::ptrdiff_t round = 0; round < rounds; ++round) {
            config.update_from_server(document);
        }
    };

    std::thread other(parse_again_and_again, std::ref(second), "[1, [2], second]");
    parse_again_and_again(first, "{\"a\": first}");
    other.join();

    const Lines lines = bench.lines();
    EXPECT_EQ(2U * rounds, lines.size());
    EXPECT_EQ(rounds, std::count(lines.begin(), lines.end(),
                                 "info HeadsetConfigImpl: update_from_server: first}"));
    EXPECT_EQ(rounds, std::count(lines.begin(), lines.end(),
                                 "info HeadsetConfigImpl: update_from_server: second]"));
}

int json_blocks = 0;

/// Counts the blocks that the parser holds, for its own life.
struct CountedJsonBlocks {
    CountedJsonBlocks() {
        json_blocks = 0;
        cJSON_Hooks hooks{
            [](std::size_t size) {
                ++json_blocks;
                return std::malloc(size);
            },
            [](void* block) {
                json_blocks -= block != nullptr ? 1 : 0;
                std::free(block);
            },
        };
        cJSON_InitHooks(&hooks);
    }
    ~CountedJsonBlocks() { cJSON_InitHooks(nullptr); }

    CountedJsonBlocks(const CountedJsonBlocks&) = delete;
    CountedJsonBlocks& operator=(const CountedJsonBlocks&) = delete;
};

TEST(UpdateFromServer, TreeIsFreedBeforeSuccessIsLoggedAndAfterAFailureIs) {
    struct Document {
        const char* text;
        const char* last_line;
        bool holds_tree;
    };
    for (const Document& document : {
             Document{R"({"templateConfiguration": {"modelSpecificSettings": [
                 {"models": ["Varos"], "modelFirmware": [{"firmwareName": "LATEST"}]}]}})",
                      "HeadsetConfigImpl: update_from_server: success", false},
             Document{R"({"templateConfiguration": {}})",
                      "HeadsetConfigImpl: update_from_server: Parsing remote config failed.", true},
             Document{R"({"commonSettings": []})",
                      "HeadsetConfigImpl: update_from_server: No config found.", true},
         }) {
        ConfigBench bench;
        bench.accessory.model = "Varos K20";
        OpenConfig config("acc-1", &bench.accessory);
        const CountedJsonBlocks counted;
        bool held_tree = false;
        bench.plugins.log.hook = [&](const LogLine& /*line*/) { held_tree = json_blocks != 0; };

        config.update_from_server(document.text);

        EXPECT_EQ(document.last_line, bench.plugins.log.texts().back());
        EXPECT_EQ(document.holds_tree, held_tree) << document.text;
        EXPECT_EQ(0, json_blocks) << document.text;
    }
}

TEST(ParseRemoteDefaultConfig, WithoutATemplateThereIsNothingToParse) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.parse_remote_default_config(nullptr));
    EXPECT_EQ((Lines{"notice HeadsetConfigImpl: parse_remote_default_config : No default config "
                     "settings to parse"}),
              bench.lines());
}

TEST(ParseRemoteDefaultConfig, HoldsNoLockWhileAnyLineIsWritten) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);
    config.current_model = "Arlo";
    int lines = 0;
    int lines_under_a_lock = 0;
    bench.plugins.log.hook = [&](const LogLine& /*line*/) {
        ++lines;
        lines_under_a_lock += bench.locks_held() != 0 ? 1 : 0;
    };

    config.update_from_server(R"({"templateConfiguration": {"updatedTime": 1,
        "commonSettings": [{"name": "a", "usageId": 1, "value": 1, "access": "Admin"}, {}],
        "modelSpecificSettings": [{"models": ["Varos"], "modelFirmware": [
            {"firmwareName": "k20.bin", "firmwareVersion": "1-1", "firmwareParams": [
                {"name": "b", "usageId": 2, "value": 1, "access": "Admin"}]}]}]}})");

    EXPECT_GT(lines, 20);
    EXPECT_EQ(0, lines_under_a_lock);
}

}  // namespace
}  // namespace headsetmgmt::test_support
