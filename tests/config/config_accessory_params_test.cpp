// SPDX-License-Identifier: Apache-2.0
// Tests of what a task that fetches a configuration document carries.

#include <algorithm>
#include <memory>

#include <gtest/gtest.h>

#include "headsetmgmt/plugins.h"

#include "config/config_accessory_params.h"
#include "support/fake_config.h"
#include "support/manager_bench.h"
#include "support/virtual_time.h"

namespace headsetmgmt::test_support {
namespace {

using config::ConfigAccessoryParams;

TEST(ConfigAccessoryParams, AreOfTheKindThatConfiguresAnAccessory) {
    const ManagerBench bench;
    FakeConfig object("a", &bench.headset);

    EXPECT_EQ(0, ConfigAccessoryParams(&object).get_type());
}

TEST(ConfigAccessoryParams, OfAFirstFetchAreNotDeferredAndTimeOutAfterAMinute) {
    const ManagerBench bench;
    FakeConfig object("a", &bench.headset);

    const ConfigAccessoryParams params(&object);

    EXPECT_EQ(0u, params.get_defer_time());
    EXPECT_EQ(60u, params.get_timeout());
}

TEST(ConfigAccessoryParams, OfARetryWaitThirtyToFortySeconds) {
    VirtualTime clock(1000);
    const ManagerBench bench;
    FakeConfig object("a", &bench.headset);
    object.set_config_retries(1);
    unsigned int shortest = 1000;
    unsigned int longest = 0;

    for (int second = 0; second < 300; ++second) {
        clock.advance(1);
        const ConfigAccessoryParams params(&object);
        shortest = std::min(shortest, params.get_defer_time());
        longest = std::max(longest, params.get_defer_time());
        ASSERT_EQ(60u, params.get_timeout());
    }

    EXPECT_EQ(30u, shortest);
    EXPECT_EQ(40u, longest);
}

TEST(ConfigAccessoryParams, HoldACopyOfTheirOwn) {
    const ManagerBench bench;
    FakeConfig object("a", &bench.headset);
    const int live = FakeConfig::live_count();
    {
        const ConfigAccessoryParams params(&object);

        EXPECT_EQ(live + 1, FakeConfig::live_count());
        ASSERT_NE(nullptr, params.get_config());
        EXPECT_NE(&object, params.get_config());
        EXPECT_EQ("a", params.get_config()->get_accessory_id());
    }
    EXPECT_EQ(live, FakeConfig::live_count());
}

TEST(ConfigAccessoryParams, TakeTheRetryCounterIntoTheirCopyAndGiveNothingBack) {
    const ManagerBench bench;
    FakeConfig object("a", &bench.headset);
    object.set_config_retries(2);
    const ConfigAccessoryParams params(&object);

    EXPECT_EQ(2, params.get_config()->get_config_retries());
    params.get_config()->set_config_retries(3);

    EXPECT_EQ(2, object.get_config_retries());
}

TEST(ConfigAccessoryParams, AreCopiedWithTheirWaitAndACopyOfTheirOwn) {
    VirtualTime clock(1000);
    const ManagerBench bench;
    FakeConfig object("a", &bench.headset);
    const int live = FakeConfig::live_count();
    {
        object.set_config_retries(1);
        const ConfigAccessoryParams params(&object);
        int draws_that_differ = 0;

        for (int second = 0; second < 20; ++second) {
            clock.advance(1);
            const std::unique_ptr<TaskParametersInterface> copy(params.clone());
            const auto& copied = dynamic_cast<const ConfigAccessoryParams&>(*copy);
            ASSERT_EQ(params.get_defer_time(), copied.get_defer_time());
            ASSERT_EQ(60u, copied.get_timeout());
            ASSERT_EQ(live + 2, FakeConfig::live_count());
            ASSERT_NE(params.get_config(), copied.get_config());
            ASSERT_EQ(1, copied.get_config()->get_config_retries());
            draws_that_differ +=
                ConfigAccessoryParams(&object).get_defer_time() != params.get_defer_time() ? 1 : 0;
        }

        EXPECT_LT(0, draws_that_differ) << "the clock must have moved the draw";
    }
    EXPECT_EQ(live, FakeConfig::live_count());
}

TEST(ConfigAccessoryParams, OfNoObjectHoldNoneAndCopyNone) {
    const ManagerBench bench;
    const ConfigAccessoryParams params(nullptr);

    const std::unique_ptr<TaskParametersInterface> copy(params.clone());

    EXPECT_EQ(nullptr, params.get_config());
    EXPECT_EQ(nullptr, dynamic_cast<const ConfigAccessoryParams&>(*copy).get_config());
    EXPECT_EQ(0u, copy->get_defer_time());
    EXPECT_EQ(60u, copy->get_timeout());
}

TEST(ConfigAccessoryParams, AreReadyWhenTheFirmwareDataAre) {
    ManagerBench bench;
    bench.headset.shared->firmware_data_ready = true;
    FakeConfig object("a", &bench.headset);
    ConfigAccessoryParams params(&object);

    EXPECT_EQ(1, params.check_status());
    EXPECT_EQ(0u, params.get_defer_time());
}

TEST(ConfigAccessoryParams, AreLookedAtAgainInSixSecondsWhenTheFirmwareDataAreNotReady) {
    ManagerBench bench;
    bench.headset.shared->firmware_data_ready = false;
    FakeConfig object("a", &bench.headset);
    ConfigAccessoryParams params(&object);

    EXPECT_EQ(2, params.check_status());
    EXPECT_EQ(6u, params.get_defer_time());
    EXPECT_EQ(60u, params.get_timeout());
}

TEST(ConfigAccessoryParams, OfARetryThatIsNotReadyAreLookedAtAgainInSixSecondsToo) {
    ManagerBench bench;
    bench.headset.shared->firmware_data_ready = false;
    FakeConfig object("a", &bench.headset);
    object.set_config_retries(1);
    ConfigAccessoryParams params(&object);

    EXPECT_EQ(2, params.check_status());
    EXPECT_EQ(6u, params.get_defer_time());
}

TEST(ConfigAccessoryParams, OfNoObjectAreDropped) {
    const ManagerBench bench;
    ConfigAccessoryParams params(nullptr);

    EXPECT_EQ(3, params.check_status());
}

TEST(ConfigAccessoryParams, AreDroppedWithoutSystemInformation) {
    ManagerBench bench;
    bench.headset.shared->firmware_data_ready = true;
    FakeConfig object("a", &bench.headset);
    ConfigAccessoryParams params(&object);
    globals::plugins.system_info = nullptr;

    EXPECT_EQ(3, params.check_status());
    EXPECT_EQ(0u, params.get_defer_time());
}

}  // namespace
}  // namespace headsetmgmt::test_support
