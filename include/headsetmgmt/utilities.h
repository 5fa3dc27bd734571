// SPDX-License-Identifier: Apache-2.0
// Functions for texts, headset models and waiting times. None keeps state of its own.

#pragma once

#include <string>
#include <string_view>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/export.h"

namespace stringconverter {

/// `value` as text: an `int` in decimal, a character array unchanged (empty for null). Any thread.
/// Not exported by the shared library, like the text functions below.
template <typename T>
std::string to_string(const T& value);

extern template std::string to_string<int>(const int& value);
extern template std::string to_string<char*>(char* const& value);

}  // namespace stringconverter

/// Converts the ASCII capitals of `text` to lower case. Any thread.
void to_lower(std::string& text);

/// Whether two texts are equal, ignoring the case of ASCII letters. Any thread.
bool equals_ignore_case(std::string left, std::string right);

/// The same, without copies. Any thread.
bool same_but_for_case(std::string_view left, std::string_view right);

/// Whether at least one character is an ASCII letter, as in the version of a development build but
/// not of a release. Any thread.
bool is_alpha(const std::string& text);

/// Whether any character is not an ASCII letter, a digit or "-". Any thread.
bool is_naming_corrupted(const std::string& text);

/// Whether `text` consists of digits, at least one; false for null. Any thread.
template <typename T>
bool is_number(const T& text);

extern template bool is_number<char*>(char* const& text);

/// The marketed model of a headset. "Varos K20" and "Varos K30" both report "Varos K30"; the eighth
/// character of the serial number is '4' for a K20. Returns `model` for every other model, and when
/// the serial number is shorter than eight characters. Any thread.
HEADSETMGMT_EXPORT std::string get_headset_model(const std::string& model,
                                                 const std::string& serial);

/// The same for an accessory's reported facts; empty for null. Reads the serial number only if the
/// model is "Varos K30". Any thread.
HEADSETMGMT_EXPORT std::string get_headset_model(headsetmgmt::AccessoryInfoInterface* accessory);

/// Whether the accessory has the maker's USB vendor id. `accessory` must not be null. Any thread.
HEADSETMGMT_EXPORT bool isVarosHeadset(headsetmgmt::AccessoryInfoInterface* accessory);

/// Whether the accessory may get an older firmware: always true, also for null. Any thread.
HEADSETMGMT_EXPORT bool headset_support_downgrade(headsetmgmt::AccessoryInfoInterface* accessory);

/// Suspends the calling thread. Counts microseconds in 32 bits: more than 4294 seconds overflow,
/// and the sleep is shorter. Any thread.
HEADSETMGMT_EXPORT void sleep_for(unsigned int seconds);

/// A random number of seconds from `base` to `base + spread`. Calls within one second of the clock
/// return the same number. Uses the process-wide `srand` and `rand`: not from two threads at once.
HEADSETMGMT_EXPORT unsigned int get_seconds_to_wait(unsigned int base, unsigned int spread);
