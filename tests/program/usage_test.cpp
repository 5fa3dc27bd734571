// SPDX-License-Identifier: Apache-2.0
// Tests of what is taken as an option's value.

#include <gtest/gtest.h>

#include "program/usage.h"

namespace headsetmgmt::program {
namespace {

TEST(Usage, TextIsAnythingButAnOption) {
    const CLI::Validator url = text("a URL");

    EXPECT_EQ("", url("http://h"));
    EXPECT_EQ("", url(""));
    EXPECT_EQ("", url("-1"));
    EXPECT_EQ("expected a URL, found the option \"--json\"", url("--json"));
}

TEST(Usage, TextThatMustNotBeEmpty) {
    const CLI::Validator file = non_empty_text("a file");

    EXPECT_EQ("", file("bench.json"));
    EXPECT_EQ("expected a file, found \"\"", file(""));
    EXPECT_EQ("expected a file, found the option \"--json\"", file("--json"));
}

TEST(Usage, WholeNumberIsWrittenInDecimalDigits) {
    const CLI::Validator bytes = whole_number("a whole number of bytes", 0, 4096);

    EXPECT_EQ("", bytes("0"));
    EXPECT_EQ("", bytes("4096"));
    EXPECT_EQ("expected a whole number of bytes, 0 to 4096, found \"4097\"", bytes("4097"));
    EXPECT_EQ("expected a whole number of bytes, 0 to 4096, found \"-1\"", bytes("-1"));
    EXPECT_EQ("expected a whole number of bytes, 0 to 4096, found \"1.5\"", bytes("1.5"));
    EXPECT_EQ("expected a whole number of bytes, 0 to 4096, found \"4M\"", bytes("4M"));
    EXPECT_EQ("expected a whole number of bytes, 0 to 4096, found \"\"", bytes(""));
    EXPECT_EQ("expected a whole number of bytes, 0 to 4096, found \"010\"", bytes("010"));
    EXPECT_EQ("expected a whole number of bytes, 0 to 4096, found \"99999999999999999999\"",
              bytes("99999999999999999999"));
    EXPECT_EQ("expected a whole number of bytes, found the option \"--json\"", bytes("--json"));
}

TEST(Usage, WholeNumberHasASmallestOne) {
    EXPECT_EQ("expected a whole number, 1 to 5, found \"0\"",
              whole_number("a whole number", 1, 5)("0"));
}

TEST(Usage, DecimalNumberMayHaveAFraction) {
    const CLI::Validator seconds = decimal_number("a number of seconds", 0.001, 86400);

    EXPECT_EQ("", seconds("0.001"));
    EXPECT_EQ("", seconds("30"));
    EXPECT_EQ("expected a number of seconds, 0.001 to 86400, found \"0\"", seconds("0"));
    EXPECT_EQ("expected a number of seconds, 0.001 to 86400, found \"86400.5\"",
              seconds("86400.5"));
    EXPECT_EQ("expected a number of seconds, 0.001 to 86400, found \"nan\"", seconds("nan"));
    EXPECT_EQ("expected a number of seconds, 0.001 to 86400, found \"5s\"", seconds("5s"));
}

}  // namespace
}  // namespace headsetmgmt::program
