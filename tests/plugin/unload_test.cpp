// SPDX-License-Identifier: Apache-2.0
// The shared library in a process that loads and unloads it. The program is the host: it exports
// the host functions that the library binds.

#include <dlfcn.h>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "support/event.h"
#include "support/fake_host.h"
#include "support/joining_thread.h"

namespace headsetmgmt::test_support {
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
        return function<bool (*)(HostLogCallback)>("_Z19create_headset_mgmtPFviPKcE")(
            record_host_log_line);
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

class UnloadTest : public ::testing::Test {
protected:
    UnloadTest() { fresh_fake_host(); }
};

TEST_F(UnloadTest, LibraryIsLoadedStartedStoppedAndUnloadedTwice) {
    for (int round = 0; round < 2; ++round) {
        fresh_fake_host();
        {
            const LoadedLibrary library;
            ASSERT_TRUE(is_loaded());
            EXPECT_TRUE(library.create());
            EXPECT_TRUE(library.start());
            EXPECT_TRUE(library.attach());
            EXPECT_TRUE(fake_host().wait_for_http_requests(1));
            library.stop();
        }
        EXPECT_FALSE(is_loaded());
    }
    EXPECT_FALSE(fake_host().log_lines().empty());
}

TEST_F(UnloadTest, UnloadingWithoutAStopEndsTheWorker) {
    for (int round = 0; round < 2; ++round) {
        fresh_fake_host();
        {
            const LoadedLibrary library;
            EXPECT_TRUE(library.create());
            EXPECT_TRUE(library.start());
            EXPECT_TRUE(library.attach());
            EXPECT_TRUE(fake_host().wait_for_http_requests(1));
        }
        EXPECT_FALSE(is_loaded());
    }
}

TEST_F(UnloadTest, UnloadingWaitsForTheWorkersCallOfTheHost) {
    Event may_return;
    HostBehaviour behaviour;
    behaviour.on_http_request = [&](const HttpRequestCall&) { EXPECT_TRUE(may_return.wait()); };
    fake_host().behave(behaviour);
    auto library = std::make_unique<LoadedLibrary>();
    EXPECT_TRUE(library->create());
    EXPECT_TRUE(library->start());
    EXPECT_TRUE(library->attach());
    EXPECT_TRUE(fake_host().wait_for_http_requests(1));

    std::thread unloader([&] { library.reset(); });
    EXPECT_TRUE(wait_until_joining(unloader.native_handle()));
    EXPECT_TRUE(is_loaded());
    may_return.happen();
    unloader.join();

    EXPECT_FALSE(is_loaded());
}

TEST_F(UnloadTest, UnloadingDropsATaskThatIsHeldBack) {
    {
        const LoadedLibrary library;
        EXPECT_TRUE(library.create());
        EXPECT_TRUE(library.start());
        EXPECT_TRUE(library.attach(""));
    }
    EXPECT_FALSE(is_loaded());
    EXPECT_TRUE(fake_host().http_requests().empty());
}

TEST_F(UnloadTest, HostThatFailsForeverCannotHoldTheUnloadingUp) {
    {
        const LoadedLibrary library;
        EXPECT_TRUE(library.create());
        EXPECT_TRUE(library.start());
        HostBehaviour behaviour;
        behaviour.on_http_request = [answer = library.answer()](const HttpRequestCall&) {
            answer("", 404);
        };
        fake_host().behave(behaviour);
        EXPECT_TRUE(library.attach());
        EXPECT_TRUE(fake_host().wait_for_http_requests(100));
    }
    EXPECT_FALSE(is_loaded());
}

TEST_F(UnloadTest, LibraryThatWasNeverUsedIsUnloaded) {
    { const LoadedLibrary library; }

    EXPECT_FALSE(is_loaded());
}

}  // namespace
}  // namespace headsetmgmt::test_support
