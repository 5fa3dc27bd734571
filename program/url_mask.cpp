// SPDX-License-Identifier: Apache-2.0
// URLs as they may be shown: without the password in them.

#include "program/url_mask.h"

#include <algorithm>
#include <cstddef>

namespace headsetmgmt::program {

namespace {

constexpr char mark[] = "://";
constexpr std::size_t mark_length = sizeof(mark) - 1;

/// Where the host, or what stands before it, begins.
std::size_t authority_in(const std::string& url) {
    const std::size_t place = url.find(mark);
    const std::size_t after_slashes =
        place == std::string::npos ? 0 : url.find_first_not_of('/', place + mark_length);
    return std::min(after_slashes, url.size());
}

/// Whether a port of digits, or none, stands from `begin` to `end`.
bool is_port(const std::string& url, std::size_t begin, std::size_t end) {
    return url.find_first_not_of("0123456789", begin) >= end;
}

}  // namespace

std::string masked_url(const std::string& url) {
    const std::size_t begin = authority_in(url);
    const std::size_t end = std::min(url.find_first_of("/?#", begin), url.size());
    const std::size_t colon = url.find(':', begin);
    if (colon >= end) {
        return url;
    }
    std::size_t at = url.rfind('@', end);
    const bool is_before_host = at != std::string::npos && at > begin;
    if (!is_before_host && url[begin] != '[' && !is_port(url, colon + 1, end)) {
        at = url.rfind('@');  // of a password that is not coded as it should be
    }
    if (at == std::string::npos || at < colon) {
        return url;
    }
    return url.substr(0, colon + 1) + "***" + url.substr(at);
}

std::string with_masked_passwords(const std::string& text) {
    constexpr char blanks[] = " \t\r\n\v\f";
    std::size_t place = std::min(text.find(mark), text.size());
    std::string result = text.substr(0, place);
    while (place < text.size()) {
        // A URL may hold another one.
        const std::size_t next = std::min(text.find(mark, place + mark_length), text.size());
        const std::size_t end = std::min(text.find_first_of(blanks, place), next);
        result += masked_url(text.substr(place, end - place));
        result.append(text, end, next - end);
        place = next;
    }
    return result;
}

}  // namespace headsetmgmt::program
