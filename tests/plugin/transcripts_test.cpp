// SPDX-License-Identifier: Apache-2.0
// Whole transcripts of configuration: every log line and host call, in order and to the byte.

#include <gtest/gtest.h>

#include "headsetmgmt/phone/flat_interface.h"

#include "support/phone_host.h"

namespace headsetmgmt::test_support {
namespace {

constexpr char document[] = R"({"templateConfiguration": {
    "updatedTime": 1700000000,
    "commonSettings": [
        {"name": "Bluetooth", "usageId": 39, "value": 1, "access": "User"},
        {"name": "Speaker Volume", "usageId": "32", "value": "7", "access": "Admin"}],
    "modelSpecificSettings": [
        {"models": ["K20", "K30"], "modelFirmware": [
            {"firmwareName": "k30.bin", "firmwareVersion": "2-0-1", "firmwareParams": [
                {"name": "Sidetone", "usageId": 34, "value": 2, "access": "ADMIN"}]}]}]}})";

/// A headset that was not known is attached while no run is under way.
const Lines headset_attached = {
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
    "log 5 Lib::ConfigManagerImpl: create_accessory: Creating Config object for id: headset-1",
    "log 5 Lib::ConfigManagerImpl: create_accessory: Config object created",
    "log 5 Lib::ConfigManagerImpl: configure_accessory: ENTER",
    "log 5 Lib::ConfigManagerImpl: configure_accessory:headset-1",
    "log 5 HeadsetConfigImpl: is_config_required: No version timestamp to compare, proceed with "
    "configure",
    "log 5 ExecutorImpl::add_task: ENTER.\n",
    "log 5 ExecutorImpl::ExecutorImpl adding a task\n",
    "log 5 Lib::ConfigManagerImpl: configure_accessory: added async task",
    "log 5 PhonePluginImpl::configure_headset: suceeded.\n",
};

const Lines fetch_requested = {
    "log 5 ExecutorImpl::threadLoop, start executing task\n",
    "log 5 Lib::ConfigManagerImpl: configure_accessory_task id:headset-1",
    "log 5 : get_config_url: tokenized url: http://{tftp}/{userid}/headsets.json",
    "httpRequest 0 http://[fe80::1]/4711/headsets.json null",
    "log 5 Lib::ConfigManagerImpl: configure_accessory_task: pending fetch config",
    "log 5 ExecutorImpl::threadLoop, complete executing task\n",
};

const Lines pass_ended = {"log 5 ExecutorImpl::threadLoop exiting.\n"};

/// The headset takes its settings and its firmware from the document.
const Lines headset_configured = {
    "log 5 HeadsetConfigImpl: update_from_server Enter:",
    "log 5 HeadsetConfigImpl: parse_remote_default_config Enter:",
    "log 5 HeadsetConfigImpl: parse_remote_default_config parsed updated_time:",
    "log 5 HeadsetConfigImpl: parse_remote_default_config: Current accessory plugged in: Varos K30",
    "log 5 HeadsetConfigImpl: parse_remote_default_config: Updated time: 1.7e+09",
    "log 5 HeadsetConfigImpl: save_config_to_map: 39, key: Bluetooth, value: 1, access: User",
    "log 5 HeadsetConfigImpl: save_config_to_map: 0, key: Speaker Volume, value: 7, access: Admin",
    "log 5 HeadsetConfigImpl: save_config_to_map: Saved 2 settings. current map size: 2",
    "log 5 HeadsetConfigImpl: save_common_settings_params: success",
    "log 5 HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K30",
    "log 5 HeadsetConfigImpl: extract_model_firmware_settings config_model_name: K20, "
    "device_model_name: Varos K30",
    "log 5 HeadsetConfigImpl: extract_model_firmware_settings config_model_name: K30, "
    "device_model_name: Varos K30",
    "log 5 HeadsetConfigImpl: save_config_to_map: 34, key: Sidetone, value: 2, access: ADMIN",
    "log 5 HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 3",
    "log 5 HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
    "log 5 HeadsetConfigImpl: apply_config_to_device: Speaker Volume : (usage id: 32 , value: 7)",
    "apply_changes headset-1|Speaker Volume|32|7",
    "log 5 HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
    "log 5 HeadsetConfigImpl: apply_config_to_device: Sidetone : (usage id: 34 , value: 2)",
    "apply_changes headset-1|Sidetone|34|2",
    "log 5 HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
    "log 5 HeadsetConfigImpl: save_model_specific_settings_params: Success.",
    "log 5 HeadsetConfigImpl: upgrade_firmware: received 1 entries for model firmware",
    "log 5 HeadsetConfigImpl: parse_firmware_version: Parsing: 2-0-1",
    "log 5 HeadsetConfigImpl: check_firmware_upgrade: FW ver candidate from Configuration: 2-0-1",
    "log 5 HeadsetConfigImpl: parse_firmware_version: Parsing: 1-0-2",
    "log 5 HeadsetConfigImpl: check_firmware_upgrade: System info reported FW: 1-0-2",
    "log 5 HeadsetConfigImpl: upgrade_firmware: Requesting upgrade to 2-0-1",
    "request_firmware_upgrade headset-1|2-0-1|k30.bin",
    "log 5 HeadsetConfigImpl: upgrade_firmware: Done",
    "log 5 HeadsetConfigImpl: upgrade_firmware: Success.",
    "log 5 HeadsetConfigImpl: parse_remote_default_config: Success",
    "log 5 HeadsetConfigImpl: update_from_server: success",
};

/// The camera is in no model entry: it keeps the common settings and sends none of them.
const Lines camera_not_served = {
    "log 5 CameraConfigImpl: update_from_server Enter:",
    "log 5 CameraConfigImpl: parse_remote_default_config Enter:",
    "log 5 CameraConfigImpl: parse_remote_default_config parsed updated_time:",
    "log 5 CameraConfigImpl: parse_remote_default_config: Current accessory plugged in: Varos C10",
    "log 5 CameraConfigImpl: parse_remote_default_config: Updated time: 1.7e+09",
    "log 5 CameraConfigImpl: save_config_to_map: 39, key: Bluetooth, value: 1, access: User",
    "log 5 CameraConfigImpl: save_config_to_map: 0, key: Speaker Volume, value: 7, access: Admin",
    "log 5 CameraConfigImpl: save_config_to_map: Saved 2 settings. current map size: 2",
    "log 5 CameraConfigImpl: save_common_settings_params: success",
    "log 5 CameraConfigImpl: extract_model_firmware_settings: MODEL NAME Varos C10",
    "log 5 CameraConfigImpl: extract_model_firmware_settings config_model_name: K20, "
    "device_model_name: Varos C10",
    "log 5 CameraConfigImpl: extract_model_firmware_settings config_model_name: K30, "
    "device_model_name: Varos C10",
    "log 5 CameraConfigImpl: save_model_specific_settings_params : Model_firmware_settings do not "
    "exist",
    "log 5 CameraConfigImpl: parse_remote_default_config: Model specific settings were not saved",
    "log 5 CameraConfigImpl: upgrade_firmware[PARSING-ERR]: Model_firmware_settings do not exist",
    "log 5 CameraConfigImpl: parse_remote_default_config: Failed",
    "log 5 CameraConfigImpl: update_from_server: Parsing remote config failed.",
    "log 5 Lib::ConfigManagerImpl: on_fetch_config_success: unable to update config retrieved from "
    "server in library",
};

const Lines run_ended = {
    "log 5 Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER",
    "log 5 Lib::ConfigManagerImpl: on_fetch_config_successExit",
};

TEST(TranscriptsTest, StartSaysTwoLines) {
    PhoneHost host;
    create_headset_mgmt(record_host_log_line);

    ASSERT_TRUE(host.start());

    EXPECT_EQ(host.take(), (Lines{"log 5 init_headsetmgmt_lib.\n",
                                  "log 5 ExecutorImpl::ExecutorImpl: ENTER.\n"}));
}

TEST(TranscriptsTest, AttachedHeadsetIsConfiguredAndUpgraded) {
    PhoneHost host;
    host.start_up();

    EXPECT_TRUE(configure_headset(shared(headset_1())));
    host.run_worker();
    host.run_worker();
    httpResponse(document, 200);

    EXPECT_EQ(host.take(), joined({headset_attached, fetch_requested, pass_ended,
                                   headset_configured, run_ended}));
}

TEST(TranscriptsTest, FailedFetchIsRepeatedAndThenApplied) {
    PhoneHost host;
    host.start_up();
    configure_headset(shared(headset_1()));
    host.run_worker();
    host.take();

    httpResponse(nullptr, 404);
    host.run_worker();
    host.run_worker();
    httpResponse(document, 200);

    const Lines failed = {
        "log 5 Lib::ConfigManagerImpl: on_fetch_config_failure reason code: 404",
        "log 5 ExecutorImpl::add_task: ENTER.\n",
        "log 5 ExecutorImpl::ExecutorImpl adding a task\n",
    };
    EXPECT_EQ(host.take(), joined({failed, pass_ended, fetch_requested, pass_ended,
                                   headset_configured, run_ended}));
}

TEST(TranscriptsTest, TwoAccessoriesShareOneRun) {
    PhoneHost host;
    host.start_up();

    configure_headset(shared(headset_1()));
    EXPECT_TRUE(configure_headset(shared(camera_1())));
    host.run_worker();
    host.run_worker();

    const Lines camera_attached = {
        "log 5 PhonePluginImpl::configure_headset ENTER\n",
        "log 5 PhonePluginImpl::configure_headset Accessory Info:\n"
        "type:CAMERA\n"
        "id:camera-1\n"
        "vendor:Varos\n"
        "vendor id:61525\n"
        "model:Varos C10\n"
        "serial number:CAM7654321\n"
        "sw ver:4-0-0\n"
        "hw ver:\n"
        "dock model:\n"
        "dock serial number:\n"
        "dongle model:\n"
        "dongle serial number:\n"
        "dongle version:\n"
        "connection type:usb\n"
        "connection status:connected\n"
        "\n",
        "log 5 Lib::ConfigManagerImpl: initialize_accessory: called for id: camera-1",
        "log 5 Lib::ConfigManagerImpl: get_config_object: Cannot find config object",
        "log 5 Lib::ConfigManagerImpl: create_accessory: Creating Config object for id: camera-1",
        "log 5 Lib::ConfigManagerImpl: create_accessory: Config object created",
        "log 5 Lib::ConfigManagerImpl: configure_accessory: ENTER",
        "log 5 Lib::ConfigManagerImpl: configure_accessory:camera-1",
        "log 5 CameraConfigImpl: is_config_required: No version timestamp to compare, proceed with "
        "configure",
        "log 5 Lib::ConfigManagerImpl: configure_accessory: previous configure_accessory is in "
        "progress, ignore this one",
        "log 5 PhonePluginImpl::configure_headset: suceeded.\n",
    };
    const Lines fetch_for_two_requested = {
        "log 5 ExecutorImpl::threadLoop, start executing task\n",
        "log 5 Lib::ConfigManagerImpl: configure_accessory_task2 pending accessories",
        "log 5 : get_config_url: tokenized url: http://{tftp}/{userid}/headsets.json",
        "httpRequest 0 http://[fe80::1]/4711/headsets.json null",
        "log 5 Lib::ConfigManagerImpl: configure_accessory_task: pending fetch config",
        "log 5 ExecutorImpl::threadLoop, complete executing task\n",
    };
    EXPECT_EQ(host.take(),
              joined({headset_attached, camera_attached, fetch_for_two_requested, pass_ended}));

    httpResponse(document, 200);

    // The order of the two is that of their objects' addresses.
    const Lines applied = host.take();
    const bool headset_first = applied.front() == headset_configured.front();
    EXPECT_EQ(applied, headset_first ? joined({headset_configured, camera_not_served, run_ended})
                                     : joined({camera_not_served, headset_configured, run_ended}));
}

}  // namespace
}  // namespace headsetmgmt::test_support
