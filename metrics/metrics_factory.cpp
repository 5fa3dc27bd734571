// SPDX-License-Identifier: Apache-2.0
// Makes the metric object of an accessory.

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "headsetmgmt/metrics.h"

#include "metrics/inventory_metric.h"

namespace metrics = headsetmgmt::metrics;

namespace {

/// The text without its first characters, as many as the value of the type: the number was meant to
/// be appended. Fixed: receivers rely on it. Never starts outside the text.
const char* unsupported_type_message(headsetmgmt::ACCESSORY_TYPE type) {
    static constexpr char text[] = "metrics factory: Unsupported METRICS_TYPE: ";
    constexpr std::int32_t length = sizeof(text) - 1;
    return text + std::clamp(static_cast<std::int32_t>(type), 0, length);
}

}  // namespace

metrics::MetricsInterface* create_metric(headsetmgmt::AccessoryInfoInterface* accessory) {
    if (accessory == nullptr) {
        throw std::runtime_error("metrics factory: accessory is empty");
    }
    const headsetmgmt::ACCESSORY_TYPE type = accessory->get_type();
    switch (type) {
    case headsetmgmt::HEADSET:
        return new metrics::HeadsetInventoryMetrics(accessory);
    case headsetmgmt::CAMERA:
        return new metrics::CameraInventoryMetrics(accessory);
    default:
        throw std::runtime_error(unsupported_type_message(type));
    }
}

void delete_metric(metrics::MetricsInterface* metric) {
    delete metric;
}
