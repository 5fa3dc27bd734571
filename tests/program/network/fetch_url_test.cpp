// SPDX-License-Identifier: Apache-2.0
// Tests of the URL that a fetch goes to.

#include <gtest/gtest.h>

#include "program/network/fetch_url.h"

namespace headsetmgmt::program {
namespace {

TEST(FetchUrl, OfHttpStaysAsItIs) {
    const auto target = fetch_url("http://h/a.json?model=K30", {"10.0.0.5"});
    ASSERT_TRUE(target);
    EXPECT_EQ("http://h/a.json?model=K30", target->url);
    EXPECT_EQ("", target->dropped_query);
}

TEST(FetchUrl, OfAFileNameLeadsToTheFirstTftpServer) {
    const auto target = fetch_url("a.json", {"10.0.0.5", "10.0.0.6"});
    ASSERT_TRUE(target);
    EXPECT_EQ("tftp://10.0.0.5/a.json", target->url);
}

TEST(FetchUrl, PutsAnIpv6ServerInBrackets) {
    const auto target = fetch_url("a.json", {"fd00::5"});
    ASSERT_TRUE(target);
    EXPECT_EQ("tftp://[fd00::5]/a.json", target->url);
}

TEST(FetchUrl, OfAFileNameWithoutATftpServerIsNone) {
    EXPECT_FALSE(fetch_url("a.json", {}));
}

TEST(FetchUrl, LosesItsQueryForTftpWhateverTheCapitals) {
    const auto target = fetch_url("TFTP://h/a.json?model=K30&page=1", {});
    ASSERT_TRUE(target);
    EXPECT_EQ("TFTP://h/a.json", target->url);
    EXPECT_EQ("?model=K30&page=1", target->dropped_query);
}

TEST(FetchUrl, OfAFileNameLosesItsQueryToo) {
    const auto target = fetch_url("a.json?model=K30", {"10.0.0.5"});
    ASSERT_TRUE(target);
    EXPECT_EQ("tftp://10.0.0.5/a.json", target->url);
    EXPECT_EQ("?model=K30", target->dropped_query);
}

}  // namespace
}  // namespace headsetmgmt::program
