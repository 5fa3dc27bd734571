// SPDX-License-Identifier: Apache-2.0
// Whether a bench file is JSON, in which every member stands once.

#pragma once

#include <string>

namespace headsetmgmt::program {

/// Refuses a text that is not standard JSON, or in which an object has a member twice: the message
/// names the file `path`, the line and what is wrong. Throws `RefusedInput`.
void check_json(const std::string& text, const std::string& path);

}  // namespace headsetmgmt::program
