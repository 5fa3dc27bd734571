// SPDX-License-Identifier: Apache-2.0
// The slots of the interfaces: which virtual function stands where. A host that was compiled
// against an older header calls by slot.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/config.h"
#include "headsetmgmt/config_manager.h"
#include "headsetmgmt/dispatcher.h"
#include "headsetmgmt/executor.h"
#include "headsetmgmt/host_config_driver.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/metrics.h"
#include "headsetmgmt/mutex.h"
#include "headsetmgmt/system_info.h"

namespace headsetmgmt {
namespace {

/// The slot of a virtual function, counted from 0. A destructor, which has no address, takes two.
template <typename Function>
std::size_t slot(Function function) {
    // The offset in the table of virtual functions; the lowest bit marks it on some processors.
    std::uintptr_t offset = 0;
    std::memcpy(&offset, &function, sizeof offset);
    return (offset & ~std::uintptr_t{1}) / sizeof(void*);
}

TEST(SlotsTest, AccessoryInfoKeepsItsSlots) {
    using Interface = AccessoryInfoInterface;
    EXPECT_EQ(slot(&Interface::get_type), 0);
    EXPECT_EQ(slot(&Interface::clone), 1);
    EXPECT_EQ(slot(&Interface::get_vendor), 2);
    EXPECT_EQ(slot(&Interface::get_model), 3);
    EXPECT_EQ(slot(&Interface::get_serial_number), 4);
    EXPECT_EQ(slot(&Interface::get_software_version), 5);
    EXPECT_EQ(slot(&Interface::get_hardware_version), 6);
    EXPECT_EQ(slot(&Interface::get_dock_serial_number), 7);
    EXPECT_EQ(slot(&Interface::get_dock_model), 8);
    EXPECT_EQ(slot(&Interface::get_dongle_serial_number), 9);
    EXPECT_EQ(slot(&Interface::get_dongle_model), 10);
    EXPECT_EQ(slot(&Interface::get_dongle_version), 11);
    EXPECT_EQ(slot(&Interface::get_connection_type), 12);
    EXPECT_EQ(slot(&Interface::get_connection_status), 13);
    EXPECT_EQ(slot(&Interface::to_string), 14);
    EXPECT_EQ(slot(&Interface::data_ready), 15);
    EXPECT_EQ(slot(&Interface::firmware_data_ready), 16);
    EXPECT_EQ(slot(&Interface::is_varos_vid), 17);
    EXPECT_EQ(slot(&Interface::set_connection), 18);
    EXPECT_EQ(slot(&Interface::reset), 19);
}

TEST(SlotsTest, ConfigKeepsItsSlots) {
    using Interface = config::ConfigInterface;
    EXPECT_EQ(slot(&Interface::update_from_server), 0);
    EXPECT_EQ(slot(&Interface::update_from_host), 1);
    EXPECT_EQ(slot(&Interface::get_config_url), 2);
    EXPECT_EQ(slot(&Interface::apply_config_to_device), 3);
    EXPECT_EQ(slot(&Interface::retrieve_config), 4);
    EXPECT_EQ(slot(&Interface::get_type), 5);
    EXPECT_EQ(slot(&Interface::get_accessory), 6);
    EXPECT_EQ(slot(&Interface::get_accessory_id), 7);
    EXPECT_EQ(slot(&Interface::get_config_retries), 8);
    EXPECT_EQ(slot(&Interface::set_config_retries), 9);
    EXPECT_EQ(slot(&Interface::is_config_required), 10);
    EXPECT_EQ(slot(&Interface::reset_config), 11);
    EXPECT_EQ(slot(&Interface::update), 12);
    EXPECT_EQ(slot(&Interface::clone), 13);
}

TEST(SlotsTest, ConfigManagerKeepsItsSlots) {
    using Interface = config::ConfigManager;
    using RetrieveAll = std::map<int, ConfigParam> (Interface::*)(const std::string&);
    using RetrieveOne = std::string (Interface::*)(const std::string&, int);
    EXPECT_EQ(slot(&Interface::initialize_accessory), 0);
    EXPECT_EQ(slot(&Interface::configure_accessory), 1);
    EXPECT_EQ(slot(&Interface::remove_accessory), 2);
    EXPECT_EQ(slot(&Interface::on_fetch_config_success), 3);
    EXPECT_EQ(slot(&Interface::on_fetch_config_failure), 4);
    EXPECT_EQ(slot(&Interface::reset_to_admin_defaults), 5);
    EXPECT_EQ(slot(static_cast<RetrieveAll>(&Interface::retrieve_config)), 6);
    EXPECT_EQ(slot(static_cast<RetrieveOne>(&Interface::retrieve_config)), 7);
}

TEST(SlotsTest, DispatcherKeepsItsSlots) {
    EXPECT_EQ(slot(&dispatcher::DispatcherInterface::push), 2);
    EXPECT_EQ(slot(&dispatcher::DispatcherInterface::get), 3);
}

TEST(SlotsTest, ExecutorKeepsItsSlots) {
    EXPECT_EQ(slot(&ExecutorInterface::add_task), 0);
}

TEST(SlotsTest, HostConfigDriverKeepsItsSlots) {
    using Interface = config::HostConfigDriverInterface;
    EXPECT_EQ(slot(&Interface::apply_config_to_device), 2);
    EXPECT_EQ(slot(&Interface::check_legacy_upgrade), 3);
    EXPECT_EQ(slot(&Interface::request_upgrade), 4);
    EXPECT_EQ(slot(&Interface::on_failure), 5);
    EXPECT_EQ(slot(&Interface::on_pending), 6);
}

TEST(SlotsTest, HostLogKeepsItsSlots) {
    EXPECT_EQ(slot(&log::HostLogInterface::map_to_host_log_level), 2);
    EXPECT_EQ(slot(&log::HostLogInterface::print), 3);
}

TEST(SlotsTest, MetricsKeepsItsSlots) {
    EXPECT_EQ(slot(&metrics::MetricsInterface::send), 2);
    EXPECT_EQ(slot(&metrics::MetricsInterface::get_type), 3);
}

TEST(SlotsTest, MutexKeepsItsSlots) {
    EXPECT_EQ(slot(&MutexInterface::lock), 2);
    EXPECT_EQ(slot(&MutexInterface::unlock), 3);
}

TEST(SlotsTest, MutexFactoryKeepsItsSlots) {
    EXPECT_EQ(slot(&MutexFactoryInterface::create_mutex), 2);
    EXPECT_EQ(slot(&MutexFactoryInterface::delete_mutex), 3);
}

TEST(SlotsTest, SystemInfoKeepsItsSlots) {
    using Interface = SystemInfoInterface;
    EXPECT_EQ(slot(&Interface::get_host_client_type), 0);
    EXPECT_EQ(slot(&Interface::get_host_device_name), 1);
    EXPECT_EQ(slot(&Interface::get_host_serial_number), 2);
    EXPECT_EQ(slot(&Interface::get_host_model), 3);
    EXPECT_EQ(slot(&Interface::get_host_software_version), 4);
    EXPECT_EQ(slot(&Interface::get_host_hardware_version), 5);
    EXPECT_EQ(slot(&Interface::get_host_user_id), 6);
    EXPECT_EQ(slot(&Interface::get_host_os_version), 7);
    EXPECT_EQ(slot(&Interface::get_persistent_storage_location), 8);
    EXPECT_EQ(slot(&Interface::get_config_url), 9);
    EXPECT_EQ(slot(&Interface::get_inventory_post_url), 10);
    EXPECT_EQ(slot(&Interface::get_metrics_service_info_url), 11);
    EXPECT_EQ(slot(&Interface::get_korm_server), 12);
    EXPECT_EQ(slot(&Interface::get_tftp_server), 13);
    EXPECT_EQ(slot(&Interface::get_korm_servers), 14);
    EXPECT_EQ(slot(&Interface::to_string), 15);
    EXPECT_EQ(slot(&Interface::data_ready), 16);
}

TEST(SlotsTest, TaskParametersKeepsItsSlots) {
    using Interface = TaskParametersInterface;
    EXPECT_EQ(slot(&Interface::clone), 2);
    EXPECT_EQ(slot(&Interface::get_type), 3);
    EXPECT_EQ(slot(&Interface::check_status), 4);
    EXPECT_EQ(slot(&Interface::get_timeout), 5);
    EXPECT_EQ(slot(&Interface::get_defer_time), 6);
}

}  // namespace
}  // namespace headsetmgmt
