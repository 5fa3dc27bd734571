// SPDX-License-Identifier: Apache-2.0
// Fuzzes the URLs that are made of templates, servers and the user. One line each: configuration
// template, inventory template, user, TFTP servers and call-control servers (blanks between them);
// one byte: the fetches so far.

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "fuzz/oracle.h"
#include "metrics/inventory_metric.h"
#include "support/config_bench.h"

namespace headsetmgmt::fuzz {
namespace {

using test_support::ConfigBench;
using test_support::OpenConfig;

constexpr char tftp[] = "{tftp}";
constexpr char korm[] = "{korm}";
constexpr char user[] = "{userid}";

std::vector<std::string> servers_on(const std::string& line) {
    std::istringstream words(line);
    std::vector<std::string> servers;
    std::string server;
    while (std::getline(words, server, ' ')) {
        servers.push_back(server);
    }
    return servers;
}

/// `text` with what stands for the first `token`, found by looking at every place in turn.
std::string replaced(const std::string& text, const std::string& token,
                     const std::string& replacement) {
    for (std::size_t place = 0; place + token.size() <= text.size(); ++place) {
        if (text.compare(place, token.size(), token) == 0) {
            return text.substr(0, place) + replacement + text.substr(place + token.size());
        }
    }
    return text;
}

std::size_t count(const std::string& text, const std::string& token) {
    std::size_t found = 0;
    for (std::size_t place = text.find(token); place != std::string::npos;
         place = text.find(token, place + 1)) {
        ++found;
    }
    return found;
}

bool has_brace(const std::string& text) {
    return text.find_first_of("{}") != std::string::npos;
}

std::string bracketed(const std::string& server) {
    return count(server, ":") == 0 ? server : '[' + server + ']';
}

std::string wanted_config_url(const std::string& url_template, const std::string& server,
                              const std::string& user_id) {
    if (url_template.empty()) {
        return "defaultheadsetconfig.json";
    }
    if (count(url_template, tftp) != 0 && server.empty()) {
        return url_template;
    }
    return replaced(replaced(url_template, tftp, bracketed(server)), user, user_id);
}

/// Whether every brace belongs to a token, so that no text can make a token with what is around it.
bool has_whole_tokens_only(const std::string& text) {
    const std::size_t tokens = count(text, tftp) + count(text, korm) + count(text, user);
    return count(text, "{") == tokens && count(text, "}") == tokens;
}

/// No token is left where there was one and something to put in its place.
void expect_no_token(const std::string& url, const std::string& url_template,
                     const std::string& token, const std::string& replacement) {
    if (has_whole_tokens_only(url_template) && count(url_template, token) == 1 &&
        !replacement.empty() && !has_brace(replacement)) {
        expect(count(url, token) == 0, "no token is left", url);
    }
}

void expect_config_url(OpenConfig& config, const std::string& url_template,
                       const std::vector<std::string>& servers, const std::string& user_id) {
    const auto index = static_cast<unsigned int>(config.get_config_retries());
    const std::string server = index < servers.size() ? servers[index] : "";
    const std::string url = config.get_config_url();
    expect(url == wanted_config_url(url_template, server, user_id),
           "the first token of each kind is replaced, and nothing else", url);
    if (!has_brace(user_id)) {
        expect_no_token(url, url_template, tftp, server);
    }
    if (count(url_template, tftp) == 0 || (!server.empty() && !has_brace(server))) {
        expect_no_token(url, url_template, user, user_id);
    }
}

void expect_inventory_url(metrics::InventoryMetric& metric, const std::string& url_template,
                          const std::vector<std::string>& servers) {
    const std::string url = metric.get_post_url();
    if (servers.empty()) {
        expect(url == url_template, "without a server the template stays", url);
        return;
    }
    expect(url == replaced(url_template, korm, bracketed(servers.front())),
           "the first token is replaced, and nothing else", url);
    expect_no_token(url, url_template, korm, servers.front());
}

}  // namespace
}  // namespace headsetmgmt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace headsetmgmt::fuzz;
    Input input(data, size);
    ConfigBench bench;
    auto& phone = bench.plugins.system_info;
    phone.config_url = input.line();
    phone.inventory_post_url = input.line();
    phone.user_id = input.line();
    phone.tftp_servers = servers_on(input.line());
    phone.korm_servers = servers_on(input.line());
    const int fetches = static_cast<std::int8_t>(input.byte());

    OpenConfig config("headset", &bench.accessory);
    headsetmgmt::metrics::HeadsetInventoryMetrics metric(&bench.accessory);
    for (const int retries : {0, 1, 2, fetches}) {
        config.set_config_retries(retries);
        expect_config_url(config, phone.config_url, phone.tftp_servers, phone.user_id);
    }
    expect_inventory_url(metric, phone.inventory_post_url, phone.korm_servers);
    expect(bench.locks_held() == 0, "no lock is left held");
    return 0;
}
