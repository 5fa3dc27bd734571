// SPDX-License-Identifier: Apache-2.0
// Tests of the settings map: written, read, changed by the host, and sent to the device.

#include <climits>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "headsetmgmt/config.h"

#include "support/config_bench.h"

namespace headsetmgmt::test_support {
namespace {

using config::ApplyType;

TEST(SetMapEntry, ReplacesTheEntry) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    config.set_map_entry(7, ConfigParam{7, "old", "1", "User"});
    config.set_map_entry(7, ConfigParam{7, "new", "2", "Admin"});

    EXPECT_EQ((Settings{"7 new=2 (Admin)"}), settings_of(config));
}

TEST(SetMapEntry, WritesUnderTheLockOnly) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    bench.plugins.mutex_factory.throw_at_lock(1);

    EXPECT_THROW(config.set_map_entry(7, ConfigParam{7, "lost", "1", "User"}), std::runtime_error);
    EXPECT_EQ(Settings{}, settings_of(config));
    EXPECT_EQ(0, bench.locks_held());
}

TEST(SettingsMap, RetrievedSettingsAreACopy) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.update_from_host("volume", 32, "1");

    config.retrieve_config().clear();

    EXPECT_EQ((Settings{"32 volume=1 ()"}), settings_of(config));
}

TEST(UpdateFromHost, RecordsTheSettingWithoutAccessAndSendsNothing) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_TRUE(config.update_from_host("volume", 32, "7"));
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: update_from_host: Updated id: 32, key: volume, "
                     "value: 7"}),
              bench.lines());
    EXPECT_EQ((Settings{"32 volume=7 ()"}), settings_of(config));
    EXPECT_EQ(Calls{}, bench.driver_calls());
}

TEST(UpdateFromHost, TakesTheFourSettingsThatTheHostMayChange) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_TRUE(config.update_from_host("a", 32, "1"));
    EXPECT_TRUE(config.update_from_host("b", 33, "2"));
    EXPECT_TRUE(config.update_from_host("c", 34, "3"));
    EXPECT_TRUE(config.update_from_host("d", 35, "4"));
    EXPECT_EQ((Settings{"32 a=1 ()", "33 b=2 ()", "34 c=3 ()", "35 d=4 ()"}), settings_of(config));
}

TEST(UpdateFromHost, RefusesTheIdsBesideThem) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(config.update_from_host("below", 31, "1"));
    EXPECT_FALSE(config.update_from_host("above", 36, "1"));
    EXPECT_EQ((Lines{
                  "info HeadsetConfigImpl: update_from_host: Invalid user setting",
                  "info HeadsetConfigImpl: update_from_host: Invalid user setting",
              }),
              bench.lines());
    EXPECT_EQ(Settings{}, settings_of(config));
}

TEST(UpdateFromHost, RefusesEveryOtherId) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    for (const int usage_id : {0, 1, 39, 288, -32, INT_MAX, INT_MIN}) {
        EXPECT_FALSE(config.update_from_host("n", usage_id, "1")) << usage_id;
    }
    EXPECT_EQ(Settings{}, settings_of(config));
}

TEST(UpdateFromHost, ReplacesWhatADocumentSetAndItsAccess) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(34, ConfigParam{34, "sidetone", "2", "Admin"});

    config.update_from_host("side tone", 34, "9");

    EXPECT_EQ((Settings{"34 side tone=9 ()"}), settings_of(config));
}

TEST(UpdateFromHost, TakesEmptyTexts) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_TRUE(config.update_from_host("", 32, ""));
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: update_from_host: Updated id: 32, key: , value: "}),
              bench.lines());
}

/// The map of the tests below: 5 and 9 the administrator's, 7 the user's.
void fill(OpenConfig& config) {
    config.set_map_entry(9, ConfigParam{9, "nine", "90", "ADMIN"});
    config.set_map_entry(5, ConfigParam{5, "five", "50", "Admin"});
    config.set_map_entry(7, ConfigParam{7, "seven", "70", "User"});
}

TEST(ApplyToDevice, ConfigureSendsTheAdministratorsSettingsInTheirOrder) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    fill(config);

    config.apply_config_to_device(ApplyType::CONFIGURE);

    EXPECT_EQ((Lines{
                  "notice HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
                  "debug HeadsetConfigImpl: apply_config_to_device: five : (usage id: 5 , value: "
                  "50)",
                  "notice HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
                  "notice HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE",
                  "debug HeadsetConfigImpl: apply_config_to_device: nine : (usage id: 9 , value: "
                  "90)",
              }),
              bench.lines());
    EXPECT_EQ((Calls{
                  R"(apply_config_to_device("acc-1", "five", 5, "50"))",
                  R"(apply_config_to_device("acc-1", "nine", 9, "90"))",
              }),
              bench.driver_calls());
}

TEST(ApplyToDevice, SendsTheUsageIdOfTheRecordNotThatOfItsPlace) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(5, ConfigParam{6, "six", "60", "Admin"});

    config.apply_config_to_device(ApplyType::CONFIGURE);

    EXPECT_EQ((Calls{R"(apply_config_to_device("acc-1", "six", 6, "60"))"}), bench.driver_calls());
}

TEST(ApplyToDevice, ResetSendsEverySettingInTheirOrder) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    fill(config);

    config.apply_config_to_device(ApplyType::RESET);

    EXPECT_EQ((Lines{
                  "notice HeadsetConfigImpl: apply_config_to_device: Apply type: RESET",
                  "debug HeadsetConfigImpl: apply_config_to_device: five : (usage id: 5 , value: "
                  "50)",
                  "notice HeadsetConfigImpl: apply_config_to_device: Apply type: RESET",
                  "debug HeadsetConfigImpl: apply_config_to_device: seven : (usage id: 7 , value: "
                  "70)",
                  "notice HeadsetConfigImpl: apply_config_to_device: Apply type: RESET",
                  "debug HeadsetConfigImpl: apply_config_to_device: nine : (usage id: 9 , value: "
                  "90)",
              }),
              bench.lines());
    EXPECT_EQ((Calls{
                  R"(apply_config_to_device("acc-1", "five", 5, "50"))",
                  R"(apply_config_to_device("acc-1", "seven", 7, "70"))",
                  R"(apply_config_to_device("acc-1", "nine", 9, "90"))",
              }),
              bench.driver_calls());
}

TEST(ApplyToDevice, AnyTypeButConfigureIsAReset) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    fill(config);

    config.apply_config_to_device(static_cast<ApplyType>(2));
    config.apply_config_to_device(static_cast<ApplyType>(-1));

    EXPECT_EQ(6U, bench.driver_calls().size());
    EXPECT_EQ("notice HeadsetConfigImpl: apply_config_to_device: Apply type: RESET",
              bench.lines().front());
}

TEST(ApplyToDevice, SettingOfTheHostIsSentByAResetOnly) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.update_from_host("volume", 32, "7");

    config.apply_config_to_device(ApplyType::CONFIGURE);
    EXPECT_EQ(Calls{}, bench.driver_calls());

    config.apply_config_to_device(ApplyType::RESET);
    EXPECT_EQ((Calls{R"(apply_config_to_device("acc-1", "volume", 32, "7"))"}),
              bench.driver_calls());
}

TEST(ApplyToDevice, EmptyMapIsLogged) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    config.apply_config_to_device(ApplyType::CONFIGURE);

    EXPECT_EQ((Lines{"error HeadsetConfigImpl: apply_config_to_device: No config settings found "
                     "to apply to device"}),
              bench.lines());
    EXPECT_EQ(Calls{}, bench.driver_calls());
    EXPECT_EQ(0, bench.locks_held());
}

TEST(ApplyToDevice, ResultOfTheHostIsIgnored) {
    ConfigBench bench;
    bench.plugins.config_driver.result = false;
    OpenConfig config("acc-1", &bench.accessory);
    fill(config);

    config.apply_config_to_device(ApplyType::CONFIGURE);

    EXPECT_EQ(2U, bench.driver_calls().size());
    EXPECT_EQ(5U, bench.lines().size());
}

}  // namespace
}  // namespace headsetmgmt::test_support
