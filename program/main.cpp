// SPDX-License-Identifier: Apache-2.0
// The program `headsetmgmt`: a phone to run, a server to run it against.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "program/exit_codes.h"
#include "program/fatal_error.h"
#include "program/output.h"
#include "program/phone/phone_command.h"
#include "program/serve/serve_command.h"
#include "program/usage.h"

namespace headsetmgmt::program {

namespace {

/// A standard descriptor that the caller has closed would be the number of the next file or socket
/// that is opened, and the output would be written into that. For reading alone, so that writing to
/// it fails, and is reported.
bool fill_closed_descriptors() {
    // In this order: what is opened gets the lowest number that is free.
    constexpr std::array<int, 3> standard = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    return std::all_of(standard.begin(), standard.end(), [](int descriptor) {
        const bool is_closed = fcntl(descriptor, F_GETFD) == -1 && errno == EBADF;
        return !is_closed || open("/dev/null", O_RDONLY | O_CLOEXEC) != -1;
    });
}

constexpr char exit_codes_in_words[] =
    "Exit codes:\n"
    "  0  everything that was asked for happened\n"
    "  1  something did not; the last line or standard error says what\n"
    "  2  the command line, or a file, folder, URL or address that it names, is wrong";

/// Reports what the parser refused.
void report(const CLI::App& program, const CLI::ParseError& error,
            const std::vector<std::string>& arguments) {
    const bool as_json =
        std::any_of(arguments.begin(), arguments.end(), [](const std::string& argument) {
            return argument.substr(0, argument.find('=')) == "--json";
        });
    std::string who = "headsetmgmt";
    std::string message = error.what();
    const std::vector<CLI::App*> subcommands = program.get_subcommands();
    if (!subcommands.empty()) {
        who += " " + subcommands.front()->get_name();
    } else {
        const bool is_named = !arguments.empty() && arguments.front().substr(0, 1) != "-";
        message = "no subcommand" + (is_named ? " \"" + arguments.front() + "\"" : "") +
                  "; expected phone or serve";
    }
    report_refusal(who, message, as_json);
    if (!as_json) {
        std::fprintf(stderr, "Run with --help for more information.\n");
    }
}

int run(int argc, char* argv[]) {
    end_on_uncaught_exceptions();
    if (!fill_closed_descriptors()) {
        std::fprintf(stderr, "headsetmgmt: /dev/null cannot be opened: %s\n",
                     std::generic_category().message(errno).c_str());
        return exit_failed;
    }
    // The terminal or the session that started it may end; only SIGINT and SIGTERM end the program.
    std::signal(SIGHUP, SIG_IGN);
    CLI::App program("Accessory management for desk IP phones", "headsetmgmt");
    program.require_subcommand(1);
    program.set_version_flag("--version", HEADSETMGMT_VERSION);
    program.footer(exit_codes_in_words);
    std::function<int()> run_subcommand;
    add_phone_command(program, run_subcommand);
    add_serve_command(program, run_subcommand);
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& answer) {
        std::ostringstream text;
        program.exit(answer, text, std::cerr);  // help or version
        return print(text.str()) ? exit_done : exit_failed;
    } catch (const CLI::ParseError& error) {
        report(program, error, {argv + 1, argv + argc});
        return exit_usage;
    }
    return run_subcommand();
}

}  // namespace

}  // namespace headsetmgmt::program

int main(int argc, char* argv[]) {
    return headsetmgmt::program::run(argc, argv);
}
