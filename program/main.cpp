// The program `headsetmgmt`: a phone to run, a server to run it against.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <string>

#include "program/exit_codes.h"
#include "program/output.h"
#include "program/phone/phone_command.h"
#include "program/serve/serve_command.h"

int main(int argc, char* argv[]) {
    using namespace headsetmgmt::program;
    CLI::App program("Accessory management for desk IP phones", "headsetmgmt");
    program.require_subcommand(1);
    program.set_version_flag("--version", HEADSETMGMT_VERSION);
    std::function<int()> run;
    add_phone_command(program, run);
    add_serve_command(program, run);
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& answer) {
        program.exit(answer);  // help or version
        return exit_done;
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
