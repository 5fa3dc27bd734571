// The shared library in a process that loads and unloads it. The program is the host: it exports
// the host functions that the library binds.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <dlfcn.h>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "headsetmgmt/phone/host_functions.h"

#include "support/joining_thread.h"

using headsetmgmt::test_support::wait_until_joining;

namespace {

std::mutex requests_mutex;  // guards the next three
std::condition_variable requests_changed;
int requests = 0;
bool blocking = false;  // a request does not return
std::function<void()> on_request;

bool wait_for_requests(int count) {
    std::unique_lock<std::mutex> requests_lock(requests_mutex);
    const bool came = requests_changed.wait_for(requests_lock, std::chrono::seconds(60),
                                                [count] { return requests >= count; });
    requests = 0;
    return came;
}

void set_blocking(bool block) {
    const std::lock_guard<std::mutex> requests_lock(requests_mutex);
    blocking = block;
    requests_changed.notify_all();
}

std::atomic<int> lines{0};

void count_line(int, const char*) {
    ++lines;
}

}  // namespace

bool httpRequest(HttpRequestType, const char*, const char*) {
    std::unique_lock<std::mutex> requests_lock(requests_mutex);
    ++requests;
    requests_changed.notify_all();
    requests_changed.wait(requests_lock, [] { return !blocking; });
    const std::function<void()> answer = on_request;
    requests_lock.unlock();
    if (answer) {
        answer();
    }
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

    bool attach(const std::string& software_version = "1-0-2") const {
        auto record = std::make_shared<AccessoryCache>();
        record->device_id = "headset-1";
        record->accessory_type = 1;
        record->model = "Varos K30";
        record->software_version = software_version;
        using Configure = bool (*)(std::shared_ptr<AccessoryCache>);
        return function<Configure>("_Z17configure_headsetSt10shared_ptrI14AccessoryCacheE")(record);
    }

    using Answer = void (*)(const char*, int);
    Answer answer() const { return function<Answer>("_Z12httpResponsePKci"); }

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
            EXPECT_TRUE(wait_for_requests(1));
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
            EXPECT_TRUE(wait_for_requests(1));
        }
        EXPECT_FALSE(is_loaded());
    }
}

TEST(UnloadTest, UnloadingWaitsForTheWorkersCallOfTheHost) {
    auto library = std::make_unique<LoadedLibrary>();
    EXPECT_TRUE(library->create());
    EXPECT_TRUE(library->start());
    set_blocking(true);
    EXPECT_TRUE(library->attach());
    EXPECT_TRUE(wait_for_requests(1));

    std::thread unloader([&] { library.reset(); });
    EXPECT_TRUE(wait_until_joining(unloader.native_handle()));
    EXPECT_TRUE(is_loaded());
    set_blocking(false);
    unloader.join();

    EXPECT_FALSE(is_loaded());
}

TEST(UnloadTest, UnloadingDropsATaskThatIsHeldBack) {
    {
        const LoadedLibrary library;
        EXPECT_TRUE(library.create());
        EXPECT_TRUE(library.start());
        EXPECT_TRUE(library.attach(""));
    }
    EXPECT_FALSE(is_loaded());
    EXPECT_EQ(requests, 0);
}

TEST(UnloadTest, HostThatFailsForEverCannotHoldTheUnloadingUp) {
    {
        const LoadedLibrary library;
        EXPECT_TRUE(library.create());
        EXPECT_TRUE(library.start());
        {
            const std::lock_guard<std::mutex> requests_lock(requests_mutex);
            on_request = [answer = library.answer()] { answer("", 404); };
        }
        EXPECT_TRUE(library.attach());
        EXPECT_TRUE(wait_for_requests(100));
    }
    EXPECT_FALSE(is_loaded());
    on_request = nullptr;
    requests = 0;
}

TEST(UnloadTest, LibraryThatWasNeverUsedIsUnloaded) {
    { const LoadedLibrary library; }

    EXPECT_FALSE(is_loaded());
}

}  // namespace
