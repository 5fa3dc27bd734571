// Owners of JSON trees and printed JSON, and the parser with its error.

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

/// A JSON tree, deleted with everything in it.
using JsonOwner = std::unique_ptr<cJSON, JsonDeleter>;

/// What cJSON printed.
using JsonTextOwner = std::unique_ptr<char, JsonDeleter>;

/// Parses `text`, up to its first NUL if it holds one. When that fails the result is empty, and
/// `rest` is what stands from the place of the error on, if the parser knows the place. Any thread.
JsonOwner parse_json(const std::string& text, std::optional<std::string>& rest);

}  // namespace headsetmgmt
