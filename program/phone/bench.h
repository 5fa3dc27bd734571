// SPDX-License-Identifier: Apache-2.0
// A test bench: the phone, its servers and its accessories.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "headsetmgmt/phone/host_types.h"

namespace headsetmgmt::program {

/// Servers of a kind that the library takes.
inline constexpr std::size_t servers_of_a_kind = 3;

/// Everything that a phone passes to the library.
struct Bench {
    std::string serial_number = "PH0000001";
    std::string os_version = "1.0.0";
    std::string software_version = "1-0-0";
    std::string user_id;
    std::string config_url;
    std::string inventory_url;
    std::string service_url;
    std::vector<std::string> tftp_servers;  ///< `servers_of_a_kind` at most
    std::vector<std::string> korm_servers;  ///< `servers_of_a_kind` at most
    std::vector<AccessoryCache> accessories;
};

/// The bench file and the options that are laid over it. What is empty was not given.
struct BenchOptions {
    std::string file;
    std::string serial_number;
    std::string os_version;
    std::string software_version;
    std::string user_id;
    std::string config_url;
    std::string inventory_url;
    std::string service_url;
    std::vector<std::string> tftp_servers;
    std::vector<std::string> korm_servers;
    std::vector<std::string> accessories;  ///< "NAME=VALUE,..."
};

/// The bench that file and options make together. Throws `RefusedInput` for a bench that cannot be
/// used.
Bench make_bench(const BenchOptions& options);

}  // namespace headsetmgmt::program
