// SPDX-License-Identifier: Apache-2.0
// The core's one plug-in record.

#include "headsetmgmt/plugins.h"

#include <stdexcept>

namespace headsetmgmt {

namespace globals {

Plugins plugins;

}  // namespace globals

bool init(Plugins& plugins) {
    if (!plugins.is_valid()) {
        throw std::runtime_error("plugins is not initialized properly");
    }
    globals::plugins = plugins;
    return true;
}

}  // namespace headsetmgmt
