// SPDX-License-Identifier: Apache-2.0
// Memory runs out at every allocation of a whole run, one after the other, each in a process of its
// own. Nothing that follows may be a leak, a lock that is left held, a wrong call of the host, a
// crash or a terminate; with memory again, the library serves as ever, at once and after a stop.
//
// Usage: every_allocation [--shortage one|rest] [--shard K/OF]
//        every_allocation --allocation N [--shortage one|rest]
//
// Without --shortage, both kinds are tried: one allocation fails, or it and all after it. A shard
// takes every OF-th allocation. With --allocation, that one fails in this very process, for the
// debugger. Exit code 0 when all is well, else 1.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <functional>
#include <iostream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "faults/failing_memory.h"
#include "faults/stack_text.h"
#include "faults/whole_run.h"
#include "faults/worker_clock.h"

namespace headsetmgmt::test_support {
namespace {

constexpr int status_terminated = 77;
constexpr unsigned int seconds_to_hang = 30;
constexpr long failures_to_tell = 10;
constexpr long hangs_to_wait_for = 2;

/// What a process with one failing allocation reports to the one that began it, through memory that
/// both share. It may end at any time.
struct Report {
    long allocations;        // of the disturbed use
    long json_allocations;   // of them
    bool refused;            // a step of it was
    bool calls_differ;       // it called the host otherwise than it should
    std::size_t lines_lost;  // lines of an undisturbed use that it did not say, or not in full
    std::uint64_t lines;     // those of the undisturbed use, whatever their order
    long leaked;             // the latest allocation that is left; 0 when there is none
    char complaint[1000];    // empty when all is well
    std::size_t depth;       // of the stack of the watched allocation
    void* stack[64];
};

void complain(Report& report, const std::string& complaint) {
    if (report.complaint[0] == '\0') {
        complaint.copy(report.complaint, sizeof(report.complaint) - 1);
    }
}

Lines sorted(Lines texts) {
    std::sort(texts.begin(), texts.end());
    return texts;
}

/// The same for the same lines in another order.
std::uint64_t fingerprint(const Lines& lines) {
    std::uint64_t sum = lines.size();
    for (const std::string& line : lines) {
        sum += std::hash<std::string>()(line);
    }
    return sum;
}

/// What of `expected` is not in `texts`, each as often as it is missing.
Lines missing(const Lines& texts, const Lines& expected) {
    Lines absent;
    const Lines had = sorted(texts);
    const Lines wanted = sorted(expected);
    std::set_difference(wanted.begin(), wanted.end(), had.begin(), had.end(),
                        std::back_inserter(absent));
    return absent;
}

std::vector<void*> stack_of(const Report& report) {
    return std::vector<void*>(report.stack, report.stack + report.depth);
}

/// What is wrong with the use in which memory ran out.
void judge_disturbed(const WholeRun& use, Shortage shortage, Report& report) {
    for (const std::string& step : use.refused_twice) {
        if (shortage == Shortage::one && is_repeatable(step)) {
            complain(report, step + " answered false again with memory");
        }
    }
    for (const std::string& step : use.granted) {
        complain(report, step + " answered true");
    }
    for (const std::string& call : use.calls) {
        if (!is_permitted_call(call)) {
            complain(report, "a wrong call of the host: " + call);
        }
    }
}

/// What is wrong with a use, the next one or another, that had all the memory it wanted.
void judge_undisturbed(const std::string& which, const WholeRun& use, Report& report) {
    for (const std::string& step : use.refused) {
        complain(report, which + step + " answered false");
    }
    for (const std::string& step : use.granted) {
        complain(report, which + step + " answered true");
    }
    for (const std::string& call : missing(use.calls, expected_calls())) {
        complain(report, which + "this call of the host was not made: " + call);
    }
}

/// What is wrong after a stop.
void judge_stopped(const std::string& which, long allocations_of_the_stop, Report& report) {
    if (allocations_of_the_stop != 0) {
        complain(report, which + "the stop took memory");
    }
    if (LibraryMemory::alive() != 1) {  // the plug-in object stays
        complain(report, which + "after the stop, " + std::to_string(LibraryMemory::alive()) +
                             " allocations are left in the place of one");
    }
    if (WorkerClock::had_two_workers()) {
        complain(report, which + "there were two workers");
    }
}

/// Uses the library with the `nth` allocation failing; then, with memory again, as it stands, and
/// from a start to a stop. `usual` is the report of a process in which none failed, which has none
/// to compare itself with.
void use_three_times(long nth, Shortage shortage, long watched, const Report* usual,
                     Report& report) {
    LibraryMemory::begin(nth, shortage);
    LibraryMemory::watch(watched);
    const WholeRun disturbed = start_and_use();
    report.allocations = LibraryMemory::allocations();
    report.json_allocations = LibraryMemory::json_allocations();
    LibraryMemory::end_shortage();
    if (report.allocations < nth) {
        complain(report, "the allocation was not made");
    }
    judge_disturbed(disturbed, shortage, report);

    // An accessory that is still to be configured takes part, so there may be more calls.
    const std::string next = "in the next use, ";
    judge_undisturbed(next, start_and_use(), report);
    judge_stopped(next, stop(), report);

    const std::string last = "in the last use, ";
    const WholeRun undisturbed = start_and_use();
    judge_undisturbed(last, undisturbed, report);
    if (!missing(expected_calls(), undisturbed.calls).empty()) {
        complain(report, last + "the host was called more often");
    }
    judge_stopped(last, stop(), report);
    report.lines = fingerprint(undisturbed.lines);
    if (usual != nullptr && report.lines != usual->lines) {
        complain(report, last + "other lines were said");
    }

    report.refused = !disturbed.refused.empty();
    report.calls_differ = sorted(disturbed.calls) != expected_calls();
    report.lines_lost = missing(disturbed.lines, undisturbed.lines).size();
    report.leaked = LibraryMemory::alive() > 1 ? LibraryMemory::latest_alive() : 0;
    const std::vector<void*> stack = LibraryMemory::stack();
    report.depth = stack.size();
    std::copy(stack.begin(), stack.end(), report.stack);
}

/// A report in memory that processes begun by this one write to.
Report& shared_report() {
    void* const memory =
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("no shared memory");
    }
    return *static_cast<Report*>(memory);
}

[[noreturn]] void tell_terminate() {
    _exit(status_terminated);
}

/// How a process that `use_three_times` ran in ended.
int run_in_a_process(long nth, Shortage shortage, long watched, const Report* usual,
                     Report& report) {
    report = {};
    std::cout << std::flush;
    const pid_t child = fork();
    if (child < 0) {
        throw std::runtime_error("no process");
    }
    if (child == 0) {
        std::set_terminate(tell_terminate);
        alarm(seconds_to_hang);
        use_three_times(nth, shortage, watched, usual, report);
        std::exit(0);  // and not without the library's end, and a sanitizer's
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

/// All processes of one kind of shortage, counted.
class Shortages {
public:
    Shortages(Shortage kind, const Report& undisturbed) : shortage(kind), usual(undisturbed) {}

    void try_allocation(long nth, Report& report) {
        ++tried;
        const int status = run_in_a_process(nth, shortage, nth, &usual, report);
        if (WIFEXITED(status) && WEXITSTATUS(status) == status_terminated) {
            ++terminated;
            complain(nth, report, "ended through terminate");
        } else if (WIFSIGNALED(status)) {
            const bool hangs = WTERMSIG(status) == SIGALRM;
            hung += hangs ? 1 : 0;
            fail(nth, report, hangs ? "did not end" : "signal " + std::to_string(WTERMSIG(status)));
        } else if (WEXITSTATUS(status) != 0) {
            fail(nth, report, "exit code " + std::to_string(WEXITSTATUS(status)));
        } else if (report.complaint[0] != '\0') {
            fail(nth, report, report.complaint);
        } else {
            count(report);
        }
    }

    void tell_counts() const {
        std::cout << name() << ": " << tried << " allocations failed, " << untouched
                  << " untouched, " << quieter << " lost or cut log lines alone, " << lesser
                  << " did less, " << refusing << " answered false, " << terminated
                  << " ended through terminate, " << failed << " failed\n";
    }

    /// Whether so much is wrong that more need not be reported.
    bool is_hopeless() const {
        return failed + terminated >= failures_to_tell || hung >= hangs_to_wait_for;
    }

    bool is_well() const { return tried != 0 && failed == 0 && terminated == 0; }

private:
    std::string name() const {
        return shortage == Shortage::one ? "one allocation" : "all from one on";
    }

    void count(const Report& report) {
        if (report.refused) {
            ++refusing;
        } else if (report.calls_differ) {
            ++lesser;
        } else if (report.lines_lost != 0) {
            ++quieter;
        } else {
            ++untouched;
        }
    }

    void fail(long nth, const Report& report, const std::string& complaint) {
        ++failed;
        complain(nth, report, complaint);
        if (report.leaked != 0) {
            Report& leaking = shared_report();
            run_in_a_process(nth, shortage, report.leaked, &usual, leaking);
            std::cout << "  left, allocation " << report.leaked << " from\n"
                      << stack_text(stack_of(leaking));
            munmap(&leaking, sizeof(leaking));
        }
    }

    void complain(long nth, const Report& report, const std::string& complaint) const {
        std::cout << name() << ", allocation " << nth << ": " << complaint << "\n"
                  << stack_text(stack_of(report));
    }

    Shortage shortage;
    const Report& usual;
    long tried = 0;
    long untouched = 0;
    long quieter = 0;
    long lesser = 0;
    long refusing = 0;
    long terminated = 0;
    long failed = 0;
    long hung = 0;  // of the failed
};

struct Options {
    std::vector<Shortage> shortages = {Shortage::one, Shortage::rest};
    long allocation = 0;
    long shard = 1;
    long shards = 1;
};

std::optional<Options> read_options(const std::vector<std::string>& words) {
    Options options;
    for (std::size_t i = 0; i < words.size(); i += 2) {
        if (i + 1 == words.size()) {
            return std::nullopt;
        }
        const std::string& value = words[i + 1];
        if (words[i] == "--shortage" && value == "one") {
            options.shortages = {Shortage::one};
        } else if (words[i] == "--shortage" && value == "rest") {
            options.shortages = {Shortage::rest};
        } else if (words[i] == "--allocation") {
            options.allocation = std::strtol(value.c_str(), nullptr, 10);
        } else if (words[i] == "--shard" && value.find('/') != std::string::npos) {
            options.shard = std::strtol(value.c_str(), nullptr, 10);
            options.shards = std::strtol(value.c_str() + value.find('/') + 1, nullptr, 10);
        } else {
            return std::nullopt;
        }
    }
    const bool valid =
        options.allocation >= 0 && options.shard >= 1 && options.shard <= options.shards;
    return valid ? std::optional(options) : std::nullopt;
}

/// One failing allocation in this process; the program's exit code.
int try_one_here(const Options& options) {
    for (const Shortage shortage : options.shortages) {
        Report report = {};
        use_three_times(options.allocation, shortage, options.allocation, nullptr, report);
        std::cout << stack_text(stack_of(report)) << "refused " << report.refused
                  << ", called otherwise " << report.calls_differ << ", lines lost "
                  << report.lines_lost << "\n"
                  << (report.complaint[0] != '\0' ? report.complaint : "nothing wrong") << "\n";
        if (report.complaint[0] != '\0') {
            return 1;
        }
    }
    return 0;
}

/// The report of a process in which nothing fails; throws when that is not as it should be.
const Report& run_undisturbed() {
    Report& report = shared_report();
    const int status = run_in_a_process(0, Shortage::one, 0, nullptr, report);
    if (status != 0 || report.complaint[0] != '\0' || report.refused || report.calls_differ ||
        report.lines_lost != 0) {
        throw std::runtime_error(std::string("the undisturbed process is not as it should be: ") +
                                 report.complaint);
    }
    if (report.json_allocations == 0 || report.json_allocations == report.allocations) {
        throw std::runtime_error("the library does not allocate through this program");
    }
    return report;
}

bool try_all(const Options& options) {
    const Report& usual = run_undisturbed();
    std::cout << "a use of everything makes " << usual.allocations << " allocations, "
              << usual.json_allocations << " of them for cJSON\n";
    Report& report = shared_report();
    bool well = true;
    for (const Shortage shortage : options.shortages) {
        Shortages shortages(shortage, usual);
        for (long nth = options.shard; nth <= usual.allocations && !shortages.is_hopeless();
             nth += options.shards) {
            shortages.try_allocation(nth, report);
        }
        shortages.tell_counts();
        well = well && shortages.is_well();
    }
    return well;
}

}  // namespace
}  // namespace headsetmgmt::test_support

int main(int count, char** words) {
    using namespace headsetmgmt::test_support;
    const auto options = read_options(std::vector<std::string>(words + 1, words + count));
    if (!options) {
        std::cerr << "usage: every_allocation [--shortage one|rest] [--shard K/OF] "
                     "[--allocation N]\n";
        return 1;
    }
    LibraryMemory::install();
    if (options->allocation != 0) {
        return try_one_here(*options);
    }
    bool well = false;
    try {
        well = try_all(*options);
    } catch (const std::exception& error) {
        std::cout << error.what() << "\n";
    }
    std::cout << (well ? "faults: OK\n" : "faults: FAILED\n");
    return well ? 0 : 1;
}
