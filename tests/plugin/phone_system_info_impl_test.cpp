// SPDX-License-Identifier: Apache-2.0
// The phone's facts: constants, the host's answers, and what the host set.

#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/phone_system_info_impl.h"
#include "support/fake_host.h"

using headsetmgmt::config::PhoneSystemInfoImpl;
using headsetmgmt::test_support::FakeHost;
using headsetmgmt::test_support::fresh_fake_host;
using headsetmgmt::test_support::HostBehaviour;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(PhoneSystemInfoImplTest, ConstantsHaveTheirValues) {
    PhoneSystemInfoImpl info;

    EXPECT_EQ(info.get_host_client_type(), "Orvik-VDI");
    EXPECT_EQ(info.get_host_device_name(), "TRMXXXXXXXX");
    EXPECT_EQ(info.get_host_model(), "TRM");
    EXPECT_EQ(info.get_host_hardware_version(), "host HW model unknown");
    EXPECT_EQ(info.get_persistent_storage_location(), "./");
    EXPECT_EQ(info.to_string(), "");
}

TEST(PhoneSystemInfoImplTest, DataAreAlwaysReady) {
    EXPECT_TRUE(PhoneSystemInfoImpl().data_ready());
}

TEST(PhoneSystemInfoImplTest, ConstantsDoNotAskTheHost) {
    const FakeHost& host = fresh_fake_host();
    PhoneSystemInfoImpl info;

    info.get_host_client_type();
    info.get_host_device_name();
    info.get_host_model();
    info.get_host_hardware_version();
    info.get_persistent_storage_location();

    EXPECT_EQ(host.facts_asked(), 0);
}

TEST(PhoneSystemInfoImplTest, HostAnswersSerialNumberAndVersions) {
    FakeHost& host = fresh_fake_host();
    HostBehaviour behaviour;
    behaviour.serial_number = "SN-1";
    behaviour.os_version = "OS-2";
    behaviour.orvik_version = "ORVIK-3";
    host.behave(behaviour);
    PhoneSystemInfoImpl info;

    EXPECT_EQ(info.get_host_serial_number(), "SN-1");
    EXPECT_EQ(info.get_host_os_version(), "OS-2");
    EXPECT_EQ(info.get_host_software_version(), "ORVIK-3");
}

TEST(PhoneSystemInfoImplTest, SerialNumberIsAskedAnewEachTime) {
    FakeHost& host = fresh_fake_host();
    HostBehaviour behaviour;
    behaviour.serial_number = "before";
    host.behave(behaviour);
    PhoneSystemInfoImpl info;
    EXPECT_EQ(info.get_host_serial_number(), "before");

    behaviour.serial_number = "after";
    host.behave(behaviour);

    EXPECT_EQ(info.get_host_serial_number(), "after");
}

TEST(PhoneSystemInfoImplTest, VersionsAreAskedAnewEachTime) {
    FakeHost& host = fresh_fake_host();
    PhoneSystemInfoImpl info;
    EXPECT_EQ(info.get_host_os_version(), "os-1");
    EXPECT_EQ(info.get_host_software_version(), "orvik-1");

    HostBehaviour behaviour;
    behaviour.os_version = "os-2";
    behaviour.orvik_version = "orvik-2";
    host.behave(behaviour);

    EXPECT_EQ(info.get_host_os_version(), "os-2");
    EXPECT_EQ(info.get_host_software_version(), "orvik-2");
    EXPECT_EQ(host.facts_asked(), 4);
}

TEST(PhoneSystemInfoImplTest, HostAnswersAreCopiedAtOnce) {
    fresh_fake_host();
    PhoneSystemInfoImpl info;

    const std::string serial_number = info.get_host_serial_number();
    const std::string os_version = info.get_host_os_version();

    EXPECT_EQ(serial_number, "PHONE-SERIAL");
    EXPECT_EQ(os_version, "os-1");
}

TEST(PhoneSystemInfoImplTest, NullFromTheHostCountsAsEmpty) {
    FakeHost& host = fresh_fake_host();
    HostBehaviour behaviour;
    behaviour.serial_number = std::nullopt;
    behaviour.os_version = std::nullopt;
    behaviour.orvik_version = std::nullopt;
    host.behave(behaviour);
    PhoneSystemInfoImpl info;

    EXPECT_EQ(info.get_host_serial_number(), "");
    EXPECT_EQ(info.get_host_os_version(), "");
    EXPECT_EQ(info.get_host_software_version(), "");
    EXPECT_EQ(host.facts_asked(), 3);
}

TEST(PhoneSystemInfoImplTest, NothingIsKnownAtFirst) {
    PhoneSystemInfoImpl info;

    EXPECT_EQ(info.get_config_url(), "");
    EXPECT_EQ(info.get_inventory_post_url(), "");
    EXPECT_EQ(info.get_metrics_service_info_url(), "");
    EXPECT_EQ(info.get_host_user_id(), "");
    EXPECT_EQ(info.getUserId(), "");
    EXPECT_THAT(info.get_korm_servers(), IsEmpty());
}

TEST(PhoneSystemInfoImplTest, NoServerIsAtIndexZeroAtFirst) {
    PhoneSystemInfoImpl info;

    EXPECT_EQ(info.get_tftp_server(0), "");
    EXPECT_EQ(info.get_korm_server(0), "");
}

TEST(PhoneSystemInfoImplTest, EachUrlIsKeptInItsOwnPlace) {
    PhoneSystemInfoImpl info;

    info.setConfigUrl("http://{tftp}/c");
    info.setInventoryPostUrl("http://{korm}/i");
    info.setServiceUrl("http://service/s");
    info.setUserId("user-1");

    EXPECT_EQ(info.get_config_url(), "http://{tftp}/c");
    EXPECT_EQ(info.get_inventory_post_url(), "http://{korm}/i");
    EXPECT_EQ(info.get_metrics_service_info_url(), "http://service/s");
    EXPECT_EQ(info.get_host_user_id(), "user-1");
    EXPECT_EQ(info.getUserId(), "user-1");
}

TEST(PhoneSystemInfoImplTest, WhatIsGivenAgainReplacesWhatWasGivenBefore) {
    PhoneSystemInfoImpl info;
    info.setConfigUrl("old-c");
    info.setInventoryPostUrl("old-i");
    info.setServiceUrl("old-s");
    info.setUserId("old-u");

    info.setConfigUrl("new-c");
    info.setInventoryPostUrl("new-i");
    info.setServiceUrl("new-s");
    info.setUserId("");

    EXPECT_EQ(info.get_config_url(), "new-c");
    EXPECT_EQ(info.get_inventory_post_url(), "new-i");
    EXPECT_EQ(info.get_metrics_service_info_url(), "new-s");
    EXPECT_EQ(info.get_host_user_id(), "");
}

TEST(PhoneSystemInfoImplTest, TftpServersKeepTheOrderOfTheirFirstAdditionWithoutDuplicates) {
    PhoneSystemInfoImpl info;

    info.addTftpServer("a");
    info.addTftpServer("b");
    info.addTftpServer("a");

    EXPECT_EQ(info.get_tftp_server(0), "a");
    EXPECT_EQ(info.get_tftp_server(1), "b");
    EXPECT_EQ(info.get_tftp_server(2), "");
}

TEST(PhoneSystemInfoImplTest, SameTftpServerTwiceIsOneEntry) {
    PhoneSystemInfoImpl info;

    info.addTftpServer("a");
    info.addTftpServer("a");

    EXPECT_EQ(info.get_tftp_server(0), "a");
    EXPECT_EQ(info.get_tftp_server(1), "");
}

TEST(PhoneSystemInfoImplTest, CallControlServersKeepTheirOrderWithoutDuplicates) {
    PhoneSystemInfoImpl info;

    info.addKormServer("k2");
    info.addKormServer("k1");
    info.addKormServer("k2");
    info.addKormServer("K2");

    EXPECT_THAT(info.get_korm_servers(), ElementsAre("k2", "k1", "K2"));
    EXPECT_EQ(info.get_korm_server(0), "k2");
    EXPECT_EQ(info.get_korm_server(1), "k1");
    EXPECT_EQ(info.get_korm_server(2), "K2");
}

TEST(PhoneSystemInfoImplTest, ServersAreComparedExactly) {
    PhoneSystemInfoImpl info;

    info.addTftpServer("server");
    info.addTftpServer("Server");
    info.addTftpServer("server ");

    EXPECT_EQ(info.get_tftp_server(1), "Server");
    EXPECT_EQ(info.get_tftp_server(2), "server ");
}

TEST(PhoneSystemInfoImplTest, IndexPastTheLastServerAnswersEmpty) {
    PhoneSystemInfoImpl info;
    info.addTftpServer("a");
    info.addKormServer("k");

    EXPECT_EQ(info.get_tftp_server(1), "");
    EXPECT_EQ(info.get_tftp_server(4294967295U), "");
    EXPECT_EQ(info.get_korm_server(1), "");
    EXPECT_EQ(info.get_korm_server(4294967295U), "");
}

TEST(PhoneSystemInfoImplTest, TheTwoListsAreSeparate) {
    PhoneSystemInfoImpl info;

    info.addTftpServer("t");
    info.addKormServer("k");

    EXPECT_EQ(info.get_tftp_server(0), "t");
    EXPECT_EQ(info.get_tftp_server(1), "");
    EXPECT_THAT(info.get_korm_servers(), ElementsAre("k"));
}

TEST(PhoneSystemInfoImplTest, ListOfServersIsACopy) {
    PhoneSystemInfoImpl info;
    info.addKormServer("k");
    std::vector<std::string> servers = info.get_korm_servers();

    servers.clear();

    EXPECT_THAT(info.get_korm_servers(), ElementsAre("k"));
}

TEST(PhoneSystemInfoImplTest, FactsMayBeSetWhileOtherThreadsRead) {
    constexpr int rounds = 500;
    PhoneSystemInfoImpl info;
    std::vector<std::thread> threads;
    for (int writer = 0; writer < 2; ++writer) {
        threads.emplace_back([&info, writer] {
            const std::string mark = std::to_string(writer);
            for (int round = 0; round < rounds; ++round) {
                info.setConfigUrl("http://a-rather-long-configuration-server-" + mark);
                info.setInventoryPostUrl("http://a-rather-long-inventory-server-" + mark);
                info.setServiceUrl("http://a-rather-long-service-server-" + mark);
                info.setUserId("a-rather-long-user-id-" + mark);
                info.addTftpServer("tftp-" + std::to_string(round % 20));
                info.addKormServer("korm-" + std::to_string(round % 20));
            }
        });
    }
    for (int reader = 0; reader < 2; ++reader) {
        threads.emplace_back([&info] {
            for (int round = 0; round < rounds; ++round) {
                info.get_config_url();
                info.get_inventory_post_url();
                info.get_metrics_service_info_url();
                info.get_host_user_id();
                info.get_tftp_server(static_cast<unsigned int>(round % 20));
                info.get_korm_server(static_cast<unsigned int>(round % 20));
                info.get_korm_servers();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(info.get_korm_servers().size(), 20U);
    EXPECT_NE(info.get_tftp_server(19), "");
    EXPECT_EQ(info.get_tftp_server(20), "");
}

}  // namespace
