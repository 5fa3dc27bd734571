// A test bench: the phone, its servers and its accessories, as a bench file describes them.

#pragma once

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "headsetmgmt/phone/host_types.h"

namespace headsetmgmt::program {

/// Servers of a kind that the library takes.
inline constexpr std::size_t servers_of_a_kind = 3;

/// Everything that a phone tells the library.
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

/// A bench that cannot be used; the text names the place, such as file, line and member, and what
/// was expected.
class BenchError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads a bench file. Throws `BenchError`.
Bench read_bench_file(const std::string& path);

/// The same from text; `path` is for the messages.
Bench read_bench(const std::string& text, const std::string& path);

/// An accessory from "NAME=VALUE,...", with the names of the bench file's members; no value can
/// hold a comma. `option` is for the messages. Throws `BenchError`.
AccessoryCache read_accessory(const std::string& text, const std::string& option);

}  // namespace headsetmgmt::program
