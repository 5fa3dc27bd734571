// SPDX-License-Identifier: Apache-2.0
// A process that exits without stopping the library, each in a process of its own.

#include <cstdlib>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/event.h"
#include "support/lock_attempt.h"
#include "support/phone_host.h"

namespace headsetmgmt::test_support {
namespace {

using ::testing::ExitedWithCode;

class ExitDeathTest : public ::testing::Test {
protected:
    ExitDeathTest() { ::testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

void start_with(const HostBehaviour& behaviour) {
    fresh_fake_host().behave(behaviour);
    create_headset_mgmt(record_host_log_line);
    start_headset_mgmt("", "", "");
    set_urls();
}

TEST_F(ExitDeathTest, ExitOfALibraryThatWasNeverStarted) {
    EXPECT_EXIT(
        {
            create_headset_mgmt(record_host_log_line);
            std::exit(7);
        },
        ExitedWithCode(7), "");
}

TEST_F(ExitDeathTest, ExitWithoutAStop) {
    EXPECT_EXIT(
        {
            start_with(usual_behaviour());
            configure_headset(shared(headset_1()));
            std::exit(7);
        },
        ExitedWithCode(7), "");
}

TEST_F(ExitDeathTest, ExitWhileTheHostFailsForever) {
    EXPECT_EXIT(
        {
            HostBehaviour behaviour = usual_behaviour();
            behaviour.on_http_request = [](const HttpRequestCall&) { httpResponse("", 404); };
            start_with(behaviour);
            configure_headset(shared(headset_1()));
            fake_host().wait_for_http_requests(10);
            std::exit(7);
        },
        ExitedWithCode(7), "");
}

/// Ends the process with another code than the exit's when an ended library can be used.
void use_what_has_ended() {
    if (start_headset_mgmt("", "", "") || create_headset_mgmt(record_host_log_line) || set_urls()) {
        std::_Exit(8);
    }
    stop_headset_mgmt();
}

TEST_F(ExitDeathTest, CallsAfterTheLibrarysEndAreTurnedAway) {
    EXPECT_EXIT(
        {
            std::atexit(use_what_has_ended);  // before the library, so that it is called after it
            start_with(usual_behaviour());
            std::exit(7);
        },
        ExitedWithCode(7), "");
}

TEST_F(ExitDeathTest, ExitOfAForkedChildThatStartedTheLibraryEndsIt) {
    EXPECT_EXIT(
        {
            std::atexit(use_what_has_ended);
            fresh_fake_host().behave(usual_behaviour());
            create_headset_mgmt(record_host_log_line);
            const pid_t child = fork();
            if (child == 0) {
                alarm(60);  // ends it otherwise than by exit
                start_headset_mgmt("", "", "");
                set_urls();
                std::exit(7);
            }
            int status = 0;
            waitpid(child, &status, 0);
            _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 9);
        },
        ExitedWithCode(7), "");
}

TEST_F(ExitDeathTest, ExitWaitsForCallsThatAreInsideBeforeItEndsTheWorker) {
    EXPECT_EXIT(
        {
            start_with(usual_behaviour());
            configure_headset(shared(headset_1()));
            fake_host().wait_for_http_requests(1);
            const LockAttempt attempt(TriedLock::exclusive,
                                      [] { std::_Exit(threads_named(worker_name) == 1 ? 7 : 8); });
            std::exit(9);
        },
        ExitedWithCode(7), "");
}

TEST_F(ExitDeathTest, CallsDuringAnExitAreTurnedAway) {
    EXPECT_EXIT(
        {
            start_with(usual_behaviour());
            // The exit waits for the worker, which does not come back; meanwhile another thread
            // calls.
            std::thread([] {
                while (set_urls()) {
                    std::this_thread::yield();
                }
                const bool anything_true = start_headset_mgmt("", "", "") ||
                                           create_headset_mgmt(record_host_log_line) ||
                                           remove_peripheral("headset-1");
                std::_Exit(anything_true ? 8 : 7);
            }).detach();
            HostBehaviour behaviour = usual_behaviour();
            behaviour.on_http_request = [](const HttpRequestCall&) { wait_forever(); };
            fake_host().behave(behaviour);
            configure_headset(shared(headset_1()));
            fake_host().wait_for_http_requests(1);
            std::exit(9);
        },
        ExitedWithCode(7), "");
}

}  // namespace
}  // namespace headsetmgmt::test_support
