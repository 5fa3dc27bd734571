// SPDX-License-Identifier: Apache-2.0
// The mark of a thread that is inside a host function.

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/host_call.h"
#include "plugin/host_text.h"
#include "plugin/http_dispatcher_impl.h"
#include "plugin/phone_config_driver_impl.h"
#include "plugin/phone_system_info_impl.h"
#include "support/fake_host.h"

using headsetmgmt::config::PhoneConfigDriverImpl;
using headsetmgmt::config::PhoneSystemInfoImpl;
using headsetmgmt::dispatcher::HttpDispatcherImpl;
using headsetmgmt::dispatcher::RequestContext;
using headsetmgmt::plugin::HostCall;
using headsetmgmt::plugin::text_or_empty;
using headsetmgmt::test_support::ApplyChangesCall;
using headsetmgmt::test_support::FakeHost;
using headsetmgmt::test_support::FirmwareUpgradeCall;
using headsetmgmt::test_support::fresh_fake_host;
using headsetmgmt::test_support::HostBehaviour;
using headsetmgmt::test_support::HttpRequestCall;
using testing::ElementsAre;

namespace {

TEST(HostBoundaryTest, ThreadIsOutsideAtFirst) {
    EXPECT_FALSE(HostCall::is_under_way());
}

TEST(HostBoundaryTest, MarkLastsAsLongAsTheOutermostCall) {
    {
        const HostCall outer;
        {
            const HostCall inner;
            EXPECT_TRUE(HostCall::is_under_way());
        }
        EXPECT_TRUE(HostCall::is_under_way());
    }
    EXPECT_FALSE(HostCall::is_under_way());
}

TEST(HostBoundaryTest, MarkIsTheThreadsOwn) {
    const HostCall call;
    bool other_thread_is_inside = true;

    std::thread([&] { other_thread_is_inside = HostCall::is_under_way(); }).join();

    EXPECT_FALSE(other_thread_is_inside);
    EXPECT_TRUE(HostCall::is_under_way());
}

TEST(HostBoundaryTest, NullTextCountsAsEmpty) {
    EXPECT_EQ(text_or_empty(nullptr), "");
    EXPECT_EQ(text_or_empty(""), "");
    EXPECT_EQ(text_or_empty("text"), "text");
}

TEST(HostBoundaryTest, ThreadIsMarkedInsideEveryHostFunction) {
    FakeHost& host = fresh_fake_host();
    std::vector<bool> inside;
    const auto look = [&inside] { inside.push_back(HostCall::is_under_way()); };
    HostBehaviour behaviour;
    behaviour.on_http_request = [&](const HttpRequestCall&) { look(); };
    behaviour.on_apply_changes = [&](const ApplyChangesCall&) { look(); };
    behaviour.on_firmware_upgrade = [&](const FirmwareUpgradeCall&) { look(); };
    behaviour.on_upgrade_check = [&](const std::string&) { look(); };
    behaviour.on_fact = look;
    host.behave(behaviour);
    const HttpDispatcherImpl dispatcher;
    PhoneConfigDriverImpl driver;
    PhoneSystemInfoImpl info;
    RequestContext context;
    context.url = "http://server";
    context.body = "body";
    std::string document;

    dispatcher.get(&context, document);
    look();
    context.method = "POST";
    dispatcher.push(&context);
    look();
    driver.apply_config_to_device("device", "name", 32, "1");
    look();
    driver.request_upgrade("device", "1", "image");
    look();
    driver.check_legacy_upgrade("device");
    look();
    info.get_host_serial_number();
    look();
    info.get_host_os_version();
    look();
    info.get_host_software_version();
    look();

    EXPECT_THAT(inside, ElementsAre(true, false, true, false, true, false, true, false, true, false,
                                    true, false, true, false, true, false));
}

TEST(HostBoundaryTest, HostFunctionThatThrowsLeavesNoMark) {
    FakeHost& host = fresh_fake_host();
    HostBehaviour behaviour;
    behaviour.on_apply_changes = [](const ApplyChangesCall&) {
        throw std::runtime_error("the host failed");
    };
    host.behave(behaviour);
    const PhoneConfigDriverImpl driver;

    EXPECT_THROW(driver.apply_config_to_device("device", "name", 32, "1"), std::runtime_error);

    EXPECT_FALSE(HostCall::is_under_way());
}

}  // namespace
