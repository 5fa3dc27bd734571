// SPDX-License-Identifier: Apache-2.0
// Owners of JSON trees and printed JSON, and the parser.

#pragma once

#include <memory>
#include <optional>
#include <string>

#include <cjson/cJSON.h>

namespace headsetmgmt {

struct JsonDeleter {
    void operator()(cJSON* tree) const { cJSON_Delete(tree); }
    void operator()(char* printed) const { cJSON_free(printed); }
};

/// Owns a whole JSON tree.
using JsonOwner = std::unique_ptr<cJSON, JsonDeleter>;

/// Owns a text that cJSON printed.
using JsonTextOwner = std::unique_ptr<char, JsonDeleter>;

/// Parses `text`, up to its first NUL if there is one. On failure the result is empty, and `rest`
/// is the text from the place of the error on, if the parser reports the place. Any thread.
JsonOwner parse_json(const std::string& text, std::optional<std::string>& rest);

}  // namespace headsetmgmt
