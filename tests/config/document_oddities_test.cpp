// SPDX-License-Identifier: Apache-2.0
// Tests that odd numbers, characters and bytes in a document have known results: what is stored,
// and what the log says, to the byte.

#include <limits>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/config_bench.h"

namespace headsetmgmt::test_support {
namespace {

using namespace std::string_literals;

const std::string unparsed = "info HeadsetConfigImpl: update_from_server: ";

/// A document with one common setting of the given texts, each as it stands between the commas.
std::string with_parameter(const std::string& name, const std::string& usage_id,
                           const std::string& value) {
    return R"({"templateConfiguration":{"commonSettings":[{"name":)" + name + R"(,"usageId":)" +
           usage_id + R"(,"value":)" + value + R"(,"access":"Admin"}]}})";
}

/// The result of a document: the settings it leaves, and the line that reports the first one, or
/// the only line.
struct Outcome {
    Settings settings;
    std::string line;
};

bool operator==(const Outcome& left, const Outcome& right) {
    return left.settings == right.settings && left.line == right.line;
}

void PrintTo(const Outcome& outcome, std::ostream* stream) {
    *stream << testing::PrintToString(outcome.settings) << " " << outcome.line;
}

Outcome outcome_of(const std::string& text) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    EXPECT_FALSE(config.update_from_server(text));  // none of them has a firmware block
    const Lines lines = bench.lines();
    constexpr std::size_t place_of_first_setting = 5;
    return {settings_of(config), lines.at(lines.size() == 1 ? 0 : place_of_first_setting)};
}

Outcome outcome_of_number(const std::string& number) {
    return outcome_of(with_parameter(R"("n")", "1", number));
}

Outcome stored_as(const std::string& value) {
    return {{"1 n=" + value + " (Admin)"},
            "debug HeadsetConfigImpl: save_config_to_map: 1, key: n, value: " + value +
                ", access: Admin"};
}

Outcome refused_at(const std::string& rest) {
    return {{}, unparsed + rest + R"(,"access":"Admin"}]}})"};
}

TEST(DocumentNumbers, LargestAndSmallestAreHeldAtTheEndsOfAnInteger) {
    EXPECT_EQ(stored_as("2147483647"), outcome_of_number("1e999"));
    EXPECT_EQ(stored_as("-2147483648"), outcome_of_number("-1e999"));
    EXPECT_EQ(stored_as("2147483647"), outcome_of_number("9223372036854775808"));
    EXPECT_EQ(stored_as("-2147483648"), outcome_of_number("-9223372036854775809"));
    EXPECT_EQ(stored_as("2147483647"), outcome_of_number("2147483648"));
    EXPECT_EQ(stored_as("-2147483648"), outcome_of_number("-2147483649"));
    EXPECT_EQ(stored_as("2147483647"), outcome_of_number("1.7976931348623157e308"));
}

TEST(DocumentNumbers, SmallAndNegativeZeroAreZero) {
    EXPECT_EQ(stored_as("0"), outcome_of_number("-0"));
    EXPECT_EQ(stored_as("0"), outcome_of_number("-0.0"));
    EXPECT_EQ(stored_as("0"), outcome_of_number("1e-999"));
    EXPECT_EQ(stored_as("0"), outcome_of_number("-1e-999"));
    EXPECT_EQ(stored_as("0"), outcome_of_number("5e-324"));
    EXPECT_EQ(stored_as("0"), outcome_of_number("-0.999999"));
}

TEST(DocumentNumbers, LeadingZerosAndExponentsAreRead) {
    EXPECT_EQ(stored_as("17"), outcome_of_number("0017"));
    EXPECT_EQ(stored_as("1200"), outcome_of_number("12E+2"));
    EXPECT_EQ(stored_as("1"), outcome_of_number("100e-2"));
    EXPECT_EQ(stored_as("3"), outcome_of_number("3."));
}

TEST(DocumentNumbers, InvalidOnesRefuseTheDocument) {
    EXPECT_EQ(refused_at("-"), outcome_of_number("-"));
    EXPECT_EQ(refused_at("+1"), outcome_of_number("+1"));
    EXPECT_EQ(refused_at(".5"), outcome_of_number(".5"));
    EXPECT_EQ(refused_at("x10"), outcome_of_number("0x10"));
    EXPECT_EQ(refused_at("e"), outcome_of_number("1e"));
    EXPECT_EQ(refused_at(".3"), outcome_of_number("1.2.3"));
    EXPECT_EQ(refused_at("-2"), outcome_of_number("1-2"));
    EXPECT_EQ(refused_at("NaN"), outcome_of_number("NaN"));
    EXPECT_EQ(refused_at("Infinity"), outcome_of_number("Infinity"));
    EXPECT_EQ(refused_at("-inf"), outcome_of_number("-inf"));
}

TEST(DocumentNumbers, OfManyDigitsAreHeldAtTheEndOfAnIntegerOrRefuseTheDocument) {
    EXPECT_EQ(stored_as("2147483647"), outcome_of_number(std::string(63, '9')));
    // Releases of the parser differ in whether they read more characters than these.
    EXPECT_THAT(outcome_of_number(std::string(64, '9')),
                testing::AnyOf(stored_as("2147483647"), refused_at("9")));
    EXPECT_THAT(
        outcome_of_number(std::string(1000000, '9')),
        testing::AnyOf(stored_as("2147483647"), refused_at(std::string(1000000 - 63, '9'))));
}

TEST(DocumentNumbers, UsageIdsAreHeldAtTheEndsOfAnInteger) {
    EXPECT_EQ((Settings{"2147483647 n=v (Admin)"}),
              outcome_of(with_parameter(R"("n")", "1e999", R"("v")")).settings);
    EXPECT_EQ((Settings{"-2147483648 n=v (Admin)"}),
              outcome_of(with_parameter(R"("n")", "-9223372036854775808", R"("v")")).settings);
    EXPECT_EQ((Settings{"0 n=v (Admin)"}),
              outcome_of(with_parameter(R"("n")", "-0", R"("v")")).settings);
}

TEST(DocumentNumbers, UsageIdOfMoreDigitsThanAnIntegerKeepsItsLowestBits) {
    EXPECT_EQ((Settings{"-2147483648 n=v (Admin)"}),
              outcome_of(with_parameter(R"("n")", R"("2147483648")", R"("v")")).settings);
    EXPECT_EQ((Settings{"-1 n=v (Admin)"}),
              outcome_of(with_parameter(R"("n")", R"("9223372036854775807")", R"("v")")).settings);
    EXPECT_EQ((Settings{"-1 n=v (Admin)"}),
              outcome_of(with_parameter(R"("n")", '"' + std::string(1000000, '9') + '"', R"("v")"))
                  .settings);
}

TEST(DocumentNumbers, TimeIsKeptAsItIsReadAndComparedExactly) {
    struct Time {
        const char* text;
        double kept;
        const char* reported;
    };
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const Time& time : {Time{"1e999", infinity, "inf"}, Time{"-1e999", -infinity, "-inf"},
                             Time{"9223372036854775808", 9223372036854775808.0, "9.22337e+18"},
                             Time{"-0", 0.0, "-0"}, Time{"1e-999", 0.0, "0"}}) {
        ConfigBench bench;
        OpenConfig config("acc-1", &bench.accessory);

        config.update_from_server(R"({"templateConfiguration":{"updatedTime":)"s + time.text +
                                  "}}");

        EXPECT_EQ(time.kept, config.last_updated_time);
        EXPECT_EQ("info HeadsetConfigImpl: parse_remote_default_config: Updated time: "s +
                      time.reported,
                  bench.lines().at(4));
        EXPECT_FALSE(config.is_config_required("stamp-"s + time.text)) << time.text;
    }
}

TEST(DocumentTexts, EndAtAnEscapedNul) {
    EXPECT_EQ((Outcome{{"1 be=va (Admin)"},
                       "debug HeadsetConfigImpl: save_config_to_map: 0, key: be, value: va, "
                       "access: Admin"}),
              outcome_of(with_parameter(R"("be\u0000hind")", R"("1\u00002")", R"("va\u0000lue")")));
}

TEST(DocumentTexts, ThatBeginWithAnEscapedNulAreEmpty) {
    EXPECT_EQ((Outcome{{},
                       "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Parameter "
                       "extracted has missing KEY name. Cannot identify which parameter."}),
              outcome_of(with_parameter(R"("\u0000n")", "1", "2")));
    EXPECT_EQ(stored_as(""), outcome_of_number(R"("\u00002")"));
}

TEST(DocumentTexts, KeysEndAtAnEscapedNulToo) {
    EXPECT_EQ(stored_as("2"),
              outcome_of(R"({"templateConfiguration\u0000":{"commonSettings\u0000x":[)"
                         R"({"name\u0000":"n","usageId\u0000y":1,"value\u0000":2,)"
                         R"("access\u0000\u0000":"Admin"}]}})"));
}

TEST(DocumentTexts, RawNulEndsTheDocumentInsideAText) {
    EXPECT_EQ((Outcome{{}, unparsed + "v"}),
              outcome_of(with_parameter(R"("n")", "1", "\"v\0w\""s)));
}

TEST(DocumentTexts, RawNulBeforeTheFirstCharacterIsAnEmptyDocument) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.update_from_server("\0{}"s));

    EXPECT_EQ((Lines{unparsed}), bench.lines());
}

TEST(DocumentTexts, ControlCharactersAreKept) {
    EXPECT_EQ(stored_as("a\nb\tc\x01"), outcome_of_number("\"a\\nb\tc\x01\""));
}

TEST(DocumentTexts, BrokenUtf8IsPassedOnByteByByte) {
    EXPECT_EQ(stored_as("\x80"), outcome_of_number("\"\x80\""));
    EXPECT_EQ(stored_as("\xff\xfe"), outcome_of_number("\"\xff\xfe\""));
    EXPECT_EQ(stored_as("\xc3"), outcome_of_number("\"\xc3\""));                  // cut
    EXPECT_EQ(stored_as("\xc0\xaf"), outcome_of_number("\"\xc0\xaf\""));          // overlong
    EXPECT_EQ(stored_as("\xed\xa0\x80"), outcome_of_number("\"\xed\xa0\x80\""));  // surrogate
    EXPECT_EQ(stored_as("\xf8\x88\x80\x80\x80"), outcome_of_number("\"\xf8\x88\x80\x80\x80\""));
}

TEST(DocumentTexts, EscapesBecomeUtf8) {
    EXPECT_EQ(stored_as("\xc3\xa9"), outcome_of_number(R"("\u00e9")"));
    EXPECT_EQ(stored_as("\xe2\x82\xac"), outcome_of_number(R"("\u20AC")"));
    EXPECT_EQ(stored_as("\xf0\x9f\x8e\xa7"), outcome_of_number(R"("\ud83c\udfa7")"));
    EXPECT_EQ(stored_as("\xef\xbf\xbf"), outcome_of_number(R"("\uffff")"));
}

TEST(DocumentTexts, HalfSurrogatesAndUnknownEscapesRefuseTheDocument) {
    EXPECT_EQ(refused_at(R"(\ud800")"), outcome_of_number(R"("\ud800")"));
    EXPECT_EQ(refused_at(R"(\ude00")"), outcome_of_number(R"("\ude00")"));
    EXPECT_EQ(refused_at(R"(\ud83c\u0041")"), outcome_of_number(R"("\ud83c\u0041")"));
    EXPECT_EQ(refused_at(R"(\x41")"), outcome_of_number(R"("a\x41")"));
}

TEST(DocumentTexts, ByteOrderMarkOfUtf8IsPassedOver) {
    EXPECT_EQ(stored_as("2"), outcome_of("\xef\xbb\xbf" + with_parameter(R"("n")", "1", "2")));
}

TEST(DocumentTexts, OtherByteOrderMarksRefuseTheDocument) {
    for (const std::string& text :
         {"\xef\xbb\xbf\xef\xbb\xbf{}"s, "\xfe\xff{}"s, "\xef\xbb{}"s, " \xef\xbb\xbf{}"s}) {
        ConfigBench bench;
        OpenConfig config("acc-1", &bench.accessory);
        EXPECT_FALSE(config.update_from_server(text));
        ASSERT_EQ(1U, bench.lines().size());
    }
    EXPECT_EQ((Outcome{{}, unparsed + "\xef\xbb\xbf{}"}), outcome_of("\xef\xbb\xbf\xef\xbb\xbf{}"));
    EXPECT_EQ((Outcome{{}, unparsed + "\xff\xfe{"}), outcome_of("\xff\xfe{\0}\0"s));
}

}  // namespace
}  // namespace headsetmgmt::test_support
