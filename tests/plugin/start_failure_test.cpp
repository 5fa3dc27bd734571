// SPDX-License-Identifier: Apache-2.0
// A start whose worker thread cannot be made. A program of its own: it stands before the threads
// library.

#include <cerrno>

#include <gtest/gtest.h>

#include "support/failing_pthread.h"
#include "support/phone_host.h"

namespace headsetmgmt::test_support {
namespace {

TEST(StartFailureTest, WorkerThatCannotBeStartedFailsTheStartAndNotTheNext) {
    PhoneHost host;
    create_headset_mgmt(record_host_log_line);
    {
        const PthreadAnswer no_thread(PthreadCall::create, EAGAIN);
        EXPECT_FALSE(start_headset_mgmt("", "", ""));
        EXPECT_TRUE(no_thread.given());
    }
    EXPECT_EQ(host.take(),
              (Lines{"log 5 init_headsetmgmt_lib.\n", "log 5 ExecutorImpl::ExecutorImpl: ENTER.\n",
                     "log 5 Failed to start task thread\n"}));
    EXPECT_FALSE(set_urls());
    EXPECT_FALSE(configure_headset(shared(headset_1())));
    host.take();

    EXPECT_TRUE(host.start());

    EXPECT_EQ(host.take(), (Lines{"log 5 init_headsetmgmt_lib.\n",
                                  "log 5 ExecutorImpl::ExecutorImpl: ENTER.\n"}));
    EXPECT_TRUE(set_urls());
}

TEST(StartFailureTest, StopAfterAFailedStartIsHarmless) {
    PhoneHost host;
    create_headset_mgmt(record_host_log_line);
    {
        const PthreadAnswer no_thread(PthreadCall::create, EAGAIN);
        EXPECT_FALSE(start_headset_mgmt("", "", ""));
    }
    host.take();

    stop_headset_mgmt();
    stop_headset_mgmt();

    EXPECT_EQ(host.take(), (Lines{"log 5 stop headset mgmt\n", "log 5 stop headset mgmt\n"}));
}

}  // namespace
}  // namespace headsetmgmt::test_support
