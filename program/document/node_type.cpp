// SPDX-License-Identifier: Apache-2.0
// Names of the types of nodes, for sentences.

#include "program/document/node_type.h"

#include <cjson/cJSON.h>

namespace headsetmgmt::program {

std::string type_of(const cJSON* node) {
    if (cJSON_IsObject(node) != 0) {
        return "an object";
    }
    if (cJSON_IsString(node) != 0) {
        return "a text";
    }
    if (cJSON_IsNumber(node) != 0) {
        return "a number";
    }
    return cJSON_IsNull(node) != 0 ? "null" : "true or false";
}

}  // namespace headsetmgmt::program
