// SPDX-License-Identifier: Apache-2.0
// White space, strings and numbers, as the library's parser reads them.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace headsetmgmt::program::json {

/// Whether a byte is white space: control characters are.
inline bool is_blank(char byte) {
    return static_cast<unsigned char>(byte) <= ' ';
}

/// Offset behind the number that begins at `begin`, with a digit or a minus sign; `begin` when
/// there is none. The parser lets strtod read what consists of digits, signs, points and "e".
std::size_t number_end(std::string_view text, std::size_t begin);

/// The character that an escape stands for.
struct Escape {
    std::size_t length;      ///< bytes of the escape
    unsigned int character;  ///< number of the character
};

/// The escape at `offset`, where a backslash stands, of a string with its closing quotation mark at
/// `end`. None when the parser refuses it.
///
/// As the parser reads: \u takes the next four bytes, whatever they are, and stands for a NUL
/// character when one of them is not a hexadecimal digit. Half a surrogate pair is refused.
std::optional<Escape> escape_at(std::string_view text, std::size_t offset, std::size_t end);

/// Offset of the closing quotation mark of the string that opens at `begin`; `npos` without one.
std::size_t string_end(std::string_view text, std::size_t begin);

/// The text of the string that opens at `begin`. It must be one that the parser takes.
std::string string_text(std::string_view text, std::size_t begin);

}  // namespace headsetmgmt::program::json
