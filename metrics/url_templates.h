// SPDX-License-Identifier: Apache-2.0
// URL templates: tokens that stand for a server or for the user.

#pragma once

#include <string>

namespace headsetmgmt {

inline constexpr char userid_token[] = "{userid}";
inline constexpr char korm_token[] = "{korm}";

/// Whether `url` holds `token`, exactly as written.
bool has_token(const std::string& url, const std::string& token);

/// Replaces the first `token` by `text`; others stay.
void replace_token(std::string& url, const std::string& token, const std::string& text);

/// A server as written in a URL: in square brackets when it contains a colon, for IPv6 addresses. A
/// server with a port gets them too.
std::string server_in_url(const std::string& server);

}  // namespace headsetmgmt
