// SPDX-License-Identifier: Apache-2.0
// Checks of a bench's URLs before the first request: no retry mends what they refuse.

#include "program/phone/bench_urls.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "headsetmgmt/constants.h"

#include "program/network/fetch_url.h"
#include "program/network/url_check.h"
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

std::string first_of(const std::vector<std::string>& servers) {
    return servers.empty() ? std::string() : servers.front();
}

/// Refuses what is in braces and no placeholder of this URL.
[[noreturn]] void refuse_token(const Template& url, const std::string& token) {
    std::string known = "known in " + url.article + " " + url.kind + ": ";
    for (const Placeholder& placeholder : url.placeholders) {
        known.append(&placeholder == &url.placeholders.front() ? "" : ", ")
            .append(placeholder.token);
    }
    if (masked_url(url.text).find(token) == std::string::npos) {
        refuse_url(url.kind, url.text,
                   "letters in braces stand in the password; " + known +
                       "; a brace itself is written %7B or %7D");
    }
    if (token == tftp_token || token == korm_token || token == userid_token) {
        refuse_url(url.kind, url.text, token + " is not replaced there; " + known);
    }
    refuse_url(url.kind, url.text,
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
            refuse_url(
                url.kind, url.text,
                token + " stands there twice, and each placeholder is replaced once; write the " +
                    placeholder->kind + " itself in the second place");
        }
    }
}

bool stands_in(const Placeholder& placeholder, const Template& url) {
    return url.text.find(placeholder.token) != std::string::npos;
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
            refuse_url(placeholder.kind, server,
                       "the " + url.kind + " has a port already: give the server without one");
        }
        with_port.insert(place, port);
    }
    refuse_url(placeholder.kind, server,
               "no port here; write it into the " + url.kind + ": " + masked_url(with_port));
}

/// Refuses a server that is missing, or no bare host name or address.
void check_server(const Template& url, const Placeholder& placeholder) {
    const std::string& server = placeholder.value;
    if (server.empty()) {
        refuse_url(url.kind, url.text,
                   placeholder.token + " has no server to stand for: give " + placeholder.sources);
    }
    if (check_server_name(placeholder.kind, server) == ServerName::with_port) {
        refuse_port(url, placeholder);
    }
}

/// The library puts a user id in as it is.
void check_user_id(const Template& url, const Placeholder& user) {
    const std::size_t wrong = blank_or_control_in(user.value);
    if (wrong != user.value.size()) {
        refuse_url(user.kind, user.value,
                   quoted(user.value[wrong]) +
                       " cannot stand in a URL; write the user id into the " + url.kind +
                       " in place of " + user.token + ", with " + percent_coded(user.value[wrong]));
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

/// Whether a text that is neither a URL nor a file name looks like a mistyped URL:
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
        check_scheme(url.kind, url.text, url.schemes);
        check_url(url.kind, url.text, replaced(url));
        return;
    }
    if (is_wrong_url(url.text)) {
        refuse_url(
            url.kind, url.text,
            "neither a URL (http://..., https://..., tftp://...) nor the name of a file on the "
            "TFTP server");
    }
    if (!tftp.value.empty()) {
        check_server(url, tftp);
        const std::string name = url.text.empty() ? constants::default_config_file : replaced(url);
        check_url(url.kind, url.text, "tftp://" + in_url(tftp.value) + "/" + name);
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
        refuse_url(url.kind, url.text, "expected a URL: http://... or https://...");
    }
    if (stands_in(korm, url)) {
        check_server(url, korm);
    }
    check_scheme(url.kind, url.text, url.schemes);
    check_url(url.kind, url.text, replaced(url));
}

}  // namespace

void check_urls(const Bench& bench) {
    check_config_url(bench);
    check_inventory_url(bench);
}

}  // namespace headsetmgmt::program
