// The program `headsetmgmt`: a phone to run, a server to run it against.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <system_error>
#include <unistd.h>

#include "program/exit_codes.h"
#include "program/output.h"
#include "program/phone/phone_command.h"
#include "program/serve/serve_command.h"

namespace {

/// A standard descriptor that the caller has closed would be the number of the next file or socket
/// that is opened, and the output would be written into that. For reading alone, so that writing to
/// it fails, and is told.
bool fill_closed_descriptors() {
    // In this order: what is opened gets the lowest number that is free.
    constexpr std::array<int, 3> standard = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    return std::all_of(standard.begin(), standard.end(), [](int descriptor) {
        const bool is_closed = fcntl(descriptor, F_GETFD) == -1 && errno == EBADF;
        return !is_closed || open("/dev/null", O_RDONLY | O_CLOEXEC) != -1;
    });
}

}  // namespace

int main(int argc, char* argv[]) {
    using namespace headsetmgmt::program;
    if (!fill_closed_descriptors()) {
        std::fprintf(stderr, "headsetmgmt: /dev/null cannot be opened: %s\n",
                     std::generic_category().message(errno).c_str());
        return exit_failed;
    }
    CLI::App program("Accessory management for desk IP phones", "headsetmgmt");
    program.require_subcommand(1);
    program.set_version_flag("--version", HEADSETMGMT_VERSION);
    std::function<int()> run;
    add_phone_command(program, run);
    add_serve_command(program, run);
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& answer) {
        std::ostringstream text;
        program.exit(answer, text, std::cerr);  // help or version
        return print(text.str()) ? exit_done : exit_failed;
    } catch (const CLI::ParseError& error) {
        if (std::count(argv, argv + argc, std::string("--json")) != 0) {
            Output(true, nullptr).tell({{"event", "error"}, {"message", error.what()}});
        } else {
            program.exit(error);
        }
        return exit_usage;
    }
    return run();
}
