// SPDX-License-Identifier: Apache-2.0
// Text functions. ASCII only, so that the results do not depend on the locale of the host.

#include <algorithm>
#include <string>
#include <type_traits>

#include "headsetmgmt/utilities.h"

namespace {

bool is_ascii_digit(char character) {
    return character >= '0' && character <= '9';
}

bool is_ascii_letter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

char ascii_lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

}  // namespace

namespace stringconverter {

template <typename T>
std::string to_string(const T& value) {
    if constexpr (std::is_pointer_v<T>) {
        return value != nullptr ? value : "";
    } else {
        return std::to_string(value);
    }
}

template std::string to_string<int>(const int& value);
template std::string to_string<char*>(char* const& value);

}  // namespace stringconverter

void to_lower(std::string& text) {
    std::transform(text.begin(), text.end(), text.begin(), ascii_lower);
}

bool equals_ignore_case(std::string left, std::string right) {
    to_lower(left);
    to_lower(right);
    return left == right;
}

bool same_but_for_case(std::string_view left, std::string_view right) {
    // Most compared texts are identical.
    return left == right ||
           std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char one, char other) { return ascii_lower(one) == ascii_lower(other); });
}

bool is_alpha(const std::string& text) {
    return std::any_of(text.begin(), text.end(), is_ascii_letter);
}

bool is_naming_corrupted(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char character) {
        return !is_ascii_letter(character) && !is_ascii_digit(character) && character != '-';
    });
}

template <typename T>
bool is_number(const T& text) {
    const std::string digits = stringconverter::to_string(text);
    return !digits.empty() && std::all_of(digits.begin(), digits.end(), is_ascii_digit);
}

template bool is_number<char*>(char* const& text);
