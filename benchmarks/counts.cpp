// SPDX-License-Identifier: Apache-2.0
// Prints how many heap blocks, and how many copies of an accessory's record, the library takes for
// a setting, a line, an attach, a report and a queued task. Fails when one takes more than its
// limit, which is what it takes with Debian's compiler and libraries.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <cjson/cJSON.h>

#include "headsetmgmt/executor.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/phone/flat_interface.h"

#include "benchmarks/documents.h"
#include "benchmarks/floors.h"
#include "benchmarks/least.h"
#include "benchmarks/phone.h"
#include "benchmarks/resting_worker.h"
#include "plugin/accessory_info_impl.h"
#include "runtime/executor_impl.h"

// The C library's own, under the names that it has for programs like this one.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}

namespace {

std::atomic<std::size_t> allocations{0};
std::atomic<std::size_t> smallest_counted{0};
std::atomic<std::size_t> largest_counted{SIZE_MAX};

void count_allocation(std::size_t size) {
    if (size >= smallest_counted && size <= largest_counted) {
        ++allocations;
    }
}

}  // namespace

// What the whole program allocates, the shared libraries included.
extern "C" {

void* malloc(std::size_t size) {
    count_allocation(size);
    return __libc_malloc(size);
}

void* calloc(std::size_t members, std::size_t size) {
    count_allocation(members * size);
    return __libc_calloc(members, size);
}

void* realloc(void* memory, std::size_t size) {
    count_allocation(size);
    return __libc_realloc(memory, size);
}

}  // extern "C"

namespace headsetmgmt::benchmarks {
namespace {

/// How many blocks of `smallest` to `largest` bytes all threads take from the heap while `work`
/// runs, blocks that grow included.
std::size_t allocations_of(const std::function<void()>& work, std::size_t smallest = 0,
                           std::size_t largest = SIZE_MAX) {
    smallest_counted = smallest;
    largest_counted = largest;
    const std::size_t before = allocations;
    work();
    const std::size_t counted = allocations - before;
    smallest_counted = 0;
    largest_counted = SIZE_MAX;
    return counted;
}

std::string heading;   // of the table that is being printed
std::string exceeded;  // the counts beyond their limits

void print_heading(const std::string& what) {
    heading = what;
    std::printf("\n| %-58s | %9s | %9s |\n|-%s-|-----------|-----------|\n", what.c_str(), "count",
                "limit", "----------------------------------------------------------");
}

void print(const std::string& what, double count) {
    std::printf("| %-58s | %9.2f | %9s |\n", what.c_str(), count, "");
}

void print(const std::string& what, std::size_t count) {
    print(what, static_cast<double>(count));
}

void print(const std::string& what, double count, double limit) {
    std::printf("| %-58s | %9.2f | %9.2f |\n", what.c_str(), count, limit);
    constexpr double rounding = 0.005;
    if (count > limit + rounding) {
        exceeded += (exceeded.empty() ? "" : "; ") + heading + ": " + what;
    }
}

void print(const std::string& what, std::size_t count, std::size_t limit) {
    print(what, static_cast<double>(count), static_cast<double>(limit));
}

/// What each of `pieces` more takes: the difference of two runs of `count_for`, so that what is
/// taken once does not count.
double each(const std::function<std::size_t(std::size_t)>& count_for, std::size_t pieces) {
    const std::size_t few = count_for(pieces);
    const std::size_t many = count_for(2 * pieces);
    return static_cast<double>(many - few) / static_cast<double>(pieces);
}

constexpr std::size_t many_settings = 1000;

/// What a setting takes whose name and value have `remark` at their end.
void print_setting(const std::string& what, const std::string& remark, double limit) {
    const auto document_of = [&remark](std::size_t settings) {
        return document_of_settings(settings, remark);
    };
    const double all = each(
        [&](std::size_t settings) {
            const std::string document = document_of(settings);
            Phone phone;
            phone.attach_and_fetch(headset("1"));
            return allocations_of([&] { httpResponse(document.c_str(), 200); });
        },
        many_settings);
    const double tree = each(
        [&](std::size_t settings) {
            const std::string document = document_of(settings);
            return allocations_of([&] { cJSON_Delete(cJSON_Parse(document.c_str())); });
        },
        many_settings);
    const double entry = each(
        [&](std::size_t settings) {
            const std::vector<ConfigParam> list = settings_of_document(settings, remark);
            return allocations_of([&] { map_of(list); });
        },
        many_settings);
    const double lines = each(
        [&](std::size_t settings) {
            const std::string document = document_of(settings);
            Phone phone;
            phone.attach_and_fetch(headset("1"));
            const Lines written(phone.lines_of([&] { httpResponse(document.c_str(), 200); }));
            return allocations_of([&] { written.write(); });
        },
        many_settings);
    print_heading(what);
    print("all", all, limit);
    print("the parser's tree", tree);
    print("the entry in the settings map, with its texts", entry);
    print("its three log lines, as string streams", lines);
    print("more than these together", all - tree - entry - lines);
}

void print_log_lines() {
    print_heading("heap blocks a log line of 80 characters");
    NoLog sink;
    const std::string text(70, 'x');
    const log::Logger logger(&sink, "Component", true);
    const log::Logger without_host(nullptr, "Component", true);
    print("one line", allocations_of([&] { logger.debug() << text << 1; }), 2);
    print("with no host", allocations_of([&] { without_host.debug() << text << 1; }), 1);
    print("one string stream and its string", allocations_of([&] {
              std::ostringstream stream;
              stream << "Component: " << text << 1;
              sink.print(log::LogLevel::debug, stream.str());
          }));
}

/// Copies are recognised by the size of the record; the first one stands in a block with a count of
/// its owners.
std::size_t records_of(const std::function<void()>& work) {
    constexpr std::size_t size = sizeof(AccessoryInfoImpl);
    constexpr std::size_t owners = 16;
    return allocations_of(work, size, size + owners);
}

void print_accessory() {
    constexpr std::size_t kept_for_attach = 4;  // by the call, the object, the task and the queue
    constexpr std::size_t kept_for_report = 5;  // by the call, two metrics, the task and the queue
    Phone phone;
    const auto record = headset("1");
    const auto attach_record = [](const std::shared_ptr<AccessoryCache>& accessory) {
        configure_headset(accessory);
        run_worker();
        remove_peripheral(accessory->device_id.c_str());
    };
    const auto attach = [&] { attach_record(record); };
    const auto report = [&] {
        send_inventory(record);
        run_worker();
    };
    attach();
    report();
    const Lines attach_lines(phone.lines_of(attach));
    const Lines report_lines(phone.lines_of(report));

    const std::size_t attach_records = records_of(attach);
    const std::size_t report_records = records_of(report);
    print_heading("copies of an accessory's record");
    print("attach, fetch and remove", attach_records, kept_for_attach);
    print("inventory report", report_records, kept_for_report);

    print_heading("heap blocks for an attach, a fetch and a remove");
    print("all", allocations_of(attach), 67);
    print("its log lines, as string streams", allocations_of([&] { attach_lines.write(); }));
    const auto record_with_long_id = headset("usb-0000:00:14.0-2.1-f055-1-0-VK20-4");
    print("all, with an id of 36 characters",
          allocations_of([&] { attach_record(record_with_long_id); }), 79);
    print_heading("heap blocks for an inventory report");
    print("all", allocations_of(report), 123);
    print("its tree built and printed bare", allocations_of([] { print_report(); }));
    print("its log lines, as string streams", allocations_of([&] { report_lines.write(); }));
}

void do_nothing(void* /*context*/, TaskParametersInterface* /*params*/) {}

void print_queue() {
    print_heading("heap blocks of a queue beyond the clones, no log");
    struct Queue {
        std::size_t tasks;
        std::size_t limit;  // when it first grows
    };
    for (const auto& [tasks, limit] :
         {Queue{10, 0}, Queue{100, 3}, Queue{1000, 6}, Queue{10000, 10}}) {
        ExecutorImpl executor(nullptr);
        let_worker_rest();
        executor.run("worker", 0, 0);
        wait_for_worker();
        const auto fill_and_run = [&executor, count = tasks] {
            Errand errand;
            for (std::size_t task = 0; task < count; ++task) {
                executor.add_task(do_nothing, nullptr, &errand);
            }
            run_worker();
        };
        const std::size_t first = allocations_of(fill_and_run) - tasks;
        const std::size_t again = allocations_of(fill_and_run) - tasks;
        print(std::to_string(tasks) + " tasks", first, limit);
        print(std::to_string(tasks) + " tasks, once more", again, 0);
        executor.requestExit();
        wake_worker_for_good();
        executor.join();
    }
}

}  // namespace
}  // namespace headsetmgmt::benchmarks

int main() {
    using namespace headsetmgmt::benchmarks;
    try {
        check_floors();
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "counts: %s\n", error.what());
        return 1;
    }
    print_setting("heap blocks a setting stored and applied", "", 18);
    print_setting("heap blocks a setting with texts of 50 characters", long_remark, 19.5);
    print_log_lines();
    print_accessory();
    print_queue();
    if (!exceeded.empty()) {
        std::printf("counts: FAILED (%s)\n", exceeded.c_str());
        return 1;
    }
    std::puts("counts: OK");
    return 0;
}
