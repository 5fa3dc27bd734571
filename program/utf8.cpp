// SPDX-License-Identifier: Apache-2.0
// Texts in UTF-8.

#include "program/utf8.h"

namespace headsetmgmt::program {

namespace {

bool continues_character(char byte) {
    return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80U;
}

}  // namespace

std::size_t utf8_length(std::string_view text, std::size_t offset) {
    const auto byte_at = [text](std::size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    const unsigned int first = byte_at(offset);
    const unsigned int second = byte_at(offset + 1);
    std::size_t length = 0;
    if (first < 0x80) {
        return offset < text.size() ? 1 : 0;
    }
    if (first >= 0xc2 && first <= 0xdf) {
        length = 2;
    } else if (first >= 0xe0 && first <= 0xef) {
        // Neither a longer form of a shorter character nor half of a surrogate pair.
        const bool fits = (first != 0xe0 || second >= 0xa0) && (first != 0xed || second < 0xa0);
        length = fits ? 3 : 0;
    } else if (first >= 0xf0 && first <= 0xf4) {
        const bool fits = (first != 0xf0 || second >= 0x90) && (first != 0xf4 || second < 0x90);
        length = fits ? 4 : 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (offset + i >= text.size() || !continues_character(text[offset + i])) {
            return 0;
        }
    }
    return length;
}

void append_utf8(std::string& text, unsigned int character) {
    const auto append = [&text](unsigned int byte) { text += static_cast<char>(byte); };
    const auto continued = [character](unsigned int shift) {
        return 0x80U | (character >> shift & 0x3fU);
    };
    if (character < 0x80) {
        append(character);
        return;
    }
    if (character < 0x800) {
        append(0xc0U | character >> 6U);
    } else {
        if (character < 0x10000) {
            append(0xe0U | character >> 12U);
        } else {
            append(0xf0U | character >> 18U);
            append(continued(12));
        }
        append(continued(6));
    }
    append(continued(0));
}

std::size_t cut_between_characters(std::string_view text, std::size_t bytes) {
    if (text.size() <= bytes) {
        return text.size();
    }
    for (std::size_t back = 1; back <= 3 && back <= bytes; ++back) {
        if (utf8_length(text, bytes - back) > back) {
            return bytes - back;  // this character ends behind the cut
        }
    }
    return bytes;
}

std::string shortened(const std::string& text) {
    constexpr std::size_t most = 200;
    if (text.size() <= most) {
        return text;
    }
    return text.substr(0, cut_between_characters(text, most)) + "... (" +
           std::to_string(text.size()) + " bytes)";
}

}  // namespace headsetmgmt::program
