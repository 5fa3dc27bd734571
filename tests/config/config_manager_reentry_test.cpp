// SPDX-License-Identifier: Apache-2.0
// Tests of a host that calls the manager from inside the log callback or from inside the device.

#include <functional>
#include <ostream>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "config/config_manager_impl.h"
#include "support/fake_config.h"
#include "support/manager_bench.h"

namespace headsetmgmt::test_support {
namespace {

/// Sends the settings 34 and 35 to a "Varos K30" and leaves its firmware to the host.
constexpr char document[] = R"({"templateConfiguration": {
    "updatedTime": 7,
    "commonSettings": [
        {"name": "Sidetone", "usageId": 34, "value": "3", "access": "Admin"}],
    "modelSpecificSettings": [{"models": ["K30"], "modelFirmware": [{
        "firmwareName": "LATEST",
        "firmwareParams": [
            {"name": "Equalizer", "usageId": 35, "value": "1", "access": "Admin"}]}]}]}})";

/// Something that a host does with a manager.
struct Step {
    const char* name;
    std::function<void(ManagerBench&)> prepare;
    std::function<void(ManagerBench&)> act;
};

void PrintTo(const Step& step, std::ostream* stream) {
    *stream << step.name;
}

void nothing(ManagerBench& /*bench*/) {}

/// The accessory is in the pending set, and the host has its fetch.
void begin_run(ManagerBench& bench) {
    bench.attach("a");
    bench.run_tasks();
}

/// The accessory has its settings.
void configure(ManagerBench& bench) {
    begin_run(bench);
    bench.succeed(document);
}

const Step attach{"Attach", nothing, [](ManagerBench& bench) { bench.attach("a"); }};
const Step attach_again{"AttachAgain", configure, [](ManagerBench& bench) { bench.attach("a"); }};
const Step offer{"OfferOfADocument", configure,
                 [](ManagerBench& bench) { bench.manager().configure_accessory("a", "stamp-8"); }};
const Step removal{"Removal", begin_run,
                   [](ManagerBench& bench) { bench.manager().remove_accessory("a"); }};
const Step reset{"Reset", configure,
                 [](ManagerBench& bench) { bench.manager().reset_to_admin_defaults("a"); }};
const Step success{"Success", begin_run, [](ManagerBench& bench) { bench.succeed(document); }};
const Step failure{"Failure", begin_run,
                   [](ManagerBench& bench) { bench.manager().on_fetch_config_failure(500); }};
const Step host_update{"HostUpdate", configure, [](ManagerBench& bench) {
                           bench.manager().update_config_from_host("a", "Sidetone", 34, "4");
                       }};
const Step retrieval{"Retrieval", configure,
                     [](ManagerBench& bench) { bench.manager().retrieve_config("a", 34); }};
const Step immediate_fetch{"ImmediateFetch", [](ManagerBench& bench) { bench.attach("a"); },
                           [](ManagerBench& bench) {
                               bench.answer_with(REQUEST_DONE, document);
                               bench.run_tasks();
                           }};
const Step refused_fetch{"RefusedFetch", [](ManagerBench& bench) { bench.attach("a"); },
                         [](ManagerBench& bench) {
                             bench.answer_with(REQUEST_REFUSED, "");
                             bench.run_tasks();
                         }};

const Step remove_it{"Removed", nothing,
                     [](ManagerBench& bench) { bench.manager().remove_accessory("a"); }};
const Step replace_it{"RemovedAndAttachedAgain", nothing, [](ManagerBench& bench) {
                          bench.manager().remove_accessory("a");
                          bench.attach("a");
                      }};
const Step attach_another{"AnotherAttached", nothing,
                          [](ManagerBench& bench) { bench.attach("b"); }};
const Step swap_it{"RemovedAndAnotherAttached", nothing, [](ManagerBench& bench) {
                       bench.manager().remove_accessory("a");
                       bench.attach("b");
                   }};

/// A bench whose host answers fetches later.
struct PhoneBench : ManagerBench {
    PhoneBench() {
        headset.model = "Varos K30";
        answer_with(REQUEST_PENDING, "");
    }
};

/// Lets `intrusion` in at the `n`th line of `step`; whether there were as many.
bool intrude_at_line(ManagerBench& bench, const Step& step, const Step& intrusion, int n) {
    step.prepare(bench);
    int lines = 0;
    bench.plugins.log.hook = [&](const LogLine& /*line*/) {
        if (++lines == n) {
            intrusion.act(bench);
        }
    };
    step.act(bench);
    bench.plugins.log.hook = nullptr;
    return lines >= n;
}

/// The same at the `n`th call of the driver.
bool intrude_at_driver_call(ManagerBench& bench, const Step& step, const Step& intrusion, int n) {
    step.prepare(bench);
    int calls = 0;
    bench.plugins.config_driver.hook = [&](const std::string& /*call*/) {
        if (++calls == n) {
            intrusion.act(bench);
        }
    };
    step.act(bench);
    bench.plugins.config_driver.hook = nullptr;
    return calls >= n;
}

/// The host answers whatever it was or is asked to fetch.
void answer_everything(ManagerBench& bench) {
    bench.answer_with(REQUEST_DONE, document);
    bench.run_tasks();
    bench.succeed(document);
}

bool is_registered(ManagerBench& bench, const std::string& id) {
    return bench.manager().get_config_object(id) != nullptr;
}

bool is_configured(ManagerBench& bench, const std::string& id) {
    return bench.manager().retrieve_config(id).count(34) == 1;
}

/// That a new accessory is served, and that nothing is left when all have gone.
void expect_sound(ManagerBench& bench) {
    EXPECT_EQ(0, bench.plugins.mutex_factory.held());
    bench.attach("new");
    answer_everything(bench);
    EXPECT_TRUE(is_configured(bench, "new"));
    EXPECT_FALSE(bench.manager().is_configure_accessory_pending());
    EXPECT_EQ(0u, bench.manager().get_number_of_pending_configs());

    for (const char* id : {"a", "b", "new"}) {
        bench.manager().remove_accessory(id);
    }
    EXPECT_EQ(0u, bench.queued());
    EXPECT_EQ(1, bench.headset.shared->alive) << "clones are left";
}

constexpr int more_than_any_step_has = 200;

using ReentryCase = std::tuple<Step, Step>;

std::string name_of(const ::testing::TestParamInfo<ReentryCase>& info) {
    return std::string(std::get<0>(info.param).name) + "While" + std::get<1>(info.param).name;
}

class ConfigManagerReentry : public ::testing::TestWithParam<ReentryCase> {};

TEST_P(ConfigManagerReentry, FromAnyLogLineLeavesTheManagerSound) {
    const auto& [step, intrusion] = GetParam();
    int n = 1;
    for (bool reached = true; reached && n < more_than_any_step_has; ++n) {
        SCOPED_TRACE("at line " + std::to_string(n));
        PhoneBench bench;

        reached = intrude_at_line(bench, step, intrusion, n);

        expect_sound(bench);
    }
    EXPECT_LT(2, n) << "no line came";
}

INSTANTIATE_TEST_SUITE_P(
    Host, ConfigManagerReentry,
    ::testing::Combine(::testing::Values(attach, attach_again, offer, removal, reset, success,
                                         failure, host_update, retrieval, immediate_fetch,
                                         refused_fetch),
                       ::testing::Values(remove_it, replace_it, attach_another, swap_it)),
    name_of);

class ConfigManagerDriverReentry : public ::testing::TestWithParam<ReentryCase> {};

TEST_P(ConfigManagerDriverReentry, FromAnyDriverCallLeavesTheManagerSound) {
    const auto& [step, intrusion] = GetParam();
    int n = 1;
    for (bool reached = true; reached && n < more_than_any_step_has; ++n) {
        SCOPED_TRACE("at call " + std::to_string(n));
        PhoneBench bench;

        reached = intrude_at_driver_call(bench, step, intrusion, n);

        expect_sound(bench);
    }
    EXPECT_LT(2, n) << "no call came";
}

INSTANTIATE_TEST_SUITE_P(
    Host, ConfigManagerDriverReentry,
    ::testing::Combine(::testing::Values(reset, success, immediate_fetch, refused_fetch),
                       ::testing::Values(remove_it, replace_it, attach_another, swap_it)),
    name_of);

class ConfigManagerAttachDuringAnotherCall : public ::testing::TestWithParam<ReentryCase> {};

TEST_P(ConfigManagerAttachDuringAnotherCall, FromAnyLogLineIsServed) {
    const auto& [step, intrusion] = GetParam();
    bool reached = true;
    for (int n = 1; reached && n < more_than_any_step_has; ++n) {
        SCOPED_TRACE("at line " + std::to_string(n));
        PhoneBench bench;

        reached = intrude_at_line(bench, step, intrusion, n);

        answer_everything(bench);
        for (const char* id : {"a", "b"}) {
            EXPECT_EQ(is_registered(bench, id), is_configured(bench, id)) << id;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Host, ConfigManagerAttachDuringAnotherCall,
                         ::testing::Combine(::testing::Values(attach, attach_again, offer, removal,
                                                              reset, success, failure, host_update,
                                                              retrieval, immediate_fetch),
                                            ::testing::Values(replace_it, attach_another, swap_it)),
                         name_of);

class ConfigManagerAttachFromTheDevice : public ::testing::TestWithParam<ReentryCase> {};

TEST_P(ConfigManagerAttachFromTheDevice, IsServed) {
    const auto& [step, intrusion] = GetParam();
    bool reached = true;
    for (int n = 1; reached && n < more_than_any_step_has; ++n) {
        SCOPED_TRACE("at call " + std::to_string(n));
        PhoneBench bench;

        reached = intrude_at_driver_call(bench, step, intrusion, n);

        answer_everything(bench);
        for (const char* id : {"a", "b"}) {
            EXPECT_EQ(is_registered(bench, id), is_configured(bench, id)) << id;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Host, ConfigManagerAttachFromTheDevice,
                         ::testing::Combine(::testing::Values(reset, success, immediate_fetch),
                                            ::testing::Values(replace_it, attach_another, swap_it)),
                         name_of);

TEST(ConfigManagerReentryFromADocument, DeletesAnObjectThatLeavesDuringItsOwnParseAfterThatParse) {
    ManagerBench bench;
    FakeConfig* object = bench.add_fake("a");
    const std::shared_ptr<FakeConfig::Script> script = object->script;
    bench.manager().configure_accessory("a", "");
    bench.plugins.executor.drop_all();
    const int live = FakeConfig::live_count();
    int live_during_the_parse = 0;
    script->on_document = [&] {
        bench.manager().remove_accessory("a");
        live_during_the_parse = FakeConfig::live_count();
    };

    EXPECT_TRUE(bench.succeed("document"));

    EXPECT_EQ(live, live_during_the_parse);
    EXPECT_EQ(live - 1, FakeConfig::live_count());
    EXPECT_EQ((Lines{"document"}), script->documents);
}

TEST(ConfigManagerReentryFromADocument, PassesOverAnAccessoryThatHasLeftMeanwhile) {
    ManagerBench bench;
    FakeConfig* first = bench.add_fake("a");
    FakeConfig* second = bench.add_fake("b");
    const std::shared_ptr<FakeConfig::Script> first_script = first->script;
    const std::shared_ptr<FakeConfig::Script> second_script = second->script;
    bench.manager().configure_accessory("a", "stamp-1");
    first_script->on_document = [&] { bench.manager().remove_accessory("b"); };
    second_script->on_document = [&] { bench.manager().remove_accessory("a"); };

    EXPECT_TRUE(bench.succeed("document"));

    EXPECT_EQ(1u, first_script->documents.size() + second_script->documents.size());
    EXPECT_EQ(1u, bench.manager().get_number_of_configs());
}

TEST(ConfigManagerReentryFromADocument, ComesToAnEndWhenEveryDocumentReplacesTheAccessory) {
    PhoneBench bench;
    begin_run(bench);
    int replacements = 0;
    bench.plugins.config_driver.hook = [&](const std::string& /*call*/) {
        if (++replacements < 1000) {
            replace_it.act(bench);
        }
    };

    EXPECT_TRUE(bench.succeed(document));

    EXPECT_GT(1000, replacements);
    bench.plugins.config_driver.hook = nullptr;
    expect_sound(bench);
}

}  // namespace
}  // namespace headsetmgmt::test_support
