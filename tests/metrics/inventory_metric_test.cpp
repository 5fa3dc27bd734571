// SPDX-License-Identifier: Apache-2.0
// The inventory report's sending: the task that is queued, and what becomes of it.

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "headsetmgmt/metrics.h"

#include "metrics/inventory_metric.h"
#include "metrics/send_metrics_params.h"
#include "runtime/executor_impl.h"
#include "support/fake_accessory.h"
#include "support/fake_plugins.h"
#include "support/virtual_time.h"

namespace headsetmgmt::metrics {

namespace {

using log::LogLevel;
using test_support::DispatchedRequest;
using test_support::FakeAccessory;
using test_support::FakePlugins;
using test_support::LogLine;
using test_support::VirtualTime;
using testing::HasSubstr;

constexpr std::time_t start = 1795248000;

/// Parameters of the kind "send inventory" that are not the inventory's own.
class ForeignParams : public TaskParametersInterface {
public:
    TaskParametersInterface* clone() const override { return new ForeignParams(); }
    int get_type() const override { return send_inventory; }
    int check_status() override { return ready; }
};

class InventoryMetricTest : public testing::Test {
protected:
    InventoryMetricTest() {
        plugins.system_info.inventory_post_url = "http://inventory.example/reports";
        headset.varos_vid = false;
        headset.vendor = "Acme";
        headset.serial_number = "A-1";
    }

    void send(FakeAccessory& accessory) {
        MetricsInterface* metric = create_metric(&accessory);
        EXPECT_TRUE(metric->send());
        delete_metric(metric);
    }

    VirtualTime clock{start, VirtualTime::Sleepers::move_the_clock};
    FakePlugins plugins;
    FakeAccessory headset{HEADSET};
};

TEST_F(InventoryMetricTest, SendQueuesATaskWithItsOwnAccessory) {
    send(headset);

    ASSERT_EQ(plugins.executor.size(), 1U);
    auto* params = dynamic_cast<SendMetricsParams*>(plugins.executor.params());
    ASSERT_NE(params, nullptr);
    EXPECT_EQ(params->get_accessory()->get_serial_number(nullptr), "A-1");
    EXPECT_EQ(headset.shared->alive, 2);  // the test's and the task's
    EXPECT_TRUE(plugins.dispatcher.requests().empty());
    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{{LogLevel::notice, "HeadsetInventoryMetricsImpl: send: "
                                                       "Enter"}}));
}

TEST_F(InventoryMetricTest, SendLogsBeforeItTakesTheFacts) {
    const std::unique_ptr<MetricsInterface> metric(create_metric(&headset));
    headset.throw_at_clone(1);

    EXPECT_THROW(metric->send(), std::runtime_error);

    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{{LogLevel::notice, "HeadsetInventoryMetricsImpl: send: "
                                                       "Enter"}}));
}

TEST_F(InventoryMetricTest, TaskPostsTheReportAfterTheMetricIsDeleted) {
    send(headset);
    plugins.log.take();

    ASSERT_TRUE(plugins.executor.run_next());

    const std::vector<DispatchedRequest> requests = plugins.dispatcher.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].operation, "push");
    EXPECT_EQ(requests[0].context.requester, "INVENTORY");
    EXPECT_EQ(requests[0].context.method, "POST");
    EXPECT_EQ(requests[0].context.url, "http://inventory.example/reports");
    EXPECT_EQ(requests[0].context.response_code, 0);
    EXPECT_EQ(requests[0].context.extra, "");
    EXPECT_EQ(requests[0].context.body, "{\n"
                                        "\t\"time\":\t1795248000,\n"
                                        "\t\"key\":\t\"headsetInventory\",\n"
                                        "\t\"value\":\t{\n"
                                        "\t\t\"host\":\t{\n"
                                        "\t\t\t\"userId\":\t\"\"\n"
                                        "\t\t},\n"
                                        "\t\t\"headset\":\t{\n"
                                        "\t\t\t\"serialNumber\":\t\"A-1\",\n"
                                        "\t\t\t\"firmwareVersion\":\t\"\",\n"
                                        "\t\t\t\"vendor\":\t\"Acme\",\n"
                                        "\t\t\t\"model\":\t\"\",\n"
                                        "\t\t\t\"connectionType\":\t\"\",\n"
                                        "\t\t\t\"connectionStatus\":\t\"\"\n"
                                        "\t\t}\n"
                                        "\t}\n"
                                        "}");
    EXPECT_EQ(headset.shared->alive, 1);
    EXPECT_EQ(
        plugins.log.lines(),
        (std::vector<LogLine>{
            {LogLevel::info, "InventoryMetric: send_metric[LIB-ERR]: ENTER"},
            {LogLevel::info, "InventoryMetric: send_metric[LIB-ERR]: metric param cast done"},
            {LogLevel::info, "InventoryMetric: send_metric[LIB-ERR]: metric object created"},
            {LogLevel::info, "HeadsetInventoryMetricsImpl: send_task: Enter"},
            {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: Enter"},
            {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_envelop: Enter"},
            {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_host_payload: Enter"},
            {LogLevel::info, "HeadsetInventoryMetricsImpl: build_accessory_payload: Enter"},
            {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: success"},
            {LogLevel::notice, "HeadsetInventoryMetricsImpl: get_post_url tokenized url: "
                               "http://inventory.example/reports"},
            {LogLevel::info, "HeadsetInventoryMetricsImpl: get_post_url target inventory url: "
                             "http://inventory.example/reports"},
            {LogLevel::info, "InventoryMetric: send_metric[LIB-ERR]: metric sent"},
        }));
}

TEST_F(InventoryMetricTest, CamerasTaskPostsACameraReportUnderHeadset) {
    FakeAccessory camera(CAMERA);
    camera.varos_vid = false;
    camera.serial_number = "CAM0001";
    send(camera);

    plugins.executor.run_next();

    ASSERT_EQ(plugins.dispatcher.requests().size(), 1U);
    const std::string body = plugins.dispatcher.requests()[0].context.body;
    EXPECT_THAT(body, HasSubstr("\t\"key\":\t\"cameraInventory\",\n"));
    EXPECT_THAT(body, HasSubstr("\t\t\"headset\":\t{\n\t\t\t\"serialNumber\":\t\"CAM0001\",\n"));
}

TEST_F(InventoryMetricTest, MetricsHaveTheirTypeAndKeys) {
    HeadsetInventoryMetrics headset_metric(&headset);
    EXPECT_EQ(headset_metric.get_type(), 0);
    EXPECT_EQ(headset_metric.get_inventory_base_key(), "headsetInventory");
    EXPECT_EQ(headset_metric.get_inventory_accessory_key(), "headset");
    CameraInventoryMetrics camera_metric(&headset);
    EXPECT_EQ(camera_metric.get_type(), 1);
    EXPECT_EQ(camera_metric.get_inventory_base_key(), "cameraInventory");
    EXPECT_EQ(camera_metric.get_inventory_accessory_key(), "headset");
}

TEST_F(InventoryMetricTest, EmptySerialNumberSendsNothingAndTheResultIsFalse) {
    headset.serial_number = "";
    SendMetricsParams params(&headset);

    EXPECT_FALSE(InventoryMetric::send_metric(&params));

    EXPECT_TRUE(plugins.dispatcher.requests().empty());
    EXPECT_EQ(
        plugins.log.lines(),
        (std::vector<LogLine>{
            {LogLevel::info, "InventoryMetric: send_metric[LIB-ERR]: ENTER"},
            {LogLevel::info, "InventoryMetric: send_metric[LIB-ERR]: metric param cast done"},
            {LogLevel::info, "InventoryMetric: send_metric[LIB-ERR]: metric object created"},
            {LogLevel::info, "HeadsetInventoryMetricsImpl: send_task: Enter"},
            {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: Enter"},
            {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_envelop: Enter"},
            {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_host_payload: Enter"},
            {LogLevel::info, "HeadsetInventoryMetricsImpl: build_accessory_payload: Enter"},
            {LogLevel::error, "HeadsetInventoryMetricsImpl: build_accessory_payload: accessory "
                              "serial number is empty."},
            {LogLevel::error, "HeadsetInventoryMetricsImpl: assemble_metrics[LIB-ERR]: Building "
                              "accessory payload failed"},
            {LogLevel::warning, "HeadsetInventoryMetricsImpl: send_task: building metrics failed"},
            {LogLevel::info, "InventoryMetric: send_metric[LIB-ERR]: metric sent"},
        }));
}

TEST_F(InventoryMetricTest, MissingTaskParametersAreLogged) {
    EXPECT_FALSE(InventoryMetric::send_metric(nullptr));

    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{
                  {LogLevel::info, "InventoryMetric: send_metric[LIB-ERR]: ENTER"},
                  {LogLevel::error, "InventoryMetric: send_metric[LIB-ERR]: no task parameters"},
              }));
}

TEST_F(InventoryMetricTest, ParametersOfAForeignClassCarryNoAccessory) {
    ForeignParams params;
    try {
        InventoryMetric::send_metric(&params);
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "metrics factory: accessory is empty");
    }
    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{
                  {LogLevel::info, "InventoryMetric: send_metric[LIB-ERR]: ENTER"},
                  {LogLevel::info, "InventoryMetric: send_metric[LIB-ERR]: metric param cast done"},
              }));
}

TEST_F(InventoryMetricTest, TypeWithoutAReportIsReportedByTheFactorysException) {
    headset.type = MAX_ACCESSORY_TYPE;
    SendMetricsParams params(&headset);
    try {
        InventoryMetric::send_metric(&params);
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "rics factory: Unsupported METRICS_TYPE: ");
    }
    EXPECT_TRUE(plugins.dispatcher.requests().empty());
}

TEST_F(InventoryMetricTest, ResultOfTheDispatcherIsIgnored) {
    plugins.dispatcher.push_status = REQUEST_REFUSED;
    SendMetricsParams params(&headset);

    EXPECT_TRUE(InventoryMetric::send_metric(&params));
}

TEST_F(InventoryMetricTest, EmptyUrlIsPushedAsItIs) {
    plugins.system_info.inventory_post_url = "";
    SendMetricsParams params(&headset);

    EXPECT_TRUE(InventoryMetric::send_metric(&params));

    ASSERT_EQ(plugins.dispatcher.requests().size(), 1U);
    EXPECT_EQ(plugins.dispatcher.requests()[0].context.url, "");
}

TEST_F(InventoryMetricTest, TemplateWithoutServersIsPushedWithItsToken) {
    plugins.system_info.inventory_post_url = "http://{korm}/reports";
    SendMetricsParams params(&headset);

    EXPECT_TRUE(InventoryMetric::send_metric(&params));

    ASSERT_EQ(plugins.dispatcher.requests().size(), 1U);
    EXPECT_EQ(plugins.dispatcher.requests()[0].context.url, "http://{korm}/reports");
}

/// The real executor, whose passes the test makes itself. Each pass moves the clock by 50 ms.
class QueuedInventoryTest : public InventoryMetricTest {
protected:
    QueuedInventoryTest() { globals::plugins.executor = &executor; }

    /// Makes all passes that begin before `second` seconds after the start.
    void run_until(std::time_t second) {
        while (clock.now() < start + second) {
            executor.threadLoop();
        }
    }

    ExecutorImpl executor{&plugins.log};
};

TEST_F(QueuedInventoryTest, TaskIsHeldBackAtSixSecondDeferralsUntilTheDataAreReady) {
    headset.shared->data_ready = false;
    send(headset);
    run_until(10);
    EXPECT_TRUE(plugins.dispatcher.requests().empty());

    headset.shared->data_ready = true;
    run_until(12);
    EXPECT_TRUE(plugins.dispatcher.requests().empty());
    plugins.log.take();
    run_until(13);

    ASSERT_EQ(plugins.dispatcher.requests().size(), 1U);
    const std::string body = plugins.dispatcher.requests()[0].context.body;
    EXPECT_THAT(body, HasSubstr("\"time\":\t1795248012,"));
    const std::vector<LogLine> lines = plugins.log.lines();
    ASSERT_EQ(lines.size(), 15U);
    EXPECT_EQ(lines.front(),
              (LogLine{LogLevel::debug, "ExecutorImpl::threadLoop, start executing task\n"}));
    EXPECT_EQ(lines[13],
              (LogLine{LogLevel::debug, "ExecutorImpl::threadLoop, complete executing task\n"}));
    EXPECT_EQ(lines.back(), (LogLine{LogLevel::debug, "ExecutorImpl::threadLoop exiting.\n"}));
}

TEST_F(QueuedInventoryTest, TaskWhoseDataAreReadyRunsAtOnce) {
    send(headset);

    executor.threadLoop();

    EXPECT_EQ(plugins.dispatcher.requests().size(), 1U);
}

TEST_F(QueuedInventoryTest, TaskWhoseDataNeverGetReadyRunsAfter120SecondsAllTheSame) {
    headset.shared->data_ready = false;
    send(headset);
    run_until(120);
    EXPECT_TRUE(plugins.dispatcher.requests().empty());
    EXPECT_FALSE(plugins.log.contains("ExecutorImpl: threadloop timeout reached\n"));

    executor.threadLoop();

    ASSERT_EQ(plugins.dispatcher.requests().size(), 1U);
    EXPECT_TRUE(plugins.log.contains("ExecutorImpl: threadloop timeout reached\n"));
    EXPECT_EQ(headset.shared->alive, 1);
}

TEST_F(QueuedInventoryTest, TaskIsDroppedWithoutSystemInformationAtItsFirstCheck) {
    MetricsInterface* metric = create_metric(&headset);
    globals::plugins.system_info = nullptr;
    metric->send();
    delete_metric(metric);
    plugins.log.take();

    executor.threadLoop();

    EXPECT_TRUE(plugins.dispatcher.requests().empty());
    EXPECT_EQ(headset.shared->alive, 1);
    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{{LogLevel::debug, "ExecutorImpl: drop task\n"}}));
}

TEST_F(QueuedInventoryTest, TaskThatTheFactoryRefusesDoesNotStopTheNext) {
    ForeignParams params;
    executor.add_task(task_forwarder, nullptr, &params);
    send(headset);

    executor.threadLoop();

    EXPECT_TRUE(
        plugins.log.contains("ExecutorImpl::threadLoop, error executing task, moving on\n"));
    EXPECT_EQ(plugins.dispatcher.requests().size(), 1U);
}

}  // namespace

}  // namespace headsetmgmt::metrics
