// SPDX-License-Identifier: Apache-2.0
// Shared enumerations: fixed values, and the words for accessory types.

#include <type_traits>

#include <gtest/gtest.h>

#include "headsetmgmt/phone/host_types.h"
#include "headsetmgmt/types.h"

using headsetmgmt::ACCESSORY_TYPE;

namespace {

static_assert(sizeof(ACCESSORY_TYPE) == 4);
static_assert(sizeof(headsetmgmt::RequestStatus) == 4);
static_assert(sizeof(CONFIG_SETTING_USAGE_ID) == 4);
static_assert(sizeof(HttpRequestType) == 4);

TEST(TypesTest, AccessoryTypesHaveTheirFixedValues) {
    EXPECT_EQ(headsetmgmt::UNKNOWN, 0);
    EXPECT_EQ(headsetmgmt::HEADSET, 1);
    EXPECT_EQ(headsetmgmt::CAMERA, 2);
    EXPECT_EQ(headsetmgmt::MAX_ACCESSORY_TYPE, 3);
}

TEST(TypesTest, RequestStatusesHaveTheirFixedValues) {
    EXPECT_EQ(headsetmgmt::REQUEST_DONE, 0);
    EXPECT_EQ(headsetmgmt::REQUEST_REFUSED, 1);
    EXPECT_EQ(headsetmgmt::REQUEST_PENDING, 2);
}

TEST(TypesTest, UsageIdsHaveTheirFixedValues) {
    EXPECT_EQ(USAGE_SPEAKER_VOLUME, 32);
    EXPECT_EQ(USAGE_MICROPHONE_GAIN, 33);
    EXPECT_EQ(USAGE_SIDETONE, 34);
    EXPECT_EQ(USAGE_EQUALIZER, 35);
    EXPECT_EQ(USAGE_AUDIO_BANDWIDTH, 36);
    EXPECT_EQ(USAGE_BLUETOOTH, 39);
}

TEST(TypesTest, HttpRequestTypesHaveTheirFixedValues) {
    EXPECT_EQ(HTTP_REQUEST_GET, 0);
    EXPECT_EQ(HTTP_REQUEST_POST, 2);
}

TEST(TypesTest, EveryAccessoryTypeHasItsWord) {
    EXPECT_EQ(accessory_type_to_string(headsetmgmt::UNKNOWN), "UNKNOWN");
    EXPECT_EQ(accessory_type_to_string(headsetmgmt::HEADSET), "HEADSET");
    EXPECT_EQ(accessory_type_to_string(headsetmgmt::CAMERA), "CAMERA");
}

TEST(TypesTest, TypeThreePrintsAsMaxAccessoryType) {
    EXPECT_EQ(accessory_type_to_string(static_cast<ACCESSORY_TYPE>(3)), "MAX_ACCESSORY_TYPE");
}

TEST(TypesTest, TypeSevenPrintsAsOther) {
    EXPECT_EQ(accessory_type_to_string(static_cast<ACCESSORY_TYPE>(7)), "OTHER");
}

TEST(TypesTest, NegativeTypePrintsAsOther) {
    EXPECT_EQ(accessory_type_to_string(static_cast<ACCESSORY_TYPE>(-1)), "OTHER");
}

}  // namespace
