// SPDX-License-Identifier: Apache-2.0
// The header of a request: whether it is one, and what it says about the body.

#include "program/serve/request_header.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <microhttpd.h>
#include <optional>
#include <strings.h>
#include <system_error>
#include <vector>

namespace headsetmgmt::program {

namespace {

/// Takes the first line off `text`, without its end; nothing when it has no end.
std::optional<std::string_view> next_line(std::string_view& text) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    return line;
}

/// Without the empty lines that some clients send after the body of an earlier request.
std::string_view without_empty_lines(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of("\r\n"), text.size()));
    return text;
}

bool has_control_character(std::string_view line) {
    return std::any_of(line.begin(), line.end(), [](unsigned char character) {
        return (character < 0x20 && character != '\t') || character == 0x7f;
    });
}

/// A method or the name of a field.
bool is_token(std::string_view text) {
    constexpr std::string_view allowed = "!#$%&'*+-.^_`|~0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                         "abcdefghijklmnopqrstuvwxyz";
    return !text.empty() && text.find_first_not_of(allowed) == std::string_view::npos;
}

bool equals(std::string_view left, std::string_view right) {
    return left.size() == right.size() && strncasecmp(left.data(), right.data(), left.size()) == 0;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    text.remove_suffix(text.size() - (text.find_last_not_of(blanks) + 1));
    return text;
}

struct FirstLine {
    std::string_view method;
    std::string_view target;
    std::string_view version;
};

/// Nothing when it has another form than "GET /path HTTP/1.1".
std::optional<FirstLine> read_first_line(std::string_view line) {
    const std::size_t first = line.find(' ');
    const std::size_t last = line.rfind(' ');
    if (first == std::string_view::npos || first == last || has_control_character(line)) {
        return std::nullopt;
    }
    const FirstLine result = {line.substr(0, first), line.substr(first + 1, last - first - 1),
                              line.substr(last + 1)};
    constexpr std::string_view protocol = "HTTP/";
    if (!is_token(result.method) || result.target.empty() ||
        result.target.find_first_of(" \t") != std::string_view::npos ||
        result.version.substr(0, protocol.size()) != protocol) {
        return std::nullopt;
    }
    return result;
}

struct Fields {
    std::vector<std::string_view> hosts;
    std::vector<std::string_view> lengths;
    std::vector<std::string_view> codings;
    std::vector<std::string_view> expectations;
};

void keep(Fields& fields, std::string_view name, std::string_view value) {
    if (equals(name, "Host")) {
        fields.hosts.push_back(value);
    } else if (equals(name, "Content-Length")) {
        fields.lengths.push_back(value);
    } else if (equals(name, "Transfer-Encoding")) {
        fields.codings.push_back(value);
    } else if (equals(name, "Expect")) {
        fields.expectations.push_back(value);
    }
}

struct Refusal {
    unsigned int status = 0;
    const char* message = "";
};

Refusal refuse(const char* message, unsigned int status = MHD_HTTP_BAD_REQUEST) {
    return {status, message};
}

/// Reads the lines after the first.
Refusal read_fields(std::string_view lines, Fields& fields) {
    while (const std::optional<std::string_view> line = next_line(lines)) {
        if (line->empty()) {
            break;
        }
        if (line->front() == ' ' || line->front() == '\t') {
            return refuse("a line of the header is folded");
        }
        if (has_control_character(*line)) {
            return refuse("a line of the header has a control character");
        }
        const std::size_t colon = line->find(':');
        if (colon == std::string_view::npos) {
            return refuse("a line of the header has no colon");
        }
        if (!is_token(line->substr(0, colon))) {
            return refuse("a name in the header has a blank or another character that cannot "
                          "stand there");
        }
        keep(fields, line->substr(0, colon), trimmed(line->substr(colon + 1)));
    }
    return {};
}

Refusal check_length(std::string_view text) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) {
        return refuse("Content-Length is not a number");
    }
    std::uint64_t length = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), length).ec != std::errc{}) {
        return refuse("Content-Length is too large", MHD_HTTP_CONTENT_TOO_LARGE);
    }
    return {};
}

Refusal check(const Fields& fields, std::string_view version) {
    if (version.substr(0, 7) != "HTTP/1.") {
        return refuse("the version is none of HTTP/1.0, HTTP/1.1",
                      MHD_HTTP_HTTP_VERSION_NOT_SUPPORTED);
    }
    const bool is_first_version = version == "HTTP/1.0";
    if (fields.hosts.size() > 1 || (fields.hosts.empty() && !is_first_version)) {
        return refuse(fields.hosts.empty() ? "the header has no Host"
                                           : "the header has more than one Host");
    }
    if (fields.lengths.size() > 1) {
        return refuse("the header has more than one Content-Length");
    }
    if (fields.codings.empty()) {
        return fields.lengths.empty() ? Refusal{} : check_length(fields.lengths.front());
    }
    if (!fields.lengths.empty() || is_first_version) {
        return refuse(is_first_version ? "the header has a Transfer-Encoding, unknown to HTTP/1.0"
                                       : "the header has Content-Length beside Transfer-Encoding");
    }
    if (fields.codings.size() > 1 || !equals(fields.codings.front(), "chunked")) {
        return refuse("a Transfer-Encoding other than chunked", MHD_HTTP_NOT_IMPLEMENTED);
    }
    return {};
}

bool expects_continue_in_a_list(const Fields& fields) {
    constexpr std::string_view wanted = "100-continue";
    if (!fields.expectations.empty() && equals(fields.expectations.front(), wanted)) {
        return false;  // libmicrohttpd's
    }
    for (std::string_view rest : fields.expectations) {
        while (!rest.empty()) {
            const std::size_t comma = std::min(rest.find(','), rest.size());
            if (equals(trimmed(rest.substr(0, comma)), wanted)) {
                return true;
            }
            rest.remove_prefix(std::min(comma + 1, rest.size()));
        }
    }
    return false;
}

}  // namespace

std::size_t header_length(std::string_view text) {
    std::string_view rest = without_empty_lines(text);
    while (const std::optional<std::string_view> line = next_line(rest)) {
        if (line->empty()) {
            return text.size() - rest.size();
        }
    }
    return 0;
}

std::string target_of(std::string_view text) {
    std::string_view rest = without_empty_lines(text);
    const std::optional<std::string_view> line = next_line(rest);
    const std::optional<FirstLine> first = line ? read_first_line(*line) : std::nullopt;
    return first ? std::string(first->target) : "";
}

RequestHeader read_header(std::string_view text) {
    std::string_view rest = without_empty_lines(text);
    const std::string_view line = next_line(rest).value_or("");
    RequestHeader result;
    const std::optional<FirstLine> first = read_first_line(line);
    if (!first) {
        result.status = MHD_HTTP_BAD_REQUEST;
        result.message = has_control_character(line) ? "the first line has a control character"
                                                     : "the first line is malformed";
        return result;
    }
    result.method = first->method;
    result.target = first->target;
    Fields fields;
    Refusal refusal = read_fields(rest, fields);
    if (refusal.status == 0) {
        refusal = check(fields, first->version);
    }
    result.status = refusal.status;
    result.message = refusal.message;
    result.expects_continue_in_a_list =
        first->version != "HTTP/1.0" && expects_continue_in_a_list(fields);
    return result;
}

}  // namespace headsetmgmt::program
