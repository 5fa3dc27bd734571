// SPDX-License-Identifier: Apache-2.0
// The subcommand `phone`: its options, and one run of a phone.

#include "program/phone/phone_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <curl/curl.h>

#include "program/exit_codes.h"
#include "program/fatal_error.h"
#include "program/network/ca_file.h"
#include "program/output.h"
#include "program/phone/bench.h"
#include "program/phone/phone_host.h"
#include "program/phone/phone_wording.h"
#include "program/refused_input.h"
#include "program/termination.h"
#include "program/usage.h"

namespace headsetmgmt::program {

namespace {

constexpr std::size_t most_attempts = 1000000;
constexpr std::size_t longest_limit = 86400;                  // seconds
constexpr std::size_t largest_limit = std::size_t{1} << 30U;  // bytes

struct Arguments {
    BenchOptions bench;
    double timeout_seconds = 30;
    int stall_seconds = 10;
    bool json = false;
    PhoneOptions options;
};

int run_phone(Arguments& arguments) {
    end_on_lack_of_memory();
    Output output(arguments.json, phone_event_in_words);
    PhoneOptions& options = arguments.options;
    try {
        options.bench = make_bench(arguments.bench);
        if (!options.limits.ca_file.empty()) {
            check_ca_file(options.limits.ca_file);
        }
    } catch (const RefusedInput& error) {
        report_refusal("headsetmgmt phone", error.what(), arguments.json);
        return exit_usage;
    }
    const auto milliseconds = [](double seconds) {
        return std::chrono::milliseconds(static_cast<long>(seconds * 1000));
    };
    options.limits.total = milliseconds(arguments.timeout_seconds);
    options.limits.connect = std::min(options.limits.connect, options.limits.total);
    options.limits.stall = std::chrono::seconds(arguments.stall_seconds);

    curl_global_init(CURL_GLOBAL_DEFAULT);
    std::signal(SIGPIPE, SIG_IGN);  // a server that goes away is an error of its transfer
    PhoneHost host(options, output);
    const auto end_soon = [&output, &host] {
        output.hurry();
        host.interrupt();
    };
    const auto end_with_result = [&output, &host] {
        const Event result = host.result();
        return output.end(result["ok"].get<bool>() ? exit_done : exit_failed, result);
    };
    const Termination termination(end_soon, end_with_result);
    host.run();
    return end_with_result();
}

/// What there is: the phone, its servers and its accessories.
void add_bench_options(CLI::App& command, Arguments& arguments) {
    const auto add = [&command](const char* name, std::string& value, const char* expected,
                                const std::string& description) {
        command.add_option(name, value, description)->check(text(expected));
    };
    const Bench defaults;
    command
        .add_option("--bench", arguments.bench.file,
                    "Bench file with the phone, its servers and its accessories (default: none)")
        ->check(non_empty_text("a file"));
    add("--config-url", arguments.bench.config_url, "a URL",
        "URL of the configuration document; may hold {tftp} and {userid} (default: "
        "defaultheadsetconfig.json on the TFTP server)");
    add("--inventory-url", arguments.bench.inventory_url, "a URL",
        "URL that takes inventory reports; may hold {korm} (default: none, nothing is reported)");
    add("--service-url", arguments.bench.service_url, "a URL",
        "URL of the metrics service: kept for the library, no request uses it (default: none)");
    add("--user", arguments.bench.user_id, "a text", "User id of the phone (default: none)");
    add("--serial-number", arguments.bench.serial_number, "a text",
        "Serial number of the phone (default " + defaults.serial_number + ")");
    add("--os-version", arguments.bench.os_version, "a text",
        "Version of its operating system (default " + defaults.os_version + ")");
    add("--software-version", arguments.bench.software_version, "a text",
        "Version of its software (default " + defaults.software_version + ")");
    command
        .add_option("--accessory", arguments.bench.accessories,
                    "An accessory besides those of the bench file: NAME=VALUE,... with the names "
                    "of the bench file, such as id=desk,type=headset,model=Varos K30")
        ->allow_extra_args(false)
        ->check(text("NAME=VALUE,..."));
    command
        .add_option("--tftp-server", arguments.bench.tftp_servers,
                    "TFTP server, up to three; only the first is used (default: none)")
        ->expected(1, static_cast<int>(servers_of_a_kind))
        ->check(non_empty_text("a host name or an IP address"));
    command
        .add_option("--korm-server", arguments.bench.korm_servers,
                    "Call-control server, up to three; only the first is used (default: none)")
        ->expected(1, static_cast<int>(servers_of_a_kind))
        ->check(non_empty_text("a host name or an IP address"));
}

/// What is done with it, and how long.
void add_run_options(CLI::App& command, Arguments& arguments) {
    command
        .add_option("--give-up-after", arguments.options.give_up_after,
                    "End after as many failed fetches in a row (default 0: never)")
        ->check(whole_number("a whole number", 0, most_attempts));
    command
        .add_option("--limit", arguments.options.limits.bytes,
                    "Largest document, in bytes (default 4194304, 4 MiB)")
        ->check(whole_number("a whole number of bytes", 1, largest_limit));
    command
        .add_option("--timeout", arguments.timeout_seconds,
                    "Longest time for a request, in seconds (default 30)")
        ->check(decimal_number("a number of seconds", 0.001, longest_limit));
    command
        .add_option("--stall", arguments.stall_seconds,
                    "Longest time without a byte, in whole seconds (default 10)")
        ->check(whole_number("a whole number of seconds", 1, longest_limit));
    command
        .add_option("--ca-file", arguments.options.limits.ca_file,
                    "Certificates to trust instead of the system's, PEM (default: the system's)")
        ->check(non_empty_text("a file"));
}

}  // namespace

void add_phone_command(CLI::App& program, std::function<int()>& run) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = program.add_subcommand(
        "phone", "Be a phone: attach accessories, configure them, have them reported");
    add_bench_options(*command, *arguments);
    add_run_options(*command, *arguments);
    command->add_flag("--verbose", arguments->options.verbose, "Show the library's log lines too");
    command->add_flag("--json", arguments->json, "Write everything as JSON, one object a line");
    command->callback([arguments, &run] { run = [arguments] { return run_phone(*arguments); }; });
}

}  // namespace headsetmgmt::program
