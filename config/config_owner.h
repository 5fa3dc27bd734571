// SPDX-License-Identifier: Apache-2.0
// The owner of a configuration object.

#pragma once

#include <memory>

#include "headsetmgmt/config.h"

namespace headsetmgmt::config {

struct ConfigDeleter {
    void operator()(ConfigInterface* config) const { delete_config(config); }
};

using ConfigOwner = std::unique_ptr<ConfigInterface, ConfigDeleter>;

}  // namespace headsetmgmt::config
