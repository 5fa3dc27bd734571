// SPDX-License-Identifier: Apache-2.0
// Information about the phone: constants, results of host functions, and facts that the host has
// set.

#include "plugin/phone_system_info_impl.h"

#include <algorithm>
#include <utility>

#include "headsetmgmt/phone/host_functions.h"

#include "plugin/host_call.h"
#include "plugin/host_text.h"

namespace headsetmgmt::config {

namespace {

using FactsLock = ScopedLock<Mutex>;

std::string server_at(const std::vector<std::string>& servers, unsigned int index) {
    return index < servers.size() ? servers[index] : std::string();
}

void add_once(std::vector<std::string>& servers, std::string&& server) {
    if (std::find(servers.begin(), servers.end(), server) == servers.end()) {
        servers.push_back(std::move(server));
    }
}

std::string ask_host(const char* (*question)()) {
    const plugin::HostCall host_call;
    return plugin::text_or_empty(question());
}

}  // namespace

std::string PhoneSystemInfoImpl::get_host_client_type() {
    return "Orvik-VDI";
}

std::string PhoneSystemInfoImpl::get_host_device_name() {
    return "TRMXXXXXXXX";
}

std::string PhoneSystemInfoImpl::get_host_serial_number() {
    return ask_host(get_host_serial_num);
}

std::string PhoneSystemInfoImpl::get_host_model() {
    return "TRM";
}

std::string PhoneSystemInfoImpl::get_host_software_version() {
    return ask_host(get_orvik_ver);
}

std::string PhoneSystemInfoImpl::get_host_hardware_version() {
    return "host HW model unknown";
}

std::string PhoneSystemInfoImpl::get_host_user_id() {
    const FactsLock facts_lock(facts_mutex);
    return user_id;
}

std::string PhoneSystemInfoImpl::get_host_os_version() {
    return ask_host(get_host_os_ver);
}

std::string PhoneSystemInfoImpl::get_persistent_storage_location() {
    return "./";
}

std::string PhoneSystemInfoImpl::get_config_url() {
    const FactsLock facts_lock(facts_mutex);
    return config_url;
}

std::string PhoneSystemInfoImpl::get_inventory_post_url() {
    const FactsLock facts_lock(facts_mutex);
    return inventory_post_url;
}

std::string PhoneSystemInfoImpl::get_metrics_service_info_url() {
    const FactsLock facts_lock(facts_mutex);
    return service_url;
}

std::string PhoneSystemInfoImpl::get_korm_server(unsigned int index) {
    const FactsLock facts_lock(facts_mutex);
    return server_at(korm_servers, index);
}

std::string PhoneSystemInfoImpl::get_tftp_server(unsigned int index) {
    const FactsLock facts_lock(facts_mutex);
    return server_at(tftp_servers, index);
}

std::vector<std::string> PhoneSystemInfoImpl::get_korm_servers() {
    const FactsLock facts_lock(facts_mutex);
    return korm_servers;
}

void PhoneSystemInfoImpl::addTftpServer(std::string server) {
    const FactsLock facts_lock(facts_mutex);
    add_once(tftp_servers, std::move(server));
}

void PhoneSystemInfoImpl::addKormServer(std::string server) {
    const FactsLock facts_lock(facts_mutex);
    add_once(korm_servers, std::move(server));
}

void PhoneSystemInfoImpl::setConfigUrl(std::string url) {
    const FactsLock facts_lock(facts_mutex);
    config_url = std::move(url);
}

void PhoneSystemInfoImpl::setInventoryPostUrl(std::string url) {
    const FactsLock facts_lock(facts_mutex);
    inventory_post_url = std::move(url);
}

void PhoneSystemInfoImpl::setServiceUrl(std::string url) {
    const FactsLock facts_lock(facts_mutex);
    service_url = std::move(url);
}

void PhoneSystemInfoImpl::setUserId(std::string id) {
    const FactsLock facts_lock(facts_mutex);
    user_id = std::move(id);
}

}  // namespace headsetmgmt::config
