// SPDX-License-Identifier: Apache-2.0
// A second reading of configuration documents, made with another JSON parser, to compare the
// library's own with.

#pragma once

#include <map>
#include <optional>
#include <string>

#include "headsetmgmt/config.h"

namespace headsetmgmt::fuzz {

/// The accessory that a document is read for.
struct Device {
    std::string id;
    std::string model;
    std::string version;
    std::string dongle_model;  ///< empty when there is no dongle
    std::string dongle_version;
};

/// What a document brings to an accessory that had none before.
struct Reading {
    bool applied = false;
    double updated_time = 0.0;
    std::map<int, ConfigParam> settings;
    std::string firmware_call;  ///< as `FakeConfigDriver` writes it; empty when there is none
};

/// Empty for a document that is not strict JSON: the library's parser accepts more than others.
std::optional<Reading> read_again(const std::string& document, const Device& device);

}  // namespace headsetmgmt::fuzz
