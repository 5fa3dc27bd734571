// SPDX-License-Identifier: Apache-2.0
// Which accessories may be moved to an older firmware.

#include <gtest/gtest.h>

#include "headsetmgmt/utilities.h"

#include "support/fake_accessory.h"

using headsetmgmt::test_support::FakeAccessory;

namespace {

TEST(DowngradeSupportTest, EveryAccessoryMayBeDowngraded) {
    FakeAccessory headset(headsetmgmt::HEADSET);
    FakeAccessory camera(headsetmgmt::CAMERA);
    camera.varos_vid = false;

    EXPECT_TRUE(headset_support_downgrade(&headset));
    EXPECT_TRUE(headset_support_downgrade(&camera));
}

TEST(DowngradeSupportTest, AccessoryIsIgnored) {
    EXPECT_TRUE(headset_support_downgrade(nullptr));
}

}  // namespace
