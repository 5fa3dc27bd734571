// SPDX-License-Identifier: Apache-2.0
// The subcommand `serve`: its options, and one run of a server.

#include "program/serve/serve_command.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <future>
#include <memory>
#include <system_error>

#include "program/exit_codes.h"
#include "program/output.h"
#include "program/refused_input.h"
#include "program/serve/serve_wording.h"
#include "program/serve/server.h"
#include "program/serve/server_error.h"
#include "program/termination.h"
#include "program/usage.h"

namespace headsetmgmt::program {

namespace {

struct Arguments {
    ServerOptions options;
    bool json = false;
};

int run_serve(const Arguments& arguments) {
    Output output(arguments.json, serve_event_in_words);
    std::signal(SIGPIPE, SIG_IGN);  // a reader of the output that goes away is no reason to end
    std::promise<void> asked_to_end;
    const auto end_soon = [&output, &asked_to_end] {
        output.hurry();
        asked_to_end.set_value();
    };
    const auto end_now = [&output] { return output.end(exit_failed); };
    const Termination termination(end_soon, end_now);
    Event stopped;
    const auto report = [&output, &stopped](const Event& event) {
        if (event["event"] == "stopped") {
            stopped = event;  // the last, however much the reader has missed
        } else {
            output.write(event);
        }
    };
    const auto fail = [&arguments, &output](const std::string& message, ExitCode code) {
        if (arguments.json) {
            output.write({{"event", "error"}, {"message", message}});
        } else {
            std::fprintf(stderr, "headsetmgmt serve: %s\n", escaped(message).c_str());
        }
        return output.end(code);
    };
    try {
        Server server(arguments.options, report);
        std::error_code unknown;
        if (std::filesystem::is_empty(arguments.options.documents, unknown)) {
            output.write(
                {{"event", "note"},
                 {"text", "the documents folder is empty: there is nothing to fetch yet"}});
        }
        asked_to_end.get_future().wait();
        server.stop();
    } catch (const RefusedInput& error) {
        return fail(error.what(), exit_usage);
    } catch (const ServerError& error) {
        return fail(error.what(), exit_failed);
    }
    return output.end(exit_done, stopped);
}

}  // namespace

void add_serve_command(CLI::App& program, std::function<int()>& run) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command =
        program.add_subcommand("serve", "Serve documents over HTTP and take "
                                        "inventory reports, for tests and demonstrations");
    command->add_option("--port", arguments->options.port, "TCP port (0: the system picks one)")
        ->check(whole_number("a port", 0, UINT16_MAX))
        ->required();
    command->add_option("--documents", arguments->options.documents, "Folder with the documents")
        ->check(text("a folder"))
        ->required();
    command
        ->add_option("--address", arguments->options.address,
                     "IPv4 or IPv6 address to listen on (default 127.0.0.1)")
        ->check(text("an IP address"));
    command->add_flag("--json", arguments->json, "Write everything as JSON, one object a line");
    command->callback([arguments, &run] { run = [arguments] { return run_serve(*arguments); }; });
}

}  // namespace headsetmgmt::program
