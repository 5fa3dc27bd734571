// SPDX-License-Identifier: Apache-2.0
// Stress: eight threads call the flat interface of the shared library at random, for as long as
// wanted, with stops and starts among it all.
//
// Usage: stress [--seconds N] [--seed N]
//
// It fails when a sanitizer reports something, when a call hangs, when the library no longer does
// its work or answers what it must not, and when memory, threads or descriptors are left behind by
// a stop. Its last line says whether it did.

#include <chrono>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "stress/counted_allocations.h"
#include "stress/dice.h"
#include "stress/director.h"
#include "stress/host_threads.h"
#include "stress/late_answers.h"
#include "stress/random_calls.h"
#include "stress/sanitizers.h"
#include "stress/tally.h"
#include "stress/watchdog.h"

namespace headsetmgmt::stress {
namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    std::uint64_t seed = 1;
    std::chrono::seconds seconds{10};
};

/// Every few hundred milliseconds a stop and a start, of one kind after the other.
void direct(Director& director, Clock::time_point end) {
    constexpr unsigned int kinds = 4;
    for (unsigned int round = 0; Clock::now() < end; ++round) {
        constexpr unsigned int shortest = 100;
        constexpr unsigned int spread = 200;
        std::this_thread::sleep_for(std::chrono::milliseconds(shortest + dice().below(spread)));
        switch (round % kinds) {
        case 0:
            director.stop_at_rest();
            break;
        case 1:
            director.stop_from_all_threads();
            break;
        default:
            director.stop_amid_calls();
            break;
        }
    }
    director.stop_at_rest();
}

void print_summary(const Director& director) {
    unsigned long calls = 0;
    std::printf("%-22s %12s %12s\n", "function", "calls", "true");
    for (const CallCount& count : call_counts()) {
        std::printf("%-22s %12lu %12lu\n", count.function, count.calls, count.answered_true);
        calls += count.calls;
    }
    std::printf("calls: %lu\n", calls);
    std::printf("requests: %lu fetches, %lu reports\n", count_of(Counter::fetch),
                count_of(Counter::report));
    std::printf("runs: %lu completed, %lu with a document handed out\n", count_of(Counter::run),
                count_of(Counter::document));
    std::printf("devices: %lu settings, %lu upgrades\n", count_of(Counter::setting),
                count_of(Counter::upgrade));
    std::printf("host: %lu lines taken, %lu exceptions thrown\n", count_of(Counter::line),
                count_of(Counter::exception));
    std::printf("stops: %lu survived, %u of them at rest; the longest took %" PRId64 " ms\n",
                count_of(Counter::stop), director.stops_at_rest(),
                static_cast<std::int64_t>(longest_stop().count()));
    const auto print = [](const char* when, const Footprint& held) {
        std::printf("after the %s stop at rest: %ld allocations, %d threads, %d descriptors\n",
                    when, held.allocations, held.threads, held.descriptors);
    };
    print("first", director.first());
    print("latest", director.latest());
}

void stress(const Options& options) {
    seed_dice(options.seed);
    watch_this_thread();
    // All threads of the program before the director looks for the first time.
    const Watchdog watchdog;
    late_answers();
    HostThreads threads;
    Director director(threads);

    const Clock::time_point end = Clock::now() + options.seconds;
    director.begin();
    direct(director, end);
    print_summary(director);
}

[[noreturn]] void refuse(const char* why, const char* argument) {
    std::fprintf(stderr, "stress: %s: %s\nUsage: stress [--seconds N] [--seed N]\n", why, argument);
    std::exit(2);
}

std::uint64_t number_in(const char* text) {
    char* rest = nullptr;
    const std::uint64_t number = std::strtoull(text, &rest, 10);
    if (*text == '\0' || *rest != '\0') {
        refuse("no number", text);
    }
    return number;
}

Options options_in(int count, char** arguments) {
    Options options;
    for (int i = 1; i < count; i += 2) {
        if (i + 1 == count) {
            refuse("an option without a value", arguments[i]);
        }
        if (std::strcmp(arguments[i], "--seconds") == 0) {
            options.seconds = std::chrono::seconds(number_in(arguments[i + 1]));
        } else if (std::strcmp(arguments[i], "--seed") == 0) {
            options.seed = number_in(arguments[i + 1]);
        } else {
            refuse("unknown option", arguments[i]);
        }
    }
    return options;
}

}  // namespace
}  // namespace headsetmgmt::stress

int main(int count, char** arguments) {
    using namespace headsetmgmt::stress;
    count_allocations();
    const Options options = options_in(count, arguments);
    std::printf("stress: %d seconds, seed %" PRIu64 "\n", static_cast<int>(options.seconds.count()),
                options.seed);
    stress(options);
    if (leaks_are_found()) {
        fail("memory was lost");
    }
    std::puts(has_failed() ? "stress: FAILED" : "stress: OK");
    return has_failed() ? EXIT_FAILURE : EXIT_SUCCESS;
}
