// SPDX-License-Identifier: Apache-2.0
// The program's output: one stream of events, as sentences or as JSON lines.

#include "program/output.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <poll.h>
#include <sys/uio.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "program/exit_codes.h"
#include "program/utf8.h"

namespace headsetmgmt::program {

namespace {

/// The number of the UTF-8 character of that many bytes at `place`.
unsigned int code_point(const std::string& text, std::size_t place, std::size_t length) {
    constexpr std::array<unsigned int, 5> bits_of_first = {0, 0x7f, 0x1f, 0x0f, 0x07};
    unsigned int result = static_cast<unsigned char>(text[place]) & bits_of_first[length];
    for (std::size_t i = 1; i < length; ++i) {
        result = result << 6U | (static_cast<unsigned char>(text[place + i]) & 0x3fU);
    }
    return result;
}

/// `number` in that many hexadecimal digits.
std::string in_hexadecimal(unsigned int number, int digits) {
    std::array<char, 16> text = {};
    std::snprintf(text.data(), text.size(), "%0*x", digits, number);
    return text.data();
}

/// Writes to standard output and leaves nothing in its buffer; 0 or the number of the error.
int write_out(const std::string& text) {
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    return written && std::fflush(stdout) == 0 ? 0 : errno;
}

/// A reader that closed its end is not a failure.
bool is_loss(int error) {
    return error != 0 && error != EPIPE;
}

std::string json_line(const Event& event) {
    Event object = {{"format", output_format}};
    object.update(event);
    // Texts may come from a server or a device: bytes that are not UTF-8 are replaced.
    return object.dump(-1, ' ', true, Event::error_handler_t::replace) + '\n';
}

std::string lines_of_output(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " line" : " lines") + " of output";
}

void report_loss(int error) {
    complain("standard output cannot be written: " + std::generic_category().message(error));
}

/// The line that stands where lines are missing.
std::string loss_line(bool as_json, std::size_t count) {
    return as_json ? json_line({{"event", "lost"}, {"lines", count}})
                   : "lost here: " + lines_of_output(count) + "\n";
}

}  // namespace

std::string escaped(const std::string& text) {
    std::string result;
    std::size_t place = 0;
    while (place < text.size()) {
        const auto byte = static_cast<unsigned char>(text[place]);
        const std::size_t length = utf8_length(text, place);
        if (length > 1) {
            const unsigned int character = code_point(text, place, length);
            result += character <= 0xffff ? "\\u" + in_hexadecimal(character, 4)
                                          : "\\U" + in_hexadecimal(character, 8);
        } else if (byte == '\n') {
            result += "\\n";
        } else if (byte == '\t') {
            result += "\\t";
        } else if (byte == '\\') {
            result += "\\\\";
        } else if (byte < 0x20 || byte >= 0x7f) {
            result += "\\x" + in_hexadecimal(byte, 2);
        } else {
            result += text[place];
        }
        place += length > 1 ? length : 1;
    }
    return result;
}

void complain(std::string_view message) {
    constexpr int patience_milliseconds = 500;
    constexpr std::string_view who = "headsetmgmt: ";
    const auto part = [](std::string_view text) {
        return iovec{const_cast<char*>(text.data()), text.size()};
    };
    const std::array<iovec, 3> line = {part(who), part(message), part("\n")};
    pollfd standard_error = {STDERR_FILENO, POLLOUT, 0};
    if (poll(&standard_error, 1, patience_milliseconds) == 1) {
        const ssize_t written = writev(STDERR_FILENO, line.data(), line.size());
        static_cast<void>(written);  // nowhere else to complain
    }
}

bool print(const std::string& text) {
    const int error = write_out(text);
    if (is_loss(error)) {
        report_loss(error);
    }
    return !is_loss(error);
}

Output::Output(bool json, Wording wording, LineWriter::Limits limits)
    : as_json(json), in_words(std::move(wording)),
      lines(
          STDOUT_FILENO, limits, [json](std::size_t count) { return loss_line(json, count); },
          report_loss) {}

std::string Output::line_of(const Event& event) const {
    return as_json ? json_line(event) : in_words(event) + '\n';
}

void Output::write(const Event& event) {
    lines.add(line_of(event));
}

int Output::end(int code, const Event& last) {
    const LineWriter::Result result = lines.finish(last.is_null() ? "" : line_of(last));
    if (result.lost_lines != 0 && !is_loss_reported.exchange(true)) {
        complain("lost: " + lines_of_output(result.lost_lines) + ", for nobody read them");
    }
    const bool is_lost = result.lost_lines != 0 || result.error != 0;
    return code == exit_done && is_lost ? exit_failed : code;
}

}  // namespace headsetmgmt::program
