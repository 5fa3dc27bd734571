// What is wrong with a bench's URLs before anybody was asked: what no retry mends.

#include "program/phone/url_check.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <curl/curl.h>

#include "headsetmgmt/constants.h"

#include "program/network/fetch_url.h"
#include "program/url_mask.h"

namespace headsetmgmt::program {

namespace {

constexpr char tftp_token[] = "{tftp}";
constexpr char korm_token[] = "{korm}";
constexpr char userid_token[] = "{userid}";

/// What the library puts into a URL, and where that comes from.
struct Placeholder {
    std::string token;
    std::string kind;     ///< "TFTP server"
    std::string value;    ///< empty: the library leaves a server's token; a user's becomes nothing
    std::string sources;  ///< where a server comes from: "servers.tftp or --tftp-server"
};

/// A URL as it is given, and what may stand in it.
struct Template {
    std::string kind;  ///< "config URL"
    std::string article;
    std::string text;
    std::vector<Placeholder> placeholders;
    std::vector<std::string> schemes;
};

/// No password is shown: refusals end in logs.
[[noreturn]] void refuse(const std::string& kind, const std::string& value,
                         const std::string& why) {
    throw BenchError(kind + " \"" + masked_url(value) + "\": " + why);
}

std::string listed(const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) {
        list.append(list.empty() ? "" : ", ").append(text);
    }
    return list;
}

std::string first_of(const std::vector<std::string>& servers) {
    return servers.empty() ? std::string() : servers.front();
}

/// What libcurl makes of a URL; the scheme is judged elsewhere.
class ParsedUrl {
public:
    explicit ParsedUrl(const std::string& url)
        : parsed(curl_url()),
          result(curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), CURLU_NON_SUPPORT_SCHEME)) {
    }

    CURLUcode error() const { return result; }

    /// Empty when the URL tells none.
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

/// Refuses what is in braces and no placeholder of this URL.
[[noreturn]] void refuse_token(const Template& url, const std::string& token) {
    std::string known = "known in " + url.article + " " + url.kind + ": ";
    for (const Placeholder& placeholder : url.placeholders) {
        known.append(&placeholder == &url.placeholders.front() ? "" : ", ")
            .append(placeholder.token);
    }
    if (masked_url(url.text).find(token) == std::string::npos) {
        refuse(url.kind, url.text,
               "letters in braces stand in the password; " + known +
                   "; a brace itself is written %7B or %7D");
    }
    if (token == tftp_token || token == korm_token || token == userid_token) {
        refuse(url.kind, url.text, token + " is not replaced there; " + known);
    }
    refuse(url.kind, url.text,
           token + " is not known; capitals count; " + known +
               "; a brace itself is written %7B or %7D");
}

/// Refuses letters in braces that are no placeholder here, and a second one of a kind.
void check_placeholders(const Template& url) {
    constexpr char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::set<std::string> found;
    for (std::size_t begin = url.text.find('{'); begin != std::string::npos;
         begin = url.text.find('{', begin + 1)) {
        const std::size_t end = url.text.find_first_not_of(letters, begin + 1);
        if (end == begin + 1 || end == std::string::npos || url.text[end] != '}') {
            continue;
        }
        const std::string token = url.text.substr(begin, end + 1 - begin);
        const auto placeholder =
            std::find_if(url.placeholders.begin(), url.placeholders.end(),
                         [&token](const Placeholder& one) { return one.token == token; });
        if (placeholder == url.placeholders.end()) {
            refuse_token(url, token);
        }
        if (!found.insert(token).second) {
            refuse(url.kind, url.text,
                   token +
                       " stands there twice, and each placeholder is replaced once; write the " +
                       placeholder->kind + " itself in the second place");
        }
    }
}

bool stands_in(const Placeholder& placeholder, const Template& url) {
    return url.text.find(placeholder.token) != std::string::npos;
}

std::string percent_coded(char character) {
    std::array<char, 4> text = {};
    std::snprintf(text.data(), text.size(), "%%%02X",
                  static_cast<unsigned int>(static_cast<unsigned char>(character)));
    return text.data();
}

bool is_blank_or_control(char character) {
    constexpr unsigned char last_blank = 0x20;
    constexpr unsigned char del = 0x7f;
    const auto byte = static_cast<unsigned char>(character);
    return byte <= last_blank || byte == del;
}

/// Where the first one stands; the text's size when there is none.
std::size_t blank_or_control_in(const std::string& text) {
    return static_cast<std::size_t>(std::find_if(text.begin(), text.end(), is_blank_or_control) -
                                    text.begin());
}

std::string quoted(char character) {
    return std::string("\"") + character + "\"";
}

/// Refuses a server with a port, and says where the port belongs.
[[noreturn]] void refuse_port(const Template& url, const Placeholder& placeholder) {
    const std::string& server = placeholder.value;
    const std::size_t colon = server.rfind(':');
    const std::string port = server.substr(colon);
    std::string with_port = url.text.empty() ? constants::default_config_file : url.text;
    if (is_bare_name(url.text)) {
        with_port.insert(0, "tftp://" + in_url(server.substr(0, colon)) + port + "/");
    } else {
        const std::size_t place = url.text.find(placeholder.token) + placeholder.token.size();
        if (url.text.compare(place, 1, ":") == 0) {
            refuse(placeholder.kind, server,
                   "the " + url.kind + " has a port already: give the server without one");
        }
        with_port.insert(place, port);
    }
    refuse(placeholder.kind, server,
           "no port here; write it into the " + url.kind + ": " + masked_url(with_port));
}

/// Refuses a server that is missing, or no bare host name or address.
void check_server(const Template& url, const Placeholder& placeholder) {
    const std::string& server = placeholder.value;
    if (server.empty()) {
        refuse(url.kind, url.text,
               placeholder.token + " has no server to stand for: give " + placeholder.sources);
    }
    const std::size_t wrong = blank_or_control_in(server);
    if (wrong != server.size()) {
        refuse(placeholder.kind, server, quoted(server[wrong]) + " cannot stand in a host name");
    }
    if (server.find("://") != std::string::npos) {
        refuse(placeholder.kind, server, "expected a host name or an IP address, found a URL");
    }
    if (server.find('[') != std::string::npos) {
        refuse(placeholder.kind, server,
               "expected a host name or an IP address, without brackets and without a port");
    }
    const bool is_name_or_ipv6 = server.find(':') == std::string::npos ||
                                 ParsedUrl("http://[" + server + "]/").error() == CURLUE_OK;
    if (is_name_or_ipv6) {
        return;
    }
    const std::string port = server.substr(server.rfind(':') + 1);
    if (port.empty() || port.find_first_not_of("0123456789") != std::string::npos) {
        refuse(placeholder.kind, server, "expected a host name or an IP address");
    }
    refuse_port(url, placeholder);
}

/// The library puts a user id in as it is.
void check_user_id(const Template& url, const Placeholder& user) {
    const std::size_t wrong = blank_or_control_in(user.value);
    if (wrong != user.value.size()) {
        refuse(user.kind, user.value,
               quoted(user.value[wrong]) + " cannot stand in a URL; write the user id into the " +
                   url.kind + " in place of " + user.token + ", with " +
                   percent_coded(user.value[wrong]));
    }
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

/// Refuses a whole URL, with everything replaced, that libcurl refuses or that no server can
/// answer.
void check_syntax(const Template& url, const std::string& made) {
    std::string told = masked_url(url.text);
    if (made != url.text) {
        told += "\", which becomes \"" + masked_url(made);
    }
    const UrlParts parts(made);
    const UrlParts shown(masked_url(made));
    const std::size_t wrong = blank_or_control_in(made);
    if (wrong != made.size()) {
        // A user name and a password before the host can be coded.
        const std::size_t at = made.find_last_of('@', parts.end);
        const bool is_in_host = wrong < parts.end && (at == std::string::npos || at < wrong);
        refuse(url.kind, told,
               quoted(made[wrong]) + " cannot stand in a " +
                   (is_in_host ? "host name" : "URL; write " + percent_coded(made[wrong])));
    }
    const ParsedUrl parsed(made);
    if (parsed.error() == CURLUE_NO_HOST) {
        refuse(url.kind, told, "no server stands after \"" + shown.before + "\"");
    }
    if (parsed.error() == CURLUE_BAD_PORT_NUMBER || parsed.port() == "0") {
        refuse(url.kind, told,
               "expected a port from 1 to 65535, found \"" + shown.authority + "\"");
    }
    if (parsed.error() == CURLUE_BAD_HOSTNAME || parsed.error() == CURLUE_BAD_IPV6) {
        refuse(url.kind, told,
               "expected a host name or an IP address after \"" + shown.before + "\", found \"" +
                   shown.authority + "\"");
    }
    if (parsed.error() != CURLUE_OK) {
        refuse(url.kind, told, curl_url_strerror(parsed.error()));
    }
    const std::string fault = fault_of_host(parsed.host());
    if (!fault.empty()) {
        refuse(url.kind, told, fault);
    }
}

void check_scheme(const Template& url) {
    std::string scheme = url.text.substr(0, url.text.find("://"));
    std::transform(scheme.begin(), scheme.end(), scheme.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    if (std::count(url.schemes.begin(), url.schemes.end(), scheme) == 0) {
        refuse(url.kind, url.text,
               "expected a URL of " + listed(url.schemes) + ", found \"" + scheme + "://\"");
    }
}

/// As the library does it: each placeholder once.
std::string replaced(const Template& url) {
    std::string made = url.text;
    for (const Placeholder& placeholder : url.placeholders) {
        const std::size_t place = made.find(placeholder.token);
        if (place != std::string::npos) {
            made.replace(place, placeholder.token.size(),
                         placeholder.token == userid_token ? placeholder.value
                                                           : in_url(placeholder.value));
        }
    }
    return made;
}

/// Whether a config URL that is no URL is none of a file either, but a URL that was begun wrongly:
/// "http:/host/x", "host:80/x".
bool is_wrong_url(const std::string& name) {
    const std::size_t mark = name.find_first_of(":/?#");
    return mark != std::string::npos && name[mark] == ':' &&
           name.find('/', mark) != std::string::npos;
}

void check_config_url(const Bench& bench) {
    const Placeholder tftp = {tftp_token, "TFTP server", first_of(bench.tftp_servers),
                              "servers.tftp or --tftp-server"};
    const Placeholder user = {userid_token, "user id", bench.user_id, {}};
    const Template url = {
        "config URL", "a", bench.config_url, {tftp, user}, {"http", "https", "tftp"}};
    check_placeholders(url);
    if (stands_in(user, url)) {
        check_user_id(url, user);
    }
    if (!is_bare_name(url.text)) {
        if (stands_in(tftp, url)) {
            check_server(url, tftp);
        }
        check_scheme(url);
        check_syntax(url, replaced(url));
        return;
    }
    if (is_wrong_url(url.text)) {
        refuse(url.kind, url.text,
               "neither a URL (http://..., https://..., tftp://...) nor the name of a file on the "
               "TFTP server");
    }
    if (!tftp.value.empty()) {
        check_server(url, tftp);
        const std::string name = url.text.empty() ? constants::default_config_file : replaced(url);
        check_syntax(url, "tftp://" + in_url(tftp.value) + "/" + name);
    }
}

void check_inventory_url(const Bench& bench) {
    const Placeholder korm = {korm_token, "call-control server", first_of(bench.korm_servers),
                              "servers.korm or --korm-server"};
    const Template url = {"inventory URL", "an", bench.inventory_url, {korm}, {"http", "https"}};
    if (url.text.empty()) {
        return;
    }
    check_placeholders(url);
    if (is_bare_name(url.text)) {
        refuse(url.kind, url.text, "expected a URL: http://... or https://...");
    }
    if (stands_in(korm, url)) {
        check_server(url, korm);
    }
    check_scheme(url);
    check_syntax(url, replaced(url));
}

}  // namespace

void check_urls(const Bench& bench) {
    check_config_url(bench);
    check_inventory_url(bench);
}

}  // namespace headsetmgmt::program
