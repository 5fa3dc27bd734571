// SPDX-License-Identifier: Apache-2.0
// Why a server could not be started.

#pragma once

#include <stdexcept>

namespace headsetmgmt::program {

/// A server that could not be started although its input is right: the port is taken or not
/// permitted, or the system lacks something. The program ends with `exit_failed`.
class ServerError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace headsetmgmt::program
