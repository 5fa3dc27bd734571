// URL templates: tokens that stand for a server or for the user.

#pragma once

#include <string>

namespace headsetmgmt {

inline constexpr char userid_token[] = "{userid}";
inline constexpr char korm_token[] = "{korm}";

/// Whether `url` holds `token`, exactly as written.
bool has_token(const std::string& url, const std::string& token);

/// Puts `text` in the place of the first `token`; a second one stays.
void replace_token(std::string& url, const std::string& token, const std::string& text);

/// A server as it stands in a URL: in square brackets when it holds a colon, as an IPv6 address
/// needs it. A server with a port gets them too.
std::string server_in_url(const std::string& server);

}  // namespace headsetmgmt
