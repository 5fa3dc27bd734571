// SPDX-License-Identifier: Apache-2.0
// Fuzzes the question whether a version stamp asks for configuring: the time of the latest document
// on the first line, the stamp in the rest.

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <system_error>

#include "fuzz/input.h"
#include "fuzz/oracle.h"
#include "support/config_bench.h"

namespace headsetmgmt::fuzz {
namespace {

using test_support::ConfigBench;
using test_support::OpenConfig;

/// A number at the beginning of `text`, as the standard library's other reader understands it: 0
/// when there is none; empty when there is one that no double holds.
std::optional<double> number_at_start_of(const std::string& text) {
    // That reader knows neither blanks, nor a plus, nor the prefix of hexadecimal numbers.
    const std::string bytes = text.substr(0, text.find('\0'));
    const char* at = bytes.data();
    const char* const end = at + bytes.size();
    while (at != end && (*at == ' ' || (*at >= '\t' && *at <= '\r'))) {
        ++at;
    }
    const bool negative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+')) {
        ++at;
    }
    if (at != end && (*at == '-' || *at == '+')) {
        return 0.0;
    }
    double number = 0.0;
    std::from_chars_result reading = {at, std::errc::invalid_argument};
    if (end - at > 2 && *at == '0' && (at[1] == 'x' || at[1] == 'X') &&
        (at[2] == '.' || std::isxdigit(static_cast<unsigned char>(at[2])) != 0)) {
        reading = std::from_chars(at + 2, end, number, std::chars_format::hex);
    }
    if (reading.ec == std::errc::invalid_argument) {
        reading = std::from_chars(at, end, number);
    }
    if (reading.ec == std::errc::result_out_of_range) {
        return std::nullopt;
    }
    if (reading.ec != std::errc{}) {
        return 0.0;
    }
    return negative ? -number : number;
}

/// Whether the accessory is to be configured; empty if this reading cannot decide.
std::optional<bool> wanted_answer(double last_time, const std::string& stamp) {
    if (stamp.empty()) {
        return true;
    }
    const std::size_t hyphen = stamp.find('-');
    if (hyphen == std::string::npos || hyphen + 1 == stamp.size()) {
        return false;
    }
    const std::optional<double> time = number_at_start_of(stamp.substr(hyphen + 1));
    if (time) {
        return *time != last_time;
    }
    // Too large or too small for a double, so it differs from every ordinary number.
    return std::isnormal(last_time) ? std::optional<bool>(true) : std::nullopt;
}

}  // namespace
}  // namespace headsetmgmt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace headsetmgmt::fuzz;
    Input input(data, size);
    const double last_time = number_at_start_of(input.line()).value_or(0.0);
    const std::string stamp = input.rest();

    ConfigBench bench;
    OpenConfig config("headset", &bench.accessory);
    config.last_updated_time = last_time;

    const bool answer = config.is_config_required(stamp);
    const std::optional<bool> wanted = wanted_answer(last_time, stamp);
    expect(!wanted || answer == *wanted, "the stamp is read as it says", stamp);
    expect(config.is_config_required(stamp) == answer, "asking changes nothing");
    expect(bench.driver_calls().empty(), "asking calls nobody");
    expect(bench.locks_held() == 0, "no lock is left held");
    return 0;
}
