// SPDX-License-Identifier: Apache-2.0
// Lines and columns of a text, and the line to show for a place.

#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace headsetmgmt::program::json {

/// A place in a text, as editors count: lines and columns from 1.
///
/// A line ends with a line feed. A column counts characters of UTF-8; a byte that is not part of
/// one counts as a character.
struct Place {
    std::size_t line = 1;
    std::size_t column = 1;
};

inline bool operator==(const Place& left, const Place& right) {
    return left.line == right.line && left.column == right.column;
}

/// Place of the byte at `offset`. A byte in the middle of a character has the place of the
/// character; an offset behind the end counts as the end. Reads the text up to there: for more
/// than a few places make a `Places`.
Place place_at(std::string_view text, std::size_t offset);

/// Finds the places of a text in a time that does not depend on its length.
class Places {
public:
    /// Reads `text` once. Borrows it.
    explicit Places(std::string_view text);

    /// The same as `place_at`.
    Place at(std::size_t offset) const;

private:
    struct Mark {
        std::size_t offset;
        Place place;
    };

    std::string_view source;
    std::vector<Mark> marks;  ///< one every few kilobytes
};

/// What to show of the line in which a part of a text begins: a few words around the part, for
/// lines may be as long as documents. The parts are as they stand in the text.
struct Excerpt {
    std::string_view before;  ///< ahead of the part; 60 bytes at most
    std::string_view marked;  ///< the part up to the end of the line; may be empty
    std::string_view after;   ///< behind the part; with the part, 60 bytes at most
    bool is_cut_before;       ///< the line has more ahead of `before`
    bool is_cut_after;        ///< the line has more behind `after`
};

/// The excerpt for the part of `text` between the offsets `begin` and `end`.
Excerpt excerpt(std::string_view text, std::size_t begin, std::size_t end);

}  // namespace headsetmgmt::program::json
