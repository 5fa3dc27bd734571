// SPDX-License-Identifier: Apache-2.0
// Scans JSON text as the library's parser does.

#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <string_view>
#include <variant>

#include "program/json/fault.h"
#include "program/json/index.h"
#include "program/json/places.h"

namespace headsetmgmt::program::json {

/// As many levels as a text has.
inline constexpr std::size_t any_levels = std::numeric_limits<std::size_t>::max();

/// The places of all values of a text, or where and why it is not JSON.
///
/// Takes and refuses what the library's parser (cJSON) takes and refuses. More than standard JSON
/// are: anything behind the value, a NUL byte as the text's end, all bytes up to 0x20 as white
/// space, control characters and broken UTF-8 in strings, \u before other bytes than four digits,
/// and numbers such as 01, 1., -.5. A byte-order mark may precede the value. Needs no stack for
/// nesting, and the time is linear in the length of the text. The index borrows the text.
std::variant<Index, Fault> scan(std::string_view text, std::size_t most_levels = library_levels);

/// Place of the member or element that a JSON pointer names in a text, however deep the text is
/// nested: of a member, the place of its name. None when the text is not JSON or has no such value.
std::optional<Place> place_of_pointer(std::string_view text, std::string_view pointer);

}  // namespace headsetmgmt::program::json
