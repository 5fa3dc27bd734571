// SPDX-License-Identifier: Apache-2.0
// Tests of URLs as they are shown.

#include <gtest/gtest.h>

#include "program/url_mask.h"

namespace headsetmgmt::program {
namespace {

TEST(MaskedUrl, HidesThePasswordAndNothingElse) {
    EXPECT_EQ("http://me:***@h/x?a=b#c", masked_url("http://me:word@h/x?a=b#c"));
    EXPECT_EQ("https://:***@h:8080", masked_url("https://:word@h:8080"));
    EXPECT_EQ("tftp://me:***@[::1]:69/x", masked_url("tftp://me:word@[::1]:69/x"));
    EXPECT_EQ("http:///me:***@h", masked_url("http:///me:word@h"));
}

TEST(MaskedUrl, HidesAPasswordWithColonsAtSignsAndBlanks) {
    EXPECT_EQ("http://me:***@h", masked_url("http://me:a:b@c d@h"));
}

TEST(MaskedUrl, HidesAPasswordThatIsNotCodedAsItShouldBe) {
    EXPECT_EQ("http://me:***@h/x", masked_url("http://me:a/b@h/x"));
    EXPECT_EQ("http://me:***@h/x", masked_url("http://me:a?b@h/x"));
    EXPECT_EQ("http://me:***@h/x", masked_url("http://me:a#b@h/x"));
    EXPECT_EQ("http://me:***@h/x", masked_url("http://me:a://b@h/x"));
}

TEST(MaskedUrl, HidesAPasswordWithoutAProtocol) {
    EXPECT_EQ("me:***@h/x", masked_url("me:word@h/x"));
    EXPECT_EQ("me:***@h", masked_url("me:word@h"));
}

TEST(MaskedUrl, OfAUrlWithoutAPasswordIsTheUrl) {
    EXPECT_EQ("http://me@h:8080/x", masked_url("http://me@h:8080/x"));
    EXPECT_EQ("http://h:8080/x?mail=a@b", masked_url("http://h:8080/x?mail=a@b"));
    EXPECT_EQ("http://h:/x@b", masked_url("http://h:/x@b"));
    EXPECT_EQ("http://[::1]:69/x@b", masked_url("http://[::1]:69/x@b"));
    EXPECT_EQ("http://h/a:b@c", masked_url("http://h/a:b@c"));
    EXPECT_EQ("http://h:99999x", masked_url("http://h:99999x"));
    EXPECT_EQ("http://", masked_url("http://"));
    EXPECT_EQ("x.json", masked_url("x.json"));
    EXPECT_EQ("", masked_url(""));
}

TEST(WithMaskedPasswords, HidesThoseOfEveryUrlInAText) {
    EXPECT_EQ("a http://me:***@h/x?to=http://you:***@i b https://h c:d@e",
              with_masked_passwords("a http://me:word@h/x?to=http://you:word@i b https://h c:d@e"));
    EXPECT_EQ("URL \"http://me:***@h\"\n", with_masked_passwords("URL \"http://me:a\"b@h\"\n"));
}

TEST(WithMaskedPasswords, LeavesATextWithoutAPassword) {
    EXPECT_EQ("", with_masked_passwords(""));
    EXPECT_EQ("a:b@c", with_masked_passwords("a:b@c"));
    EXPECT_EQ("get http://h:80 of a@b", with_masked_passwords("get http://h:80 of a@b"));
    EXPECT_EQ("://", with_masked_passwords("://"));
}

}  // namespace
}  // namespace headsetmgmt::program
