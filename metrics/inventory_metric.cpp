// SPDX-License-Identifier: Apache-2.0
// Sends the inventory report: from the host's call to the request.

#include "metrics/inventory_metric.h"

#include <stdexcept>
#include <utility>
#include <vector>

#include "headsetmgmt/constants.h"
#include "headsetmgmt/dispatcher.h"
#include "headsetmgmt/plugins.h"
#include "headsetmgmt/system_info.h"

#include "metrics/metric_owner.h"
#include "metrics/send_metrics_params.h"
#include "metrics/url_templates.h"

namespace headsetmgmt::metrics {

InventoryMetric::InventoryMetric(const AccessoryInfoInterface* info, const std::string& component)
    : accessory(info->clone()) {
    if (!globals::plugins.is_valid()) {
        throw std::runtime_error("plugins hasn't been initialized properly");
    }
    logger = make_logger(component);
}

bool InventoryMetric::send() {
    logger->notice() << "send: Enter";
    SendMetricsParams params(accessory.get());
    // The forwarder ignores the context of this kind of task, so this object may be deleted as soon
    // as the task is queued.
    globals::plugins.executor->add_task(task_forwarder, this, &params);
    return true;
}

bool InventoryMetric::send_metric(TaskParametersInterface* params) {
    const LoggerOwner logger = make_logger("InventoryMetric");
    // The progress lines also have the error tag.
    logger->info() << "send_metric" << constants::tag_lib_err << ": ENTER";
    if (params == nullptr) {
        logger->error() << "send_metric" << constants::tag_lib_err << ": no task parameters";
        return false;
    }
    const auto* send_params = dynamic_cast<SendMetricsParams*>(params);
    logger->info() << "send_metric" << constants::tag_lib_err << ": metric param cast done";

    const MetricOwner made(
        create_metric(send_params != nullptr ? send_params->get_accessory() : nullptr));
    auto* metric = dynamic_cast<InventoryMetric*>(made.get());
    if (metric == nullptr) {
        // Not reached while every kind of metric is an inventory metric.
        logger->info() << "send_metric" << constants::tag_lib_err << ": metric IS NULL";
    }
    logger->info() << "send_metric" << constants::tag_lib_err << ": metric object created";
    const bool result = metric != nullptr && metric->send_task(params);
    logger->info() << "send_metric" << constants::tag_lib_err << ": metric sent";
    return result;
}

bool InventoryMetric::send_task(TaskParametersInterface* /*params*/) {
    logger->info() << "send_task: Enter";
    std::string body = assemble_metrics();
    if (body.empty()) {
        logger->warning() << "send_task: building metrics failed";
        return false;
    }
    dispatcher::RequestContext request;
    request.requester = "INVENTORY";
    request.url = get_post_url();
    request.body = std::move(body);
    request.method = "POST";
    // The result is not used; the dispatcher refuses a request without a URL.
    globals::plugins.dispatcher->push(&request);
    return true;
}

std::string InventoryMetric::get_inventory_accessory_key() {
    return constants::key_headset;
}

std::string InventoryMetric::get_post_url() {
    SystemInfoInterface* system_info = globals::plugins.system_info;
    std::string url = system_info->get_inventory_post_url();
    logger->notice() << "get_post_url tokenized url: " << url;
    if (url.empty()) {
        logger->error() << "get_post_url" << constants::tag_plugin_err
                        << " system info has no url for inventory";
        return {};
    }
    if (has_token(url, korm_token)) {
        const std::vector<std::string> servers = system_info->get_korm_servers();
        if (servers.empty()) {
            logger->warning() << "get_post_url" << constants::tag_plugin_err
                              << " no config servers found, returning";
            return url;
        }
        replace_token(url, korm_token, server_in_url(servers.front()));
    }
    logger->info() << "get_post_url target inventory url: " << url;
    return url;
}

HeadsetInventoryMetrics::HeadsetInventoryMetrics(const AccessoryInfoInterface* info)
    : InventoryMetric(info, "HeadsetInventoryMetricsImpl") {}

METRICS_TYPE HeadsetInventoryMetrics::get_type() const {
    return HEADSET_INVENTORY;
}

std::string HeadsetInventoryMetrics::get_inventory_base_key() {
    return constants::key_headset_inventory;
}

std::string HeadsetInventoryMetrics::get_inventory_accessory_key() {
    return constants::key_headset;
}

CameraInventoryMetrics::CameraInventoryMetrics(const AccessoryInfoInterface* info)
    : InventoryMetric(info, "CameraInventoryMetricsImpl") {}

METRICS_TYPE CameraInventoryMetrics::get_type() const {
    return CAMERA_INVENTORY;
}

std::string CameraInventoryMetrics::get_inventory_base_key() {
    return constants::key_camera_inventory;
}

}  // namespace headsetmgmt::metrics
