// SPDX-License-Identifier: Apache-2.0
// Checks of URLs and servers that no server can answer to.

#include "program/network/url_check.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <memory>

#include <curl/curl.h>

#include "program/refused_input.h"
#include "program/url_mask.h"

namespace headsetmgmt::program {

namespace {

std::string listed(const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) {
        list.append(list.empty() ? "" : ", ").append(text);
    }
    return list;
}

/// What libcurl makes of a URL; the scheme is judged elsewhere.
class ParsedUrl {
public:
    explicit ParsedUrl(const std::string& url)
        : parsed(curl_url()),
          result(curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), CURLU_NON_SUPPORT_SCHEME)) {
    }

    CURLUcode error() const { return result; }

    /// Empty when the URL has none.
    std::string port() const { return part(CURLUPART_PORT, 0); }

    /// Without what is coded with percent signs.
    std::string host() const { return part(CURLUPART_HOST, CURLU_URLDECODE); }

private:
    std::string part(CURLUPart wanted, unsigned int flags) const {
        char* text = nullptr;
        const CURLUcode got = curl_url_get(parsed.get(), wanted, &text, flags);
        std::string part = got == CURLUE_OK ? text : "";
        curl_free(text);
        return part;
    }

    struct Deleter {
        void operator()(CURLU* url) const { curl_url_cleanup(url); }
    };
    std::unique_ptr<CURLU, Deleter> parsed;
    CURLUcode result;
};

/// The parts of a URL as libcurl sees them, which passes over one slash too many.
struct UrlParts {
    explicit UrlParts(const std::string& url) {
        std::size_t begin = url.find("://") + 3;
        if (url.compare(begin, 1, "/") == 0) {
            ++begin;
        }
        end = std::min(url.find_first_of("/?#", begin), url.size());
        before = url.substr(0, begin);
        authority = url.substr(begin, end - begin);
    }

    std::string before;  ///< "http://"
    std::string authority;
    std::size_t end = 0;  ///< where the path begins
};

bool is_blank_or_control(char character) {
    constexpr unsigned char last_blank = 0x20;
    constexpr unsigned char del = 0x7f;
    const auto byte = static_cast<unsigned char>(character);
    return byte <= last_blank || byte == del;
}

/// Why no name service can know the host; empty when one can.
std::string fault_of_host(std::string host) {
    constexpr std::size_t longest_label = 63;
    constexpr std::size_t longest_name = 253;
    constexpr char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
    if (host.front() == '[') {
        return {};  // an IPv6 address, which libcurl has read
    }
    const std::size_t wrong = host.find_first_not_of(letters);
    if (wrong != std::string::npos) {
        constexpr unsigned char last_ascii = 0x7f;
        return static_cast<unsigned char>(host[wrong]) > last_ascii
                   ? "only ASCII letters can stand in a host name; write the others in its coded "
                     "form, which begins with xn--"
                   : quoted(host[wrong]) + " cannot stand in a host name";
    }
    if (host.back() == '.') {
        host.pop_back();
    }
    if (host.size() > longest_name) {
        return "expected a host name of at most " + std::to_string(longest_name) +
               " characters, found " + std::to_string(host.size());
    }
    for (std::size_t begin = 0; begin <= host.size();) {
        const std::size_t end = std::min(host.find('.', begin), host.size());
        if (end == begin) {
            return "nothing stands before a dot of the host name";
        }
        if (end - begin > longest_label) {
            return "expected at most " + std::to_string(longest_label) +
                   " characters between the dots of a host name, found " +
                   std::to_string(end - begin);
        }
        begin = end + 1;
    }
    return {};
}

}  // namespace

void refuse_url(const std::string& kind, const std::string& value, const std::string& why) {
    throw RefusedInput(kind + " \"" + masked_url(value) + "\": " + why);
}

std::string percent_coded(char character) {
    std::array<char, 4> text = {};
    std::snprintf(text.data(), text.size(), "%%%02X",
                  static_cast<unsigned int>(static_cast<unsigned char>(character)));
    return text.data();
}

std::size_t blank_or_control_in(const std::string& text) {
    return static_cast<std::size_t>(std::find_if(text.begin(), text.end(), is_blank_or_control) -
                                    text.begin());
}

std::string quoted(char character) {
    return std::string("\"") + character + "\"";
}

ServerName check_server_name(const std::string& kind, const std::string& server) {
    const std::size_t wrong = blank_or_control_in(server);
    if (wrong != server.size()) {
        refuse_url(kind, server, quoted(server[wrong]) + " cannot stand in a host name");
    }
    if (server.find("://") != std::string::npos) {
        refuse_url(kind, server, "expected a host name or an IP address, found a URL");
    }
    if (server.find('[') != std::string::npos) {
        refuse_url(kind, server,
                   "expected a host name or an IP address, without brackets and without a port");
    }
    const bool is_name_or_ipv6 = server.find(':') == std::string::npos ||
                                 ParsedUrl("http://[" + server + "]/").error() == CURLUE_OK;
    if (is_name_or_ipv6) {
        return ServerName::alone;
    }
    const std::string port = server.substr(server.rfind(':') + 1);
    if (port.empty() || port.find_first_not_of("0123456789") != std::string::npos) {
        refuse_url(kind, server, "expected a host name or an IP address");
    }
    return ServerName::with_port;
}

void check_scheme(const std::string& kind, const std::string& url,
                  const std::vector<std::string>& schemes) {
    std::string scheme = url.substr(0, url.find("://"));
    std::transform(scheme.begin(), scheme.end(), scheme.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    if (std::count(schemes.begin(), schemes.end(), scheme) == 0) {
        refuse_url(kind, url,
                   "expected a URL of " + listed(schemes) + ", found \"" + scheme + "://\"");
    }
}

void check_url(const std::string& kind, const std::string& given, const std::string& made) {
    std::string shown_url = masked_url(given);
    if (made != given) {
        shown_url += "\", which becomes \"" + masked_url(made);
    }
    const UrlParts parts(made);
    const UrlParts shown(masked_url(made));
    const std::size_t wrong = blank_or_control_in(made);
    if (wrong != made.size()) {
        // A user name and a password before the host can be coded.
        const std::size_t at = made.find_last_of('@', parts.end);
        const bool is_in_host = wrong < parts.end && (at == std::string::npos || at < wrong);
        refuse_url(kind, shown_url,
                   quoted(made[wrong]) + " cannot stand in a " +
                       (is_in_host ? "host name" : "URL; write " + percent_coded(made[wrong])));
    }
    const ParsedUrl parsed(made);
    if (parsed.error() == CURLUE_NO_HOST) {
        refuse_url(kind, shown_url, "no server stands after \"" + shown.before + "\"");
    }
    if (parsed.error() == CURLUE_BAD_PORT_NUMBER || parsed.port() == "0") {
        refuse_url(kind, shown_url,
                   "expected a port from 1 to 65535, found \"" + shown.authority + "\"");
    }
    if (parsed.error() == CURLUE_BAD_HOSTNAME || parsed.error() == CURLUE_BAD_IPV6) {
        refuse_url(kind, shown_url,
                   "expected a host name or an IP address after \"" + shown.before +
                       "\", found \"" + shown.authority + "\"");
    }
    if (parsed.error() != CURLUE_OK) {
        refuse_url(kind, shown_url, curl_url_strerror(parsed.error()));
    }
    const std::string fault = fault_of_host(parsed.host());
    if (!fault.empty()) {
        refuse_url(kind, shown_url, fault);
    }
}

}  // namespace headsetmgmt::program
