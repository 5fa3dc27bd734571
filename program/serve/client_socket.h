// SPDX-License-Identifier: Apache-2.0
// A client's end of a connection: its address, and what the system says about the socket.

#pragma once

#include <cstdint>
#include <string>
#include <sys/socket.h>

namespace headsetmgmt::program {

/// A client's address without its port, such as "127.0.0.1" or "[::1]"; empty when unknown.
std::string host_name(const sockaddr* address);

/// A client's address and port, such as "127.0.0.1:4711" or "[::1]:4711"; "unknown" for null.
std::string client_name(const sockaddr* address);

/// Bytes that have arrived from the client and bytes that its system has taken, together.
std::uint64_t bytes_moved(int socket);

}  // namespace headsetmgmt::program
