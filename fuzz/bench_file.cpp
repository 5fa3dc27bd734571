// SPDX-License-Identifier: Apache-2.0
// Fuzzes the reader of bench files, and of accessories given as an option, with any bytes.

#include "program/phone/bench_file.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/oracle.h"
#include "program/refused_input.h"

namespace headsetmgmt::fuzz {
namespace {

using program::Bench;

std::size_t lines_of(const std::string& text) {
    return 1 + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

void expect_servers(const std::vector<std::string>& servers) {
    expect(servers.size() <= program::servers_of_a_kind, "three servers of a kind at most");
    for (const std::string& server : servers) {
        expect(!server.empty(), "a server has a name");
        expect(server.find('\0') == std::string::npos, "no NUL in a name", server);
    }
}

void expect_accessory(const AccessoryCache& accessory) {
    constexpr int headset = 1;
    constexpr int camera = 2;
    constexpr int largest_vendor_id = 0xFFFF;
    expect(!accessory.device_id.empty(), "an accessory has an id");
    expect(accessory.accessory_type == headset || accessory.accessory_type == camera,
           "an accessory is a headset or a camera");
    expect(accessory.vendor_id >= 0 && accessory.vendor_id <= largest_vendor_id,
           "a USB vendor id has sixteen bits");
    for (const std::string* text :
         {&accessory.device_id, &accessory.model, &accessory.serial_number, &accessory.vendor,
          &accessory.software_version, &accessory.dongle_version, &accessory.connection_status}) {
        expect(text->find('\0') == std::string::npos, "no NUL in a text", *text);
    }
}

void expect_usable(const Bench& bench) {
    expect_servers(bench.tftp_servers);
    expect_servers(bench.korm_servers);
    for (const AccessoryCache& accessory : bench.accessories) {
        expect_accessory(accessory);
    }
}

/// Where and why a text was refused.
struct Refusal {
    std::size_t line;
    std::string reason;
};

/// Takes "<file>:<line>: <reason>" apart, or "<file>:<line>:<column>: <reason>".
Refusal refusal_of(const std::string& message, const std::string& file) {
    expect(message.compare(0, file.size() + 1, file + ":") == 0, "a refusal names the file",
           message);
    std::size_t place = file.size() + 1;
    Refusal refusal = {0, {}};
    while (place < message.size() && message[place] >= '0' && message[place] <= '9') {
        refusal.line = refusal.line * 10 + static_cast<std::size_t>(message[place] - '0');
        ++place;
    }
    if (message.compare(place, 2, ": ") != 0) {
        expect(message.compare(place, 1, ":") == 0, "a column follows the line", message);
        const std::size_t column = place + 1;
        place = message.find_first_not_of("0123456789", column);
        expect(place != std::string::npos && place > column && message[column] != '0',
               "a column is a number from 1", message);
    }
    expect(message.compare(place, 2, ": ") == 0, "a reason follows the place", message);
    refusal.reason = message.substr(place + 2);
    expect(!refusal.reason.empty(), "a refusal has a reason", message);
    return refusal;
}

/// Empty when the text is a bench file. Anything but a `RefusedInput` ends the process.
std::optional<Refusal> read(const std::string& text) {
    try {
        expect_usable(program::read_bench(text, "bench.json"));
        return std::nullopt;
    } catch (const program::RefusedInput& error) {
        const Refusal refusal = refusal_of(error.what(), "bench.json");
        expect(refusal.line >= 1 && refusal.line <= lines_of(text), "a refusal names a line",
               error.what());
        return refusal;
    }
}

/// A reason as it would be without so many empty lines before the text: a member that is there
/// twice is reported with its first line too, and the parser's message repeats the blanks it read.
std::string without_empty_lines(const std::string& reason, std::size_t empty_lines) {
    constexpr char first_line[] = ": expected once, found on line ";
    constexpr char after_line[] = " already";
    const std::size_t found = reason.rfind(first_line);
    if (found != std::string::npos) {
        const std::size_t number = found + sizeof(first_line) - 1;
        const std::size_t end = reason.find_first_not_of("0123456789", number);
        if (end == std::string::npos || end == number || reason.substr(end) != after_line) {
            return reason;  // a member has such a name
        }
        const std::size_t line = std::stoul(reason.substr(number, end - number));
        expect(line > empty_lines, "no member stands in an empty line", reason);
        return reason.substr(0, number) + std::to_string(line - empty_lines) + after_line;
    }
    constexpr char read_last[] = "; last read: '";
    const std::size_t token = reason.find(read_last);
    if (reason.compare(0, 13, "expected JSON") == 0 && token != std::string::npos) {
        std::string blanks;
        for (std::size_t i = 0; i < empty_lines; ++i) {
            blanks += "<U+000A>";
        }
        const std::size_t begin = token + sizeof(read_last) - 1;
        if (reason.compare(begin, blanks.size(), blanks) == 0) {
            return reason.substr(0, begin) + reason.substr(begin + blanks.size());
        }
    }
    return reason;
}

/// Empty lines before it change nothing but the lines that are named.
void expect_reported_on_its_line(const std::string& text) {
    constexpr std::size_t empty_lines = 3;
    if (text.empty() || text.compare(0, 1, "\xef") == 0) {
        // An empty file has words of its own; a byte order mark is one at the beginning alone.
        return;
    }
    const std::optional<Refusal> plain = read(text);
    const std::optional<Refusal> moved = read(std::string(empty_lines, '\n') + text);
    expect(plain.has_value() == moved.has_value(), "empty lines do not matter");
    if (!plain) {
        return;
    }
    expect(moved->line == plain->line + empty_lines, "a refusal names the line",
           std::to_string(moved->line) + ": " + moved->reason);
    const std::string reason = without_empty_lines(moved->reason, empty_lines);
    expect(reason == plain->reason, "the reason is the same", moved->reason);
}

void read_option(const std::string& text) {
    try {
        expect_accessory(program::read_accessory(text, "--accessory"));
    } catch (const program::RefusedInput& error) {
        const std::string message = error.what();
        expect(message.compare(0, 13, "--accessory \"") == 0, "a refusal names the option",
               message);
    }
}

}  // namespace
}  // namespace headsetmgmt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    headsetmgmt::fuzz::read(text);
    headsetmgmt::fuzz::expect_reported_on_its_line(text);
    headsetmgmt::fuzz::read_option(text);
    return 0;
}
