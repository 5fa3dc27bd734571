// SPDX-License-Identifier: Apache-2.0
// Whole transcripts of accessories that change, and of a library that is stopped and started again.

#include <gtest/gtest.h>

#include "headsetmgmt/phone/flat_interface.h"

#include "support/phone_host.h"

namespace headsetmgmt::test_support {
namespace {

constexpr char first_document[] = R"({"templateConfiguration": {
    "modelSpecificSettings": [{"models": ["K30"], "modelFirmware": [
        {"firmwareName": "k30.bin", "firmwareVersion": "Current", "firmwareParams": [
            {"name": "Sidetone", "usageId": 34, "value": 2, "access": "Admin"}]}]}]}})";

/// Attaches the headset and has it take the document above.
void configure_with_first_document(PhoneHost& host) {
    configure_headset(shared(headset_1()));
    host.run_worker();
    host.run_worker();
    httpResponse(first_document, 200);
}

TEST(TranscriptsTest, OtherModelUnderTheSameIdForgetsTheSettingsOfTheFirst) {
    constexpr char document[] = R"({"templateConfiguration": {
        "modelSpecificSettings": [{"models": ["H5"], "modelFirmware": [
            {"firmwareName": "latest", "firmwareParams": [
                {"name": "Equalizer", "usageId": 35, "value": "flat", "access": "Admin"}]}]}]}})";
    PhoneHost host;
    host.start_up();
    configure_with_first_document(host);
    host.take();

    AccessoryCache other_model = headset_1();
    other_model.model = "Varos H5";
    configure_headset(shared(other_model));
    host.run_worker();
    host.run_worker();
    httpResponse(document, 200);

    EXPECT_EQ(
        host.take(),
        (Lines{
            "log 5 PhonePluginImpl::configure_headset ENTER\n",
            "log 5 PhonePluginImpl::configure_headset Accessory Info:\n"
            "type:HEADSET\n"
            "id:headset-1\n"
            "vendor:Varos\n"
            "vendor id:61525\n"
            "model:Varos H5\n"
            "serial number:SN1234567\n"
            "sw ver:1-0-2\n"
            "hw ver:B\n"
            "dock model:\n"
            "dock serial number:\n"
            "dongle model:\n"
            "dongle serial number:\n"
            "dongle version:\n"
            "connection type:usb\n"
            "connection status:connected\n"
            "\n",
            "log 5 Lib::ConfigManagerImpl: initialize_accessory: called for id: headset-1",
            "log 5 Lib::ConfigManagerImpl: configure_accessory: ENTER",
            "log 5 Lib::ConfigManagerImpl: configure_accessory:headset-1",
            "log 5 HeadsetConfigImpl: is_config_required: No version timestamp to compare, proceed "
            "with configure",
            "log 5 ExecutorImpl::add_task: ENTER.\n",
            "log 5 ExecutorImpl::ExecutorImpl adding a task\n",
            "log 5 Lib::ConfigManagerImpl: configure_accessory: added async task",
            "log 5 PhonePluginImpl::configure_headset: suceeded.\n",
            "log 5 ExecutorImpl::threadLoop, start executing task\n",
            "log 5 Lib::ConfigManagerImpl: configure_accessory_task id:headset-1",
            "log 5 : get_config_url: tokenized url: http://{tftp}/{userid}/headsets.json",
            "httpRequest 0 http://[fe80::1]/4711/headsets.json null",
            "log 5 Lib::ConfigManagerImpl: configure_accessory_task: pending fetch config",
            "log 5 ExecutorImpl::threadLoop, complete executing task\n",
            "log 5 ExecutorImpl::threadLoop exiting.\n",
            "log 5 HeadsetConfigImpl: update_from_server Enter:",
            "log 5 HeadsetConfigImpl: parse_remote_default_config Enter:",
            "log 5 HeadsetConfigImpl: parse_remote_default_config parsed updated_time:",
            "log 5 HeadsetConfigImpl: parse_remote_default_config: Current accessory plugged in: "
            "Varos H5",
            "log 5 HeadsetConfigImpl: parse_remote_default_config: Model change detected !!",
            "log 5 HeadsetConfigImpl: parse_remote_default_config: No timestamp found on the "
            "config. "
            "Proceed with updating config.",
            "log 5 HeadsetConfigImpl: save_common_settings_params: Common settings not found in "
            "config",
            "log 5 HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos H5",
            "log 5 HeadsetConfigImpl: extract_model_firmware_settings config_model_name: H5, "
            "device_model_name: Varos H5",
            "log 5 HeadsetConfigImpl: save_config_to_map: 35, key: Equalizer, value: flat, access: "
            "Admin",
            "log 5 HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 1",
            "log 5 HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
            "log 5 HeadsetConfigImpl: apply_config_to_device: Equalizer : (usage id: 35 , value: "
            "flat)",
            "apply_changes headset-1|Equalizer|35|flat",
            "log 5 HeadsetConfigImpl: save_model_specific_settings_params: Success.",
            "log 5 HeadsetConfigImpl: parse_remote_default_config: Common settings were not saved",
            "log 5 HeadsetConfigImpl: upgrade_firmware: received 1 entries for model firmware",
            "log 5 HeadsetConfigImpl: upgrade_firmware: Legacy Flow - delegate upgrade to config "
            "driver",
            "log 5 HeadsetConfigImpl: upgrade_firmware: Success.",
            "log 5 HeadsetConfigImpl: parse_remote_default_config: Success",
            "log 5 HeadsetConfigImpl: update_from_server: success",
            "log 5 Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
            "log 5 Lib::ConfigManagerImpl: on_fetch_config_successExit",
        }));
}

TEST(TranscriptsTest, DongleIsUpgradedInPlaceOfItsHeadset) {
    constexpr char document[] = R"({"templateConfiguration": {
        "updatedTime": 1234.5,
        "modelSpecificSettings": [
            {"models": ["K30"], "modelFirmware": [
                {"firmwareName": "k30.bin", "firmwareVersion": "2-0-1", "firmwareParams": [
                    {"name": "Sidetone", "usageId": 34, "value": 2, "access": "Admin"}]}]},
            {"models": ["D1"], "modelFirmware": [
                {"firmwareName": "d1.bin", "firmwareVersion": "1-2-0"}]}]}})";
    AccessoryCache with_dongle = headset_1();
    with_dongle.dongle_model = "Varos D1";
    with_dongle.dongle_serial_number = "DG0000001";
    with_dongle.dongle_version = "1-1-0";
    PhoneHost host;
    host.start_up();
    configure_headset(shared(with_dongle));
    host.run_worker();
    host.run_worker();
    host.take();

    httpResponse(document, 200);

    EXPECT_EQ(
        host.take(),
        (Lines{
            "log 5 HeadsetConfigImpl: update_from_server Enter:",
            "log 5 HeadsetConfigImpl: parse_remote_default_config Enter:",
            "log 5 HeadsetConfigImpl: parse_remote_default_config parsed updated_time:",
            "log 5 HeadsetConfigImpl: parse_remote_default_config: Current accessory plugged in: "
            "Varos K30",
            "log 5 HeadsetConfigImpl: parse_remote_default_config: Updated time: 1234.5",
            "log 5 HeadsetConfigImpl: save_common_settings_params: Common settings not found in "
            "config",
            "log 5 HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K30",
            "log 5 HeadsetConfigImpl: extract_model_firmware_settings config_model_name: K30, "
            "device_model_name: Varos K30",
            "log 5 HeadsetConfigImpl: save_config_to_map: 34, key: Sidetone, value: 2, access: "
            "Admin",
            "log 5 HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 1",
            "log 5 HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
            "log 5 HeadsetConfigImpl: apply_config_to_device: Sidetone : (usage id: 34 , value: 2)",
            "apply_changes headset-1|Sidetone|34|2",
            "log 5 HeadsetConfigImpl: save_model_specific_settings_params: Success.",
            "log 5 HeadsetConfigImpl: parse_remote_default_config: Common settings were not saved",
            "log 5 HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos D1",
            "log 5 HeadsetConfigImpl: extract_model_firmware_settings config_model_name: K30, "
            "device_model_name: Varos D1",
            "log 5 HeadsetConfigImpl: extract_model_firmware_settings config_model_name: D1, "
            "device_model_name: Varos D1",
            "log 5 HeadsetConfigImpl: parse_remote_default_config: found dongle [Varos D1], will "
            "upgrade dongle only",
            "log 5 HeadsetConfigImpl: upgrade_firmware: received 1 entries for model firmware",
            "log 5 HeadsetConfigImpl: parse_firmware_version: Parsing: 1-2-0",
            "log 5 HeadsetConfigImpl: check_firmware_upgrade: FW ver candidate from Configuration: "
            "1-2-0",
            "log 5 HeadsetConfigImpl: parse_firmware_version: Parsing: 1-1-0",
            "log 5 HeadsetConfigImpl: check_firmware_upgrade: System info reported FW: 1-1-0",
            "log 5 HeadsetConfigImpl: upgrade_firmware: Requesting upgrade to 1-2-0",
            "request_firmware_upgrade headset-1|1-2-0|d1.bin",
            "log 5 HeadsetConfigImpl: upgrade_firmware: Done",
            "log 5 HeadsetConfigImpl: upgrade_firmware: Success.",
            "log 5 HeadsetConfigImpl: parse_remote_default_config: Success",
            "log 5 HeadsetConfigImpl: update_from_server: success",
            "log 5 Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
            "log 5 Lib::ConfigManagerImpl: on_fetch_config_successExit",
        }));
}

TEST(TranscriptsTest, FactoryResetSendsTheUsersSettingsToo) {
    constexpr char document[] = R"({"templateConfiguration": {
        "modelSpecificSettings": [{"models": ["K30"], "modelFirmware": [
            {"firmwareName": "k30.bin", "firmwareVersion": "Current", "firmwareParams": [
                {"name": "Sidetone", "usageId": 34, "value": 2, "access": "User"}]}]}]}})";
    PhoneHost host;
    host.start_up();
    configure_headset(shared(headset_1()));
    host.run_worker();
    host.run_worker();
    httpResponse(document, 200);
    host.take();

    EXPECT_TRUE(factory_reset("headset-1"));

    EXPECT_EQ(host.take(),
              (Lines{
                  "log 5 Lib::ConfigManagerImpl: reset_to_admin_defaults: ENTER",
                  "log 5 HeadsetConfigImpl: reset_config: Resetting config",
                  "log 5 HeadsetConfigImpl: apply_config_to_device: Apply type: RESET",
                  "log 5 HeadsetConfigImpl: apply_config_to_device: Sidetone : (usage id: 34 , "
                  "value: 2)",
                  "apply_changes headset-1|Sidetone|34|2",
              }));
}

TEST(TranscriptsTest, AccessoryRemovedDuringItsRunEndsTheRun) {
    PhoneHost host;
    host.start_up();
    configure_headset(shared(headset_1()));
    host.run_worker();
    host.run_worker();
    host.take();

    EXPECT_TRUE(remove_peripheral("headset-1"));
    httpResponse(first_document, 200);

    EXPECT_EQ(host.take(),
              (Lines{
                  "log 5 PhonePluginImpl::removePeripheral ENTER\n",
                  "log 5 Lib::ConfigManagerImpl: remove_accessory: ENTER",
                  "log 5 Lib::ConfigManagerImpl: remove_accessory: erased [1] pending config",
                  "log 5 Lib::ConfigManagerImpl: on_fetch_config_success: no configuration in "
                  "progress, dropping data",
              }));
}

TEST(TranscriptsTest, SecondStartKnowsNothingOfTheFirst) {
    PhoneHost host;
    host.start_up();
    configure_with_first_document(host);
    host.take();

    host.stop();
    ASSERT_TRUE(host.start());
    int value = 7;
    EXPECT_FALSE(retrieve_config("headset-1", USAGE_SIDETONE, &value));
    EXPECT_EQ(value, 7);
    configure_headset(shared(headset_1()));
    host.run_worker();

    EXPECT_EQ(
        host.take(),
        (Lines{
            "log 5 stop headset mgmt\n",
            "log 5 init_headsetmgmt_lib.\n",
            "log 5 ExecutorImpl::ExecutorImpl: ENTER.\n",
            "log 5 Lib::ConfigManagerImpl: retrieve_config: ENTER",
            "log 5 Lib::ConfigManagerImpl: retrieve_config: ENTER",
            "log 5 Lib::ConfigManagerImpl: get_config_object: Cannot find config object",
            "log 5 Lib::ConfigManagerImpl: retrieve_config: No config object",
            "log 5 PhonePluginImpl::configure_headset ENTER\n",
            "log 5 PhonePluginImpl::configure_headset Accessory Info:\n"
            "type:HEADSET\n"
            "id:headset-1\n"
            "vendor:Varos\n"
            "vendor id:61525\n"
            "model:Varos K30\n"
            "serial number:SN1234567\n"
            "sw ver:1-0-2\n"
            "hw ver:B\n"
            "dock model:\n"
            "dock serial number:\n"
            "dongle model:\n"
            "dongle serial number:\n"
            "dongle version:\n"
            "connection type:usb\n"
            "connection status:connected\n"
            "\n",
            "log 5 Lib::ConfigManagerImpl: initialize_accessory: called for id: headset-1",
            "log 5 Lib::ConfigManagerImpl: get_config_object: Cannot find config object",
            "log 5 Lib::ConfigManagerImpl: create_accessory: Creating Config object for id: "
            "headset-1",
            "log 5 Lib::ConfigManagerImpl: create_accessory: Config object created",
            "log 5 Lib::ConfigManagerImpl: configure_accessory: ENTER",
            "log 5 Lib::ConfigManagerImpl: configure_accessory:headset-1",
            "log 5 HeadsetConfigImpl: is_config_required: No version timestamp to compare, proceed "
            "with configure",
            "log 5 ExecutorImpl::add_task: ENTER.\n",
            "log 5 ExecutorImpl::ExecutorImpl adding a task\n",
            "log 5 Lib::ConfigManagerImpl: configure_accessory: added async task",
            "log 5 PhonePluginImpl::configure_headset: suceeded.\n",
            "log 5 ExecutorImpl::threadLoop, start executing task\n",
            "log 5 Lib::ConfigManagerImpl: configure_accessory_task id:headset-1",
            "log 5 : get_config_url: tokenized url: ",
            "httpRequest 0 defaultheadsetconfig.json null",
            "log 5 Lib::ConfigManagerImpl: configure_accessory_task: pending fetch config",
            "log 5 ExecutorImpl::threadLoop, complete executing task\n",
        }));
}

TEST(TranscriptsTest, FailureBesideAnUnansweredRequestIsFetchedAgainAtOnceAndNothingElse) {
    PhoneHost host;
    host.start_up();
    configure_headset(shared(headset_1()));
    host.run_worker();
    remove_peripheral("headset-1");
    configure_headset(shared(headset_1()));
    host.run_worker();
    host.run_worker();
    host.take();

    httpResponse("", 503);
    host.run_worker();
    host.run_worker();

    EXPECT_EQ(host.take(),
              (Lines{
                  "log 5 Lib::ConfigManagerImpl: on_fetch_config_failure reason code: 503",
                  "log 5 ExecutorImpl::add_task: ENTER.\n",
                  "log 5 ExecutorImpl::ExecutorImpl adding a task\n",
                  "log 5 ExecutorImpl::threadLoop, start executing task\n",
                  "log 5 Lib::ConfigManagerImpl: configure_accessory_task id:headset-1",
                  "log 5 : get_config_url: tokenized url: http://{tftp}/{userid}/headsets.json",
                  "httpRequest 0 http://[fe80::1]/4711/headsets.json null",
                  "log 5 Lib::ConfigManagerImpl: configure_accessory_task: pending fetch config",
                  "log 5 ExecutorImpl::threadLoop, complete executing task\n",
                  "log 5 ExecutorImpl::threadLoop exiting.\n",
              }));
    host.run_worker();
    EXPECT_EQ(host.take(), Lines{});
}

}  // namespace
}  // namespace headsetmgmt::test_support
