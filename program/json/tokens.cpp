// SPDX-License-Identifier: Apache-2.0
// White space, strings and numbers, as the library's parser reads them.

#include "program/json/tokens.h"

#include "program/utf8.h"

namespace headsetmgmt::program::json {

namespace {

constexpr std::size_t bytes_of_u_escape = 6;

std::size_t skip_digits(std::string_view text, std::size_t at) {
    while (at < text.size() && text[at] >= '0' && text[at] <= '9') {
        ++at;
    }
    return at;
}

/// The number in four hexadecimal digits; 0 for other bytes.
unsigned int hexadecimal(std::string_view digits) {
    unsigned int result = 0;
    for (const char byte : digits) {
        unsigned int digit = 0;
        if (byte >= '0' && byte <= '9') {
            digit = static_cast<unsigned int>(byte - '0');
        } else if (byte >= 'a' && byte <= 'f') {
            digit = static_cast<unsigned int>(byte - 'a') + 10;
        } else if (byte >= 'A' && byte <= 'F') {
            digit = static_cast<unsigned int>(byte - 'A') + 10;
        } else {
            return 0;
        }
        result = result << 4U | digit;
    }
    return result;
}

std::optional<Escape> u_escape_at(std::string_view text, std::size_t offset, std::size_t end) {
    if (end - offset < bytes_of_u_escape) {
        return std::nullopt;
    }
    const unsigned int first = hexadecimal(text.substr(offset + 2, 4));
    if (first < 0xd800 || first > 0xdfff) {
        return Escape{bytes_of_u_escape, first};
    }
    const std::size_t second_offset = offset + bytes_of_u_escape;
    if (first >= 0xdc00 || text.substr(second_offset, 2) != "\\u") {
        return std::nullopt;
    }
    // Where the string ends too early, its quotation mark is not a digit.
    const unsigned int second = hexadecimal(text.substr(second_offset + 2, 4));
    if (second < 0xdc00 || second > 0xdfff) {
        return std::nullopt;
    }
    return Escape{2 * bytes_of_u_escape, 0x10000U + ((first & 0x3ffU) << 10U | (second & 0x3ffU))};
}

}  // namespace

std::size_t number_end(std::string_view text, std::size_t begin) {
    const auto is_one_of = [text](std::size_t at, std::string_view bytes) {
        return at < text.size() && bytes.find(text[at]) != std::string_view::npos;
    };
    const std::size_t digits = begin + (is_one_of(begin, "-") ? 1 : 0);
    std::size_t end = skip_digits(text, digits);
    std::size_t digit_count = end - digits;
    if (is_one_of(end, ".")) {
        const std::size_t fraction = end + 1;
        end = skip_digits(text, fraction);
        digit_count += end - fraction;
    }
    if (digit_count == 0) {
        return begin;
    }
    if (is_one_of(end, "eE")) {
        const std::size_t exponent = end + (is_one_of(end + 1, "+-") ? 2 : 1);
        const std::size_t exponent_end = skip_digits(text, exponent);
        return exponent_end > exponent ? exponent_end : end;
    }
    return end;
}

std::optional<Escape> escape_at(std::string_view text, std::size_t offset, std::size_t end) {
    switch (text[offset + 1]) {
    case '"':
        return Escape{2, '"'};
    case '\\':
        return Escape{2, '\\'};
    case '/':
        return Escape{2, '/'};
    case 'b':
        return Escape{2, '\b'};
    case 'f':
        return Escape{2, '\f'};
    case 'n':
        return Escape{2, '\n'};
    case 'r':
        return Escape{2, '\r'};
    case 't':
        return Escape{2, '\t'};
    case 'u':
        return u_escape_at(text, offset, end);
    default:
        return std::nullopt;
    }
}

std::size_t string_end(std::string_view text, std::size_t begin) {
    std::size_t at = text.find_first_of("\"\\", begin + 1);
    while (at < text.size() && text[at] == '\\') {
        at = text.find_first_of("\"\\", at + 2);
    }
    return at;
}

std::string string_text(std::string_view text, std::size_t begin) {
    const std::size_t end = string_end(text, begin);
    std::string result;
    std::size_t at = begin + 1;
    while (at < end) {
        if (text[at] != '\\') {
            result += text[at];
            ++at;
            continue;
        }
        const Escape escape = escape_at(text, at, end).value();
        append_utf8(result, escape.character);
        at += escape.length;
    }
    return result;
}

}  // namespace headsetmgmt::program::json
