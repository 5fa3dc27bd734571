// SPDX-License-Identifier: Apache-2.0
// URL templates: tokens that stand for a server or for the user.

#include "metrics/url_templates.h"

namespace headsetmgmt {

bool has_token(const std::string& url, const std::string& token) {
    return url.find(token) != std::string::npos;
}

void replace_token(std::string& url, const std::string& token, const std::string& text) {
    const std::string::size_type place = url.find(token);
    if (place != std::string::npos) {
        url.replace(place, token.size(), text);
    }
}

std::string server_in_url(const std::string& server) {
    return server.find(':') == std::string::npos ? server : "[" + server + "]";
}

}  // namespace headsetmgmt
