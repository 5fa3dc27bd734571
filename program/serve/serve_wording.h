// SPDX-License-Identifier: Apache-2.0
// The sentence for each event of a server.

#pragma once

#include <string>

#include "program/output.h"

namespace headsetmgmt::program {

/// The sentence for an event of a server.
std::string serve_event_in_words(const Event& event);

}  // namespace headsetmgmt::program
