// SPDX-License-Identifier: Apache-2.0
// Tests of whole documents: what is logged, stored, sent and asked for, in order and to the byte.

#include <string>

#include <gtest/gtest.h>

#include "support/config_bench.h"

namespace headsetmgmt::test_support {
namespace {

TEST(DocumentTranscript, CompleteDocumentIsStoredSentAndLeadsToAnUpgrade) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    bench.accessory.software_version = "1-2-3";
    OpenConfig config("acc-1", &bench.accessory);

    const bool result = config.update_from_server(R"({"templateConfiguration": {
        "updatedTime": 1700,
        "commonSettings": [
            {"name": "sidetone", "usageId": 34, "value": 2, "access": "Admin"},
            {"name": "volume", "usageId": "32", "value": "5", "access": "guest"}],
        "modelSpecificSettings": [{
            "models": ["Arlo", "Varos K"],
            "modelFirmware": [{
                "firmwareName": "k20.bin", "firmwareVersion": "1-2-4",
                "firmwareParams": [
                    {"name": "equalizer", "usageId": 35, "value": 1.7, "access": "ADMIN"}]}]}]}})");

    EXPECT_TRUE(result);
    EXPECT_EQ(
        (Lines{
            "info HeadsetConfigImpl: update_from_server Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config parsed updated_time:",
            "info HeadsetConfigImpl: parse_remote_default_config: Current accessory plugged in: "
            "Varos K20",
            "info HeadsetConfigImpl: parse_remote_default_config: Updated time: 1700",
            "debug HeadsetConfigImpl: save_config_to_map: 34, key: sidetone, value: 2, access: "
            "Admin",
            "debug HeadsetConfigImpl: save_config_to_map: 0, key: volume, value: 5, access: User",
            "debug HeadsetConfigImpl: save_config_to_map: Saved 2 settings. current map size: 2",
            "notice HeadsetConfigImpl: save_common_settings_params: success",
            "debug HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K20",
            "debug HeadsetConfigImpl: extract_model_firmware_settings config_model_name: Arlo, "
            "device_model_name: Varos K20",
            "debug HeadsetConfigImpl: extract_model_firmware_settings config_model_name: Varos K, "
            "device_model_name: Varos K20",
            "debug HeadsetConfigImpl: save_config_to_map: 35, key: equalizer, value: 1, access: "
            "ADMIN",
            "debug HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 3",
            "notice HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
            "notice HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
            "debug HeadsetConfigImpl: apply_config_to_device: sidetone : (usage id: 34 , value: 2)",
            "notice HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
            "debug HeadsetConfigImpl: apply_config_to_device: equalizer : (usage id: 35 , value: "
            "1)",
            "debug HeadsetConfigImpl: save_model_specific_settings_params: Success.",
            "notice HeadsetConfigImpl: upgrade_firmware: received 1 entries for model firmware",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-4",
            "notice HeadsetConfigImpl: check_firmware_upgrade: FW ver candidate from "
            "Configuration: 1-2-4",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-3",
            "notice HeadsetConfigImpl: check_firmware_upgrade: System info reported FW: 1-2-3",
            "notice HeadsetConfigImpl: upgrade_firmware: Requesting upgrade to 1-2-4",
            "debug HeadsetConfigImpl: upgrade_firmware: Done",
            "debug HeadsetConfigImpl: upgrade_firmware: Success.",
            "info HeadsetConfigImpl: parse_remote_default_config: Success",
            "info HeadsetConfigImpl: update_from_server: success",
        }),
        bench.lines());
    EXPECT_EQ((Calls{
                  R"(apply_config_to_device("acc-1", "sidetone", 34, "2"))",
                  R"(apply_config_to_device("acc-1", "equalizer", 35, "1"))",
                  R"(request_upgrade("acc-1", "1-2-4", "k20.bin"))",
              }),
              bench.driver_calls());
    EXPECT_EQ((Settings{"32 volume=5 (User)", "34 sidetone=2 (Admin)", "35 equalizer=1 (ADMIN)"}),
              settings_of(config));
    EXPECT_EQ(1700.0, config.last_updated_time);
    EXPECT_EQ("Varos K20", config.current_model);
    EXPECT_EQ("1-2-4", config.pending_firmware);
}

TEST(DocumentTranscript, CommonSettingsAloneFailTheDocument) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);

    const bool result = config.update_from_server(R"({"templateConfiguration": {
        "commonSettings": [{"name": "sidetone", "usageId": 34, "value": 2, "access": "Admin"}]}})");

    EXPECT_FALSE(result);
    EXPECT_EQ(
        (Lines{
            "info HeadsetConfigImpl: update_from_server Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config parsed updated_time:",
            "info HeadsetConfigImpl: parse_remote_default_config: Current accessory plugged in: "
            "Varos K20",
            "notice HeadsetConfigImpl: parse_remote_default_config: No timestamp found on the "
            "config. Proceed with updating config.",
            "debug HeadsetConfigImpl: save_config_to_map: 34, key: sidetone, value: 2, access: "
            "Admin",
            "debug HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 1",
            "notice HeadsetConfigImpl: save_common_settings_params: success",
            "debug HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K20",
            "notice HeadsetConfigImpl: extract_model_firmware_settings[KORM-ERR]: Model specific "
            "settings not found in config",
            "info HeadsetConfigImpl: save_model_specific_settings_params : "
            "Model_firmware_settings do not exist",
            "info HeadsetConfigImpl: parse_remote_default_config: Model specific settings were "
            "not saved",
            "notice HeadsetConfigImpl: upgrade_firmware[PARSING-ERR]: Model_firmware_settings do "
            "not exist",
            "info HeadsetConfigImpl: parse_remote_default_config: Failed",
            "debug HeadsetConfigImpl: update_from_server: Parsing remote config failed.",
        }),
        bench.lines());
    EXPECT_EQ((Settings{"34 sidetone=2 (Admin)"}), settings_of(config));
    EXPECT_EQ(Calls{}, bench.driver_calls());
}

TEST(DocumentTranscript, EmptyTemplateSavesNothingAndFails) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.update_from_server(R"({"templateConfiguration": {}})"));
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

TEST(DocumentTranscript, FirmwareBlockWithoutSettingsPassesTheDocument) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    bench.accessory.software_version = "1-2-3";
    OpenConfig config("acc-1", &bench.accessory);

    const bool result = config.update_from_server(R"({"templateConfiguration": {
        "updatedTime": 1700,
        "modelSpecificSettings": [{"models": ["K20"], "modelFirmware": [
            {"firmwareName": "k20.bin", "firmwareVersion": "1-2-3"}]}]}})");

    EXPECT_TRUE(result);
    EXPECT_EQ(
        (Lines{
            "info HeadsetConfigImpl: update_from_server Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config parsed updated_time:",
            "info HeadsetConfigImpl: parse_remote_default_config: Current accessory plugged in: "
            "Varos K20",
            "info HeadsetConfigImpl: parse_remote_default_config: Updated time: 1700",
            "info HeadsetConfigImpl: save_common_settings_params: Common settings not found in "
            "config",
            "debug HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K20",
            "debug HeadsetConfigImpl: extract_model_firmware_settings config_model_name: K20, "
            "device_model_name: Varos K20",
            "warning HeadsetConfigImpl: apply_settings: No settings available for firmware",
            "debug HeadsetConfigImpl: save_model_specific_settings_params: Success.",
            "info HeadsetConfigImpl: parse_remote_default_config: Common settings were not saved",
            "notice HeadsetConfigImpl: upgrade_firmware: received 1 entries for model firmware",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-3",
            "notice HeadsetConfigImpl: check_firmware_upgrade: FW ver candidate from "
            "Configuration: 1-2-3",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-3",
            "notice HeadsetConfigImpl: check_firmware_upgrade: System info reported FW: 1-2-3",
            "info HeadsetConfigImpl: check_firmware_upgrade: versions are the same, do nothing",
            "notice HeadsetConfigImpl: upgrade_firmware: No upgrade required. This firmware's "
            "settings have been applied.",
            "debug HeadsetConfigImpl: upgrade_firmware: Done",
            "debug HeadsetConfigImpl: upgrade_firmware: Success.",
            "info HeadsetConfigImpl: parse_remote_default_config: Success",
            "info HeadsetConfigImpl: update_from_server: success",
        }),
        bench.lines());
    EXPECT_EQ(Calls{}, bench.driver_calls());
}

TEST(DocumentTranscript, WithADongleTheSettingsAreTheHeadsetsAndTheFirmwareIsTheDongles) {
    ConfigBench bench;
    bench.accessory.model = "Arlo 5";
    bench.accessory.software_version = "9-9-9";
    bench.accessory.dongle_model = "Link 2";
    bench.accessory.dongle_version = "3-0";
    OpenConfig config("acc-1", &bench.accessory);

    const bool result = config.update_from_server(R"({"templateConfiguration": {
        "updatedTime": 1700,
        "modelSpecificSettings": [
            {"models": ["Arlo"], "modelFirmware": [{
                "firmwareName": "arlo.bin", "firmwareVersion": "9-9-10", "firmwareParams": [
                    {"name": "tone", "usageId": 33, "value": 1, "access": "Admin"}]}]},
            {"models": ["Link"], "modelFirmware": [{
                "firmwareName": "link.bin", "firmwareVersion": "3-1", "firmwareParams": [
                    {"name": "power", "usageId": 99, "value": 1, "access": "Admin"}]}]}]}})");

    EXPECT_TRUE(result);
    EXPECT_EQ(
        (Lines{
            "info HeadsetConfigImpl: update_from_server Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config parsed updated_time:",
            "info HeadsetConfigImpl: parse_remote_default_config: Current accessory plugged in: "
            "Arlo 5",
            "info HeadsetConfigImpl: parse_remote_default_config: Updated time: 1700",
            "info HeadsetConfigImpl: save_common_settings_params: Common settings not found in "
            "config",
            "debug HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Arlo 5",
            "debug HeadsetConfigImpl: extract_model_firmware_settings config_model_name: Arlo, "
            "device_model_name: Arlo 5",
            "debug HeadsetConfigImpl: save_config_to_map: 33, key: tone, value: 1, access: Admin",
            "debug HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 1",
            "notice HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
            "debug HeadsetConfigImpl: apply_config_to_device: tone : (usage id: 33 , value: 1)",
            "debug HeadsetConfigImpl: save_model_specific_settings_params: Success.",
            "info HeadsetConfigImpl: parse_remote_default_config: Common settings were not saved",
            "debug HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Link 2",
            "debug HeadsetConfigImpl: extract_model_firmware_settings config_model_name: Arlo, "
            "device_model_name: Link 2",
            "debug HeadsetConfigImpl: extract_model_firmware_settings config_model_name: Link, "
            "device_model_name: Link 2",
            "info HeadsetConfigImpl: parse_remote_default_config: found dongle [Link 2], will "
            "upgrade dongle only",
            "notice HeadsetConfigImpl: upgrade_firmware: received 1 entries for model firmware",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 3-1",
            "notice HeadsetConfigImpl: check_firmware_upgrade: FW ver candidate from "
            "Configuration: 3-1",
            "info HeadsetConfigImpl: parse_firmware_version: Parsing: 3-0",
            "notice HeadsetConfigImpl: check_firmware_upgrade: System info reported FW: 3-0",
            "notice HeadsetConfigImpl: upgrade_firmware: Requesting upgrade to 3-1",
            "debug HeadsetConfigImpl: upgrade_firmware: Done",
            "debug HeadsetConfigImpl: upgrade_firmware: Success.",
            "info HeadsetConfigImpl: parse_remote_default_config: Success",
            "info HeadsetConfigImpl: update_from_server: success",
        }),
        bench.lines());
    EXPECT_EQ((Calls{R"(apply_config_to_device("acc-1", "tone", 33, "1"))",
                     R"(request_upgrade("acc-1", "3-1", "link.bin"))"}),
              bench.driver_calls());
}

TEST(DocumentTranscript, DongleWithoutAModelEntryFailsTheDocumentThoughSettingsAreSent) {
    ConfigBench bench;
    bench.accessory.model = "Arlo 5";
    bench.accessory.dongle_model = "Link 2";
    OpenConfig config("acc-1", &bench.accessory);

    const bool result = config.update_from_server(R"({"templateConfiguration": {
        "modelSpecificSettings": [{"models": ["Arlo"], "modelFirmware": [{
            "firmwareName": "arlo.bin", "firmwareVersion": "9-9-10", "firmwareParams": [
                {"name": "tone", "usageId": 33, "value": 1, "access": "Admin"}]}]}]}})");

    EXPECT_FALSE(result);
    EXPECT_EQ((Calls{R"(apply_config_to_device("acc-1", "tone", 33, "1"))"}), bench.driver_calls());
}

TEST(DocumentTranscript, ModelChangeEmptiesTheMapBeforeTheNewSettings) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);
    config.update_from_server(R"({"templateConfiguration": {"updatedTime": 1700,
        "commonSettings": [{"name": "old", "usageId": 1, "value": 1, "access": "Admin"}]}})");
    bench.accessory.model = "Varos K40";
    config.update(&bench.accessory);
    bench.clear_lines();

    config.update_from_server(R"({"templateConfiguration": {"updatedTime": 1800,
        "commonSettings": [{"name": "new", "usageId": 2, "value": 2, "access": "Admin"}]}})");

    EXPECT_EQ(
        (Lines{
            "info HeadsetConfigImpl: update_from_server Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config parsed updated_time:",
            "info HeadsetConfigImpl: parse_remote_default_config: Current accessory plugged in: "
            "Varos K40",
            "notice HeadsetConfigImpl: parse_remote_default_config: Model change detected !!",
            "info HeadsetConfigImpl: parse_remote_default_config: Updated time: 1800",
            "debug HeadsetConfigImpl: save_config_to_map: 2, key: new, value: 2, access: Admin",
            "debug HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 1",
            "notice HeadsetConfigImpl: save_common_settings_params: success",
            "debug HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K40",
            "notice HeadsetConfigImpl: extract_model_firmware_settings[KORM-ERR]: Model specific "
            "settings not found in config",
            "info HeadsetConfigImpl: save_model_specific_settings_params : "
            "Model_firmware_settings do not exist",
            "info HeadsetConfigImpl: parse_remote_default_config: Model specific settings were "
            "not saved",
            "notice HeadsetConfigImpl: upgrade_firmware[PARSING-ERR]: Model_firmware_settings do "
            "not exist",
            "info HeadsetConfigImpl: parse_remote_default_config: Failed",
            "debug HeadsetConfigImpl: update_from_server: Parsing remote config failed.",
        }),
        bench.lines());
    EXPECT_EQ((Settings{"2 new=2 (Admin)"}), settings_of(config));
    EXPECT_EQ("Varos K40", config.current_model);
}

}  // namespace
}  // namespace headsetmgmt::test_support
