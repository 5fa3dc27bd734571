// SPDX-License-Identifier: Apache-2.0
// Texts in UTF-8.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace headsetmgmt::program {

/// Bytes of the UTF-8 character that starts at `offset`; 0 when none does.
std::size_t utf8_length(std::string_view text, std::size_t offset);

/// Adds a character, given by its number (at most 0x10ffff), to `text`.
void append_utf8(std::string& text, unsigned int character);

/// Where to cut `text` so that at most `bytes` are left and its last character is whole.
std::size_t cut_between_characters(std::string_view text, std::size_t bytes);

/// `text` to be shown: one of more than 200 bytes is cut, and its length added: "abc... (300
/// bytes)". A document has room for a name of megabytes, and an event for many names.
std::string shortened(const std::string& text);

}  // namespace headsetmgmt::program
