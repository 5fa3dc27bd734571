// SPDX-License-Identifier: Apache-2.0
// Why a text is not JSON.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace headsetmgmt::program::json {

/// Levels of objects and arrays that the library's parser reads.
inline constexpr std::size_t library_levels = 1000;

/// Where and why a text stops being JSON.
struct Fault {
    enum class Kind {
        empty,              ///< the text has no bytes
        begins_with_nul,    ///< the text ends at its first byte, a NUL
        blank,              ///< nothing but white space
        cut_off,            ///< the text ends where more must follow
        cut_off_in_string,  ///< the text ends in a string or a name
        too_deep,           ///< one level more than may be read
        unexpected          ///< the bytes are not what must follow
    };

    Kind kind;
    /// Where it began: the first byte that is wrong; the opening quotation mark of a string that
    /// does not end; the end of a text that is cut off elsewhere.
    std::size_t offset;
    /// Where the library's parser gives up, and its error text begins: at most a byte from there.
    std::size_t parser_offset;
};

/// The reason and the place in one sentence.
std::string explanation(std::string_view text, const Fault& fault);

}  // namespace headsetmgmt::program::json
