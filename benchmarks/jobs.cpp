// Runs one fixed job under callgrind, which counts instructions from the job's beginning to its
// end.
//
// Usage: jobs document|log-line|report|attach

#include <cstddef>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <valgrind/callgrind.h>

#include "headsetmgmt/log.h"
#include "headsetmgmt/phone/flat_interface.h"

#include "benchmarks/documents.h"
#include "benchmarks/least.h"
#include "benchmarks/phone.h"
#include "benchmarks/resting_worker.h"

namespace headsetmgmt::benchmarks {
namespace {

void count_instructions_of(const std::function<void()>& job) {
    CALLGRIND_START_INSTRUMENTATION;
    job();
    CALLGRIND_STOP_INSTRUMENTATION;
}

void document() {
    constexpr std::size_t settings = 1000;
    Phone phone;
    const std::string text = document_of_settings(settings);
    phone.attach_and_fetch(headset("1"));
    count_instructions_of([&] { httpResponse(text.c_str(), 200); });
}

/// A thousand lines, such as a document causes for each of its settings.
void log_line() {
    NoLog sink;
    const log::Logger logger(&sink, "HeadsetConfigImpl", true);
    const std::string name = "Speaker Volume";
    const std::string value = "medium";
    const std::string access = "Admin";
    count_instructions_of([&] {
        for (int usage_id = 1; usage_id <= 1000; ++usage_id) {
            logger.debug() << "save_config_to_map: " << usage_id << ", key: " << name
                           << ", value: " << value << ", access: " << access;
        }
    });
}

void report() {
    Phone phone;
    const auto accessory = headset("1");
    count_instructions_of([&] {
        send_inventory(accessory);
        run_worker();
    });
}

void attach() {
    Phone phone;
    const auto accessory = headset("1");
    count_instructions_of([&] {
        configure_headset(accessory);
        run_worker();
        remove_peripheral("1");
    });
}

}  // namespace
}  // namespace headsetmgmt::benchmarks

int main(int count, char** arguments) {
    using namespace headsetmgmt::benchmarks;
    const std::map<std::string, void (*)()> jobs = {
        {"document", document}, {"log-line", log_line}, {"report", report}, {"attach", attach}};
    const auto job = jobs.find(count > 1 ? arguments[1] : "");
    if (job == jobs.end()) {
        std::cerr << "usage: jobs document|log-line|report|attach\n";
        return 2;
    }
    job->second();
    return 0;
}
