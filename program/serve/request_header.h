// SPDX-License-Identifier: Apache-2.0
// The header of a request: whether it is one, and what it says about the body.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace headsetmgmt::program {

/// What a header says, or why its request is refused.
struct RequestHeader {
    std::string method;       ///< empty when the first line is malformed
    std::string target;       ///< as the client wrote it; empty when the first line is malformed
    unsigned int status = 0;  ///< with which the request is refused; 0: it is not
    std::string message;      ///< why it is refused, for people
    /// The client waits for "100 Continue", and asks for it in a list, which libmicrohttpd does
    /// not understand.
    bool expects_continue_in_a_list = false;
};

/// Length of the header that `text` starts with, its empty line included; 0 when it is not whole.
std::size_t header_length(std::string_view text);

/// The target of a header that is not whole; empty when its first line is not, or is malformed.
std::string target_of(std::string_view text);

/// Reads a whole header. What two readers could read in two ways is refused: where a body ends, and
/// whose server is meant, must be the same for a proxy in front of this server.
RequestHeader read_header(std::string_view text);

}  // namespace headsetmgmt::program
