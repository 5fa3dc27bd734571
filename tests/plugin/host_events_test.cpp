// SPDX-License-Identifier: Apache-2.0
// What the plug-in object makes of the host's events.

#include <gtest/gtest.h>

#include "headsetmgmt/config_manager.h"
#include "headsetmgmt/plugins.h"

#include "plugin/phone_plugin_impl.h"
#include "support/phone_host.h"
#include "support/small_stack.h"

namespace headsetmgmt::test_support {
namespace {

using namespace std::string_literals;
using plugin::PhonePluginImpl;

/// The URL of the next fetch: a headset is attached for it and removed again.
std::string next_fetch_url(PhoneHost& host) {
    const std::size_t before = fake_host().http_requests().size();
    configure_headset(shared(headset_named("asks-for-the-url")));
    host.run_worker();
    remove_peripheral("asks-for-the-url");
    const std::vector<HttpRequestCall> requests = fake_host().http_requests();
    return requests.size() == before + 1 ? requests.back().url : "not one request";
}

/// The URL of the next inventory report.
std::string next_post_url(PhoneHost& host) {
    const std::size_t before = fake_host().http_requests().size();
    send_inventory(shared(headset_1()));
    host.run_worker();
    const std::vector<HttpRequestCall> requests = fake_host().http_requests();
    return requests.size() == before + 1 ? requests.back().url : "not one request";
}

/// Attaches the headset, which may be known already, and answers its fetch.
void configure_with(PhoneHost& host, const char* document) {
    configure_headset(shared(headset_1()));
    host.run_worker();
    httpResponse(document, 200);
}

bool set_url(const char* config_url) {
    return setHeadsetConfigUrl(config_url, "", "", nullptr, nullptr, "");
}

TEST(HostEventsTest, KeyToUsageIdKnowsTheSixNames) {
    PhonePluginImpl plugin;

    EXPECT_EQ(plugin.keyToUsageId("Speaker Volume"), 32);
    EXPECT_EQ(plugin.keyToUsageId("Microphone Gain"), 33);
    EXPECT_EQ(plugin.keyToUsageId("Sidetone"), 34);
    EXPECT_EQ(plugin.keyToUsageId("Equalizer"), 35);
    EXPECT_EQ(plugin.keyToUsageId("Audio Bandwidth"), 36);
    EXPECT_EQ(plugin.keyToUsageId("Bluetooth"), 39);
}

TEST(HostEventsTest, KeyToUsageIdComparesToTheLetter) {
    PhonePluginImpl plugin;

    EXPECT_EQ(plugin.keyToUsageId("sidetone"), 0);
    EXPECT_EQ(plugin.keyToUsageId("Sidetone "), 0);
    EXPECT_EQ(plugin.keyToUsageId("SpeakerVolume"), 0);
    EXPECT_EQ(plugin.keyToUsageId(""), 0);
}

TEST(HostEventsTest, EmptyConfigUrlKeepsTheEarlierOne) {
    PhoneHost host;
    host.start_up();

    EXPECT_TRUE(set_url("http://first"));
    EXPECT_TRUE(set_url(""));
    EXPECT_EQ(next_fetch_url(host), "http://first");

    EXPECT_TRUE(set_url("http://second"));
    EXPECT_EQ(next_fetch_url(host), "http://second");
}

TEST(HostEventsTest, LongUrlIsKeptWhole) {
    PhoneHost host;
    host.start_up();
    const std::string long_url = "http://" + std::string(5000, 'x');

    EXPECT_TRUE(set_url(long_url.c_str()));

    EXPECT_EQ(next_fetch_url(host), long_url);
}

TEST(HostEventsTest, ServiceUrlIsKeptForWhoeverAsks) {
    PhoneHost host;
    host.start_up();

    EXPECT_EQ(globals::plugins.system_info->get_metrics_service_info_url(), "https://service");
}

TEST(HostEventsTest, ServerGivenInTwoPlacesIsStoredOnce) {
    PhoneHost host;
    create_headset_mgmt(record_host_log_line);
    host.start();
    const char* tftp_servers[] = {"a", "a", "b"};
    const char* korm_servers[] = {"", "k", "k"};

    setHeadsetConfigUrl("{tftp}", "{korm}", "", tftp_servers, korm_servers, "");

    SystemInfoInterface* system_info = globals::plugins.system_info;
    EXPECT_EQ(system_info->get_tftp_server(0), "a");
    EXPECT_EQ(system_info->get_tftp_server(1), "b");
    EXPECT_EQ(system_info->get_tftp_server(2), "");
    EXPECT_EQ(system_info->get_korm_servers(), (std::vector<std::string>{"k"}));
}

TEST(HostEventsTest, ServersGivenLaterComeAfterTheEarlier) {
    PhoneHost host;
    host.start_up();
    const char* tftp_servers[] = {"later", "", ""};
    const char* korm_servers[] = {"later", "", ""};

    EXPECT_TRUE(setHeadsetConfigUrl("{tftp}", "{korm}", "", tftp_servers, korm_servers, ""));

    EXPECT_EQ(next_fetch_url(host), "[fe80::1]");
    EXPECT_EQ(next_post_url(host), "korm-1");
}

TEST(HostEventsTest, UserIdIsReplacedAndKept) {
    PhoneHost host;
    host.start_up();
    const char* none[] = {"", "", ""};
    set_url("http://{userid}");

    EXPECT_EQ(next_fetch_url(host), "http://4711");
    EXPECT_TRUE(setHeadsetConfigUrl("", "", "", none, none, "a-user-of-more-than-20-characters"));
    EXPECT_TRUE(setHeadsetConfigUrl("", "", "", none, none, ""));

    EXPECT_EQ(next_fetch_url(host), "http://a-user-of-more-than-20-characters");
}

TEST(HostEventsTest, AttachingBeforeTheStartSaysEnterAndAnswersFalse) {
    PhoneHost host;
    create_headset_mgmt(record_host_log_line);

    EXPECT_FALSE(configure_headset(shared(headset_1())));

    EXPECT_EQ(host.take(), (Lines{"log 5 PhonePluginImpl::configure_headset ENTER\n"}));
}

TEST(HostEventsTest, AccessoryThatIsNeitherHeadsetNorCameraIsNotConfigured) {
    PhoneHost host;
    host.start_up();
    AccessoryCache other = headset_1();
    other.accessory_type = 7;
    other.vendor_id = -1;

    EXPECT_FALSE(configure_headset(shared(other)));

    EXPECT_EQ(host.take(),
              (Lines{"log 5 PhonePluginImpl::configure_headset ENTER\n",
                     "log 5 PhonePluginImpl::configure_headset Accessory Info:\n"
                     "type:OTHER\nid:headset-1\nvendor:Varos\nvendor id:-1\nmodel:Varos K30\n"
                     "serial number:SN1234567\nsw ver:1-0-2\nhw ver:B\ndock model:\n"
                     "dock serial number:\ndongle model:\ndongle serial number:\ndongle version:\n"
                     "connection type:usb\nconnection status:connected\n\n",
                     "log 5 Lib::ConfigManagerImpl: initialize_accessory: called for id: headset-1",
                     "log 5 Lib::ConfigManagerImpl: get_config_object: Cannot find config object",
                     "log 5 Lib::ConfigManagerImpl: create_accessory: Creating Config object for "
                     "id: headset-1",
                     "log 5 ConfigFactory: ::create_config: Unknown accessory type",
                     "log 5 Lib::ConfigManagerImpl: create_accessory: failed to create Config "
                     "object"}));
}

TEST(HostEventsTest, Status404ReachesTheFailureOperation) {
    PhoneHost host;
    host.start_up();

    httpResponse("not looked at", 404);

    EXPECT_EQ(host.take(),
              (Lines{"log 5 Lib::ConfigManagerImpl: on_fetch_config_failure reason code: 404",
                     "log 5 Lib::ConfigManagerImpl: on_fetch_config_failure: no configuration in "
                     "progress, dropping data"}));
}

TEST(HostEventsTest, EveryStatusBut200IsAFailure) {
    PhoneHost host;
    host.start_up();

    for (const int status : {0, -1, 199, 201, 304}) {
        httpResponse("", status);
        const Lines lines = host.take();
        ASSERT_EQ(lines.size(), 2U);
        EXPECT_EQ(lines.front(), "log 5 Lib::ConfigManagerImpl: on_fetch_config_failure reason "
                                 "code: " +
                                     std::to_string(status));
    }
}

TEST(HostEventsTest, Status200HandsTheBodyToTheSuccessOperation) {
    PhoneHost host;
    host.start_up();
    configure_headset(shared(headset_1()));
    host.run_worker();
    host.take();

    httpResponse("{", 200);

    const Lines lines = host.take();
    ASSERT_EQ(lines.size(), 4U);
    // The parser's error text is a rest of the body.
    EXPECT_EQ(lines[0].rfind("log 5 HeadsetConfigImpl: update_from_server: ", 0), 0U);
    EXPECT_EQ(lines[1], "log 5 Lib::ConfigManagerImpl: on_fetch_config_success: unable to update "
                        "config retrieved from server in library");
    EXPECT_EQ(lines[2], "log 5 Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER");
    EXPECT_EQ(lines[3], "log 5 Lib::ConfigManagerImpl: on_fetch_config_successExit");
}

TEST(HostEventsTest, TextsOfADocumentArriveByteByByte) {
    PhoneHost host;
    host.start_up();

    configure_with(host,
                   "{\"templateConfiguration\": {\"modelSpecificSettings\": [{"
                   "\"models\": [\"K30\"], \"modelFirmware\": [{"
                   "\"firmwareName\": \"../../k30\\n\x1b[2J\", \"firmwareVersion\": \"2-0-1\","
                   "\"firmwareParams\": [{\"name\": \"\x1b]0;a\x07\\u0008\", \"usageId\": 34, "
                   "\"value\": \"../\r\n\xff\", \"access\": \"Admin\"}]}]}]}}");

    EXPECT_EQ(fake_host().applied_changes(),
              (std::vector<ApplyChangesCall>{{"headset-1", "\x1b]0;a\x07\b", 34, "../\r\n\xff"}}));
    EXPECT_EQ(fake_host().firmware_upgrades(),
              (std::vector<FirmwareUpgradeCall>{{"headset-1", "2-0-1", "../../k30\n\x1b[2J"}}));
}

TEST(HostEventsTest, SettingsOfEveryDocumentAddUpUntilTheAccessoryIsRemoved) {
    constexpr char document_with_equalizer[] = R"({"templateConfiguration": {
        "modelSpecificSettings": [{"models": ["K30"], "modelFirmware": [
            {"firmwareName": "k30.bin", "firmwareVersion": "Current", "firmwareParams": [
                {"name": "Equalizer", "usageId": 35, "value": "flat", "access": "Admin"}]}]}]}})";
    const ApplyChangesCall sidetone = {"headset-1", "Sidetone", 34, "2"};
    const ApplyChangesCall equalizer = {"headset-1", "Equalizer", 35, "flat"};
    PhoneHost host;
    host.start_up();

    configure_with(host, document_with_sidetone);
    configure_with(host, document_with_equalizer);
    remove_peripheral("headset-1");
    configure_with(host, document_with_equalizer);

    EXPECT_EQ(fake_host().applied_changes(),
              (std::vector<ApplyChangesCall>{sidetone, sidetone, equalizer, equalizer}));
}

TEST(HostEventsTest, DocumentOf990LevelsIsTakenOnASmallStack) {
    constexpr int levels = 986;  // and four around them
    const std::string document = R"({"templateConfiguration": {"commonSettings": [{"value": )" +
                                 std::string(levels, '[') + std::string(levels, ']') + R"(}],
        "modelSpecificSettings": [{"models": ["K30"], "modelFirmware": [
            {"firmwareName": "k30.bin", "firmwareVersion": "Current", "firmwareParams": [
                {"name": "Sidetone", "usageId": 34, "value": 2, "access": "Admin"}]}]}]}})";
    PhoneHost host;
    host.start_up();
    configure_headset(shared(headset_1()));
    host.run_worker();

    on_a_small_stack([&] { httpResponse(document.c_str(), 200); });

    EXPECT_EQ(fake_host().applied_changes(),
              (std::vector<ApplyChangesCall>{{"headset-1", "Sidetone", 34, "2"}}));
}

TEST(HostEventsTest, AnswersBeforeTheStartAreIgnored) {
    PhoneHost host;
    create_headset_mgmt(record_host_log_line);

    httpResponse(document_with_sidetone, 200);
    httpResponse("", 404);

    EXPECT_EQ(host.take(), Lines{});
}

TEST(HostEventsTest, FactoryResetBeforeTheStartAnswersFalse) {
    PhoneHost host;
    create_headset_mgmt(record_host_log_line);

    EXPECT_FALSE(factory_reset("headset-1"));

    EXPECT_EQ(host.take(), Lines{});
}

TEST(HostEventsTest, FactoryResetOfAnUnknownAccessoryAnswersFalse) {
    PhoneHost host;
    host.start_up();

    EXPECT_FALSE(factory_reset("nobody"));

    EXPECT_EQ(host.take(),
              (Lines{"log 5 Lib::ConfigManagerImpl: reset_to_admin_defaults: ENTER",
                     "log 5 Lib::ConfigManagerImpl: get_config_object: Cannot find config object",
                     "log 5 Lib::ConfigManagerImpl: reset_to_admin_defaults: Config object of this "
                     "type does not exist"}));
}

TEST(HostEventsTest, RemovingAnUnknownAccessoryAnswersTrue) {
    PhoneHost host;
    host.start_up();

    EXPECT_TRUE(remove_peripheral("nobody"));

    EXPECT_EQ(host.take(), (Lines{"log 5 PhonePluginImpl::removePeripheral ENTER\n",
                                  "log 5 Lib::ConfigManagerImpl: remove_accessory: ENTER"}));
}

TEST(HostEventsTest, RemovedAccessoryIsForgotten) {
    PhoneHost host;
    host.start_up();
    configure_headset(shared(headset_1()));

    EXPECT_TRUE(remove_peripheral("headset-1"));

    EXPECT_FALSE(factory_reset("headset-1"));
}

TEST(HostEventsTest, IdWithANulIsTheWholeKeyAndTheHostGetsItUpToTheNul) {
    PhoneHost host;
    host.start_up();

    EXPECT_TRUE(configure_headset(shared(headset_named("headset\0-1"s))));
    EXPECT_EQ("log 5 PhonePluginImpl::configure_headset Accessory Info:\ntype:HEADSET\nid:headset",
              host.take().at(1));
    host.run_worker();
    httpResponse(document_with_sidetone, 200);

    ASSERT_EQ(fake_host().applied_changes().size(), 1U);
    EXPECT_EQ(fake_host().applied_changes().at(0).device_id, "headset");
    EXPECT_FALSE(factory_reset("headset"));
    EXPECT_TRUE(config::create_config_manager()->reset_to_admin_defaults("headset\0-1"s));
}

TEST(HostEventsTest, SerialNumberThatBeginsWithANulCountsAndIsReportedEmpty) {
    PhoneHost host;
    host.start_up();
    AccessoryCache record = headset_1();
    record.serial_number = "\0SN"s;

    send_inventory(shared(record));
    host.run_worker();

    ASSERT_EQ(fake_host().http_requests().size(), 1U);
    EXPECT_NE(fake_host().http_requests().at(0).body->find(
                  "\"headset\":\t{\n\t\t\t\"serialNumber\":\t\"\","),
              std::string::npos);
}

TEST(HostEventsTest, NegativeAccessoryTypeHasNoReport) {
    PhoneHost host;
    host.start_up();
    AccessoryCache other = headset_1();
    other.accessory_type = -5;

    send_inventory(shared(other));

    const Lines lines = host.take();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[1],
              "log 5 PhonePluginImpl::sendInventory metrics factory: Unsupported METRICS_TYPE: \n");
}

}  // namespace
}  // namespace headsetmgmt::test_support
