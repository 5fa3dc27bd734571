// Prints how many heap blocks, and how many copies of an accessory's record, the library takes for
// a setting, a line, an attach, a report and a queued task.

#include <cstddef>
#include <cstdio>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <cjson/cJSON.h>

#include "headsetmgmt/executor.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/phone/flat_interface.h"

#include "benchmarks/allocation_count.h"
#include "benchmarks/documents.h"
#include "benchmarks/floors.h"
#include "benchmarks/least.h"
#include "benchmarks/phone.h"
#include "benchmarks/resting_worker.h"
#include "plugin/accessory_info_impl.h"
#include "runtime/executor_impl.h"

namespace headsetmgmt::benchmarks {
namespace {

void print(const std::string& what, double count) {
    std::printf("| %-58s | %9.2f |\n", what.c_str(), count);
}

void print(const std::string& what, std::size_t count) {
    print(what, static_cast<double>(count));
}

void print_heading(const char* what) {
    std::printf("\n| %-58s | %9s |\n|-%s-|-----------|\n", what, "count",
                "----------------------------------------------------------");
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
void print_setting(const char* heading, const std::string& remark) {
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
    print_heading(heading);
    print("all", all);
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
    print("one line", allocations_of([&] { logger.debug() << text << 1; }));
    print("with no host", allocations_of([&] { without_host.debug() << text << 1; }));
    print("one string stream and its string", allocations_of([&] {
              std::ostringstream stream;
              stream << "Component: " << text << 1;
              sink.print(log::LogLevel::debug, stream.str());
          }));
}

/// Copies are told by the size of the record; the first one stands in a block with a count of its
/// owners.
std::size_t records_of(const std::function<void()>& work) {
    constexpr std::size_t size = sizeof(AccessoryInfoImpl);
    constexpr std::size_t owners = 16;
    return allocations_of(work, size, size + owners);
}

/// False when a record is copied more often than someone keeps it.
bool print_accessory() {
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
    print("attach, fetch and remove", attach_records);
    print("inventory report", report_records);

    print_heading("heap blocks for an attach, a fetch and a remove");
    print("all", allocations_of(attach));
    print("its log lines, as string streams", allocations_of([&] { attach_lines.write(); }));
    const auto record_with_long_id = headset("usb-0000:00:14.0-2.1-f055-1-0-VK20-4");
    print("all, with an id of 36 characters",
          allocations_of([&] { attach_record(record_with_long_id); }));
    print_heading("heap blocks for an inventory report");
    print("all", allocations_of(report));
    print("its tree built and printed bare", allocations_of([] { build_report(); }));
    print("its log lines, as string streams", allocations_of([&] { report_lines.write(); }));
    return attach_records <= kept_for_attach && report_records <= kept_for_report;
}

void do_nothing(void* /*context*/, TaskParametersInterface* /*params*/) {}

void print_queue() {
    print_heading("heap blocks of a queue beyond the clones, no log");
    for (const std::size_t tasks : {10U, 100U, 1000U, 10000U}) {
        ExecutorImpl executor(nullptr);
        let_worker_rest();
        executor.run("worker", 0, 0);
        wait_for_worker();
        const auto fill_and_run = [&] {
            Errand errand;
            for (std::size_t task = 0; task < tasks; ++task) {
                executor.add_task(do_nothing, nullptr, &errand);
            }
            run_worker();
        };
        const std::size_t first = allocations_of(fill_and_run) - tasks;
        const std::size_t again = allocations_of(fill_and_run) - tasks;
        print(std::to_string(tasks) + " tasks", first);
        print(std::to_string(tasks) + " tasks, once more", again);
        executor.requestExit();
        wake_worker_for_good();
        executor.join();
    }
}

}  // namespace
}  // namespace headsetmgmt::benchmarks

int main() {
    using namespace headsetmgmt::benchmarks;
    print_setting("heap blocks a setting stored and applied", "");
    print_setting("the same, with texts of 50 characters", " of the template of an administrator");
    print_log_lines();
    const bool well = print_accessory();
    print_queue();
    if (!well) {
        std::fputs("counts: an accessory's record is copied more often than before\n", stderr);
        return 1;
    }
    return 0;
}
