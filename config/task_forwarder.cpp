// SPDX-License-Identifier: Apache-2.0
// Connects the executor to its two kinds of work.

#include "headsetmgmt/executor.h"

#include "config/config_manager_impl.h"
#include "metrics/inventory_metric.h"

namespace headsetmgmt {

void task_forwarder(void* context, TaskParametersInterface* params) {
    if (params == nullptr) {
        return;
    }
    switch (params->get_type()) {
    case TaskParametersInterface::configure_accessory:
        static_cast<config::ConfigManagerImpl*>(context)->configure_accessory_task(params);
        break;
    case TaskParametersInterface::send_inventory:
        metrics::InventoryMetric::send_metric(params);
        break;
    default:
        break;
    }
}

}  // namespace headsetmgmt
