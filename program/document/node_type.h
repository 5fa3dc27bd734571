// SPDX-License-Identifier: Apache-2.0
// Names of the types of nodes, for sentences.

#pragma once

#include <string>

struct cJSON;

namespace headsetmgmt::program {

/// What a node is that should be an array: "an object", "a text", "null".
std::string type_of(const cJSON* node);

}  // namespace headsetmgmt::program
