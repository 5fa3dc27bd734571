// SPDX-License-Identifier: Apache-2.0
// Where a configuration document comes from: its URL, and by its time whether it is required at
// all.

#include <cstdlib>
#include <string>

#include "headsetmgmt/constants.h"
#include "headsetmgmt/plugins.h"

#include "config/config_impl.h"
#include "metrics/url_templates.h"

namespace headsetmgmt::config {

std::string ConfigImpl::get_config_url() const {
    SystemInfoInterface* system_info = globals::plugins.system_info;
    std::string url = system_info->get_config_url();
    logger->info() << "get_config_url: tokenized url: " << url;
    if (url.empty()) {
        return constants::default_config_file;
    }
    if (has_token(url, constants::tftp_token)) {
        const auto index = static_cast<unsigned int>(get_config_retries());
        const std::string server = system_info->get_tftp_server(index);
        if (server.empty()) {
            logger->warning() << "get_config_url" << constants::tag_plugin_err
                              << " no config servers found, returning";
            return url;
        }
        replace_token(url, constants::tftp_token, server_in_url(server));
    }
    if (has_token(url, userid_token)) {
        replace_token(url, userid_token, system_info->get_host_user_id());
    }
    return url;
}

bool ConfigImpl::is_config_required(const std::string& version_stamp) const {
    if (version_stamp.empty()) {
        logger->info()
            << "is_config_required: No version timestamp to compare, proceed with configure";
        return true;
    }
    const std::string::size_type hyphen = version_stamp.find('-');
    if (hyphen == std::string::npos || hyphen + 1 == version_stamp.size()) {
        logger->info() << "is_config_required" << constants::tag_korm_err
                       << ": Version timestamp is incorrectly formatted. Do not configure.";
        return false;
    }
    const double template_time = std::strtod(version_stamp.c_str() + hyphen + 1, nullptr);
    logger->notice() << "is_config_required: Template updated time in epoch: " << template_time;
    if (is_config_required(template_time)) {
        logger->notice()
            << "is_config_required: Version timestamp is different, proceed with configure";
        return true;
    }
    logger->notice() << "is_config_required: Version timestamp is same, do not configure";
    return false;
}

bool ConfigImpl::is_config_required(double template_time) const {
    logger->info() << "is_config_required: Config time: " << template_time
                   << ", last updated time: " << last_updated_time;
    // Exactly: the smallest difference makes another document.
    return !(template_time == last_updated_time);
}

void ConfigImpl::reset_timestamps() {
    last_updated_time = 0.0;
}

}  // namespace headsetmgmt::config
