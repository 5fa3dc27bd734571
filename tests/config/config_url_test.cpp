// Tests of where a configuration object says that its document lies.

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

}  // namespace
}  // namespace headsetmgmt::test_support
