// SPDX-License-Identifier: Apache-2.0
// What a request that is refused is answered with.

#pragma once

#include <string>

#include "program/output.h"

namespace headsetmgmt::program {

/// A JSON object that says what is wrong: "error", "method", "path", and `facts`.
std::string refusal_body(const std::string& message, const std::string& method,
                         const std::string& path, const Event& facts = Event::object());

}  // namespace headsetmgmt::program
