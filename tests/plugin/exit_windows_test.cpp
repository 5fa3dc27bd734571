// SPDX-License-Identifier: Apache-2.0
// A process that exits without a stop, while the library is in the middle of something. Each in a
// process of its own.

#include <chrono>
#include <cstdlib>
#include <functional>
#include <ostream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/phone_plugin_impl.h"
#include "plugin/stop_under_way.h"
#include "support/event.h"

namespace headsetmgmt::test_support {
namespace {

using plugin::PhonePluginImpl;
using ::testing::ExitedWithCode;

constexpr char document_with_upgrade[] = R"({"templateConfiguration": {
    "modelSpecificSettings": [{"models": ["K30"], "modelFirmware": [
        {"firmwareName": "k30.bin", "firmwareVersion": "2-0-1", "firmwareParams": [
            {"name": "Sidetone", "usageId": 34, "value": 2, "access": "Admin"}]}]}]}})";

constexpr int exited = 7;
constexpr int not_as_expected = 8;

/// The host of a process that exits. Never deleted: it may be called until the process ends.
BlockingHost* host = nullptr;

void create_with_host(const Moment& moment, const std::function<void()>& deed = {}) {
    host = new BlockingHost(moment, deed);
    fresh_fake_host().behave(host->behaviour());
    create_headset_mgmt(record_host_log_line);
}

/// Ends the process at once, with a code that no test expects.
void require(bool condition) {
    if (!condition) {
        std::_Exit(not_as_expected);
    }
}

/// What a process does last, when all objects of static life are destroyed; null for nothing.
void (*at_the_very_end)() = nullptr;

/// Called before such objects are made, so that the handler is called after they are destroyed.
[[gnu::constructor(101)]] void register_the_very_end() {
    std::atexit([] {
        if (at_the_very_end != nullptr) {
            at_the_very_end();
        }
    });
}

/// The host blocks at `moment`; `run`, on another thread, brings the library there.
void block_at(const Moment& moment, void (*run)()) {
    create_with_host(moment);
    std::thread(run).detach();
    require(host->wait_until_blocked());
}

void attach() {
    start_headset_mgmt("", "", "");
    set_urls();
    configure_headset(shared(headset_1()));
}

void configure() {
    attach();
    fake_host().wait_for_http_requests(1);
    httpResponse(document_with_upgrade, 200);
}

void report() {
    start_headset_mgmt("", "", "");
    set_urls();
    send_inventory(shared(headset_1()));
}

struct ExitWindow {
    const char* name;
    void (*run)();
    Moment moment;
};

void PrintTo(const ExitWindow& window, std::ostream* stream) {
    *stream << window.name;
}

class ExitWhileTheHostIsDeathTest : public ::testing::TestWithParam<ExitWindow> {
protected:
    ExitWhileTheHostIsDeathTest() { ::testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

const ExitWindow windows[] = {
    {"RequestingADocument", attach, {"httpRequest 0"}},
    {"PostingAReport", report, {"httpRequest 2"}},
    {"AskedForAFact", report, {"fact"}},
    {"TakingALineOfTheWorker", attach, {task_begins}},
    {"ChangingASetting", configure, {"apply_changes"}},
    {"UpgradingTheFirmware", configure, {"request_firmware_upgrade"}},
    {"TakingALineOfACall", attach, {"log 5 PhonePluginImpl::configure_headset ENTER\n"}},
    {"TakingALineOfAStart", attach, {"log 5 init_headsetmgmt_lib.\n"}},
};

INSTANTIATE_TEST_SUITE_P(Windows, ExitWhileTheHostIsDeathTest, ::testing::ValuesIn(windows),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(ExitWhileTheHostIsDeathTest, WaitsForItsReturn) {
    EXPECT_EXIT(
        {
            // Registered before the library is made, so called after the library has ended.
            std::atexit([] { require(host->is_through() && !host->was_let_in()); });
            block_at(GetParam().moment, GetParam().run);
            std::thread([] {
                require(holds_soon([] { return !set_urls(); }));
                host->release();
            }).detach();
            std::exit(exited);
        },
        ExitedWithCode(exited), "");
}

TEST_P(ExitWhileTheHostIsDeathTest, MayBeCalledByTheHostItself) {
    EXPECT_EXIT(
        {
            create_with_host(GetParam().moment, [] { std::exit(exited); });
            std::thread(GetParam().run).detach();
            wait_forever();
        },
        ExitedWithCode(exited), "");
}

TEST_P(ExitWhileTheHostIsDeathTest, MayLeaveOutEveryCleaningUp) {
    EXPECT_EXIT(
        {
            block_at(GetParam().moment, GetParam().run);
            _exit(exited);
        },
        ExitedWithCode(exited), "");
    EXPECT_EXIT(
        {
            block_at(GetParam().moment, GetParam().run);
            std::quick_exit(exited);
        },
        ExitedWithCode(exited), "");
}

TEST_P(ExitWhileTheHostIsDeathTest, OfAForkedChildWaitsForNobody) {
    EXPECT_EXIT(
        {
            // Called after the library has ended. After this, what only the
            // parent's threads point to would be reported as leaked.
            static bool is_child = false;
            std::atexit([] {
                if (is_child) {
                    _exit(exited);
                }
            });
            block_at(GetParam().moment, GetParam().run);
            const pid_t child = fork();
            if (child == 0) {
                is_child = true;
                alarm(60);  // ends it otherwise than by exit
                std::exit(not_as_expected);
            }
            int status = 0;
            waitpid(child, &status, 0);
            _exit(WIFEXITED(status) ? WEXITSTATUS(status) : not_as_expected);
        },
        ExitedWithCode(exited), "");
}

class ExitWindowsDeathTest : public ::testing::Test {
protected:
    ExitWindowsDeathTest() { ::testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

TEST_F(ExitWindowsDeathTest, ExitDuringAStopWaitsForTheStop) {
    EXPECT_EXIT(
        {
            std::atexit([] { require(host->is_through()); });
            block_at({"httpRequest 0"}, attach);
            // Registered after the library was made, so called just before the library ends.
            std::atexit([] { host->release(); });
            std::thread(stop_headset_mgmt).detach();
            require(holds_soon([] { return !set_urls(); }));
            std::exit(exited);
        },
        ExitedWithCode(exited), "");
}

TEST_F(ExitWindowsDeathTest, ExitAmongCallsThatNeverEnd) {
    EXPECT_EXIT(
        {
            create_with_host({"", 0});
            attach();
            for (int i = 0; i < 4; ++i) {
                std::thread([] {
                    for (;;) {
                        any_call_is_let_in();
                    }
                }).detach();
            }
            require(fake_host().wait_for_http_requests(20));
            std::exit(exited);
        },
        ExitedWithCode(exited), "");
}

TEST_F(ExitWindowsDeathTest, ExitWhileATaskIsHeldBack) {
    EXPECT_EXIT(
        {
            create_with_host({"", 0});
            start_headset_mgmt("", "", "");
            set_urls();
            AccessoryCache without_version = headset_1();
            without_version.software_version = "";
            configure_headset(shared(without_version));
            send_inventory(shared(headset_1()));
            require(host->wait_for("httpRequest 2", 1));
            std::exit(exited);
        },
        ExitedWithCode(exited), "");
}

TEST_F(ExitWindowsDeathTest, ExitFromInsideAHostFunctionLeavesWhatAStartMade) {
    EXPECT_EXIT(
        {
            at_the_very_end = [] { require(PhonePluginImpl::executor_ != nullptr); };
            create_with_host({"httpRequest 0"}, [] { std::exit(exited); });
            attach();
            wait_forever();
        },
        ExitedWithCode(exited), "");
}

TEST_F(ExitWindowsDeathTest, ExitFromInsideAHostFunctionMakesTheWorkerLeave) {
    EXPECT_EXIT(
        {
            at_the_very_end = [] {
                const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
                while (threads_named(worker_name) != 0) {
                    require(std::chrono::steady_clock::now() < limit);
                }
            };
            create_with_host({"apply_changes"}, [] { std::exit(exited); });
            configure();
            wait_forever();
        },
        ExitedWithCode(exited), "");
}

TEST_F(ExitWindowsDeathTest, ExitOfAForkedChildLeavesWhatTheParentsStartMade) {
    EXPECT_EXIT(
        {
            block_at({"httpRequest 0"}, attach);
            const pid_t child = fork();
            if (child == 0) {
                at_the_very_end = [] {
                    require(PhonePluginImpl::executor_ != nullptr);
                    _exit(exited);
                };
                alarm(60);  // ends it otherwise than by exit
                std::exit(not_as_expected);
            }
            int status = 0;
            waitpid(child, &status, 0);
            _exit(WIFEXITED(status) ? WEXITSTATUS(status) : not_as_expected);
        },
        ExitedWithCode(exited), "");
}

}  // namespace
}  // namespace headsetmgmt::test_support
