// SPDX-License-Identifier: Apache-2.0
// Checks of URLs and servers that no server can answer to.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace headsetmgmt::program {

// `kind` names what is checked in a message: "config URL", "TFTP server". What is refused is thrown
// as `RefusedInput`, with the passwords of URLs masked.

/// Refuses `value`.
[[noreturn]] void refuse_url(const std::string& kind, const std::string& value,
                             const std::string& why);

/// Refuses a URL whose scheme is not one of `schemes`, which are in lower case. It must have
/// a "://".
void check_scheme(const std::string& kind, const std::string& url,
                  const std::vector<std::string>& schemes);

/// Refuses a URL that libcurl refuses or that no server can answer. `made` is the whole URL;
/// `given` is what it was made from, for the message.
void check_url(const std::string& kind, const std::string& given, const std::string& made);

enum class ServerName {
    alone,      ///< a host name or an IP address
    with_port,  ///< followed by a colon and a port
};

/// Refuses what is not a host name or an IP address, with a port or without.
ServerName check_server_name(const std::string& kind, const std::string& server);

/// Offset of the first white space or control character; the text's size without one.
std::size_t blank_or_control_in(const std::string& text);

/// The character between quotation marks.
std::string quoted(char character);

/// The character as a URL has it: "%20".
std::string percent_coded(char character);

}  // namespace headsetmgmt::program
