// SPDX-License-Identifier: Apache-2.0
// The parameters of a task that sends a report: when it may run, how long it waits, what it owns.

#include <memory>

#include <gtest/gtest.h>

#include "metrics/send_metrics_params.h"
#include "support/fake_accessory.h"
#include "support/fake_plugins.h"

namespace headsetmgmt::metrics {

namespace {

using test_support::FakeAccessory;
using test_support::FakePlugins;

constexpr int ready = 1;
constexpr int not_ready = 2;
constexpr int drop = 3;

TEST(SendMetricsParamsTest, KindIsSendInventory) {
    const FakeAccessory headset;
    const SendMetricsParams params(&headset);
    EXPECT_EQ(params.get_type(), 1);
}

TEST(SendMetricsParamsTest, NewParametersWaitAtMost120SecondsAndDeferNothing) {
    const FakeAccessory headset;
    const SendMetricsParams params(&headset);
    EXPECT_EQ(params.get_timeout(), 120U);
    EXPECT_EQ(params.get_defer_time(), 0U);
}

TEST(SendMetricsParamsTest, ParametersKeepACloneOfTheAccessory) {
    FakeAccessory headset;
    headset.serial_number = "ABCDEFG4123";
    {
        const SendMetricsParams params(&headset);
        EXPECT_EQ(headset.shared->alive, 2);
        ASSERT_NE(params.get_accessory(), nullptr);
        EXPECT_NE(params.get_accessory(), &headset);
        EXPECT_EQ(params.get_accessory()->get_serial_number(nullptr), "ABCDEFG4123");
    }
    EXPECT_EQ(headset.shared->alive, 1);
}

TEST(SendMetricsParamsTest, ReadyAccessoryMakesTheTaskReady) {
    const FakePlugins plugins;
    const FakeAccessory headset;
    SendMetricsParams params(&headset);

    EXPECT_EQ(params.check_status(), ready);

    EXPECT_EQ(params.get_defer_time(), 0U);
}

TEST(SendMetricsParamsTest, AccessoryThatIsNotReadyHoldsTheTaskBackForSixSeconds) {
    const FakePlugins plugins;
    const FakeAccessory headset;
    headset.shared->data_ready = false;
    SendMetricsParams params(&headset);

    EXPECT_EQ(params.check_status(), not_ready);

    EXPECT_EQ(params.get_defer_time(), 6U);
    EXPECT_EQ(params.get_timeout(), 120U);
}

TEST(SendMetricsParamsTest, DeferTimeStaysOnceItIsSet) {
    const FakePlugins plugins;
    const FakeAccessory headset;
    headset.shared->data_ready = false;
    SendMetricsParams params(&headset);
    params.check_status();

    headset.shared->data_ready = true;
    EXPECT_EQ(params.check_status(), ready);

    EXPECT_EQ(params.get_defer_time(), 6U);
}

TEST(SendMetricsParamsTest, FirmwareDataAreNotAskedFor) {
    const FakePlugins plugins;
    const FakeAccessory headset;
    headset.shared->firmware_data_ready = false;
    SendMetricsParams params(&headset);

    EXPECT_EQ(params.check_status(), ready);
}

TEST(SendMetricsParamsTest, TaskIsDroppedWithoutSystemInformation) {
    const FakePlugins plugins;
    globals::plugins.system_info = nullptr;
    const FakeAccessory headset;
    SendMetricsParams params(&headset);

    EXPECT_EQ(params.check_status(), drop);
}

TEST(SendMetricsParamsTest, MissingSystemInformationWinsOverDataThatAreNotReady) {
    const FakePlugins plugins;
    globals::plugins.system_info = nullptr;
    const FakeAccessory headset;
    headset.shared->data_ready = false;
    SendMetricsParams params(&headset);

    EXPECT_EQ(params.check_status(), drop);

    EXPECT_EQ(params.get_defer_time(), 0U);
}

TEST(SendMetricsParamsTest, CloneHasItsOwnAccessoryAndTheSameTimes) {
    const FakePlugins plugins;
    FakeAccessory headset;
    headset.serial_number = "ABCDEFG4123";
    headset.shared->data_ready = false;
    auto original = std::make_unique<SendMetricsParams>(&headset);
    original->check_status();

    const std::unique_ptr<TaskParametersInterface> clone(original->clone());
    EXPECT_EQ(headset.shared->alive, 3);
    original.reset();

    EXPECT_EQ(clone->get_type(), 1);
    EXPECT_EQ(clone->get_timeout(), 120U);
    EXPECT_EQ(clone->get_defer_time(), 6U);
    const auto* params = dynamic_cast<SendMetricsParams*>(clone.get());
    ASSERT_NE(params, nullptr);
    EXPECT_EQ(params->get_accessory()->get_serial_number(nullptr), "ABCDEFG4123");
}

TEST(SendMetricsParamsTest, CloneDefersOnItsOwn) {
    const FakePlugins plugins;
    const FakeAccessory headset;
    const SendMetricsParams original(&headset);
    const std::unique_ptr<TaskParametersInterface> clone(original.clone());

    headset.shared->data_ready = false;
    clone->check_status();

    EXPECT_EQ(clone->get_defer_time(), 6U);
    EXPECT_EQ(original.get_defer_time(), 0U);
}

TEST(SendMetricsParamsTest, MissingAccessoryIsKeptAsMissing) {
    const SendMetricsParams params(nullptr);
    const std::unique_ptr<TaskParametersInterface> clone(params.clone());

    EXPECT_EQ(params.get_accessory(), nullptr);
    EXPECT_EQ(dynamic_cast<SendMetricsParams&>(*clone).get_accessory(), nullptr);
}

TEST(SendMetricsParamsTest, TaskWithoutAccessoryNeedNotWait) {
    const FakePlugins plugins;
    SendMetricsParams params(nullptr);
    EXPECT_EQ(params.check_status(), ready);
}

}  // namespace

}  // namespace headsetmgmt::metrics
