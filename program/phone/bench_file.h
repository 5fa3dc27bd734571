// SPDX-License-Identifier: Apache-2.0
// Bench files: benches as JSON whose every member is known.

#pragma once

#include <string>

#include "program/phone/bench.h"

namespace headsetmgmt::program {

/// The option that adds an accessory.
inline constexpr char accessory_option[] = "--accessory";

/// The text of a bench file. Throws `RefusedInput`.
std::string read_bench_file(const std::string& path);

/// The bench that a text describes; `path` is for the messages. Two accessories may have one id.
/// Throws `RefusedInput`.
Bench read_bench(const std::string& text, const std::string& path);

/// An accessory from "NAME=VALUE,...", with the names of the bench file's members; no value can
/// hold a comma. `option` is for the messages. Throws `RefusedInput`.
AccessoryCache read_accessory(const std::string& text, const std::string& option);

/// The place of a value for a message: "bench.json:3: member /phone/userId". `pointer` is its JSON
/// pointer, empty for the whole document.
std::string place_in_file(const std::string& text, const std::string& path,
                          const std::string& pointer);

/// The place of an option's value for a message: `--accessory "id=a"`.
std::string place_in_option(const std::string& text, const std::string& option);

}  // namespace headsetmgmt::program
