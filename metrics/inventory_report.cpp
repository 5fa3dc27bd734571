// SPDX-License-Identifier: Apache-2.0
// The inventory report's content, member by member.

#include <ctime>
#include <string>
#include <string_view>
#include <utility>

#include "headsetmgmt/constants.h"
#include "headsetmgmt/plugins.h"
#include "headsetmgmt/system_info.h"
#include "headsetmgmt/utilities.h"

#include "core/json.h"
#include "metrics/inventory_metric.h"

namespace headsetmgmt::metrics {

namespace {

bool add_text(const JsonOwner& object, const char* key, const std::string& text) {
    return cJSON_AddStringToObject(object.get(), key, text.c_str()) != nullptr;
}

/// Moves `child` into `parent`; false when there is no child, or when memory ran out and the child
/// was deleted.
bool add_object(const JsonOwner& parent, const std::string& key, JsonOwner child) {
    if (!child || cJSON_AddItemToObject(parent.get(), key.c_str(), child.get()) == 0) {
        return false;
    }
    static_cast<void>(child.release());  // owned by the parent
    return true;
}

/// The tree that `build` makes, owned by the caller; null when it throws: memory ran out, or a host
/// function threw.
template <typename Build>
cJSON* built_or_null(Build build) {
    try {
        return build().release();
    } catch (...) {
        return nullptr;
    }
}

}  // namespace

std::string InventoryMetric::assemble_metrics() {
    logger->notice() << "assemble_metrics: Enter";
    try {
        return compose_report();
    } catch (...) {
        return fail_assembly(": JSON was not formed correctly");
    }
}

std::string InventoryMetric::compose_report() {
    const JsonOwner report(build_envelop(logger.get()));
    JsonOwner value(cJSON_CreateObject());
    if (!report) {
        return fail_assembly(": Envelop build failed");
    }
    const bool maker_accessory = is_maker_accessory();
    if (!add_object(value, constants::key_host,
                    JsonOwner(build_host_payload(logger.get(), maker_accessory)))) {
        return fail_assembly(": Building host payload failed");
    }
    // A missing dock never fails the report.
    if (maker_accessory &&
        !add_object(value, constants::key_dock, JsonOwner(build_dock_payload()))) {
        logger->error() << "assemble_metrics" << constants::tag_lib_err
                        << ": Building dock payload failed";
    }
    if (!add_object(value, get_inventory_accessory_key(), JsonOwner(build_accessory_payload()))) {
        return fail_assembly(": Building accessory payload failed");
    }
    const bool complete = add_object(report, constants::key_value, std::move(value));
    const JsonTextOwner printed(complete ? cJSON_Print(report.get()) : nullptr);
    if (!printed) {
        return fail_assembly(": JSON was not formed correctly");
    }
    std::string text = printed.get();
    logger->notice() << "assemble_metrics: success";
    return text;
}

cJSON* InventoryMetric::build_envelop(log::Logger* envelop_logger) {
    envelop_logger->notice() << "build_envelop: Enter";
    return built_or_null([this]() -> JsonOwner {
        JsonOwner envelop(cJSON_CreateObject());
        const auto now = static_cast<double>(std::time(nullptr));
        const bool built =
            cJSON_AddNumberToObject(envelop.get(), constants::key_time, now) != nullptr &&
            add_text(envelop, constants::key_key, get_inventory_base_key());
        return built ? std::move(envelop) : nullptr;
    });
}

cJSON* InventoryMetric::build_host_payload(log::Logger* payload_logger, bool maker_accessory) {
    payload_logger->notice() << "build_host_payload: Enter";
    return built_or_null([maker_accessory]() -> JsonOwner {
        SystemInfoInterface* phone = globals::plugins.system_info;
        JsonOwner host(cJSON_CreateObject());
        bool built = true;
        // Facts of the phone are for the maker only.
        if (maker_accessory) {
            built = add_text(host, constants::key_client, phone->get_host_client_type()) &&
                    add_text(host, constants::key_serial_number, phone->get_host_serial_number()) &&
                    add_text(host, constants::key_device_name, phone->get_host_device_name()) &&
                    add_text(host, constants::key_model, phone->get_host_model()) &&
                    add_text(host, constants::key_firmware_version,
                             phone->get_host_software_version()) &&
                    add_text(host, constants::key_host_os_version, phone->get_host_os_version());
        }
        built = built && add_text(host, constants::key_user_id, phone->get_host_user_id());
        return built ? std::move(host) : nullptr;
    });
}

cJSON* InventoryMetric::build_dock_payload() {
    logger->info() << "build_dock_payload: Enter";
    return built_or_null([this]() -> JsonOwner {
        const std::string serial_number = accessory->get_dock_serial_number();
        if (serial_number.empty()) {
            logger->error() << "build_dock_payload: Dock serial number is empty.";
            return nullptr;
        }
        JsonOwner dock(cJSON_CreateObject());
        const bool built = add_text(dock, constants::key_serial_number, serial_number) &&
                           add_text(dock, constants::key_model, accessory->get_dock_model());
        return built ? std::move(dock) : nullptr;
    });
}

cJSON* InventoryMetric::build_accessory_payload() {
    logger->info() << "build_accessory_payload: Enter";
    return built_or_null([this]() -> JsonOwner {
        SystemInfoInterface* phone = globals::plugins.system_info;
        const std::string serial_number = accessory->get_serial_number(phone);
        if (serial_number.empty()) {
            logger->error() << "build_accessory_payload: accessory serial number is empty.";
            return nullptr;
        }
        JsonOwner payload(cJSON_CreateObject());
        const bool built =
            add_text(payload, constants::key_serial_number, serial_number) &&
            add_text(payload, constants::key_firmware_version, accessory->get_software_version()) &&
            add_text(payload, constants::key_vendor, accessory->get_vendor(phone)) &&
            add_text(payload, constants::key_model,
                     get_headset_model(accessory->get_model(), serial_number)) &&
            add_text(payload, constants::key_connection_type, accessory->get_connection_type()) &&
            add_text(payload, constants::key_connection_status, accessory->get_connection_status());
        return built ? std::move(payload) : nullptr;
    });
}

/// By the USB vendor id, or by a vendor's name that begins with the maker's in any mix of capitals.
bool InventoryMetric::is_maker_accessory() {
    const std::string vendor = accessory->get_vendor(globals::plugins.system_info);
    const std::string_view maker = constants::varos;
    return isVarosHeadset(accessory.get()) ||
           same_but_for_case(std::string_view(vendor).substr(0, maker.size()), maker);
}

std::string InventoryMetric::fail_assembly(const char* message) {
    logger->error() << "assemble_metrics" << constants::tag_lib_err << message;
    return {};
}

}  // namespace headsetmgmt::metrics
