// SPDX-License-Identifier: Apache-2.0
// The file of certificates that a phone trusts, before it is used.

#include "program/network/ca_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "program/refused_input.h"

namespace headsetmgmt::program {

namespace {

/// Whether a certificate begins with the line, as OpenSSL takes it.
bool begins_certificate(const std::string& line) {
    constexpr std::array<const char*, 3> beginnings = {"-----BEGIN CERTIFICATE-----",
                                                       "-----BEGIN X509 CERTIFICATE-----",
                                                       "-----BEGIN TRUSTED CERTIFICATE-----"};
    return std::any_of(beginnings.begin(), beginnings.end(), [&line](const std::string& beginning) {
        return line.compare(0, beginning.size(), beginning) == 0;
    });
}

}  // namespace

void check_ca_file(const std::string& path) {
    const auto refuse = [&path](const std::string& why) {
        throw RefusedInput("--ca-file \"" + path + "\": " + why);
    };
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::is_directory(status)) {
        refuse("expected a file, found a folder");
    }
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        return;
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        refuse("cannot be read: " + std::generic_category().message(errno));
    }
    std::string line;
    while (std::getline(file, line)) {
        if (begins_certificate(line)) {
            return;
        }
    }
    refuse("no certificate in it; expected PEM, which begins with -----BEGIN CERTIFICATE-----");
}

}  // namespace headsetmgmt::program
