// SPDX-License-Identifier: Apache-2.0
// Loads the library, starts it, attaches eight accessories of a hundred settings each, and prints
// what of the process's memory is private, and how long the start took. Without a library it prints
// what the same process takes alone.
//
// Usage: footprint [LIBRARY]

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <dlfcn.h>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

#include "headsetmgmt/phone/host_types.h"

#include "benchmarks/documents.h"
#include "benchmarks/host.h"

namespace headsetmgmt::benchmarks {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::size_t accessories = 8;
constexpr std::size_t settings = 100;

void ignore_line(int /*level*/, const char* /*text*/) {}

double milliseconds_since(SteadyClock::time_point begin) {
    return std::chrono::duration<double, std::milli>(SteadyClock::now() - begin).count();
}

/// Pages of the process that no other process shares, in KiB.
long private_memory() {
    std::ifstream rollup("/proc/self/smaps_rollup");
    long sum = 0;
    std::string line;
    while (std::getline(rollup, line)) {
        if (line.rfind("Private_Clean:", 0) == 0 || line.rfind("Private_Dirty:", 0) == 0) {
            std::istringstream fields(line.substr(line.find(':') + 1));
            long kibibytes = 0;
            fields >> kibibytes;
            sum += kibibytes;
        }
    }
    return sum;
}

std::shared_ptr<AccessoryCache> accessory_number(std::size_t number) {
    auto accessory = std::make_shared<AccessoryCache>();
    accessory->device_id = std::to_string(number);
    accessory->accessory_type = 1;
    accessory->model = "Varos K20";
    accessory->serial_number = "VK20-000400123456";
    accessory->software_version = "1-0-2";
    return accessory;
}

/// The exported functions that are used here, by the names that they have in the library.
class Library {
public:
    explicit Library(const char* path) : handle(dlopen(path, RTLD_NOW)) {
        if (handle == nullptr) {
            std::fprintf(stderr, "footprint: %s\n", dlerror());
        }
    }

    bool is_loaded() const { return handle != nullptr; }

    template <typename Function>
    Function* function(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(handle, name));
    }

private:
    void* handle;
};

/// False when the library cannot be used.
bool start_and_attach(const char* path) {
    const SteadyClock::time_point begin = SteadyClock::now();
    const Library library(path);
    if (!library.is_loaded()) {
        return false;
    }
    auto* create = library.function<bool(HostLogCallback)>("_Z19create_headset_mgmtPFviPKcE");
    auto* start = library.function<bool(const char*, const char*, const char*)>(
        "_Z18start_headset_mgmtPKcS0_S0_");
    if (!create(ignore_line) || !start("", "", "")) {
        return false;
    }
    std::printf("start_ms %.3f\n", milliseconds_since(begin));

    auto* configure = library.function<bool(std::shared_ptr<AccessoryCache>)>(
        "_Z17configure_headsetSt10shared_ptrI14AccessoryCacheE");
    auto* answer = library.function<void(const char*, int)>("_Z12httpResponsePKci");
    for (std::size_t number = 1; number <= accessories; ++number) {
        configure(accessory_number(number));
    }
    // One document serves all that are waiting; who came later has a request of its own.
    const std::string document = document_of_settings(settings);
    std::size_t answered = 0;
    while (host_counts.applied < accessories * settings && milliseconds_since(begin) < 60000) {
        if (host_counts.fetches > answered) {
            ++answered;
            answer(document.c_str(), 200);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return host_counts.applied == accessories * settings;
}

}  // namespace
}  // namespace headsetmgmt::benchmarks

int main(int count, char** arguments) {
    using namespace headsetmgmt::benchmarks;
    if (count > 1 && !start_and_attach(arguments[1])) {
        std::fputs("footprint: the library could not be used\n", stderr);
        return 1;
    }
    std::printf("private_kib %ld\n", private_memory());
    return 0;
}
