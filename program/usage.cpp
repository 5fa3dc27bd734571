// SPDX-License-Identifier: Apache-2.0
// What is expected of the values on a command line, and the message for one that is wrong.

#include "program/usage.h"

#include <charconv>
#include <cstdio>
#include <sstream>
#include <system_error>

#include "program/output.h"
#include "program/url_mask.h"

namespace headsetmgmt::program {

namespace {

/// Empty when the text is no option.
std::string refusal_of_option(const std::string& expected, const std::string& value) {
    if (value.compare(0, 2, "--") != 0) {
        return {};
    }
    return "expected " + expected + ", found the option \"" + value + "\"";
}

/// A check that the whole text is a number between the two.
template <typename Number>
CLI::Validator number(const std::string& expected, Number smallest, Number largest) {
    std::ostringstream range;
    range << smallest << " to " << largest;
    const auto check = [=, text_of_range = range.str()](const std::string& value) {
        Number found{};
        const char* end = value.data() + value.size();
        const auto [stop, error] = std::from_chars(value.data(), end, found);
        // CLI11 takes a leading zero for an octal number.
        const bool is_octal = value.size() > 1 && value[0] == '0' && value[1] != '.';
        const bool is_number = error == std::errc() && stop == end && !is_octal;
        if (is_number && found >= smallest && found <= largest) {
            return std::string();
        }
        const std::string option = refusal_of_option(expected, value);
        return !option.empty()
                   ? option
                   : "expected " + expected + ", " + text_of_range + ", found \"" + value + "\"";
    };
    return CLI::Validator(check, range.str());
}

}  // namespace

CLI::Validator text(const std::string& expected) {
    return CLI::Validator(
        [expected](const std::string& value) { return refusal_of_option(expected, value); }, "");
}

CLI::Validator non_empty_text(const std::string& expected) {
    return CLI::Validator(
        [expected](const std::string& value) {
            return value.empty() ? "expected " + expected + ", found \"\""
                                 : refusal_of_option(expected, value);
        },
        "");
}

CLI::Validator whole_number(const std::string& expected, std::size_t smallest,
                            std::size_t largest) {
    return number(expected, smallest, largest);
}

CLI::Validator decimal_number(const std::string& expected, double smallest, double largest) {
    return number(expected, smallest, largest);
}

void report_refusal(const std::string& who, const std::string& message, bool as_json) {
    const std::string shown = with_masked_passwords(message);
    if (as_json) {
        Output(true, nullptr).write({{"event", "error"}, {"message", shown}});
    } else {
        std::fprintf(stderr, "%s: %s\n", who.c_str(), escaped(shown).c_str());
    }
}

}  // namespace headsetmgmt::program
