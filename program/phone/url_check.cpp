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

#include "program/phone/fetch_url.h"

namespace headsetmgmt::program {

namespace {

constexpr char tftp_token[] = "{tftp}";
constexpr char korm_token[] = "{korm}";
constexpr char userid_token[] = "{userid}";

/// What the library puts into a URL, and where that comes from.
struct Placeholder {
    std::string token;
    std::string kind;  ///< "TFTP server"
    std::string value;
    std::string missing;  ///< why there is nothing to put in its place, and what to do
};

/// A URL as it is given, and what may stand in it.
struct Template {
    std::string kind;  ///< "config URL"
    std::string article;
    std::string text;
    std::vector<Placeholder> placeholders;
    std::vector<std::string> schemes;
};

[[noreturn]] void refuse(const std::string& kind, const std::string& value,
                         const std::string& why) {
    throw BenchError(kind + " \"" + value + "\": " + why);
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
    std::string port() const {
        char* text = nullptr;
        const CURLUcode got = curl_url_get(parsed.get(), CURLUPART_PORT, &text, 0);
        std::string port = got == CURLUE_OK ? text : "";
        curl_free(text);
        return port;
    }

private:
    struct Deleter {
        void operator()(CURLU* url) const { curl_url_cleanup(url); }
    };
    std::unique_ptr<CURLU, Deleter> parsed;
    CURLUcode result;
};

/// What stands between "://" and the path.
std::string authority_of(const std::string& url) {
    const std::size_t begin = url.find("://") + 3;
    return url.substr(begin, url.find_first_of("/?#", begin) - begin);
}

/// Refuses what is in braces and no placeholder of this URL.
[[noreturn]] void refuse_token(const Template& url, const std::string& token) {
    std::string known = "known in " + url.article + " " + url.kind + ": ";
    for (const Placeholder& placeholder : url.placeholders) {
        known.append(&placeholder == &url.placeholders.front() ? "" : ", ")
            .append(placeholder.token);
    }
    if (token == tftp_token || token == korm_token || token == userid_token) {
        refuse(url.kind, url.text, token + " is not replaced there; " + known);
    }
    refuse(url.kind, url.text,
           token + " is not known; capitals count; " + known +
               "; a brace itself is written %7B or %7D");
}

/// Refuses what is no known placeholder in its place, once, with something to stand for.
void check_placeholders(const Template& url) {
    std::set<std::string> found;
    std::size_t end = 0;
    for (std::size_t begin = url.text.find_first_of("{}"); begin != std::string::npos;
         begin = url.text.find_first_of("{}", end + 1)) {
        end = url.text.find('}', begin);
        if (url.text[begin] == '}' || end == std::string::npos) {
            refuse(url.kind, url.text,
                   "a brace without its partner; a brace itself is written %7B or %7D");
        }
        const std::string token = url.text.substr(begin, end + 1 - begin);
        const auto placeholder =
            std::find_if(url.placeholders.begin(), url.placeholders.end(),
                         [&token](const Placeholder& one) { return one.token == token; });
        if (placeholder == url.placeholders.end()) {
            refuse_token(url, token);
        }
        if (placeholder->value.empty()) {
            refuse(url.kind, url.text, token + placeholder->missing);
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

/// What to write instead of a server with a port.
std::string with_port(const Template& url, const Placeholder& placeholder,
                      const std::string& name_without_server) {
    const std::size_t colon = placeholder.value.rfind(':');
    const std::string port = placeholder.value.substr(colon);
    std::string text = url.text;
    if (!stands_in(placeholder, url)) {
        const std::string host = placeholder.value.substr(0, colon);
        return "tftp://" + in_url(host) + port + "/" + name_without_server;
    }
    const std::size_t place = text.find(placeholder.token) + placeholder.token.size();
    const bool has_one = text.compare(place, 1, ":") == 0;
    return has_one ? text : text.insert(place, port);
}

/// Refuses a server that is no bare host name or address. `file_name` is what is looked up on it
/// when the URL is a file name.
void check_server(const Template& url, const Placeholder& placeholder,
                  const std::string& file_name) {
    const std::string& server = placeholder.value;
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
    refuse(placeholder.kind, server,
           "no port here; write it into the " + url.kind + ": " +
               with_port(url, placeholder, file_name));
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

/// Refuses a user id that would become another part of the URL than it stands in.
void check_user_id(const Template& url, const std::string& user_id) {
    const auto does_not_belong = [](char character) {
        return is_blank_or_control(character) ||
               std::string("/?#%").find(character) != std::string::npos;
    };
    const auto wrong = std::find_if(user_id.begin(), user_id.end(), does_not_belong);
    if (wrong == user_id.end()) {
        return;
    }
    std::string coded;
    for (const char character : user_id) {
        coded += does_not_belong(character) ? percent_coded(character) : std::string(1, character);
    }
    refuse("user id", user_id,
           std::string("\"") + *wrong + "\" would go into the " + url.kind + " unescaped; write " +
               coded + " there in place of " + userid_token);
}

/// Refuses a whole URL, with everything replaced, that libcurl refuses or that no server can
/// answer.
void check_syntax(const Template& url, const std::string& made) {
    std::string told = url.text;
    if (made != url.text) {
        told += "\", which becomes \"" + made;
    }
    const auto wrong = std::find_if(made.begin(), made.end(), is_blank_or_control);
    if (wrong != made.end()) {
        refuse(url.kind, told,
               std::string("\"") + *wrong + "\" cannot stand in a URL; write " +
                   percent_coded(*wrong));
    }
    const std::string authority = authority_of(made);
    const std::string before = made.substr(0, made.find("://") + 3);
    const ParsedUrl parsed(made);
    if (authority.empty() || parsed.error() == CURLUE_NO_HOST) {
        refuse(url.kind, told, "no server stands after \"" + before + "\"");
    }
    if (parsed.error() == CURLUE_BAD_PORT_NUMBER || parsed.port() == "0") {
        refuse(url.kind, told, "expected a port from 1 to 65535, found \"" + authority + "\"");
    }
    if (parsed.error() == CURLUE_BAD_HOSTNAME || parsed.error() == CURLUE_BAD_IPV6) {
        refuse(url.kind, told,
               "expected a host name or an IP address after \"" + before + "\", found \"" +
                   authority + "\"");
    }
    if (parsed.error() != CURLUE_OK) {
        refuse(url.kind, told, curl_url_strerror(parsed.error()));
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

void check_config_url(const Bench& bench) {
    const Placeholder tftp = {tftp_token, "TFTP server", first_of(bench.tftp_servers),
                              " has no server to stand for: give servers.tftp or --tftp-server"};
    const Placeholder user = {userid_token, "user id", bench.user_id,
                              " has no user id to stand for: give phone.userId or --user"};
    Template url = {"config URL", "a", bench.config_url, {tftp, user}, {"http", "https", "tftp"}};
    check_placeholders(url);
    if (stands_in(user, url)) {
        check_user_id(url, user.value);
    }
    if (!is_bare_name(url.text)) {
        if (stands_in(tftp, url)) {
            check_server(url, tftp, {});
        }
        check_scheme(url);
        check_syntax(url, replaced(url));
        return;
    }
    if (url.text.find_first_of(":/") != std::string::npos) {
        refuse(url.kind, url.text,
               "neither a URL (http://..., https://..., tftp://...) nor the name of a file on the "
               "TFTP server");
    }
    if (!tftp.value.empty()) {
        const std::string name = url.text.empty() ? constants::default_config_file : replaced(url);
        check_server(url, tftp, name);
        check_syntax(url, "tftp://" + in_url(tftp.value) + "/" + name);
    }
}

void check_inventory_url(const Bench& bench) {
    const Placeholder korm = {korm_token, "call-control server", first_of(bench.korm_servers),
                              " has no server to stand for: give servers.korm or --korm-server"};
    const Template url = {"inventory URL", "an", bench.inventory_url, {korm}, {"http", "https"}};
    if (url.text.empty()) {
        return;
    }
    check_placeholders(url);
    if (is_bare_name(url.text)) {
        refuse(url.kind, url.text, "expected a URL: http://... or https://...");
    }
    if (stands_in(korm, url)) {
        check_server(url, korm, {});
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
