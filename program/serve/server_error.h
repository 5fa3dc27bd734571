// Why a server could not be started.

#pragma once

#include <stdexcept>
#include <string>

#include "program/exit_codes.h"

namespace headsetmgmt::program {

/// Why a server could not be started, and the exit code for it.
class ServerError : public std::runtime_error {
public:
    ServerError(ExitCode code, const std::string& message)
        : std::runtime_error(message), exit_code(code) {}

    ExitCode exit_code;
};

}  // namespace headsetmgmt::program
