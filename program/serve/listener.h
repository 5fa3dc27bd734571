// SPDX-License-Identifier: Apache-2.0
// The socket on which a server takes connections.

#pragma once

#include <cstdint>
#include <string>

#include "program/serve/documents.h"

namespace headsetmgmt::program {

/// Listens on an IPv4 or IPv6 address; port 0: the system picks one. Throws RefusedInput for an
/// address that cannot be listened on, ServerError for a port that cannot.
FileHandle listen_on(const std::string& address, std::uint16_t port);

/// The port that is listened on.
std::uint16_t port_of(const FileHandle& listener);

}  // namespace headsetmgmt::program
