// The shared library in a process that loads and unloads it. The program is the host: it exports
// the host functions that the library binds.

#include <atomic>
#include <condition_variable>
#include <dlfcn.h>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>

#include <gtest/gtest.h>

#include "headsetmgmt/phone/host_functions.h"

namespace {

std::mutex requests_mutex;
std::condition_variable requested;
int requests = 0;

bool wait_for_a_request() {
    std::unique_lock<std::mutex> requests_lock(requests_mutex);
    const bool came =
        requested.wait_for(requests_lock, std::chrono::seconds(60), [] { return requests != 0; });
    requests = 0;
    return came;
}

std::atomic<int> lines{0};

void count_line(int, const char*) {
    ++lines;
}

}  // namespace

bool httpRequest(HttpRequestType, const char*, const char*) {
    const std::lock_guard<std::mutex> requests_lock(requests_mutex);
    ++requests;
    requested.notify_all();
    return true;
}

bool apply_changes(const char*, const char*, int, const char*) {
    return true;
}

bool request_firmware_upgrade(const char*, const char*, const char*) {
    return true;
}

bool check_firmware_upgrade(const char*) {
    return true;
}

const char* get_host_serial_num() {
    return "PHONE0001";
}

const char* get_host_os_ver() {
    return "6.1";
}

const char* get_orvik_ver() {
    return "12.5";
}

namespace {

bool is_loaded() {
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        if (line.find("libheadsetmgmt.so") != std::string::npos) {
            return true;
        }
    }
    return false;
}

/// The library, loaded for as long as this lives.
class LoadedLibrary {
public:
    LoadedLibrary() : handle(dlopen(HEADSETMGMT_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
        if (handle == nullptr) {
            ADD_FAILURE() << dlerror();
        }
    }
    ~LoadedLibrary() { EXPECT_EQ(dlclose(handle), 0); }

    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    bool create() const {
        return function<bool (*)(HostLogCallback)>("_Z19create_headset_mgmtPFviPKcE")(count_line);
    }
    bool start() const {
        using Start = bool (*)(const char*, const char*, const char*);
        return function<Start>("_Z18start_headset_mgmtPKcS0_S0_")("", "", "");
    }
    void stop() const { function<void (*)()>("_Z17stop_headset_mgmtv")(); }

    bool attach() const {
        auto record = std::make_shared<AccessoryCache>();
        record->device_id = "headset-1";
        record->accessory_type = 1;
        record->model = "Varos K30";
        record->software_version = "1-0-2";
        using Configure = bool (*)(std::shared_ptr<AccessoryCache>);
        return function<Configure>("_Z17configure_headsetSt10shared_ptrI14AccessoryCacheE")(record);
    }

private:
    template <typename Function>
    Function function(const char* name) const {
        return reinterpret_cast<Function>(dlsym(handle, name));
    }

    void* handle;
};

TEST(UnloadTest, LibraryIsLoadedStartedStoppedAndUnloadedTwice) {
    for (int round = 0; round < 2; ++round) {
        {
            const LoadedLibrary library;
            ASSERT_TRUE(is_loaded());
            EXPECT_TRUE(library.create());
            EXPECT_TRUE(library.start());
            EXPECT_TRUE(library.attach());
            EXPECT_TRUE(wait_for_a_request());
            library.stop();
        }
        EXPECT_FALSE(is_loaded());
    }
    EXPECT_GT(lines, 0);
}

TEST(UnloadTest, UnloadingWithoutAStopEndsTheWorker) {
    for (int round = 0; round < 2; ++round) {
        {
            const LoadedLibrary library;
            EXPECT_TRUE(library.create());
            EXPECT_TRUE(library.start());
            EXPECT_TRUE(library.attach());
            EXPECT_TRUE(wait_for_a_request());
        }
        EXPECT_FALSE(is_loaded());
    }
}

TEST(UnloadTest, LibraryThatWasNeverUsedIsUnloaded) {
    { const LoadedLibrary library; }

    EXPECT_FALSE(is_loaded());
}

}  // namespace
