// SPDX-License-Identifier: Apache-2.0
// Lines and columns of a text, and the line to show for a place.

#include "program/json/places.h"

#include <algorithm>

#include "program/utf8.h"

namespace headsetmgmt::program::json {

namespace {

constexpr std::size_t bytes_between_marks = 4096;

/// A reader of characters.
struct Reader {
    std::string_view text;
    std::size_t offset = 0;
    Place place = {};

    /// Where the next character begins.
    std::size_t next() const {
        return offset + std::max<std::size_t>(1, utf8_length(text, offset));
    }

    /// Goes on by one character.
    void step() {
        const bool ends_line = text[offset] == '\n';
        offset = next();
        place = ends_line ? Place{place.line + 1, 1} : Place{place.line, place.column + 1};
    }

    /// Goes on to the character of which `wanted` is a byte.
    void go_to(std::size_t wanted) {
        while (offset < text.size() && next() <= wanted) {
            step();
        }
    }
};

}  // namespace

Place place_at(std::string_view text, std::size_t offset) {
    Reader reader = {text};
    reader.go_to(offset);
    return reader.place;
}

Places::Places(std::string_view text) : source(text) {
    marks.reserve(text.size() / bytes_between_marks + 1);
    Reader reader = {text};
    marks.push_back({reader.offset, reader.place});
    while (text.size() - reader.offset > bytes_between_marks) {
        reader.go_to(reader.offset + bytes_between_marks);
        marks.push_back({reader.offset, reader.place});
    }
}

Place Places::at(std::size_t offset) const {
    const auto behind =
        std::upper_bound(marks.begin(), marks.end(), offset,
                         [](std::size_t wanted, const Mark& mark) { return wanted < mark.offset; });
    const Mark& mark = *(behind - 1);  // the first mark is at offset 0
    Reader reader = {source, mark.offset, mark.place};
    reader.go_to(offset);
    return reader.place;
}

Excerpt excerpt(std::string_view text, std::size_t begin, std::size_t end) {
    constexpr std::size_t enough = 60;
    begin = std::min(begin, text.size());
    const std::size_t line_begin = begin == 0 ? 0 : text.rfind('\n', begin - 1) + 1;
    std::size_t line_end = std::min(text.find('\n', begin), text.size());
    if (line_end > begin && text[line_end - 1] == '\r') {
        --line_end;
    }
    const std::string_view ahead = text.substr(line_begin, begin - line_begin);
    std::size_t hidden = ahead.size() > enough ? ahead.size() - enough : 0;
    const std::size_t whole = cut_between_characters(ahead, hidden);
    if (whole < hidden) {
        hidden = whole + utf8_length(ahead, whole);  // the character on the cut is hidden, too
    }
    const std::string_view rest = text.substr(begin, line_end - begin);
    const std::size_t shown = cut_between_characters(rest, enough);
    const std::size_t marked = std::min(std::max(begin, end) - begin, shown);
    return {ahead.substr(hidden), rest.substr(0, marked), rest.substr(marked, shown - marked),
            hidden > 0, shown < rest.size()};
}

}  // namespace headsetmgmt::program::json
