// SPDX-License-Identifier: Apache-2.0
// The URL that a fetch goes to, made from what the library asks for.

#include "program/network/fetch_url.h"

#include <cstddef>

#include "program/network/transfer.h"

namespace headsetmgmt::program {

std::optional<FetchUrl> fetch_url(const std::string& asked,
                                  const std::vector<std::string>& tftp_servers) {
    FetchUrl result = {asked, {}};
    if (is_bare_name(asked)) {
        if (tftp_servers.empty()) {
            return std::nullopt;
        }
        result.url = "tftp://" + in_url(tftp_servers.front()) + "/" + asked;
    }
    const std::size_t query = result.url.find('?');
    if (is_tftp_url(result.url) && query != std::string::npos) {
        result.dropped_query = result.url.substr(query);
        result.url.erase(query);
    }
    return result;
}

bool is_bare_name(const std::string& url) {
    return url.find("://") == std::string::npos;
}

std::string in_url(const std::string& server) {
    return server.find(':') == std::string::npos ? server : "[" + server + "]";
}

}  // namespace headsetmgmt::program
