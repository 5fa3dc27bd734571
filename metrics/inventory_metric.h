// SPDX-License-Identifier: Apache-2.0
// The inventory report: its composition and its sending.

#pragma once

#include <memory>
#include <string>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/executor.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/metrics.h"

#include "core/owners.h"

struct cJSON;

namespace headsetmgmt::metrics {

/// Reports one accessory. `send` is for any thread; the rest runs on the worker, on an object that
/// the task makes for itself.
class InventoryMetric : public MetricsInterface {
public:
    /// Clones `info`, which must not be null. `component` begins the object's log lines. Throws
    /// `std::runtime_error` "plugins hasn't been initialized properly" when no complete plug-in
    /// record is installed.
    InventoryMetric(const AccessoryInfoInterface* info, const std::string& component);
    ~InventoryMetric() override = default;

    InventoryMetric(const InventoryMetric&) = delete;
    InventoryMetric& operator=(const InventoryMetric&) = delete;

    bool send() override;
    METRICS_TYPE get_type() const override = 0;

    /// Builds the report and passes it to the dispatcher. False when it could not be built.
    virtual bool send_task(TaskParametersInterface* params);

    /// The report's "key".
    virtual std::string get_inventory_base_key() = 0;

    /// The accessory's key in the report's "value": "headset", also for a camera.
    virtual std::string get_inventory_accessory_key();

    /// The work of a task of kind `send_inventory`: sends the report of the task's accessory.
    /// Throws what `create_metric` throws.
    static bool send_metric(TaskParametersInterface* params);

    /// The whole report as indented JSON; empty when it could not be built.
    std::string assemble_metrics();

    /// Where reports are posted: the host's template with its token replaced.
    std::string get_post_url();

    // The parts of the report: trees owned by the caller, null when they could not be built.
    cJSON* build_envelop(log::Logger* envelop_logger);
    cJSON* build_host_payload(log::Logger* payload_logger, bool maker_accessory);
    cJSON* build_dock_payload();
    cJSON* build_accessory_payload();

private:
    std::string compose_report();
    bool is_maker_accessory();
    std::string fail_assembly(const char* message);

    std::unique_ptr<AccessoryInfoInterface> accessory;
    LoggerOwner logger;
};

/// A headset's report.
class HeadsetInventoryMetrics : public InventoryMetric {
public:
    explicit HeadsetInventoryMetrics(const AccessoryInfoInterface* info);

    METRICS_TYPE get_type() const override;
    std::string get_inventory_base_key() override;
    std::string get_inventory_accessory_key() override;
};

/// A camera's report.
class CameraInventoryMetrics : public InventoryMetric {
public:
    explicit CameraInventoryMetrics(const AccessoryInfoInterface* info);

    METRICS_TYPE get_type() const override;
    std::string get_inventory_base_key() override;
};

}  // namespace headsetmgmt::metrics
