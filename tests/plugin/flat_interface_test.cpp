// SPDX-License-Identifier: Apache-2.0
// The exported functions: odd arguments in every state of the library, and a host that throws.

#include <climits>
#include <stdexcept>

#include <gtest/gtest.h>

#include "support/phone_host.h"

namespace headsetmgmt::test_support {
namespace {

enum class LibraryState { unloaded, created, started, stopped };

std::string name_of(const ::testing::TestParamInfo<LibraryState>& info) {
    switch (info.param) {
    case LibraryState::unloaded:
        return "BeforeCreate";
    case LibraryState::created:
        return "Created";
    case LibraryState::started:
        return "Started";
    default:
        return "Stopped";
    }
}

class FlatInterfaceInState : public ::testing::TestWithParam<LibraryState> {
protected:
    FlatInterfaceInState() {
        if (GetParam() != LibraryState::unloaded) {
            create_headset_mgmt(record_host_log_line);
        }
        if (is_started() || GetParam() == LibraryState::stopped) {
            host.start();
        }
        if (GetParam() == LibraryState::stopped) {
            host.stop();
        }
        host.take();
    }

    bool is_started() const { return GetParam() == LibraryState::started; }
    bool is_made() const { return GetParam() != LibraryState::unloaded; }

    PhoneHost host;
};

INSTANTIATE_TEST_SUITE_P(States, FlatInterfaceInState,
                         ::testing::Values(LibraryState::unloaded, LibraryState::created,
                                           LibraryState::started, LibraryState::stopped),
                         name_of);

TEST_P(FlatInterfaceInState, NullAccessoryIsNotConfigured) {
    EXPECT_FALSE(configure_headset(nullptr));

    EXPECT_EQ(host.take(),
              is_made() ? Lines{"log 5 PhonePluginImpl::configure_headset ENTER\n"} : Lines{});
}

TEST_P(FlatInterfaceInState, NullAccessoryHasNoReport) {
    send_inventory(nullptr);

    EXPECT_EQ(host.take(), Lines{});
}

TEST_P(FlatInterfaceInState, ReportIsQueuedOnlyByAStartedLibrary) {
    send_inventory(shared(headset_1()));

    EXPECT_EQ(host.take().size(), is_started() ? 4U : 0U);
}

TEST_P(FlatInterfaceInState, NullUrlsAndArraysCountAsEmpty) {
    EXPECT_EQ(setHeadsetConfigUrl(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              is_started());

    EXPECT_EQ(host.take(), Lines{});
}

TEST_P(FlatInterfaceInState, NullArrayEntriesCountAsEmptyServers) {
    const char* tftp_servers[] = {nullptr, "second", nullptr};
    const char* korm_servers[] = {nullptr, nullptr, nullptr};

    EXPECT_EQ(setHeadsetConfigUrl("{tftp}", "", "", tftp_servers, korm_servers, ""), is_started());

    if (is_started()) {
        configure_headset(shared(headset_1()));
        host.run_worker();
        EXPECT_EQ(fake_host().http_requests().at(0).url, "second");
    }
}

TEST_P(FlatInterfaceInState, UpdateConfigAnswersFalseAndDoesNothing) {
    EXPECT_FALSE(update_config("headset-1", USAGE_SIDETONE, 3));
    EXPECT_FALSE(update_config(nullptr, static_cast<CONFIG_SETTING_USAGE_ID>(INT_MIN), INT_MIN));

    EXPECT_EQ(host.take(), Lines{});
}

TEST_P(FlatInterfaceInState, RetrieveConfigWithoutAResultAnswersFalse) {
    EXPECT_FALSE(retrieve_config("headset-1", USAGE_SIDETONE, nullptr));
}

TEST_P(FlatInterfaceInState, RetrieveConfigOfNoAccessoryLeavesTheValue) {
    int value = 17;

    EXPECT_FALSE(retrieve_config(nullptr, USAGE_SIDETONE, &value));
    EXPECT_FALSE(retrieve_config("nobody", USAGE_SIDETONE, &value));

    EXPECT_EQ(value, 17);
}

TEST_P(FlatInterfaceInState, NullBodyIsAnEmptyDocument) {
    httpResponse(nullptr, 200);
    httpResponse(nullptr, 500);

    EXPECT_EQ(host.take().size(), is_started() ? 3U : 0U);
}

TEST_P(FlatInterfaceInState, FactoryResetOfNobodyAnswersFalse) {
    EXPECT_FALSE(factory_reset(nullptr));
    EXPECT_FALSE(factory_reset("nobody"));
}

TEST_P(FlatInterfaceInState, NullDeviceIsRemovedLikeAnyOther) {
    EXPECT_EQ(remove_peripheral(nullptr), is_started());
}

TEST_P(FlatInterfaceInState, StartTakesNullTexts) {
    EXPECT_TRUE(start_headset_mgmt(nullptr, nullptr, nullptr));

    EXPECT_TRUE(setHeadsetConfigUrl("", "", "", nullptr, nullptr, ""));
}

TEST_P(FlatInterfaceInState, CreateWithoutACallbackAnswersTrue) {
    EXPECT_TRUE(create_headset_mgmt(nullptr));

    EXPECT_EQ(remove_peripheral("headset-1"), is_started());
    EXPECT_EQ(host.take(), Lines{});
}

TEST(FlatInterfaceTest, AccessoryWithoutAnyTextIsTaken) {
    PhoneHost host;
    host.start_up();
    AccessoryCache blank;
    blank.accessory_type = 1;

    // There is no id to answer with.
    EXPECT_FALSE(configure_headset(shared(blank)));
    EXPECT_TRUE(remove_peripheral(nullptr));
}

TEST(FlatInterfaceTest, RetrieveConfigAnswersTheNumberOfTheNamesBeginning) {
    PhoneHost host;
    host.start_up();
    configure_headset(shared(headset_1()));
    host.run_worker();
    httpResponse(R"({"templateConfiguration": {"commonSettings": [
        {"name": "abc", "usageId": 1, "value": 2, "access": "Admin"},
        {"name": " -12x", "usageId": 2, "value": 2, "access": "Admin"},
        {"name": "99999999999999999999", "usageId": 3, "value": 2, "access": "Admin"}]}})",
                 200);
    const auto usage = [](int id) { return static_cast<CONFIG_SETTING_USAGE_ID>(id); };
    int value = 17;

    EXPECT_TRUE(retrieve_config("headset-1", usage(1), &value));
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(retrieve_config("headset-1", usage(2), &value));
    EXPECT_EQ(value, -12);
    EXPECT_TRUE(retrieve_config("headset-1", usage(3), &value));
    EXPECT_EQ(value, -1);
    value = 17;
    EXPECT_FALSE(retrieve_config("headset-1", usage(4), &value));
    EXPECT_EQ(value, 17);
}

TEST(FlatInterfaceTest, HostThatThrowsOnTheWorkerLosesOneTask) {
    PhoneHost host;
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_http_request = [](const HttpRequestCall&) {
        throw std::runtime_error("the host's own trouble");
    };
    fake_host().behave(behaviour);
    host.start_up();

    configure_headset(shared(headset_1()));
    host.run_worker();

    const Lines lines = host.take();
    EXPECT_EQ(lines.back(), "log 5 ExecutorImpl::threadLoop, error executing task, moving on\n");
    fake_host().behave(usual_behaviour());
    EXPECT_TRUE(configure_headset(shared(headset_1())));
    host.run_worker();
    EXPECT_EQ(fake_host().http_requests().size(), 2U);
}

TEST(FlatInterfaceTest, HostFunctionOnTheWorkerMayHaveAFrameOf300Kibibytes) {
    PhoneHost host;
    bool filled = false;
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_http_request = [&](const HttpRequestCall&) {
        volatile char frame[307200];
        for (volatile char& byte : frame) {
            byte = 1;
        }
        filled = true;
    };
    fake_host().behave(behaviour);
    host.start_up();

    configure_headset(shared(headset_1()));
    host.run_worker();

    EXPECT_TRUE(filled);
}

TEST(FlatInterfaceTest, FactThatThrowsLosesTheReportAlone) {
    PhoneHost host;
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_fact = [] { throw 17; };
    fake_host().behave(behaviour);
    host.start_up();

    send_inventory(shared(headset_1()));
    host.run_worker();

    const Lines lines = host.take();
    ASSERT_GE(lines.size(), 4U);
    EXPECT_EQ(Lines(lines.end() - 4, lines.end()),
              (Lines{"log 5 HeadsetInventoryMetricsImpl: assemble_metrics[LIB-ERR]: Building host "
                     "payload failed",
                     "log 5 HeadsetInventoryMetricsImpl: send_task: building metrics failed",
                     "log 5 InventoryMetric: send_metric[LIB-ERR]: metric sent",
                     "log 5 ExecutorImpl::threadLoop, complete executing task\n"}));
    fake_host().behave(usual_behaviour());
    send_inventory(shared(headset_1()));
    host.run_worker();
    EXPECT_EQ(fake_host().http_requests().size(), 1U);
}

TEST(FlatInterfaceTest, HostThatThrowsOnItsOwnThreadGetsNothingBack) {
    PhoneHost host;
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_apply_changes = [](const ApplyChangesCall&) { throw 17; };
    behaviour.on_firmware_upgrade = [](const FirmwareUpgradeCall&) { throw 17; };
    fake_host().behave(behaviour);
    host.start_up();
    configure_headset(shared(headset_1()));
    host.run_worker();

    EXPECT_NO_THROW(httpResponse(document_with_sidetone, 200));
    EXPECT_NO_THROW(EXPECT_FALSE(factory_reset("headset-1")));

    EXPECT_EQ(fake_host().applied_changes().size(), 2U);
}

TEST(FlatInterfaceTest, ThreadThatAHostFunctionThrewThroughCanStillStopAndStart) {
    PhoneHost host;
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_apply_changes = [](const ApplyChangesCall&) { throw 17; };
    fake_host().behave(behaviour);
    host.start_up();
    configure_headset(shared(headset_1()));
    host.run_worker();
    httpResponse(document_with_sidetone, 200);
    host.run_worker();
    host.take();

    host.stop();

    EXPECT_EQ(host.take(), (Lines{"log 5 stop headset mgmt\n"}));
    EXPECT_TRUE(host.start());
}

TEST(FlatInterfaceTest, NullFactsCountAsEmpty) {
    PhoneHost host;
    HostBehaviour behaviour;
    behaviour.serial_number.reset();
    behaviour.os_version.reset();
    behaviour.orvik_version.reset();
    fake_host().behave(behaviour);
    host.start_up();

    send_inventory(shared(headset_1()));
    host.run_worker();

    ASSERT_EQ(fake_host().http_requests().size(), 1U);
    EXPECT_NE(fake_host().http_requests().at(0).body->find("\"serialNumber\":\t\"\""),
              std::string::npos);
}

void throwing_callback(int, const char*) {
    throw std::runtime_error("from the log callback");
}

TEST(FlatInterfaceDeathTest, LogCallbackThatThrowsEndsTheProcess) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    fresh_fake_host();
    create_headset_mgmt(throwing_callback);

    EXPECT_DEATH(remove_peripheral("headset-1"), "from the log callback");
}

}  // namespace
}  // namespace headsetmgmt::test_support
