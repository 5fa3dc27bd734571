// SPDX-License-Identifier: Apache-2.0
// Each exported function, called as a host outside calls it: through the shared library alone. Host
// and fakes know nothing but the public headers.

#include <map>
#include <memory>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "headsetmgmt/config.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/metrics.h"
#include "headsetmgmt/phone/flat_interface.h"
#include "headsetmgmt/plugins.h"
#include "headsetmgmt/utilities.h"

#include "support/fake_accessory.h"
#include "support/fake_config_driver.h"
#include "support/fake_dispatcher.h"
#include "support/fake_executor.h"
#include "support/fake_host.h"
#include "support/fake_mutex_factory.h"
#include "support/fake_system_info.h"
#include "support/lines.h"
#include "support/recording_log.h"

namespace headsetmgmt::test_support {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::StartsWith;

constexpr char document[] = R"({"templateConfiguration": {
    "updatedTime": 1795248000,
    "commonSettings": [
        {"name": "1 Speaker Volume", "usageId": 32, "value": 7, "access": "User"}],
    "modelSpecificSettings": [{
        "models": ["Varos K20"],
        "modelFirmware": [{
            "firmwareName": "k20.img", "firmwareVersion": "2-1-0",
            "firmwareParams": [
                {"name": "Sidetone", "usageId": 34, "value": "medium", "access": "Admin"}]}]}]}})";

/// The core with a record of fakes. The record is never taken out again, so it lives forever.
struct World {
    World() {
        record.log = &log;
        record.dispatcher = &dispatcher;
        record.config_driver = &config_driver;
        record.system_info = &system_info;
        record.executor = &executor;
        record.mutex_factory = &mutex_factory;
    }

    RecordingLog log;
    FakeDispatcher dispatcher;
    FakeConfigDriver config_driver;
    FakeSystemInfo system_info;
    FakeExecutor executor;
    FakeMutexFactory mutex_factory;
    Plugins record;
};

World& installed_world() {
    static auto* const world = new World;
    world->config_driver.take_calls();
    world->executor.drop_all();
    EXPECT_TRUE(init(world->record));
    return *world;
}

struct Headset : FakeAccessory {
    Headset() {
        vendor = "Varos";
        model = "Varos K30";
        serial_number = "ABCDEFG4";
        software_version = "2-0-4";
    }
};

/// The calls of the host functions, without the log lines.
Lines calls() {
    Lines calls;
    for (const std::string& event : fake_host().transcript()) {
        if (event.compare(0, 4, "log ") != 0) {
            calls.push_back(event);
        }
    }
    return calls;
}

/// The phone's library, started, with one headset that was attached and configured.
class FlatInterfaceTest : public testing::Test {
protected:
    void SetUp() override {
        FakeHost& host = fresh_fake_host();
        ASSERT_TRUE(create_headset_mgmt(record_host_log_line));
        ASSERT_TRUE(start_headset_mgmt("TRM", "14-2-1", "./"));
        const char* tftp_servers[3] = {"192.0.2.1", "", ""};
        const char* korm_servers[3] = {"192.0.2.2", "", ""};
        ASSERT_TRUE(setHeadsetConfigUrl("http://{tftp}/{userid}.json", "http://{korm}/inventory",
                                        "", tftp_servers, korm_servers, "user-17"));
        headset->device_id = "headset-1";
        headset->accessory_type = HEADSET;
        headset->model = "Varos K30";
        headset->serial_number = "ABCDEFG4123";
        headset->software_version = "2-0-4";
        ASSERT_TRUE(configure_headset(headset));
        ASSERT_TRUE(host.wait_for_http_requests(1));
        httpResponse(document, 200);
        ASSERT_THAT(calls(), ElementsAre("httpRequest 0 http://192.0.2.1/user-17.json null",
                                         "apply_changes headset-1|Sidetone|34|medium",
                                         "request_firmware_upgrade headset-1|2-1-0|k20.img"));
    }

    void TearDown() override { stop_headset_mgmt(); }

    const std::shared_ptr<AccessoryCache> headset = std::make_shared<AccessoryCache>();
};

TEST_F(FlatInterfaceTest, HostsLogCallbackGetsTheLines) {
    EXPECT_THAT(fake_host().transcript(), Contains("log 5 init_headsetmgmt_lib.\n").Times(1));
}

TEST_F(FlatInterfaceTest, InventoryIsPosted) {
    send_inventory(headset);
    EXPECT_TRUE(fake_host().wait_for_http_requests(2));
    EXPECT_THAT(calls().back(), StartsWith("httpRequest 2 http://192.0.2.2/inventory {"));
}

TEST_F(FlatInterfaceTest, SettingIsRead) {
    int value = 0;
    EXPECT_TRUE(retrieve_config("headset-1", USAGE_SPEAKER_VOLUME, &value));
    EXPECT_EQ(value, 1);  // the number that the setting's name begins with
}

TEST_F(FlatInterfaceTest, SettingsChangedOnThePhoneAreNotTaken) {
    EXPECT_FALSE(update_config("headset-1", USAGE_SPEAKER_VOLUME, 3));
}

TEST_F(FlatInterfaceTest, FactoryResetSendsTheUsersSettingsToo) {
    EXPECT_TRUE(factory_reset("headset-1"));

    EXPECT_THAT(calls(), Contains("apply_changes headset-1|1 Speaker Volume|32|7").Times(1));
    EXPECT_THAT(calls(), Contains("apply_changes headset-1|Sidetone|34|medium").Times(2));
}

TEST_F(FlatInterfaceTest, RemovedAccessoryIsForgotten) {
    EXPECT_TRUE(remove_peripheral("headset-1"));
    EXPECT_FALSE(factory_reset("headset-1"));
}

TEST_F(FlatInterfaceTest, StoppedLibraryTurnsCallsAway) {
    stop_headset_mgmt();
    EXPECT_FALSE(factory_reset("headset-1"));
    EXPECT_FALSE(remove_peripheral("headset-1"));
}

TEST(ExportedFunctionsTest, InitInstallsACompleteRecordAndRefusesAnother) {
    installed_world();
    Plugins incomplete;
    EXPECT_THROW(init(incomplete), std::runtime_error);
}

TEST(ExportedFunctionsTest, ConfigObjectAppliesADocument) {
    World& world = installed_world();
    const Headset headset;

    config::ConfigInterface* made = create_config("headset-1", &headset);
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(made->update_from_server(document));
    const std::map<int, ConfigParam> settings = made->retrieve_config();
    delete_config(made);

    EXPECT_EQ(settings.size(), 2U);
    EXPECT_THAT(world.config_driver.calls(),
                Contains(R"(apply_config_to_device("headset-1", "Sidetone", 34, "medium"))"));
}

TEST(ExportedFunctionsTest, MetricQueuesATask) {
    World& world = installed_world();
    Headset headset;

    metrics::MetricsInterface* metric = create_metric(&headset);
    EXPECT_EQ(metric->get_type(), metrics::HEADSET_INVENTORY);
    EXPECT_TRUE(metric->send());
    delete_metric(metric);

    ASSERT_EQ(world.executor.size(), 1U);
    EXPECT_EQ(world.executor.params()->get_type(), 1);
}

TEST(ExportedFunctionsTest, LoggerWritesToItsSink) {
    RecordingLog sink;
    log::Logger* logger = create_logger(&sink, "Outside", true);
    logger->notice() << "hello";
    delete_logger(logger);
    EXPECT_EQ(with_levels(sink.lines()), (Lines{"notice Outside: hello"}));
}

TEST(ExportedFunctionsTest, HeadsetModelIsDecidedFromTexts) {
    EXPECT_EQ(get_headset_model("Varos K30", "ABCDEFG4"), "Varos K20");
    EXPECT_EQ(get_headset_model("Varos K30", "ABCDEFG5"), "Varos K30");
}

TEST(ExportedFunctionsTest, HeadsetModelIsDecidedFromAnAccessory) {
    installed_world();
    Headset headset;
    EXPECT_EQ(get_headset_model(&headset), "Varos K20");
}

TEST(ExportedFunctionsTest, MakersHeadsetIsDistinguishedFromOthers) {
    Headset headset;
    FakeAccessory camera(CAMERA);
    camera.varos_vid = false;
    EXPECT_TRUE(isVarosHeadset(&headset));
    EXPECT_FALSE(isVarosHeadset(&camera));
}

TEST(ExportedFunctionsTest, EveryHeadsetSupportsDowngrade) {
    Headset headset;
    EXPECT_TRUE(headset_support_downgrade(&headset));
    EXPECT_TRUE(headset_support_downgrade(nullptr));
}

TEST(ExportedFunctionsTest, SleepingForNoTimeReturns) {
    sleep_for(0);
}

TEST(ExportedFunctionsTest, WaitWithoutSpreadIsItsBase) {
    EXPECT_EQ(get_seconds_to_wait(30, 0), 30U);
}

TEST(ExportedFunctionsTest, WaitLiesWithinItsSpread) {
    const unsigned int wait = get_seconds_to_wait(30, 5);
    EXPECT_GE(wait, 30U);
    EXPECT_LE(wait, 35U);
}

}  // namespace
}  // namespace headsetmgmt::test_support
