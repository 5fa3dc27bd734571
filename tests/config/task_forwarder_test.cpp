// SPDX-License-Identifier: Apache-2.0
// Tests of which work becomes of a queued task.

#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/executor.h"

#include "config/config_accessory_params.h"
#include "metrics/send_metrics_params.h"
#include "support/manager_bench.h"

namespace headsetmgmt::test_support {
namespace {

/// Parameters of any kind that carry nothing.
class EmptyParams : public TaskParametersInterface {
public:
    explicit EmptyParams(int kind_of_task) : kind(kind_of_task) {}

    TaskParametersInterface* clone() const override { return new EmptyParams(kind); }
    int get_type() const override { return kind; }
    int check_status() override { return ready; }

private:
    int kind;
};

TEST(TaskForwarder, DoesNothingWithoutParameters) {
    ManagerBench bench;

    task_forwarder(&bench.manager(), nullptr);

    EXPECT_EQ(Lines{}, bench.take_lines());
}

TEST(TaskForwarder, PassesKindZeroToTheManagerThatTheContextPointsTo) {
    ManagerBench bench;
    FakeConfig object("a", &bench.headset);
    config::ConfigAccessoryParams params(&object);
    bench.answer_with(REQUEST_PENDING, "");

    task_forwarder(&bench.manager(), &params);

    EXPECT_EQ(
        (Lines{"notice Lib::ConfigManagerImpl: configure_accessory_task id:a",
               "notice Lib::ConfigManagerImpl: configure_accessory_task: pending fetch config"}),
        bench.take_lines());
    EXPECT_EQ((Lines{"http://server/defaultheadsetconfig.json"}), bench.urls());
}

TEST(TaskForwarder, LetsTheManagerEndTheRunOfParametersThatCarryNoConfiguration) {
    ManagerBench bench;
    EmptyParams params(0);

    task_forwarder(&bench.manager(), &params);

    EXPECT_EQ((Lines{"notice Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER"}),
              bench.take_lines());
}

TEST(TaskForwarder, PassesKindOneToTheInventorySenderWhateverTheContext) {
    ManagerBench bench;
    bench.headset.serial_number = "VK30-0001";
    metrics::SendMetricsParams params(&bench.headset);

    task_forwarder(nullptr, &params);

    const std::vector<DispatchedRequest> requests = bench.plugins.dispatcher.requests();
    ASSERT_EQ(1u, requests.size());
    EXPECT_EQ("push", requests[0].operation);
    EXPECT_EQ("INVENTORY", requests[0].context.requester);
}

TEST(TaskForwarder, DoesNothingWithAnyOtherKind) {
    ManagerBench bench;
    for (const int kind : {-1, 2, 3, 1000}) {
        EmptyParams params(kind);

        task_forwarder(nullptr, &params);
    }

    EXPECT_EQ(Lines{}, bench.take_lines());
    EXPECT_TRUE(bench.plugins.dispatcher.requests().empty());
}

}  // namespace
}  // namespace headsetmgmt::test_support
