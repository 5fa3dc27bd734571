// SPDX-License-Identifier: Apache-2.0
// The URL that a fetch goes to, made from what the library asks for.

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace headsetmgmt::program {

/// Where a fetch goes.
struct FetchUrl {
    std::string url;
    std::string dropped_query;  ///< from its "?" on; empty: nothing was dropped
};

/// A file name without a server is one on the first TFTP server; nothing when there is none. TFTP
/// has no queries.
std::optional<FetchUrl> fetch_url(const std::string& asked,
                                  const std::vector<std::string>& tftp_servers);

/// Whether the library's URL is the name of a file on the TFTP server.
bool is_bare_name(const std::string& url);

/// A server as it is written in a URL: IPv6 addresses in brackets.
std::string in_url(const std::string& server);

}  // namespace headsetmgmt::program
