// SPDX-License-Identifier: Apache-2.0
// Texts that the host passes in.

#pragma once

#include <string>

namespace headsetmgmt::plugin {

/// The host's text; empty for null.
inline std::string text_or_empty(const char* text) {
    return text != nullptr ? text : "";
}

}  // namespace headsetmgmt::plugin
