// SPDX-License-Identifier: Apache-2.0
// The sentence for each event of a phone.

#pragma once

#include <string>

#include "program/output.h"

namespace headsetmgmt::program {

/// The sentence for an event of a phone; some have more than one line.
std::string phone_event_in_words(const Event& event);

}  // namespace headsetmgmt::program
