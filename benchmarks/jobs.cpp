// Runs one fixed job under callgrind, which counts instructions from the job's beginning to its
// end.
//
// Usage: jobs document|log-line|report|attach [SETTINGS]

#include <cstddef>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <valgrind/callgrind.h>

#include "headsetmgmt/log.h"
#include "headsetmgmt/phone/flat_interface.h"

#include "benchmarks/documents.h"
#include "benchmarks/phone.h"
#include "benchmarks/resting_worker.h"

namespace headsetmgmt::benchmarks {
namespace {

void count_instructions_of(const std::function<void()>& job) {
    CALLGRIND_START_INSTRUMENTATION;
    job();
    CALLGRIND_STOP_INSTRUMENTATION;
}

void document(std::size_t settings) {
    Phone phone;
    const std::string text = document_of_settings(settings);
    phone.attach_and_fetch(headset("1"));
    count_instructions_of([&] { httpResponse(text.c_str(), 200); });
}

class NoLog : public log::HostLogInterface {
public:
    int map_to_host_log_level(log::LogLevel /*level*/) const override { return 0; }
    void print(log::LogLevel /*level*/, const std::string& /*line*/) override {}
};

/// A thousand lines, such as a document causes for each of its settings.
void log_line(std::size_t /*settings*/) {
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

void report(std::size_t /*settings*/) {
    Phone phone;
    const auto accessory = headset("1");
    count_instructions_of([&] {
        send_inventory(accessory);
        run_worker();
    });
}

void attach(std::size_t /*settings*/) {
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
    const std::map<std::string, void (*)(std::size_t)> jobs = {
        {"document", document}, {"log-line", log_line}, {"report", report}, {"attach", attach}};
    const auto job = jobs.find(count > 1 ? arguments[1] : "");
    if (job == jobs.end()) {
        std::cerr << "usage: jobs document|log-line|report|attach [SETTINGS]\n";
        return 2;
    }
    constexpr std::size_t usual_settings = 1000;
    job->second(count > 2 ? std::strtoul(arguments[2], nullptr, 10) : usual_settings);
    return 0;
}
