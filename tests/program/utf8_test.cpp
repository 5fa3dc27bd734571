// SPDX-License-Identifier: Apache-2.0
// Tests of texts in UTF-8.

#include <string>

#include <gtest/gtest.h>

#include "program/utf8.h"

namespace headsetmgmt::program {
namespace {

TEST(Shortened, TextOfTwoHundredBytesIsWhole) {
    EXPECT_EQ("", shortened(""));
    EXPECT_EQ(std::string(200, 'a'), shortened(std::string(200, 'a')));
}

TEST(Shortened, LongerTextIsCutAndItsLengthAdded) {
    EXPECT_EQ(std::string(200, 'a') + "... (201 bytes)", shortened(std::string(201, 'a')));
    EXPECT_EQ(std::string(200, 'a') + "... (4000000 bytes)", shortened(std::string(4000000, 'a')));
}

TEST(Shortened, CutSplitsNoCharacter) {
    EXPECT_EQ(std::string(199, 'a') + "... (202 bytes)",
              shortened(std::string(199, 'a') + "\xc3\xa9" + "b"));
}

}  // namespace
}  // namespace headsetmgmt::program
