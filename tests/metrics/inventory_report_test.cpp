// SPDX-License-Identifier: Apache-2.0
// The inventory report: the whole printed text, and what is logged while it is built.

#include <memory>
#include <string>
#include <vector>

#include <cjson/cJSON.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "headsetmgmt/log.h"

#include "core/json.h"
#include "metrics/inventory_metric.h"
#include "support/fake_accessory.h"
#include "support/fake_plugins.h"
#include "support/virtual_time.h"

namespace headsetmgmt::metrics {

namespace {

using log::LogLevel;
using test_support::FakeAccessory;
using test_support::FakePlugins;
using test_support::LogLine;
using test_support::VirtualTime;
using testing::HasSubstr;
using testing::Not;

class InventoryReportTest : public testing::Test {
protected:
    InventoryReportTest() {
        plugins.system_info.client_type = "Orvik-VDI";
        plugins.system_info.serial_number = "PH0012345";
        plugins.system_info.device_name = "TRM0012";
        plugins.system_info.model = "TRM";
        plugins.system_info.software_version = "14-2-1";
        plugins.system_info.os_version = "5.10.4";
        plugins.system_info.hardware_version = "not reported";
        plugins.system_info.user_id = "user-17";

        headset.varos_vid = true;
        headset.vendor = "Varos";
        headset.model = "Varos K30";
        headset.serial_number = "HIJKLMN7456";
        headset.software_version = "2-0-4";
        headset.hardware_version = "not reported";
        headset.dock_serial_number = "DK7781";
        headset.dock_model = "Varos Dock 3";
        headset.dongle_serial_number = "not reported";
        headset.connection_type = "USB";
        headset.connection_status = "connected";
    }

    std::string report() const { return HeadsetInventoryMetrics(&headset).assemble_metrics(); }

    VirtualTime clock{1795248000};
    FakePlugins plugins;
    FakeAccessory headset{HEADSET};
};

constexpr char docked_report[] = "{\n"
                                 "\t\"time\":\t1795248000,\n"
                                 "\t\"key\":\t\"headsetInventory\",\n"
                                 "\t\"value\":\t{\n"
                                 "\t\t\"host\":\t{\n"
                                 "\t\t\t\"client\":\t\"Orvik-VDI\",\n"
                                 "\t\t\t\"serialNumber\":\t\"PH0012345\",\n"
                                 "\t\t\t\"deviceName\":\t\"TRM0012\",\n"
                                 "\t\t\t\"model\":\t\"TRM\",\n"
                                 "\t\t\t\"firmwareVersion\":\t\"14-2-1\",\n"
                                 "\t\t\t\"hostOSVersion\":\t\"5.10.4\",\n"
                                 "\t\t\t\"userId\":\t\"user-17\"\n"
                                 "\t\t},\n"
                                 "\t\t\"dock\":\t{\n"
                                 "\t\t\t\"serialNumber\":\t\"DK7781\",\n"
                                 "\t\t\t\"model\":\t\"Varos Dock 3\"\n"
                                 "\t\t},\n"
                                 "\t\t\"headset\":\t{\n"
                                 "\t\t\t\"serialNumber\":\t\"HIJKLMN7456\",\n"
                                 "\t\t\t\"firmwareVersion\":\t\"2-0-4\",\n"
                                 "\t\t\t\"vendor\":\t\"Varos\",\n"
                                 "\t\t\t\"model\":\t\"Varos K30\",\n"
                                 "\t\t\t\"connectionType\":\t\"USB\",\n"
                                 "\t\t\t\"connectionStatus\":\t\"connected\"\n"
                                 "\t\t}\n"
                                 "\t}\n"
                                 "}";

constexpr char undocked_report[] = "{\n"
                                   "\t\"time\":\t1795248000,\n"
                                   "\t\"key\":\t\"headsetInventory\",\n"
                                   "\t\"value\":\t{\n"
                                   "\t\t\"host\":\t{\n"
                                   "\t\t\t\"client\":\t\"Orvik-VDI\",\n"
                                   "\t\t\t\"serialNumber\":\t\"PH0012345\",\n"
                                   "\t\t\t\"deviceName\":\t\"TRM0012\",\n"
                                   "\t\t\t\"model\":\t\"TRM\",\n"
                                   "\t\t\t\"firmwareVersion\":\t\"14-2-1\",\n"
                                   "\t\t\t\"hostOSVersion\":\t\"5.10.4\",\n"
                                   "\t\t\t\"userId\":\t\"user-17\"\n"
                                   "\t\t},\n"
                                   "\t\t\"headset\":\t{\n"
                                   "\t\t\t\"serialNumber\":\t\"HIJKLMN7456\",\n"
                                   "\t\t\t\"firmwareVersion\":\t\"2-0-4\",\n"
                                   "\t\t\t\"vendor\":\t\"Varos\",\n"
                                   "\t\t\t\"model\":\t\"Varos K30\",\n"
                                   "\t\t\t\"connectionType\":\t\"USB\",\n"
                                   "\t\t\t\"connectionStatus\":\t\"connected\"\n"
                                   "\t\t}\n"
                                   "\t}\n"
                                   "}";

TEST_F(InventoryReportTest, DockedHeadsetOfTheMakerIsReportedInFull) {
    EXPECT_EQ(report(), docked_report);

    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_envelop: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_host_payload: Enter"},
                  {LogLevel::info, "HeadsetInventoryMetricsImpl: build_dock_payload: Enter"},
                  {LogLevel::info, "HeadsetInventoryMetricsImpl: build_accessory_payload: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: success"},
              }));
}

TEST_F(InventoryReportTest, MissingDockNeverFailsTheReport) {
    headset.dock_serial_number = "";

    EXPECT_EQ(report(), undocked_report);

    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_envelop: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_host_payload: Enter"},
                  {LogLevel::info, "HeadsetInventoryMetricsImpl: build_dock_payload: Enter"},
                  {LogLevel::error,
                   "HeadsetInventoryMetricsImpl: build_dock_payload: Dock serial number is empty."},
                  {LogLevel::error, "HeadsetInventoryMetricsImpl: assemble_metrics[LIB-ERR]: "
                                    "Building dock payload failed"},
                  {LogLevel::info, "HeadsetInventoryMetricsImpl: build_accessory_payload: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: success"},
              }));
}

TEST_F(InventoryReportTest, HeadsetOfAnotherMakerIsReportedWithoutPhoneAndDock) {
    headset.varos_vid = false;
    headset.vendor = "Acme";
    headset.model = "Acme One";

    EXPECT_EQ(report(), "{\n"
                        "\t\"time\":\t1795248000,\n"
                        "\t\"key\":\t\"headsetInventory\",\n"
                        "\t\"value\":\t{\n"
                        "\t\t\"host\":\t{\n"
                        "\t\t\t\"userId\":\t\"user-17\"\n"
                        "\t\t},\n"
                        "\t\t\"headset\":\t{\n"
                        "\t\t\t\"serialNumber\":\t\"HIJKLMN7456\",\n"
                        "\t\t\t\"firmwareVersion\":\t\"2-0-4\",\n"
                        "\t\t\t\"vendor\":\t\"Acme\",\n"
                        "\t\t\t\"model\":\t\"Acme One\",\n"
                        "\t\t\t\"connectionType\":\t\"USB\",\n"
                        "\t\t\t\"connectionStatus\":\t\"connected\"\n"
                        "\t\t}\n"
                        "\t}\n"
                        "}");

    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_envelop: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_host_payload: Enter"},
                  {LogLevel::info, "HeadsetInventoryMetricsImpl: build_accessory_payload: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: success"},
              }));
}

TEST_F(InventoryReportTest, CameraIsReportedUnderHeadset) {
    FakeAccessory camera(CAMERA);
    camera.vendor = "Varos";
    camera.model = "Varos Cam 5";
    camera.serial_number = "CAM0001";
    camera.software_version = "1-0-0";
    camera.connection_type = "USB";
    camera.connection_status = "connected";

    EXPECT_EQ(CameraInventoryMetrics(&camera).assemble_metrics(),
              "{\n"
              "\t\"time\":\t1795248000,\n"
              "\t\"key\":\t\"cameraInventory\",\n"
              "\t\"value\":\t{\n"
              "\t\t\"host\":\t{\n"
              "\t\t\t\"client\":\t\"Orvik-VDI\",\n"
              "\t\t\t\"serialNumber\":\t\"PH0012345\",\n"
              "\t\t\t\"deviceName\":\t\"TRM0012\",\n"
              "\t\t\t\"model\":\t\"TRM\",\n"
              "\t\t\t\"firmwareVersion\":\t\"14-2-1\",\n"
              "\t\t\t\"hostOSVersion\":\t\"5.10.4\",\n"
              "\t\t\t\"userId\":\t\"user-17\"\n"
              "\t\t},\n"
              "\t\t\"headset\":\t{\n"
              "\t\t\t\"serialNumber\":\t\"CAM0001\",\n"
              "\t\t\t\"firmwareVersion\":\t\"1-0-0\",\n"
              "\t\t\t\"vendor\":\t\"Varos\",\n"
              "\t\t\t\"model\":\t\"Varos Cam 5\",\n"
              "\t\t\t\"connectionType\":\t\"USB\",\n"
              "\t\t\t\"connectionStatus\":\t\"connected\"\n"
              "\t\t}\n"
              "\t}\n"
              "}");

    EXPECT_EQ(
        plugins.log.lines(),
        (std::vector<LogLine>{
            {LogLevel::notice, "CameraInventoryMetricsImpl: assemble_metrics: Enter"},
            {LogLevel::notice, "CameraInventoryMetricsImpl: build_envelop: Enter"},
            {LogLevel::notice, "CameraInventoryMetricsImpl: build_host_payload: Enter"},
            {LogLevel::info, "CameraInventoryMetricsImpl: build_dock_payload: Enter"},
            {LogLevel::error,
             "CameraInventoryMetricsImpl: build_dock_payload: Dock serial number is empty."},
            {LogLevel::error,
             "CameraInventoryMetricsImpl: assemble_metrics[LIB-ERR]: Building dock payload failed"},
            {LogLevel::info, "CameraInventoryMetricsImpl: build_accessory_payload: Enter"},
            {LogLevel::notice, "CameraInventoryMetricsImpl: assemble_metrics: success"},
        }));
}

TEST_F(InventoryReportTest, K30WithA4AtTheEighthPlaceIsReportedAsK20) {
    headset.varos_vid = false;
    headset.vendor = "";
    headset.serial_number = "ABCDEFG4123";

    EXPECT_EQ(report(), "{\n"
                        "\t\"time\":\t1795248000,\n"
                        "\t\"key\":\t\"headsetInventory\",\n"
                        "\t\"value\":\t{\n"
                        "\t\t\"host\":\t{\n"
                        "\t\t\t\"userId\":\t\"user-17\"\n"
                        "\t\t},\n"
                        "\t\t\"headset\":\t{\n"
                        "\t\t\t\"serialNumber\":\t\"ABCDEFG4123\",\n"
                        "\t\t\t\"firmwareVersion\":\t\"2-0-4\",\n"
                        "\t\t\t\"vendor\":\t\"\",\n"
                        "\t\t\t\"model\":\t\"Varos K20\",\n"
                        "\t\t\t\"connectionType\":\t\"USB\",\n"
                        "\t\t\t\"connectionStatus\":\t\"connected\"\n"
                        "\t\t}\n"
                        "\t}\n"
                        "}");
}

TEST_F(InventoryReportTest, EmptyAccessorySerialNumberFailsTheWholeReport) {
    headset.serial_number = "";

    EXPECT_EQ(report(), "");

    EXPECT_EQ(
        plugins.log.lines(),
        (std::vector<LogLine>{
            {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: Enter"},
            {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_envelop: Enter"},
            {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_host_payload: Enter"},
            {LogLevel::info, "HeadsetInventoryMetricsImpl: build_dock_payload: Enter"},
            {LogLevel::info, "HeadsetInventoryMetricsImpl: build_accessory_payload: Enter"},
            {LogLevel::error, "HeadsetInventoryMetricsImpl: build_accessory_payload: accessory "
                              "serial number is empty."},
            {LogLevel::error, "HeadsetInventoryMetricsImpl: assemble_metrics[LIB-ERR]: Building "
                              "accessory payload failed"},
        }));
}

TEST_F(InventoryReportTest, AccessoryThatThrowsFailsTheWholeReport) {
    headset.throw_at_vendor(1);

    EXPECT_EQ(report(), "");

    EXPECT_EQ(plugins.log.lines().back(),
              (LogLine{LogLevel::error, "HeadsetInventoryMetricsImpl: assemble_metrics[LIB-ERR]: "
                                        "JSON was not formed correctly"}));
}

TEST_F(InventoryReportTest, VendorThatBeginsWithTheMakersWordInAnyCaseIsTheMakers) {
    headset.varos_vid = false;
    for (const char* vendor : {"Varos", "VAROS", "varos", "Varos Inc.", "vArOs InC.", "Varosity"}) {
        headset.vendor = vendor;
        EXPECT_THAT(report(), HasSubstr("\"dock\"")) << vendor;
        EXPECT_THAT(report(), HasSubstr("\"client\"")) << vendor;
    }
}

TEST_F(InventoryReportTest, VendorThatMerelyContainsTheMakersWordIsNotTheMakers) {
    headset.varos_vid = false;
    for (const char* vendor : {"Acme-Varos", " Varos", "Varo", "", "V"}) {
        headset.vendor = vendor;
        EXPECT_THAT(report(), Not(HasSubstr("\"dock\""))) << vendor;
        EXPECT_THAT(report(), Not(HasSubstr("\"client\""))) << vendor;
    }
}

TEST_F(InventoryReportTest, MakersVendorIdCountsWhateverTheVendorIsCalled) {
    headset.varos_vid = true;
    headset.vendor = "Acme-Varos";

    EXPECT_THAT(report(), HasSubstr("\"dock\""));

    EXPECT_THAT(report(), HasSubstr("\"vendor\":\t\"Acme-Varos\""));
}

TEST_F(InventoryReportTest, AccessoryIsAskedForItsVendorWithThePhonesFacts) {
    SystemInfoInterface* asked_with_before_host = nullptr;
    plugins.log.hook = [&](const LogLine& line) {
        if (line.text == "HeadsetInventoryMetricsImpl: build_host_payload: Enter") {
            asked_with_before_host = headset.shared->last_asked_with;
        }
    };

    report();

    EXPECT_EQ(asked_with_before_host, &plugins.system_info);
    EXPECT_EQ(headset.shared->last_asked_with, &plugins.system_info);
}

TEST_F(InventoryReportTest, AccessoryIsAskedForItsSerialNumberWithThePhonesFacts) {
    headset.serial_number = "";  // then it is the last question

    report();

    EXPECT_EQ(headset.shared->last_asked_with, &plugins.system_info);
}

TEST_F(InventoryReportTest, AccessoryIsReportedAsItWasWhenTheMetricWasMade) {
    HeadsetInventoryMetrics metric(&headset);
    headset.serial_number = "changed";

    EXPECT_EQ(metric.assemble_metrics(), docked_report);
}

TEST_F(InventoryReportTest, TimeIsTakenWhenTheReportIsBuilt) {
    HeadsetInventoryMetrics metric(&headset);
    clock.advance(61);

    EXPECT_THAT(metric.assemble_metrics(), HasSubstr("\"time\":\t1795248061,"));
}

TEST_F(InventoryReportTest, EmptyFactsAreWrittenAsEmptyTexts) {
    plugins.system_info.user_id = "";
    headset.varos_vid = false;
    headset.vendor = headset.model = headset.software_version = "";
    headset.connection_type = headset.connection_status = "";
    headset.serial_number = "S";

    EXPECT_EQ(report(), "{\n"
                        "\t\"time\":\t1795248000,\n"
                        "\t\"key\":\t\"headsetInventory\",\n"
                        "\t\"value\":\t{\n"
                        "\t\t\"host\":\t{\n"
                        "\t\t\t\"userId\":\t\"\"\n"
                        "\t\t},\n"
                        "\t\t\"headset\":\t{\n"
                        "\t\t\t\"serialNumber\":\t\"S\",\n"
                        "\t\t\t\"firmwareVersion\":\t\"\",\n"
                        "\t\t\t\"vendor\":\t\"\",\n"
                        "\t\t\t\"model\":\t\"\",\n"
                        "\t\t\t\"connectionType\":\t\"\",\n"
                        "\t\t\t\"connectionStatus\":\t\"\"\n"
                        "\t\t}\n"
                        "\t}\n"
                        "}");
}

TEST_F(InventoryReportTest, CharactersThatJsonReservesAreEscaped) {
    headset.connection_type = "a\"b\\c\nd";

    EXPECT_THAT(report(), HasSubstr("\"connectionType\":\t\"a\\\"b\\\\c\\nd\""));
}

TEST_F(InventoryReportTest, EnvelopeAndHostPayloadLogThroughTheLoggerTheyAreGiven) {
    HeadsetInventoryMetrics metric(&headset);
    log::Logger given(&plugins.log, "Given", true);

    const JsonOwner envelop(metric.build_envelop(&given));
    const JsonOwner host(metric.build_host_payload(&given, false));

    EXPECT_STREQ(JsonTextOwner(cJSON_PrintUnformatted(envelop.get())).get(),
                 "{\"time\":1795248000,\"key\":\"headsetInventory\"}");
    EXPECT_STREQ(JsonTextOwner(cJSON_PrintUnformatted(host.get())).get(),
                 "{\"userId\":\"user-17\"}");
    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{{LogLevel::notice, "Given: build_envelop: Enter"},
                                    {LogLevel::notice, "Given: build_host_payload: Enter"}}));
}

}  // namespace

}  // namespace headsetmgmt::metrics
