// Small questions about texts, headset models and waiting times. None keeps state.

#pragma once

#include <string>
#include <string_view>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/export.h"

namespace stringconverter {

/// `value` as text: an `int` in decimal, characters as they stand (none for null). Any thread. Not
/// exported by the shared library, like the text functions below.
template <typename T>
std::string to_string(const T& value);

extern template std::string to_string<int>(const int& value);
extern template std::string to_string<char*>(char* const& value);

}  // namespace stringconverter

/// Makes every ASCII capital of `text` small. Any thread.
void to_lower(std::string& text);

/// Whether two texts are the same but for the case of ASCII letters. Any thread.
bool equals_ignore_case(std::string left, std::string right);

/// The same, without copies. Any thread.
bool same_but_for_case(std::string_view left, std::string_view right);

/// Whether at least one character is an ASCII letter, which is what tells a development build's
/// version from a release. Any thread.
bool is_alpha(const std::string& text);

/// Whether any character is something else than an ASCII letter, a digit or "-". Any thread.
bool is_naming_corrupted(const std::string& text);

/// Whether `text` is made of digits alone, at least one; false for null. Any thread.
template <typename T>
bool is_number(const T& text);

extern template bool is_number<char*>(char* const& text);

/// The marketed model of a headset. "Varos K20" and "Varos K30" both report "Varos K30" and are
/// told apart by the eighth character of the serial number, which is '4' for the K20; every other
/// model, and a serial number of seven characters or fewer, answers `model`. Any thread.
HEADSETMGMT_EXPORT std::string get_headset_model(const std::string& model,
                                                 const std::string& serial);

/// The same for an accessory's reported facts; empty for null. The serial number is read only where
/// it matters. Any thread.
HEADSETMGMT_EXPORT std::string get_headset_model(headsetmgmt::AccessoryInfoInterface* accessory);

/// Whether the accessory carries the maker's USB vendor id. Must not be null. Any thread.
HEADSETMGMT_EXPORT bool isVarosHeadset(headsetmgmt::AccessoryInfoInterface* accessory);

/// Whether the accessory may be moved to an older firmware: always, whatever it is. Any thread.
HEADSETMGMT_EXPORT bool headset_support_downgrade(headsetmgmt::AccessoryInfoInterface* accessory);

/// Suspends the calling thread. The microseconds are counted in 32 bits, so more than 4294 seconds
/// wrap and sleep for less. Any thread.
HEADSETMGMT_EXPORT void sleep_for(unsigned int seconds);

/// A random number of seconds from `base` to `base + spread`, the same within one second of the
/// clock. Uses the process-wide `srand` and `rand`: not from two threads at once.
HEADSETMGMT_EXPORT unsigned int get_seconds_to_wait(unsigned int base, unsigned int spread);
