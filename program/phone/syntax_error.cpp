// Where a document stops being JSON.

#include "program/phone/syntax_error.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace headsetmgmt::program {

namespace {

/// Follows a text that the library's parser has read without fault: which objects and arrays are
/// open, and whether a text or a key is under way.
class Reading {
public:
    void read(std::string_view text) {
        for (const char byte : text) {
            read(byte);
        }
    }

    /// Goes on to the end of the text or key that is under way; whether there is one.
    bool reaches_end_of_text(std::string_view text) {
        return std::any_of(text.begin(), text.end(), [this](char byte) {
            read(byte);
            return !in_text;
        });
    }

    std::size_t levels() const { return open.size(); }
    bool is_in_text() const { return in_text; }
    bool wants_key() const { return before_key; }

private:
    void read(char byte) {
        if (in_text) {
            in_text = after_backslash || byte != '"';
            after_backslash = !after_backslash && byte == '\\';
        } else if (byte == '{' || byte == '[') {
            open.push_back(byte);
            before_key = byte == '{';
        } else if (byte == ',') {
            before_key = !open.empty() && open.back() == '{';
        } else if (byte == '"') {
            in_text = true;
            before_key = false;
        } else if (byte == '}' || byte == ']') {
            if (!open.empty()) {
                open.pop_back();
            }
            before_key = false;
        }
    }

    std::string open;
    bool in_text = false;
    bool after_backslash = false;
    bool before_key = false;
};

bool continues_character(char byte) {
    return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80U;
}

/// Enough of a text to find it by.
std::string beginning_of(std::string_view text) {
    constexpr std::size_t enough = 60;
    if (text.size() <= enough) {
        return std::string(text);
    }
    std::size_t end = enough;
    while (end > enough - 3 && continues_character(text[end])) {
        --end;  // not in the middle of a character
    }
    return std::string(text.substr(0, end)) + "...";
}

/// The line and the column of what follows `before`, both from 1; columns count characters.
std::string place_after(std::string_view before) {
    const auto lines = std::count(before.begin(), before.end(), '\n');
    const std::size_t line_start = before.rfind('\n') + 1;  // 0 in the first line
    const std::string_view line = before.substr(line_start);
    const auto columns = std::count_if(line.begin(), line.end(),
                                       [](char byte) { return !continues_character(byte); });
    return "line " + std::to_string(lines + 1) + ", column " + std::to_string(columns + 1);
}

/// The last byte that is no white space; a blank when there is none.
char last_token_byte(std::string_view text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    return last != std::string_view::npos ? text[last] : ' ';
}

bool is_one_of(char byte, std::string_view bytes) {
    return bytes.find(byte) != std::string_view::npos;
}

/// Whether a value may follow `before`.
bool may_stand_after(std::string_view before) {
    return is_one_of(last_token_byte(before), " [:,");
}

/// Whether more bytes could have made a word or a number of it.
bool is_cut_off_word(std::string_view before, std::string_view rest) {
    static constexpr std::string_view words[] = {"true", "false", "null", "-0"};
    const bool begins_word =
        std::any_of(std::begin(words), std::end(words), [rest](std::string_view word) {
            return rest.size() < word.size() && word.substr(0, rest.size()) == rest;
        });
    return rest.empty() || (begins_word && may_stand_after(before));
}

/// Whether `rest` is an exponent without its digits: the parser takes the number before it.
bool is_cut_off_exponent(std::string_view before, std::string_view rest) {
    const bool is_exponent = !rest.empty() && is_one_of(rest.front(), "eE") &&
                             (rest.size() == 1 || (rest.size() == 2 && is_one_of(rest[1], "+-")));
    return is_exponent && !before.empty() && is_one_of(before.back(), "0123456789");
}

/// Whether `rest` is an array or an object where one may stand.
bool is_one_more_level(std::string_view before, std::string_view rest) {
    return may_stand_after(before) && is_one_of(rest.front(), "[{");
}

/// What is wrong with `text`, whose `place` is where the library's parser gave up.
std::string error_at(std::string_view text, std::size_t place) {
    std::string cut_off =
        "no JSON: it ends in the middle (byte " + std::to_string(text.size()) + ")";
    Reading reading;
    reading.read(text.substr(0, place == 0 ? 0 : place - 1));
    const char last = place == 0 ? ' ' : text[place - 1];
    const bool is_empty_object = last == '}' && last_token_byte(text.substr(0, place - 1)) == '{';
    const bool is_key_missing = reading.wants_key() && !is_empty_object && last != '"' &&
                                static_cast<unsigned char>(last) > ' ';
    if (is_key_missing) {
        --place;  // the parser had gone on by one byte before it gave up
    } else {
        reading.read(std::string_view(&last, 1));
    }
    const std::string_view before = text.substr(0, place);
    const std::string_view rest = text.substr(place);
    if (reading.is_in_text()) {
        const std::string begin = place_after(before.substr(0, place - 1));
        if (!reading.reaches_end_of_text(rest)) {
            return cut_off + ", in a text that begins at " + begin;
        }
    } else if (!is_key_missing &&
               (is_cut_off_word(before, rest) || is_cut_off_exponent(before, rest))) {
        return cut_off;
    }
    const std::string where = place_after(before) + ": \"" + beginning_of(rest) + "\"";
    if (!is_key_missing && is_one_more_level(before, rest)) {
        // A parser that has taken all up to here has no other reason to stop.
        return "nested deeper than the library reads, which is " +
               std::to_string(reading.levels()) + " levels: " + where;
    }
    return "no JSON: " + where;
}

}  // namespace

std::string syntax_error(std::string_view document, std::string_view rest) {
    const std::string_view text = document.substr(0, document.find('\0'));
    if (text.empty()) {
        return document.empty() ? "the document is empty (0 bytes)"
                                : "the document begins with a NUL byte, so it counts as empty";
    }
    if (text.find_first_not_of(" \t\r\n") == std::string_view::npos) {
        return "the document is nothing but white space (" + std::to_string(text.size()) +
               " bytes)";
    }
    if (rest.size() > text.size() || text.substr(text.size() - rest.size()) != rest) {
        return "no JSON at: " + beginning_of(rest);
    }
    return error_at(text, text.size() - rest.size());
}

}  // namespace headsetmgmt::program
