// SPDX-License-Identifier: Apache-2.0
// A start for which there is no memory.

#include <gtest/gtest.h>

#include "support/phone_host.h"
#include "support/short_memory.h"

namespace headsetmgmt::test_support {
namespace {

bool start_without_memory() {
    const ShortMemory short_memory;
    return start_headset_mgmt("", "", "");
}

TEST(ShortageTest, StartWithoutMemoryAnswersFalseAndTheNextOneWorks) {
    PhoneHost host;
    create_headset_mgmt(nullptr);

    EXPECT_FALSE(start_without_memory());

    EXPECT_TRUE(create_headset_mgmt(nullptr));
    EXPECT_FALSE(set_urls());
    EXPECT_TRUE(host.start());
    EXPECT_TRUE(set_urls());
}

TEST(ShortageTest, StopAfterAStartWithoutMemoryIsHarmless) {
    PhoneHost host;
    create_headset_mgmt(nullptr);
    EXPECT_FALSE(start_without_memory());

    stop_headset_mgmt();

    EXPECT_TRUE(host.start());
}

}  // namespace
}  // namespace headsetmgmt::test_support
