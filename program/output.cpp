// The program's output: one stream of events, told in words or as JSON lines.

#include "program/output.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <system_error>
#include <utility>

#include "program/exit_codes.h"

namespace headsetmgmt::program {

namespace {

/// Bytes of the UTF-8 character that starts at `place`; 0 when there is none.
std::size_t utf8_length(const std::string& text, std::size_t place) {
    const auto byte_at = [&text](std::size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    const unsigned int first = byte_at(place);
    const unsigned int second = byte_at(place + 1);
    std::size_t length = 0;
    if (first < 0x80) {
        return 1;
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
        if ((byte_at(place + i) & 0xc0U) != 0x80U) {
            return 0;
        }
    }
    return length;
}

/// Whether the character at `place` moves a terminal's cursor or worse.
bool is_control(const std::string& text, std::size_t place, std::size_t length) {
    const auto first = static_cast<unsigned char>(text[place]);
    if (length == 1) {
        return first < 0x20 || first == 0x7f;
    }
    return length == 2 && first == 0xc2 && static_cast<unsigned char>(text[place + 1]) < 0xa0;
}

/// Writes to standard output and leaves nothing in its buffer; 0 or the number of the error.
int write_out(const std::string& text) {
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    return written && std::fflush(stdout) == 0 ? 0 : errno;
}

/// A reader that has gone wants no more, which is no failure.
bool is_loss(int error) {
    return error != 0 && error != EPIPE;
}

void tell_loss(int error) {
    std::fprintf(stderr, "headsetmgmt: standard output cannot be written: %s\n",
                 std::generic_category().message(error).c_str());
}

}  // namespace

std::string escaped(const std::string& text) {
    std::string result;
    std::size_t place = 0;
    while (place < text.size()) {
        const std::size_t length = utf8_length(text, place);
        if (length != 0 && !is_control(text, place, length) && text[place] != '\\') {
            result.append(text, place, length);
            place += length;
        } else if (text[place] == '\n') {
            result += "\\n";
            ++place;
        } else if (text[place] == '\t') {
            result += "\\t";
            ++place;
        } else if (text[place] == '\\') {
            result += "\\\\";
            ++place;
        } else {
            std::array<char, 8> hex = {};
            std::snprintf(hex.data(), hex.size(), "\\x%02x",
                          static_cast<unsigned int>(static_cast<unsigned char>(text[place])));
            result += hex.data();
            ++place;
        }
    }
    return result;
}

bool print(const std::string& text) {
    const int error = write_out(text);
    if (is_loss(error)) {
        tell_loss(error);
    }
    return !is_loss(error);
}

Output::Output(bool json, Wording wording) : as_json(json), in_words(std::move(wording)) {}

void Output::tell(const Event& event) {
    std::string line;
    if (as_json) {
        Event object = {{"format", output_format}};
        object.update(event);
        // Texts may come from a server or a device: bytes that are no UTF-8 are replaced.
        line = object.dump(-1, ' ', false, Event::error_handler_t::replace);
    } else {
        line = in_words(event);
    }
    line += '\n';
    const std::lock_guard<std::mutex> line_lock(line_mutex);
    const int error = write_out(line);
    if (is_loss(error) && !lost.exchange(true)) {
        tell_loss(error);
    }
}

int Output::exit_code(int code) const {
    return code == exit_done && lost ? exit_failed : code;
}

}  // namespace headsetmgmt::program
