// SPDX-License-Identifier: Apache-2.0
// Questions about texts: case, letters, names, numbers.

#include <clocale>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "headsetmgmt/utilities.h"

namespace {

bool is_number_text(std::string text) {
    char* const characters = text.data();
    return is_number<char*>(characters);
}

TEST(TextTest, ToLowerChangesCapitalsInPlace) {
    std::string text = "Varos K30 [LIB-ERR] {tftp} AZaz09";

    to_lower(text);

    EXPECT_EQ(text, "varos k30 [lib-err] {tftp} azaz09");
}

TEST(TextTest, ToLowerLeavesEveryOtherByte) {
    std::string others;
    for (int code = 0; code < 256; ++code) {
        if (code < 'A' || code > 'Z') {
            others.push_back(static_cast<char>(code));
        }
    }
    std::string text = others;

    to_lower(text);

    EXPECT_EQ(text, others);
}

TEST(TextTest, ToLowerOfEmptyTextIsEmpty) {
    std::string text;

    to_lower(text);

    EXPECT_EQ(text, "");
}

TEST(TextTest, CaseDoesNotCountWhenTextsAreCompared) {
    EXPECT_TRUE(equals_ignore_case("HEADSET", "headset"));
    EXPECT_TRUE(equals_ignore_case("hEaDsEt", "HeAdSeT"));
    EXPECT_TRUE(equals_ignore_case("", ""));
}

TEST(TextTest, DifferentTextsAreNotEqual) {
    EXPECT_FALSE(equals_ignore_case("HEADSET", "headsets"));
    EXPECT_FALSE(equals_ignore_case("HEADSET", "camera"));
    EXPECT_FALSE(equals_ignore_case("", "a"));
    EXPECT_FALSE(equals_ignore_case("@", "`"));
    EXPECT_FALSE(equals_ignore_case("[", "{"));
}

TEST(TextTest, TextsThatAreSameButForCaseAreOfOneLength) {
    EXPECT_TRUE(same_but_for_case("hEaDsEt", "HeAdSeT"));
    EXPECT_TRUE(same_but_for_case("", ""));
    EXPECT_FALSE(same_but_for_case("HEADSET", "headsets"));
    EXPECT_FALSE(same_but_for_case("headsets", "HEADSET"));
    EXPECT_FALSE(same_but_for_case("", "a"));
    EXPECT_FALSE(same_but_for_case("@", "`"));
    EXPECT_FALSE(same_but_for_case("[", "{"));
}

TEST(TextTest, ComparedTextsKeepTheirCase) {
    const std::string left = "HEADSET";
    const std::string right = "Headset";

    EXPECT_TRUE(equals_ignore_case(left, right));

    EXPECT_EQ(left, "HEADSET");
    EXPECT_EQ(right, "Headset");
}

TEST(TextTest, TextsWithZeroBytesAreComparedToTheirEnd) {
    EXPECT_FALSE(equals_ignore_case(std::string("a\0b", 3), std::string("a\0c", 3)));
    EXPECT_TRUE(equals_ignore_case(std::string("a\0b", 3), std::string("A\0B", 3)));
}

TEST(TextTest, OneLetterAnywhereMakesATextAlphabetic) {
    EXPECT_TRUE(is_alpha("9x"));
    EXPECT_TRUE(is_alpha("1a"));
    EXPECT_TRUE(is_alpha("a1"));
    EXPECT_TRUE(is_alpha("1-0-2Z"));
    EXPECT_TRUE(is_alpha("A"));
    EXPECT_TRUE(is_alpha("Z"));
    EXPECT_TRUE(is_alpha("a"));
    EXPECT_TRUE(is_alpha("z"));
}

TEST(TextTest, TextWithoutLetterIsNotAlphabetic) {
    EXPECT_FALSE(is_alpha("123"));
    EXPECT_FALSE(is_alpha("1-0-2"));
    EXPECT_FALSE(is_alpha("@[`{"));
    EXPECT_FALSE(is_alpha("\xC3\xA9"));
}

TEST(TextTest, EmptyTextIsNotAlphabetic) {
    EXPECT_FALSE(is_alpha(""));
}

TEST(TextTest, LettersDigitsAndMinusMakeASoundName) {
    EXPECT_FALSE(is_naming_corrupted("abc-12"));
    EXPECT_FALSE(is_naming_corrupted("-"));
    EXPECT_FALSE(is_naming_corrupted("AZaz09"));
}

TEST(TextTest, EmptyNameIsNotCorrupted) {
    EXPECT_FALSE(is_naming_corrupted(""));
}

TEST(TextTest, UnderscoreCorruptsAName) {
    EXPECT_TRUE(is_naming_corrupted("abc_12"));
}

TEST(TextTest, BlankCorruptsAName) {
    EXPECT_TRUE(is_naming_corrupted("a b"));
}

TEST(TextTest, AnyOtherByteCorruptsAName) {
    for (int code = 0; code < 256; ++code) {
        const char character = static_cast<char>(code);
        const bool sound = (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z') ||
                           (code >= 'a' && code <= 'z') || code == '-';
        EXPECT_EQ(is_naming_corrupted(std::string("a") + character), !sound) << code;
    }
}

TEST(TextTest, DigitsAloneAreANumber) {
    EXPECT_TRUE(is_number_text("0042"));
    EXPECT_TRUE(is_number_text("0123456789"));
    EXPECT_TRUE(is_number_text("99999999999999999999999999"));
}

TEST(TextTest, EmptyTextIsNotANumber) {
    EXPECT_FALSE(is_number_text(""));
}

TEST(TextTest, NullIsNotANumber) {
    char* const nothing = nullptr;

    EXPECT_FALSE(is_number<char*>(nothing));
}

TEST(TextTest, SignIsNotPartOfANumber) {
    EXPECT_FALSE(is_number_text("-1"));
    EXPECT_FALSE(is_number_text("+1"));
}

TEST(TextTest, PointBlankAndExponentAreNoPartsOfANumber) {
    EXPECT_FALSE(is_number_text("1.5"));
    EXPECT_FALSE(is_number_text("1 "));
    EXPECT_FALSE(is_number_text(" 1"));
    EXPECT_FALSE(is_number_text("1e5"));
    EXPECT_FALSE(is_number_text("/"));
    EXPECT_FALSE(is_number_text(":"));
}

TEST(TextTest, IntegersAreWrittenInDecimal) {
    EXPECT_EQ(stringconverter::to_string(0), "0");
    EXPECT_EQ(stringconverter::to_string(-42), "-42");
    EXPECT_EQ(stringconverter::to_string(std::numeric_limits<int>::max()), "2147483647");
    EXPECT_EQ(stringconverter::to_string(std::numeric_limits<int>::min()), "-2147483648");
}

TEST(TextTest, CharactersAreWrittenAsTheyStand) {
    char text[] = "+ 7 x";
    char* const characters = text;

    EXPECT_EQ(stringconverter::to_string(characters), "+ 7 x");
}

TEST(TextTest, NullCharactersAreWrittenAsNothing) {
    char* const nothing = nullptr;

    EXPECT_EQ(stringconverter::to_string(nothing), "");
}

TEST(TextTest, QuestionsLeaveTheProcessLocaleAsItWas) {
    const std::string before = std::setlocale(LC_ALL, nullptr);

    equals_ignore_case("HEADSET", "headset");
    is_alpha("9x");
    is_naming_corrupted("a b");

    EXPECT_EQ(std::string(std::setlocale(LC_ALL, nullptr)), before);
}

}  // namespace
