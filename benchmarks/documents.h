// SPDX-License-Identifier: Apache-2.0
// Configuration documents of any size, for the model "Varos K20".

#pragma once

#include <cstddef>
#include <string>

namespace headsetmgmt::benchmarks {

/// Makes names and texts of settings some 50 characters long, too long to lie inside a string.
inline constexpr const char* long_remark = " of the template of an administrator";

/// A document with as many `settings` of the administrator, usage ids from 1 on, each some 100
/// bytes long as an administrator writes it. The last one is the model's own, so that all are sent.
/// `remark` is added to names and values, to make them longer.
std::string document_of_settings(std::size_t settings, const std::string& remark = "");

/// A document with as many model `entries`, of which the last one serves the headset. It has one
/// setting.
std::string document_of_model_entries(std::size_t entries);

/// A document of one setting whose value makes it `bytes` long.
std::string document_of_one_value(std::size_t bytes);

/// A document of `settings` that breaks off at its end.
std::string broken_document(std::size_t settings);

/// A document of the deepest nesting that the parser reads.
std::string deepest_document();

}  // namespace headsetmgmt::benchmarks
