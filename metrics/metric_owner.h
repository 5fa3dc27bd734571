// SPDX-License-Identifier: Apache-2.0
// The owner of a metric object.

#pragma once

#include <memory>

#include "headsetmgmt/metrics.h"

namespace headsetmgmt::metrics {

struct MetricDeleter {
    void operator()(MetricsInterface* metric) const { delete_metric(metric); }
};

using MetricOwner = std::unique_ptr<MetricsInterface, MetricDeleter>;

}  // namespace headsetmgmt::metrics
