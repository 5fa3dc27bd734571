// SPDX-License-Identifier: Apache-2.0
// URL templates: which tokens are found and replaced, and how a server stands in a URL.

#include <string>

#include <gtest/gtest.h>

#include "metrics/url_templates.h"

using headsetmgmt::has_token;
using headsetmgmt::replace_token;
using headsetmgmt::server_in_url;

namespace {

TEST(UrlTemplatesTest, TokensAreSpelledWithTheirBraces) {
    EXPECT_STREQ(headsetmgmt::userid_token, "{userid}");
    EXPECT_STREQ(headsetmgmt::korm_token, "{korm}");
}

TEST(UrlTemplatesTest, TokenIsFoundWhereverItStands) {
    EXPECT_TRUE(has_token("{tftp}", "{tftp}"));
    EXPECT_TRUE(has_token("http://{tftp}/x.json", "{tftp}"));
    EXPECT_TRUE(has_token("http://server/{userid}", "{userid}"));
}

TEST(UrlTemplatesTest, TokenIsFoundOnlyAsWritten) {
    EXPECT_FALSE(has_token("http://{TFTP}/x.json", "{tftp}"));
    EXPECT_FALSE(has_token("http://tftp/x.json", "{tftp}"));
    EXPECT_FALSE(has_token("http://{ tftp}/x.json", "{tftp}"));
    EXPECT_FALSE(has_token("", "{tftp}"));
}

TEST(UrlTemplatesTest, TokenIsReplacedByTheText) {
    std::string url = "http://{tftp}:6970/{userid}.json";

    replace_token(url, "{tftp}", "tftp-a");

    EXPECT_EQ(url, "http://tftp-a:6970/{userid}.json");
}

TEST(UrlTemplatesTest, OnlyTheFirstOfTwoTokensIsReplaced) {
    std::string url = "http://{korm}/inventory?from={korm}";

    replace_token(url, "{korm}", "10.0.0.1");

    EXPECT_EQ(url, "http://10.0.0.1/inventory?from={korm}");
}

TEST(UrlTemplatesTest, EmptyTextTakesTheTokenOut) {
    std::string url = "http://server/{userid}/x.json";

    replace_token(url, "{userid}", "");

    EXPECT_EQ(url, "http://server//x.json");
}

TEST(UrlTemplatesTest, TextThatHoldsTheTokenIsNotReplacedAgain) {
    std::string url = "http://{tftp}/x.json";

    replace_token(url, "{tftp}", "{tftp}{tftp}");

    EXPECT_EQ(url, "http://{tftp}{tftp}/x.json");
}

TEST(UrlTemplatesTest, UrlWithoutTokenStaysAsItIs) {
    std::string url = "tftp://server/{TFTP}/x.json";

    replace_token(url, "{tftp}", "other");

    EXPECT_EQ(url, "tftp://server/{TFTP}/x.json");
}

TEST(UrlTemplatesTest, ServerNameStandsAsItIs) {
    EXPECT_EQ(server_in_url("tftp-a.example"), "tftp-a.example");
    EXPECT_EQ(server_in_url("10.0.0.1"), "10.0.0.1");
}

TEST(UrlTemplatesTest, AddressWithColonsStandsInBrackets) {
    EXPECT_EQ(server_in_url("fe80::1"), "[fe80::1]");
}

TEST(UrlTemplatesTest, ServerWithPortStandsInBracketsToo) {
    EXPECT_EQ(server_in_url("server:6970"), "[server:6970]");
}

TEST(UrlTemplatesTest, EmptyServerStaysEmpty) {
    EXPECT_EQ(server_in_url(""), "");
}

}  // namespace
