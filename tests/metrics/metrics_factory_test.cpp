// SPDX-License-Identifier: Apache-2.0
// The metrics factory: which object it makes for an accessory, and what it throws.

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "headsetmgmt/metrics.h"

#include "metrics/inventory_metric.h"
#include "support/fake_accessory.h"
#include "support/fake_plugins.h"

namespace headsetmgmt::metrics {

namespace {

using test_support::FakeAccessory;
using test_support::FakePlugins;

/// The text that the factory throws for an accessory of this type; "made" when it makes an object.
std::string refusal_of_type(std::int32_t type) {
    FakeAccessory accessory(static_cast<ACCESSORY_TYPE>(type));
    try {
        delete_metric(create_metric(&accessory));
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "made";
}

TEST(MetricsFactoryTest, HeadsetGetsAHeadsetMetric) {
    const FakePlugins plugins;
    FakeAccessory headset(HEADSET);

    MetricsInterface* metric = create_metric(&headset);

    EXPECT_NE(dynamic_cast<HeadsetInventoryMetrics*>(metric), nullptr);
    EXPECT_EQ(metric->get_type(), 0);
    delete_metric(metric);
}

TEST(MetricsFactoryTest, CameraGetsACameraMetric) {
    const FakePlugins plugins;
    FakeAccessory camera(CAMERA);

    MetricsInterface* metric = create_metric(&camera);

    EXPECT_NE(dynamic_cast<CameraInventoryMetrics*>(metric), nullptr);
    EXPECT_EQ(metric->get_type(), 1);
    delete_metric(metric);
}

TEST(MetricsFactoryTest, MissingAccessoryIsReportedByAnException) {
    const FakePlugins plugins;
    try {
        create_metric(nullptr);
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "metrics factory: accessory is empty");
    }
}

TEST(MetricsFactoryTest, TypeZeroIsRefusedWithTheWholeText) {
    const FakePlugins plugins;
    EXPECT_EQ(refusal_of_type(0), "metrics factory: Unsupported METRICS_TYPE: ");
}

TEST(MetricsFactoryTest, HigherTypesAreRefusedWithATextThatStartsFurtherIn) {
    const FakePlugins plugins;
    EXPECT_EQ(refusal_of_type(3), "rics factory: Unsupported METRICS_TYPE: ");
    EXPECT_EQ(refusal_of_type(4), "ics factory: Unsupported METRICS_TYPE: ");
    EXPECT_EQ(refusal_of_type(17), "Unsupported METRICS_TYPE: ");
    EXPECT_EQ(refusal_of_type(41), ": ");
    EXPECT_EQ(refusal_of_type(42), " ");
}

TEST(MetricsFactoryTest, TextIsNeverReadBeyondItsEnd) {
    const FakePlugins plugins;
    EXPECT_EQ(refusal_of_type(43), "");
    EXPECT_EQ(refusal_of_type(44), "");
    EXPECT_EQ(refusal_of_type(1000), "");
    EXPECT_EQ(refusal_of_type(std::numeric_limits<std::int32_t>::max()), "");
}

TEST(MetricsFactoryTest, TextIsNeverReadBeforeItsStart) {
    const FakePlugins plugins;
    EXPECT_EQ(refusal_of_type(-1), "metrics factory: Unsupported METRICS_TYPE: ");
    EXPECT_EQ(refusal_of_type(std::numeric_limits<std::int32_t>::min()),
              "metrics factory: Unsupported METRICS_TYPE: ");
}

TEST(MetricsFactoryTest, IncompletePluginRecordIsReportedByAnException) {
    const FakePlugins plugins;
    globals::plugins.executor = nullptr;
    EXPECT_EQ(refusal_of_type(HEADSET), "plugins hasn't been initialized properly");
    EXPECT_EQ(refusal_of_type(CAMERA), "plugins hasn't been initialized properly");
}

TEST(MetricsFactoryTest, TypeIsLookedAtBeforeThePluginRecord) {
    const FakePlugins plugins;
    globals::plugins.executor = nullptr;
    EXPECT_EQ(refusal_of_type(0), "metrics factory: Unsupported METRICS_TYPE: ");
}

TEST(MetricsFactoryTest, MetricKeepsACloneAndDeletesItInTheEnd) {
    const FakePlugins plugins;
    FakeAccessory headset(HEADSET);

    MetricsInterface* metric = create_metric(&headset);
    EXPECT_EQ(headset.shared->alive, 2);
    delete_metric(metric);

    EXPECT_EQ(headset.shared->alive, 1);
}

TEST(MetricsFactoryTest, RefusedConstructionLeavesNoCloneBehind) {
    const FakePlugins plugins;
    globals::plugins.log = nullptr;
    FakeAccessory headset(HEADSET);

    EXPECT_THROW(create_metric(&headset), std::runtime_error);

    EXPECT_EQ(headset.shared->alive, 1);
}

TEST(MetricsFactoryTest, FailingCloneIsReportedByItsOwnException) {
    const FakePlugins plugins;
    FakeAccessory headset(HEADSET);
    headset.throw_at_clone(1);

    EXPECT_THROW(create_metric(&headset), std::runtime_error);

    EXPECT_EQ(headset.shared->alive, 1);
}

TEST(MetricsFactoryTest, DeletingNoMetricDoesNothing) {
    delete_metric(nullptr);
}

TEST(MetricsFactoryTest, MakingAndDeletingAMetricLogsNothing) {
    const FakePlugins plugins;
    FakeAccessory headset(HEADSET);

    delete_metric(create_metric(&headset));

    EXPECT_TRUE(plugins.log.lines().empty());
}

}  // namespace

}  // namespace headsetmgmt::metrics
