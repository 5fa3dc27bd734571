// SPDX-License-Identifier: Apache-2.0
// What is expected of the values on a command line, and the message for one that is wrong.

#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <string>

namespace headsetmgmt::program {

/// Takes any text but an option: what follows an option whose value is an empty shell variable.
/// `expected` is for the message, such as "a URL".
CLI::Validator text(const std::string& expected);

/// The same, and refuses an empty text.
CLI::Validator non_empty_text(const std::string& expected);

/// Takes decimal digits alone. `expected` is for the message, such as "a whole number of bytes".
CLI::Validator whole_number(const std::string& expected, std::size_t smallest, std::size_t largest);

/// Takes a decimal number, with a fraction or without.
CLI::Validator decimal_number(const std::string& expected, double smallest, double largest);

/// Reports what is wrong with a command line or with what it names: on standard error, after `who`
/// ("headsetmgmt phone"), or as a JSON line. No password in a URL is shown.
void report_refusal(const std::string& who, const std::string& message, bool as_json);

}  // namespace headsetmgmt::program
