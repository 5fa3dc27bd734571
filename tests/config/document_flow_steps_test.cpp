// SPDX-License-Identifier: Apache-2.0
// Tests of a document's way, step by step: how a template's nodes become entries of the settings
// map and are sent.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/config.h"

#include "support/config_bench.h"

namespace headsetmgmt::test_support {
namespace {

using config::ApplyType;

TEST(SaveConfigToMap, StoresEachParameterAndLogsTheirNumber) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner params = parse(R"([
        {"name": "sidetone", "usageId": 34, "value": 2, "access": "Admin"},
        {"name": "volume", "usageId": "32", "value": "high", "access": "guest"}])");

    const int count = config.save_config_to_map(params.get());

    EXPECT_EQ(2, count);
    EXPECT_EQ((Settings{"32 volume=high (User)", "34 sidetone=2 (Admin)"}), settings_of(config));
    EXPECT_EQ(
        (Lines{
            "debug HeadsetConfigImpl: save_config_to_map: 34, key: sidetone, value: 2, "
            "access: Admin",
            "debug HeadsetConfigImpl: save_config_to_map: 0, key: volume, value: high, "
            "access: User",
            "debug HeadsetConfigImpl: save_config_to_map: Saved 2 settings. current map size: 2",
        }),
        bench.lines());
}

TEST(SaveConfigToMap, EachFaultyParameterIsLoggedAndSkipped) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner params = parse(R"([
        {"usageId": 1, "value": 1, "access": "Admin"},
        {"name": "", "usageId": 1, "value": 1, "access": "Admin"},
        {"name": 5, "usageId": 1, "value": 1, "access": "Admin"},
        {"name": "a", "value": 1, "access": "Admin"},
        {"name": "b", "usageId": null, "value": 1, "access": "Admin"},
        {"name": "c", "usageId": 1, "access": "Admin"},
        {"name": "d", "usageId": 1, "value": null, "access": "Admin"},
        {"name": "e", "usageId": 1, "value": 1},
        {"name": "f", "usageId": 1, "value": 1, "access": ""},
        {"name": "g", "usageId": 1, "value": 1, "access": 7},
        {"name": "h", "usageId": "-12", "value": 1, "access": "Admin"},
        {"name": "i", "usageId": true, "value": 1, "access": "Admin"},
        {"name": "j", "usageId": 1, "value": [1], "access": "Admin"},
        {"name": "good", "usageId": 9, "value": 1, "access": "Admin"}])");

    const int count = config.save_config_to_map(params.get());

    EXPECT_EQ(1, count);
    EXPECT_EQ((Settings{"9 good=1 (Admin)"}), settings_of(config));
    EXPECT_EQ(
        (Lines{
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Parameter extracted has "
            "missing KEY name. Cannot identify which parameter.",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Parameter extracted has "
            "missing KEY name. Cannot identify which parameter.",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Parameter extracted has "
            "missing KEY name. Cannot identify which parameter.",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Null Usage ID for param a",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Null Usage ID for param b",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Null Value for param c",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Null Value for param d",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Invalid Access field for "
            "param e",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Invalid Access field for "
            "param f",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Invalid Access field for "
            "param g",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Invalid Usage ID for param h",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Invalid Usage ID for param i",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Invalid Value for param j",
            "debug HeadsetConfigImpl: save_config_to_map: 9, key: good, value: 1, access: Admin",
            "debug HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 1",
        }),
        bench.lines());
}

TEST(SaveConfigToMap, LaterOneOfTwoParametersWithOneIdWins) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner params = parse(R"([
        {"name": "first", "usageId": 9, "value": 1, "access": "Admin"},
        {"name": "second", "usageId": "9", "value": 2, "access": "Admin"}])");

    const int count = config.save_config_to_map(params.get());

    EXPECT_EQ(2, count);
    EXPECT_EQ((Settings{"9 second=2 (Admin)"}), settings_of(config));
    EXPECT_EQ("debug HeadsetConfigImpl: save_config_to_map: Saved 2 settings. current map size: 1",
              bench.lines().back());
}

TEST(SaveConfigToMap, KeepsEarlierSettingsAndCountsThemInTheMapSize) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(1, ConfigParam{1, "earlier", "1", "User"});
    const JsonOwner params =
        parse(R"([{"name": "later", "usageId": 9, "value": 2, "access": "Admin"}])");

    config.save_config_to_map(params.get());

    EXPECT_EQ((Settings{"1 earlier=1 (User)", "9 later=2 (Admin)"}), settings_of(config));
    EXPECT_EQ("debug HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 2",
              bench.lines().back());
}

TEST(SaveConfigToMap, EmptyArrayStoresNothing) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner params = parse("[]");

    EXPECT_EQ(0, config.save_config_to_map(params.get()));
    EXPECT_EQ((Lines{"debug HeadsetConfigImpl: save_config_to_map: Saved 0 settings. current map "
                     "size: 0"}),
              bench.lines());
}

TEST(SaveConfigToMap, MissingArrayStoresNothing) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ(0, config.save_config_to_map(nullptr));
    EXPECT_EQ((Lines{"debug HeadsetConfigImpl: save_config_to_map: Saved 0 settings. current map "
                     "size: 0"}),
              bench.lines());
}

TEST(SaveCommonSettings, WithoutATemplateNothingIsSaved) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.save_common_settings_params(nullptr));
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: save_common_settings_params: No default common "
                     "settings found."}),
              bench.lines());
}

TEST(SaveCommonSettings, MissingOnesAreNotSaved) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner node = parse(R"({"updatedTime": 1})");

    EXPECT_FALSE(config.save_common_settings_params(node.get()));
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: save_common_settings_params: Common settings not "
                     "found in config"}),
              bench.lines());
}

TEST(SaveCommonSettings, EmptyArrayCountsAsNotSaved) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner node = parse(R"({"commonSettings": []})");

    EXPECT_FALSE(config.save_common_settings_params(node.get()));
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: save_common_settings_params: Common settings not "
                     "found in config"}),
              bench.lines());
}

TEST(SaveCommonSettings, ArrayOfInvalidElementsOnlyCountsAsSaved) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner node = parse(R"({"commonSettings": [{"name": "a"}, 5]})");

    EXPECT_TRUE(config.save_common_settings_params(node.get()));
    EXPECT_EQ(
        (Lines{
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Null Usage ID for param a",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Parameter extracted has "
            "missing KEY name. Cannot identify which parameter.",
            "debug HeadsetConfigImpl: save_config_to_map: Saved 0 settings. current map size: 0",
            "notice HeadsetConfigImpl: save_common_settings_params: success",
        }),
        bench.lines());
}

TEST(SaveCommonSettings, AreNotSentToTheDevice) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner node = parse(R"({"commonSettings": [
        {"name": "sidetone", "usageId": 34, "value": 2, "access": "Admin"}]})");

    EXPECT_TRUE(config.save_common_settings_params(node.get()));
    EXPECT_EQ((Settings{"34 sidetone=2 (Admin)"}), settings_of(config));
    EXPECT_EQ(Calls{}, bench.driver_calls());
}

TEST(SaveCommonSettings, ErrorWhileStoringIsLoggedDirectlyAfterTheTag) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner node = parse(R"({"commonSettings": [
        {"name": "kept", "usageId": 1, "value": 1, "access": "Admin"},
        {"name": "lost", "usageId": 2, "value": 2, "access": "Admin"}]})");
    bench.plugins.mutex_factory.throw_at_lock(2);

    EXPECT_FALSE(config.save_common_settings_params(node.get()));
    EXPECT_EQ((Lines{
                  "debug HeadsetConfigImpl: save_config_to_map: 1, key: kept, value: 1, "
                  "access: Admin",
                  "error HeadsetConfigImpl: save_common_settings_params[LIB-ERR]fake mutex",
              }),
              bench.lines());
    EXPECT_EQ((Settings{"1 kept=1 (Admin)"}), settings_of(config));
}

TEST(ExtractModelFirmware, FirstMatchingNameOfTheFirstMatchingEntryWins) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner node = parse(R"({"modelSpecificSettings": [
        {"modelFirmware": [{"firmwareName": "nameless"}]},
        {"models": ["", "k3", "Arlo"], "modelFirmware": [{"firmwareName": "arlo"}]},
        {"models": ["Beta", "K3", "Varos"], "modelFirmware": [{"firmwareName": "first"}]},
        {"models": ["Varos K30"], "modelFirmware": [{"firmwareName": "exact"}]}]})");

    const cJSON* firmware = config.extract_model_firmware_settings(node.get(), "Varos K30 Headset");

    ASSERT_NE(nullptr, firmware);
    EXPECT_STREQ("first",
                 cJSON_GetStringValue(cJSON_GetObjectItem(firmware->child, "firmwareName")));
    EXPECT_EQ(
        (Lines{
            "debug HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K30 "
            "Headset",
            "debug HeadsetConfigImpl: extract_model_firmware_settings config_model_name: , "
            "device_model_name: Varos K30 Headset",
            "debug HeadsetConfigImpl: extract_model_firmware_settings config_model_name: k3, "
            "device_model_name: Varos K30 Headset",
            "debug HeadsetConfigImpl: extract_model_firmware_settings config_model_name: Arlo, "
            "device_model_name: Varos K30 Headset",
            "debug HeadsetConfigImpl: extract_model_firmware_settings config_model_name: Beta, "
            "device_model_name: Varos K30 Headset",
            "debug HeadsetConfigImpl: extract_model_firmware_settings config_model_name: K3, "
            "device_model_name: Varos K30 Headset",
        }),
        bench.lines());
}

TEST(ExtractModelFirmware, TemplateWithoutModelSettingsIsLogged) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner node = parse(R"({"updatedTime": 1})");

    EXPECT_EQ(nullptr, config.extract_model_firmware_settings(node.get(), "Varos K30"));
    EXPECT_EQ((Lines{
                  "debug HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K30",
                  "notice HeadsetConfigImpl: extract_model_firmware_settings[KORM-ERR]: Model "
                  "specific settings not found in config",
              }),
              bench.lines());
}

TEST(ExtractModelFirmware, NoMatchGivesNothingAndLogsNoMore) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner node = parse(R"({"modelSpecificSettings": [
        {"models": ["Arlo"], "modelFirmware": [{"firmwareName": "arlo"}]}]})");

    EXPECT_EQ(nullptr, config.extract_model_firmware_settings(node.get(), "Varos K30"));
    EXPECT_EQ((Lines{
                  "debug HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K30",
                  "debug HeadsetConfigImpl: extract_model_firmware_settings config_model_name: "
                  "Arlo, device_model_name: Varos K30",
              }),
              bench.lines());
}

TEST(ExtractModelFirmware, MatchingEntryWithoutFirmwareEndsTheSearch) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner node = parse(R"({"modelSpecificSettings": [
        {"models": ["Varos"]},
        {"models": ["Varos K30"], "modelFirmware": [{"firmwareName": "second"}]}]})");

    EXPECT_EQ(nullptr, config.extract_model_firmware_settings(node.get(), "Varos K30"));
}

TEST(ExtractModelFirmware, DeviceWithoutAModelNameMatchesNothing) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner node = parse(R"({"modelSpecificSettings": [
        {"models": ["", "Varos"], "modelFirmware": [{"firmwareName": "any"}]}]})");

    EXPECT_EQ(nullptr, config.extract_model_firmware_settings(node.get(), ""));
}

TEST(SaveModelSettings, WithoutAFirmwareBlockNothingIsSaved) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.save_model_specific_settings_params(nullptr));
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: save_model_specific_settings_params : "
                     "Model_firmware_settings do not exist"}),
              bench.lines());
}

TEST(SaveModelSettings, AreStoredAndTheWholeMapIsSent) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(1, ConfigParam{1, "common", "4", "Admin"});
    const JsonOwner firmware = parse(R"([{"firmwareParams": [
        {"name": "equalizer", "usageId": 35, "value": 1.7, "access": "ADMIN"}]}])");

    EXPECT_TRUE(config.save_model_specific_settings_params(firmware.get()));
    EXPECT_EQ((Calls{R"(apply_config_to_device("acc-1", "common", 1, "4"))",
                     R"(apply_config_to_device("acc-1", "equalizer", 35, "1"))"}),
              bench.driver_calls());
    EXPECT_EQ(
        (Lines{
            "debug HeadsetConfigImpl: save_config_to_map: 35, key: equalizer, value: 1, access: "
            "ADMIN",
            "debug HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 2",
            "notice HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
            "debug HeadsetConfigImpl: apply_config_to_device: common : (usage id: 1 , value: 4)",
            "notice HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
            "debug HeadsetConfigImpl: apply_config_to_device: equalizer : (usage id: 35 , value: "
            "1)",
            "debug HeadsetConfigImpl: save_model_specific_settings_params: Success.",
        }),
        bench.lines());
}

TEST(SaveModelSettings, FirmwareBlockWithoutParametersStillCountsAsSaved) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner firmware = parse(R"([{"firmwareName": "k.bin"}])");

    EXPECT_TRUE(config.save_model_specific_settings_params(firmware.get()));
    EXPECT_EQ((Lines{
                  "warning HeadsetConfigImpl: apply_settings: No settings available for firmware",
                  "debug HeadsetConfigImpl: save_model_specific_settings_params: Success.",
              }),
              bench.lines());
    EXPECT_EQ(Calls{}, bench.driver_calls());
}

TEST(ApplySettings, WithoutParametersNothingIsApplied) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.apply_settings(nullptr));
    EXPECT_EQ((Lines{"warning HeadsetConfigImpl: apply_settings: No settings available for "
                     "firmware"}),
              bench.lines());
}

TEST(ApplySettings, OneStoredParameterSendsTheMap) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner params = parse(R"([
        {"name": "faulty"},
        {"name": "tone", "usageId": 33, "value": 1, "access": "Admin"}])");

    EXPECT_TRUE(config.apply_settings(params.get()));
    EXPECT_EQ(
        (Lines{
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Null Usage ID for param "
            "faulty",
            "debug HeadsetConfigImpl: save_config_to_map: 33, key: tone, value: 1, access: Admin",
            "debug HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 1",
            "notice HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
            "debug HeadsetConfigImpl: apply_config_to_device: tone : (usage id: 33 , value: 1)",
        }),
        bench.lines());
    EXPECT_EQ((Calls{R"(apply_config_to_device("acc-1", "tone", 33, "1"))"}), bench.driver_calls());
}

TEST(ApplySettings, NoStoredParameterSendsNothingThoughTheMapHoldsSome) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(1, ConfigParam{1, "kept", "1", "Admin"});
    const JsonOwner params = parse("[]");

    EXPECT_FALSE(config.apply_settings(params.get()));
    EXPECT_EQ(
        (Lines{
            "debug HeadsetConfigImpl: save_config_to_map: Saved 0 settings. current map size: 1",
            "notice HeadsetConfigImpl: apply_settings: Failed to apply current firmware version "
            "settings.",
        }),
        bench.lines());
    EXPECT_EQ(Calls{}, bench.driver_calls());
}

TEST(ApplySettings, ErrorWhileStoringCountsAsNothingStored) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const JsonOwner params = parse(R"([
        {"name": "kept", "usageId": 1, "value": 1, "access": "Admin"},
        {"name": "lost", "usageId": 2, "value": 2, "access": "Admin"}])");
    bench.plugins.mutex_factory.throw_at_lock(2);

    EXPECT_FALSE(config.apply_settings(params.get()));
    EXPECT_EQ((Lines{
                  "debug HeadsetConfigImpl: save_config_to_map: 1, key: kept, value: 1, "
                  "access: Admin",
                  "error HeadsetConfigImpl: apply_settings[LIB-ERR]: fake mutex",
                  "notice HeadsetConfigImpl: apply_settings: Failed to apply current firmware "
                  "version settings.",
              }),
              bench.lines());
    EXPECT_EQ((Settings{"1 kept=1 (Admin)"}), settings_of(config));
    EXPECT_EQ(Calls{}, bench.driver_calls());
}

/// Records how the map was sent instead of sending it.
class SendingRecorder : public OpenConfig {
public:
    using OpenConfig::OpenConfig;

    void apply_config_to_device(ApplyType type) const override { sent.push_back(type); }

    mutable std::vector<ApplyType> sent;
};

TEST(ApplySettings, MapIsSentThroughTheInterfaceAsAConfigure) {
    ConfigBench bench;
    SendingRecorder config("acc-1", &bench.accessory);
    const JsonOwner params =
        parse(R"([{"name": "tone", "usageId": 33, "value": 1, "access": "Admin"}])");

    EXPECT_TRUE(config.apply_settings(params.get()));
    EXPECT_EQ((std::vector<ApplyType>{ApplyType::CONFIGURE}), config.sent);
}

TEST(ApplySettings, ResetIsSentThroughTheInterface) {
    ConfigBench bench;
    SendingRecorder config("acc-1", &bench.accessory);

    EXPECT_TRUE(config.reset_config());
    EXPECT_EQ((std::vector<ApplyType>{ApplyType::RESET}), config.sent);
}

}  // namespace
}  // namespace headsetmgmt::test_support
