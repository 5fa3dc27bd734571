// SPDX-License-Identifier: Apache-2.0
// The URL that inventory reports are posted to: its token, its servers, its log lines.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "metrics/inventory_metric.h"
#include "support/fake_accessory.h"
#include "support/fake_plugins.h"

namespace headsetmgmt::metrics {

namespace {

using log::LogLevel;
using test_support::FakeAccessory;
using test_support::FakePlugins;
using test_support::LogLine;

class InventoryUrlTest : public testing::Test {
protected:
    std::string url_of(const std::string& url_template, const std::vector<std::string>& servers) {
        plugins.system_info.inventory_post_url = url_template;
        plugins.system_info.korm_servers = servers;
        const FakeAccessory headset;
        return HeadsetInventoryMetrics(&headset).get_post_url();
    }

    FakePlugins plugins;
};

TEST_F(InventoryUrlTest, EmptyTemplateYieldsAnEmptyUrlAndAnErrorLine) {
    EXPECT_EQ(url_of("", {"10.0.0.1"}), "");

    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: get_post_url tokenized url: "},
                  {LogLevel::error, "HeadsetInventoryMetricsImpl: get_post_url[PLUGIN-ERR] system "
                                    "info has no url for inventory"},
              }));
}

TEST_F(InventoryUrlTest, TemplateWithoutTokenIsReturnedUnchangedAfterItsLines) {
    EXPECT_EQ(url_of("https://inventory.example/r", {"10.0.0.1"}), "https://inventory.example/r");

    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: get_post_url tokenized url: "
                                     "https://inventory.example/r"},
                  {LogLevel::info, "HeadsetInventoryMetricsImpl: get_post_url target inventory "
                                   "url: https://inventory.example/r"},
              }));
}

TEST_F(InventoryUrlTest, TokenIsReplacedByTheFirstServer) {
    EXPECT_EQ(url_of("http://{korm}:8080/r", {"korm-a", "korm-b"}), "http://korm-a:8080/r");

    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: get_post_url tokenized url: "
                                     "http://{korm}:8080/r"},
                  {LogLevel::info, "HeadsetInventoryMetricsImpl: get_post_url target inventory "
                                   "url: http://korm-a:8080/r"},
              }));
}

TEST_F(InventoryUrlTest, TokenWithoutServersStaysAndIsLogged) {
    EXPECT_EQ(url_of("http://{korm}/r", {}), "http://{korm}/r");

    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: get_post_url tokenized url: "
                                     "http://{korm}/r"},
                  {LogLevel::warning, "HeadsetInventoryMetricsImpl: get_post_url[PLUGIN-ERR] no "
                                      "config servers found, returning"},
              }));
}

TEST_F(InventoryUrlTest, ServerWithAColonStandsInBrackets) {
    EXPECT_EQ(url_of("http://{korm}/r", {"fe80::1"}), "http://[fe80::1]/r");
    EXPECT_EQ(url_of("http://{korm}/r", {"korm-a:8080"}), "http://[korm-a:8080]/r");
}

TEST_F(InventoryUrlTest, OnlyTheFirstOfTwoTokensIsReplaced) {
    EXPECT_EQ(url_of("http://{korm}/r?from={korm}", {"korm-a"}), "http://korm-a/r?from={korm}");
}

TEST_F(InventoryUrlTest, TokensOfTheConfigurationUrlStay) {
    EXPECT_EQ(url_of("http://{tftp}/{userid}/{KORM}", {"korm-a"}), "http://{tftp}/{userid}/{KORM}");
}

TEST_F(InventoryUrlTest, EmptyFirstServerIsPutInAsItIs) {
    EXPECT_EQ(url_of("http://{korm}/r", {"", "korm-b"}), "http:///r");
}

}  // namespace

}  // namespace headsetmgmt::metrics
