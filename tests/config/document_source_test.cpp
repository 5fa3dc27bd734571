// SPDX-License-Identifier: Apache-2.0
// Tests of where a configuration object says that its document lies, and of whether a document has
// to be applied, by its time and by its version stamp.

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "support/config_bench.h"

namespace headsetmgmt::test_support {
namespace {

TEST(ConfigUrl, EmptyTemplateIsTheDefaultFile) {
    ConfigBench bench;
    const OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ("defaultheadsetconfig.json", config.get_config_url());
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: get_config_url: tokenized url: "}), bench.lines());
}

TEST(ConfigUrl, TemplateWithoutTokensStaysAsItIs) {
    ConfigBench bench;
    bench.plugins.system_info.config_url = "ftp://files/any thing{TFTP}{UserId}";
    bench.plugins.system_info.tftp_servers = {"10.0.0.1"};
    bench.plugins.system_info.user_id = "anna";
    const OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ("ftp://files/any thing{TFTP}{UserId}", config.get_config_url());
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: get_config_url: tokenized url: ftp://files/any "
                     "thing{TFTP}{UserId}"}),
              bench.lines());
}

TEST(ConfigUrl, EachRetryMovesOnToTheNextServer) {
    ConfigBench bench;
    bench.plugins.system_info.config_url = "http://{tftp}:6970/c.json";
    bench.plugins.system_info.tftp_servers = {"server-a", "server-b"};
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ("http://server-a:6970/c.json", config.get_config_url());
    config.set_config_retries(1);
    EXPECT_EQ("http://server-b:6970/c.json", config.get_config_url());
    EXPECT_EQ((Lines{
                  "info HeadsetConfigImpl: get_config_url: tokenized url: "
                  "http://{tftp}:6970/c.json",
                  "info HeadsetConfigImpl: get_config_url: tokenized url: "
                  "http://{tftp}:6970/c.json",
              }),
              bench.lines());
}

TEST(ConfigUrl, ServerWithAColonGetsBrackets) {
    ConfigBench bench;
    bench.plugins.system_info.config_url = "http://{tftp}/c.json";
    bench.plugins.system_info.tftp_servers = {"fe80::1", "host:69"};
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ("http://[fe80::1]/c.json", config.get_config_url());
    config.set_config_retries(1);
    EXPECT_EQ("http://[host:69]/c.json", config.get_config_url());
}

TEST(ConfigUrl, WithoutAServerNeitherTokenIsReplaced) {
    ConfigBench bench;
    bench.plugins.system_info.config_url = "http://{tftp}/{userid}/c.json";
    bench.plugins.system_info.user_id = "anna";
    const OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ("http://{tftp}/{userid}/c.json", config.get_config_url());
    EXPECT_EQ((Lines{
                  "info HeadsetConfigImpl: get_config_url: tokenized url: "
                  "http://{tftp}/{userid}/c.json",
                  "warning HeadsetConfigImpl: get_config_url[PLUGIN-ERR] no config servers found, "
                  "returning",
              }),
              bench.lines());
}

TEST(ConfigUrl, RetryPastTheLastServerFindsNone) {
    ConfigBench bench;
    bench.plugins.system_info.config_url = "http://{tftp}/c.json";
    bench.plugins.system_info.tftp_servers = {"server-a"};
    OpenConfig config("acc-1", &bench.accessory);

    config.set_config_retries(1);
    EXPECT_EQ("http://{tftp}/c.json", config.get_config_url());
    config.set_config_retries(-1);
    EXPECT_EQ("http://{tftp}/c.json", config.get_config_url());
}

TEST(ConfigUrl, UserIsPutInWithAndWithoutAServer) {
    ConfigBench bench;
    bench.plugins.system_info.tftp_servers = {"server-a"};
    bench.plugins.system_info.user_id = "anna";
    const OpenConfig config("acc-1", &bench.accessory);

    bench.plugins.system_info.config_url = "http://{tftp}/{userid}.json";
    EXPECT_EQ("http://server-a/anna.json", config.get_config_url());
    bench.plugins.system_info.config_url = "http://fixed/{userid}.json";
    EXPECT_EQ("http://fixed/anna.json", config.get_config_url());
}

TEST(ConfigUrl, EmptyUserLeavesNothing) {
    ConfigBench bench;
    bench.plugins.system_info.config_url = "http://fixed/{userid}.json";
    const OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ("http://fixed/.json", config.get_config_url());
}

TEST(ConfigUrl, OnlyTheFirstOfEachTokenIsReplaced) {
    ConfigBench bench;
    bench.plugins.system_info.config_url = "http://{tftp}/{userid}/{tftp}/{userid}";
    bench.plugins.system_info.tftp_servers = {"server-a"};
    bench.plugins.system_info.user_id = "anna";
    const OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ("http://server-a/anna/{tftp}/{userid}", config.get_config_url());
}

TEST(ConfigUrl, CallControlTokenIsNotItsBusiness) {
    ConfigBench bench;
    bench.plugins.system_info.config_url = "http://{korm}/c.json";
    bench.plugins.system_info.korm_servers = {"korm-a"};
    const OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ("http://{korm}/c.json", config.get_config_url());
}

TEST(ConfigUrl, IsMadeWithoutALock) {
    ConfigBench bench;
    bench.plugins.system_info.config_url = "http://{tftp}/c.json";
    const OpenConfig config("acc-1", &bench.accessory);
    int held = 0;
    int lines = 0;
    bench.plugins.log.hook = [&](const LogLine& /*line*/) {
        ++lines;
        held += bench.locks_held();
    };

    config.get_config_url();

    EXPECT_EQ(2, lines);
    EXPECT_EQ(0, held);
}

TEST(ConfigRequired, SameTimeNeedsNoConfiguring) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.last_updated_time = 170.5;

    EXPECT_FALSE(config.is_config_required(170.5));
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: is_config_required: Config time: 170.5, last "
                     "updated time: 170.5"}),
              bench.lines());
}

TEST(ConfigRequired, SmallestDifferenceMakesAnotherDocument) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.last_updated_time = 1.0;

    EXPECT_TRUE(config.is_config_required(1.0 + std::numeric_limits<double>::epsilon()));
    EXPECT_TRUE(config.is_config_required(0.5));
}

TEST(ConfigRequired, TimeThatIsNotANumberIsAlwaysDifferent) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();

    EXPECT_TRUE(config.is_config_required(nan));
    config.last_updated_time = nan;
    EXPECT_TRUE(config.is_config_required(nan));
    EXPECT_TRUE(config.is_config_required(0.0));
}

TEST(ConfigRequired, EmptyStampAlwaysConfigures) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_TRUE(config.is_config_required(std::string()));
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: is_config_required: No version timestamp to "
                     "compare, proceed with configure"}),
              bench.lines());
}

TEST(ConfigRequired, DifferentStampConfigures) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.last_updated_time = 100.0;

    EXPECT_TRUE(config.is_config_required(std::string("stamp-123.5")));
    EXPECT_EQ((Lines{
                  "notice HeadsetConfigImpl: is_config_required: Template updated time in epoch: "
                  "123.5",
                  "info HeadsetConfigImpl: is_config_required: Config time: 123.5, last updated "
                  "time: 100",
                  "notice HeadsetConfigImpl: is_config_required: Version timestamp is different, "
                  "proceed with configure",
              }),
              bench.lines());
}

TEST(ConfigRequired, SameStampDoesNotConfigure) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.last_updated_time = 123.5;

    EXPECT_FALSE(config.is_config_required(std::string("stamp-123.5")));
    EXPECT_EQ((Lines{
                  "notice HeadsetConfigImpl: is_config_required: Template updated time in epoch: "
                  "123.5",
                  "info HeadsetConfigImpl: is_config_required: Config time: 123.5, last updated "
                  "time: 123.5",
                  "notice HeadsetConfigImpl: is_config_required: Version timestamp is same, do "
                  "not configure",
              }),
              bench.lines());
}

TEST(ConfigRequired, StampWithoutAHyphenIsMalformed) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.is_config_required(std::string("abc")));
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: is_config_required[KORM-ERR]: Version timestamp is "
                     "incorrectly formatted. Do not configure."}),
              bench.lines());
}

TEST(ConfigRequired, StampWithNothingAfterItsHyphenIsMalformed) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.is_config_required(std::string("abc-")));
    EXPECT_FALSE(config.is_config_required(std::string("-")));
    EXPECT_EQ((Lines{
                  "info HeadsetConfigImpl: is_config_required[KORM-ERR]: Version timestamp is "
                  "incorrectly formatted. Do not configure.",
                  "info HeadsetConfigImpl: is_config_required[KORM-ERR]: Version timestamp is "
                  "incorrectly formatted. Do not configure.",
              }),
              bench.lines());
}

TEST(ConfigRequired, ZeroStampIsTheTimeOfAFreshObject) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.is_config_required(std::string("x-0")));
    EXPECT_TRUE(config.is_config_required(std::string("x-1")));
}

TEST(ConfigRequired, StampIsCutAtItsFirstHyphen) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    // What follows, "b-170", is no number and counts as 0.
    EXPECT_FALSE(config.is_config_required(std::string("a-b-170")));
    config.last_updated_time = 170.0;
    EXPECT_TRUE(config.is_config_required(std::string("a-b-170")));
}

TEST(ConfigRequired, StampMayHaveBlanksASignAFractionAnExponentAndJunk) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    config.last_updated_time = -125.0;
    EXPECT_FALSE(config.is_config_required(std::string("x-  -1.25e2 seconds")));
}

TEST(ConfigRequired, StampMayBeginWithItsHyphen) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.last_updated_time = 5.0;

    EXPECT_FALSE(config.is_config_required(std::string("-5")));
}

TEST(ConfigRequired, DocumentThatWasAppliedIsNotRequiredAgainUntilTheTimesAreReset) {
    ConfigBench bench;
    bench.accessory.model = "Varos K30";
    OpenConfig config("acc-1", &bench.accessory);
    ASSERT_TRUE(config.update_from_server(R"({"templateConfiguration": {
        "updatedTime": 1700,
        "modelSpecificSettings": [
            {"models": ["K30"], "modelFirmware": [{"firmwareName": "LATEST"}]}]}})"));

    EXPECT_FALSE(config.is_config_required(std::string("stamp-1700")));
    config.reset_timestamps();
    EXPECT_TRUE(config.is_config_required(std::string("stamp-1700")));
}

TEST(ConfigRequired, DocumentThatFailedIsNotRequiredAgainEither) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    ASSERT_FALSE(config.update_from_server(R"({"templateConfiguration": {"updatedTime": 1700}})"));

    EXPECT_FALSE(config.is_config_required(std::string("stamp-1700")));
}

}  // namespace
}  // namespace headsetmgmt::test_support
