// SPDX-License-Identifier: Apache-2.0
// The subcommand `serve`.

#pragma once

#include <CLI/App.hpp>
#include <functional>

namespace headsetmgmt::program {

/// Adds the subcommand; when it is the one chosen, `run` becomes what it does.
void add_serve_command(CLI::App& program, std::function<int()>& run);

}  // namespace headsetmgmt::program
