// SPDX-License-Identifier: Apache-2.0
// What the headers of the inventory report promise, used with the types they promise. It is
// compiled and never run.

#include <string>
#include <type_traits>

#include <cjson/cJSON.h>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/executor.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/metrics.h"

#include "metrics/inventory_metric.h"
#include "metrics/send_metrics_params.h"
#include "tests/headers/declared.h"

namespace declared {

using headsetmgmt::AccessoryInfoInterface;
using headsetmgmt::TaskParametersInterface;
using headsetmgmt::metrics::CameraInventoryMetrics;
using headsetmgmt::metrics::HeadsetInventoryMetrics;
using headsetmgmt::metrics::InventoryMetric;
using headsetmgmt::metrics::METRICS_TYPE;
using headsetmgmt::metrics::MetricsInterface;
using headsetmgmt::metrics::SendMetricsParams;

// The interface and what it is made of: everything virtual may be overridden.

class Metric : public MetricsInterface {
public:
    ~Metric() override = default;
    bool send() override { return true; }
    METRICS_TYPE get_type() const override { return headsetmgmt::metrics::HEADSET_INVENTORY; }
};

class Report : public InventoryMetric {
public:
    explicit Report(const AccessoryInfoInterface* info, const std::string& component)
        : InventoryMetric(info, component) {}
    ~Report() override = default;
    bool send() override { return true; }
    METRICS_TYPE get_type() const override { return headsetmgmt::metrics::CAMERA_INVENTORY; }
    bool send_task(TaskParametersInterface* /*params*/) override { return true; }
    std::string get_inventory_base_key() override { return {}; }
    std::string get_inventory_accessory_key() override { return {}; }
};

static_assert(std::is_abstract_v<MetricsInterface>);
static_assert(std::has_virtual_destructor_v<MetricsInterface>);
static_assert(std::is_base_of_v<MetricsInterface, InventoryMetric>);
static_assert(std::is_abstract_v<InventoryMetric>);
static_assert(std::is_base_of_v<InventoryMetric, HeadsetInventoryMetrics>);
static_assert(std::is_base_of_v<InventoryMetric, CameraInventoryMetrics>);
static_assert(headsetmgmt::metrics::HEADSET_INVENTORY == 0);
static_assert(headsetmgmt::metrics::CAMERA_INVENTORY == 1);

void use_factory(AccessoryInfoInterface* accessory) {
    MetricsInterface* const made = ::create_metric(accessory);
    expect_type<bool>(made->send());
    expect_type<METRICS_TYPE>(made->get_type());
    ::delete_metric(made);
    MetricsInterface* const made_beside_its_class = headsetmgmt::metrics::create_metric(accessory);
    headsetmgmt::metrics::delete_metric(made_beside_its_class);
}

void use_metric(InventoryMetric& metric, headsetmgmt::log::Logger* logger,
                TaskParametersInterface* params) {
    expect_type<bool>(InventoryMetric::send_metric(params));
    expect_type<bool>(metric.send_task(params));
    expect_type<std::string>(metric.get_inventory_base_key());
    expect_type<std::string>(metric.get_inventory_accessory_key());
    expect_type<std::string>(metric.assemble_metrics());
    expect_type<std::string>(metric.get_post_url());

    cJSON* const envelop = metric.build_envelop(logger);
    cJSON_AddItemToObject(envelop, "host", metric.build_host_payload(logger, true));
    cJSON_AddItemToObject(envelop, "dock", metric.build_dock_payload());
    cJSON_AddItemToObject(envelop, "headset", metric.build_accessory_payload());
    cJSON_Delete(envelop);
}

void make_metrics(const AccessoryInfoInterface* info) {
    const HeadsetInventoryMetrics headset(info);
    const CameraInventoryMetrics camera(info);
    expect_type<METRICS_TYPE>(headset.get_type());
    expect_type<METRICS_TYPE>(camera.get_type());
}

void use_task_parameters(const AccessoryInfoInterface* info) {
    SendMetricsParams params(info);
    const SendMetricsParams copy(params);
    expect_type<TaskParametersInterface*>(copy.clone());
    expect_type<int>(copy.get_type());
    expect_type<int>(params.check_status());
    expect_type<unsigned int>(copy.get_timeout());
    expect_type<unsigned int>(copy.get_defer_time());
    expect_type<AccessoryInfoInterface*>(params.get_accessory());
}

static_assert(std::is_base_of_v<TaskParametersInterface, SendMetricsParams>);

}  // namespace declared
