// SPDX-License-Identifier: Apache-2.0
// Whole transcripts of inventory reports, each compared with the report that is posted.

#include <gtest/gtest.h>

#include "headsetmgmt/phone/flat_interface.h"

#include "support/phone_host.h"

namespace headsetmgmt::test_support {
namespace {

TEST(TranscriptsTest, ReportOfAHeadsetInItsDock) {
    AccessoryCache docked = headset_1();
    docked.dock_model = "Varos Base";
    docked.dock_serial_number = "DK0000001";
    PhoneHost host;
    host.start_up();

    send_inventory(shared(docked));
    host.run_worker();
    host.run_worker();

    EXPECT_EQ(host.take(),
              (Lines{
                  "log 5 PhonePluginImpl::sendInventory Accessory Info:\n"
                  "type:HEADSET\n"
                  "id:headset-1\n"
                  "vendor:Varos\n"
                  "vendor id:61525\n"
                  "model:Varos K30\n"
                  "serial number:SN1234567\n"
                  "sw ver:1-0-2\n"
                  "hw ver:B\n"
                  "dock model:Varos Base\n"
                  "dock serial number:DK0000001\n"
                  "dongle model:\n"
                  "dongle serial number:\n"
                  "dongle version:\n"
                  "connection type:usb\n"
                  "connection status:connected\n"
                  "\n",
                  "log 5 HeadsetInventoryMetricsImpl: send: Enter",
                  "log 5 ExecutorImpl::add_task: ENTER.\n",
                  "log 5 ExecutorImpl::ExecutorImpl adding a task\n",
                  "log 5 ExecutorImpl::threadLoop, start executing task\n",
                  "log 5 InventoryMetric: send_metric[LIB-ERR]: ENTER",
                  "log 5 InventoryMetric: send_metric[LIB-ERR]: metric param cast done",
                  "log 5 InventoryMetric: send_metric[LIB-ERR]: metric object created",
                  "log 5 HeadsetInventoryMetricsImpl: send_task: Enter",
                  "log 5 HeadsetInventoryMetricsImpl: assemble_metrics: Enter",
                  "log 5 HeadsetInventoryMetricsImpl: build_envelop: Enter",
                  "log 5 HeadsetInventoryMetricsImpl: build_host_payload: Enter",
                  "log 5 HeadsetInventoryMetricsImpl: build_dock_payload: Enter",
                  "log 5 HeadsetInventoryMetricsImpl: build_accessory_payload: Enter",
                  "log 5 HeadsetInventoryMetricsImpl: assemble_metrics: success",
                  "log 5 HeadsetInventoryMetricsImpl: get_post_url tokenized url: "
                  "https://{korm}/inventory",
                  "log 5 HeadsetInventoryMetricsImpl: get_post_url target inventory url: "
                  "https://korm-1/inventory",
                  "httpRequest 2 https://korm-1/inventory {\n"
                  "\t\"time\":\t1700000000,\n"
                  "\t\"key\":\t\"headsetInventory\",\n"
                  "\t\"value\":\t{\n"
                  "\t\t\"host\":\t{\n"
                  "\t\t\t\"client\":\t\"Orvik-VDI\",\n"
                  "\t\t\t\"serialNumber\":\t\"PHONE0001\",\n"
                  "\t\t\t\"deviceName\":\t\"TRMXXXXXXXX\",\n"
                  "\t\t\t\"model\":\t\"TRM\",\n"
                  "\t\t\t\"firmwareVersion\":\t\"12.5\",\n"
                  "\t\t\t\"hostOSVersion\":\t\"6.1\",\n"
                  "\t\t\t\"userId\":\t\"4711\"\n"
                  "\t\t},\n"
                  "\t\t\"dock\":\t{\n"
                  "\t\t\t\"serialNumber\":\t\"DK0000001\",\n"
                  "\t\t\t\"model\":\t\"Varos Base\"\n"
                  "\t\t},\n"
                  "\t\t\"headset\":\t{\n"
                  "\t\t\t\"serialNumber\":\t\"SN1234567\",\n"
                  "\t\t\t\"firmwareVersion\":\t\"1-0-2\",\n"
                  "\t\t\t\"vendor\":\t\"Varos\",\n"
                  "\t\t\t\"model\":\t\"Varos K30\",\n"
                  "\t\t\t\"connectionType\":\t\"usb\",\n"
                  "\t\t\t\"connectionStatus\":\t\"connected\"\n"
                  "\t\t}\n"
                  "\t}\n"
                  "}",
                  "log 5 InventoryMetric: send_metric[LIB-ERR]: metric sent",
                  "log 5 ExecutorImpl::threadLoop, complete executing task\n",
                  "log 5 ExecutorImpl::threadLoop exiting.\n",
              }));
}

TEST(TranscriptsTest, ReportOfACameraWithoutADock) {
    PhoneHost host;
    host.start_up();

    send_inventory(shared(camera_1()));
    host.run_worker();
    host.run_worker();

    EXPECT_EQ(
        host.take(),
        (Lines{
            "log 5 PhonePluginImpl::sendInventory Accessory Info:\n"
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
            "log 5 CameraInventoryMetricsImpl: send: Enter",
            "log 5 ExecutorImpl::add_task: ENTER.\n",
            "log 5 ExecutorImpl::ExecutorImpl adding a task\n",
            "log 5 ExecutorImpl::threadLoop, start executing task\n",
            "log 5 InventoryMetric: send_metric[LIB-ERR]: ENTER",
            "log 5 InventoryMetric: send_metric[LIB-ERR]: metric param cast done",
            "log 5 InventoryMetric: send_metric[LIB-ERR]: metric object created",
            "log 5 CameraInventoryMetricsImpl: send_task: Enter",
            "log 5 CameraInventoryMetricsImpl: assemble_metrics: Enter",
            "log 5 CameraInventoryMetricsImpl: build_envelop: Enter",
            "log 5 CameraInventoryMetricsImpl: build_host_payload: Enter",
            "log 5 CameraInventoryMetricsImpl: build_dock_payload: Enter",
            "log 5 CameraInventoryMetricsImpl: build_dock_payload: Dock serial number is empty.",
            "log 5 CameraInventoryMetricsImpl: assemble_metrics[LIB-ERR]: Building dock payload "
            "failed",
            "log 5 CameraInventoryMetricsImpl: build_accessory_payload: Enter",
            "log 5 CameraInventoryMetricsImpl: assemble_metrics: success",
            "log 5 CameraInventoryMetricsImpl: get_post_url tokenized url: "
            "https://{korm}/inventory",
            "log 5 CameraInventoryMetricsImpl: get_post_url target inventory url: "
            "https://korm-1/inventory",
            "httpRequest 2 https://korm-1/inventory {\n"
            "\t\"time\":\t1700000000,\n"
            "\t\"key\":\t\"cameraInventory\",\n"
            "\t\"value\":\t{\n"
            "\t\t\"host\":\t{\n"
            "\t\t\t\"client\":\t\"Orvik-VDI\",\n"
            "\t\t\t\"serialNumber\":\t\"PHONE0001\",\n"
            "\t\t\t\"deviceName\":\t\"TRMXXXXXXXX\",\n"
            "\t\t\t\"model\":\t\"TRM\",\n"
            "\t\t\t\"firmwareVersion\":\t\"12.5\",\n"
            "\t\t\t\"hostOSVersion\":\t\"6.1\",\n"
            "\t\t\t\"userId\":\t\"4711\"\n"
            "\t\t},\n"
            "\t\t\"headset\":\t{\n"
            "\t\t\t\"serialNumber\":\t\"CAM7654321\",\n"
            "\t\t\t\"firmwareVersion\":\t\"4-0-0\",\n"
            "\t\t\t\"vendor\":\t\"Varos\",\n"
            "\t\t\t\"model\":\t\"Varos C10\",\n"
            "\t\t\t\"connectionType\":\t\"usb\",\n"
            "\t\t\t\"connectionStatus\":\t\"connected\"\n"
            "\t\t}\n"
            "\t}\n"
            "}",
            "log 5 InventoryMetric: send_metric[LIB-ERR]: metric sent",
            "log 5 ExecutorImpl::threadLoop, complete executing task\n",
            "log 5 ExecutorImpl::threadLoop exiting.\n",
        }));
}

TEST(TranscriptsTest, AccessoryTypeWithoutAReportSaysOneLineMore) {
    AccessoryCache unknown = headset_1();
    unknown.accessory_type = 3;
    PhoneHost host;
    host.start_up();

    send_inventory(shared(unknown));
    host.run_worker();

    EXPECT_EQ(host.take(), (Lines{
                               "log 5 PhonePluginImpl::sendInventory Accessory Info:\n"
                               "type:MAX_ACCESSORY_TYPE\n"
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
                               "log 5 PhonePluginImpl::sendInventory rics factory: Unsupported "
                               "METRICS_TYPE: \n",
                           }));
}

}  // namespace
}  // namespace headsetmgmt::test_support
