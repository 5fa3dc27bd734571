// SPDX-License-Identifier: Apache-2.0
// A start whose worker cannot be made, again and again: what is left of it. A program of its own:
// it stands before the threads library, and counts what the library allocates.

#include <cerrno>

#include <gtest/gtest.h>

#include "faults/failing_memory.h"
#include "support/failing_pthread.h"
#include "support/phone_host.h"

namespace headsetmgmt::test_support {
namespace {

using Inside = LibraryMemory::Inside;

bool start_without_clock() {
    const Inside inside;
    return start_headset_mgmt("", "", "");
}

/// Nothing but the library's own memory is counted.
void stop_without_clock() {
    const Inside inside;
    stop_headset_mgmt();
}

/// A start that fails, for the call of the threads library that fails in it.
class StartFaults : public ::testing::TestWithParam<PthreadCall> {
protected:
    static bool start_in_vain() {
        const PthreadAnswer failing(GetParam(), ENOMEM);
        const bool started = start_without_clock();
        EXPECT_TRUE(failing.given());
        return started;
    }
};

TEST_P(StartFaults, LeaveNoMoreTheHundredthTimeThanTheFirst) {
    PhoneHost host;
    create_headset_mgmt(nullptr);
    EXPECT_FALSE(start_in_vain());
    const long after_one = LibraryMemory::alive();

    for (int i = 1; i < 100; ++i) {
        EXPECT_FALSE(start_in_vain());
    }

    EXPECT_EQ(LibraryMemory::alive(), after_one);
}

TEST_P(StartFaults, AreForgottenByAStop) {
    PhoneHost host;
    create_headset_mgmt(nullptr);
    const long before = LibraryMemory::alive();
    EXPECT_FALSE(start_in_vain());
    EXPECT_GT(LibraryMemory::alive(), before);

    stop_without_clock();

    EXPECT_EQ(LibraryMemory::alive(), before);
}

TEST_P(StartFaults, AreReportedAndLeaveTheNextStartAlone) {
    PhoneHost host;
    create_headset_mgmt(record_host_log_line);

    EXPECT_FALSE(start_in_vain());

    EXPECT_EQ(host.take(),
              (Lines{"log 5 init_headsetmgmt_lib.\n", "log 5 ExecutorImpl::ExecutorImpl: ENTER.\n",
                     "log 5 Failed to start task thread\n"}));
    EXPECT_FALSE(set_urls());
    EXPECT_TRUE(host.start());
    EXPECT_TRUE(set_urls());
    EXPECT_TRUE(configure_headset(shared(headset_1())));
    host.run_worker();
    EXPECT_EQ(fake_host().http_requests().size(), 1U);
}

std::string name_of(const ::testing::TestParamInfo<PthreadCall>& test) {
    return test.param == PthreadCall::create ? "Thread" : "Attributes";
}

INSTANTIATE_TEST_SUITE_P(Calls, StartFaults,
                         ::testing::Values(PthreadCall::create, PthreadCall::attr_init), name_of);

}  // namespace
}  // namespace headsetmgmt::test_support
