// SPDX-License-Identifier: Apache-2.0
// Tests that the host is called without a lock while settings are sent, and may change the map.

#include <set>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "headsetmgmt/config.h"

#include "support/config_bench.h"

namespace headsetmgmt::test_support {
namespace {

using config::ApplyType;

TEST(SettingsLock, IsReleasedAroundEveryDriverCallAndLine) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(1, ConfigParam{1, "one", "1", "Admin"});
    config.set_map_entry(2, ConfigParam{2, "two", "2", "User"});
    config.set_map_entry(3, ConfigParam{3, "three", "3", "Admin"});
    int calls = 0;
    int lines = 0;
    int held = 0;
    bench.plugins.config_driver.hook = [&](const std::string& /*call*/) {
        ++calls;
        held += bench.locks_held();
    };
    bench.plugins.log.hook = [&](const LogLine& /*line*/) {
        ++lines;
        held += bench.locks_held();
    };

    config.apply_config_to_device(ApplyType::CONFIGURE);
    config.apply_config_to_device(ApplyType::RESET);

    EXPECT_EQ(5, calls);
    EXPECT_EQ(11, lines);
    EXPECT_EQ(0, held);
    EXPECT_EQ(0, bench.locks_held());
}

TEST(SettingsLock, IsReleasedBeforeAnEmptyMapIsLogged) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    int held = -1;
    bench.plugins.log.hook = [&](const LogLine& /*line*/) { held = bench.locks_held(); };

    config.apply_config_to_device(ApplyType::RESET);

    EXPECT_EQ(0, held);
}

TEST(SettingsLock, IsReleasedBeforeAHostUpdateIsLogged) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    int held = -1;
    bench.plugins.log.hook = [&](const LogLine& /*line*/) { held = bench.locks_held(); };

    config.update_from_host("volume", 32, "1");

    EXPECT_EQ(0, held);
}

TEST(SettingsLock, IsReleasedWhenTheHostThrows) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(1, ConfigParam{1, "one", "1", "Admin"});
    bench.plugins.config_driver.throw_at(1);

    EXPECT_THROW(config.apply_config_to_device(ApplyType::CONFIGURE), std::runtime_error);
    EXPECT_EQ(0, bench.locks_held());
}

TEST(SettingsWhileSending, OneThatTheHostAddsFurtherOnIsSentToo) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(5, ConfigParam{5, "five", "50", "Admin"});
    bench.plugins.config_driver.hook = [&](const std::string& /*call*/) {
        config.update_from_host("volume", 32, "7");
    };

    config.apply_config_to_device(ApplyType::RESET);

    EXPECT_EQ((Calls{
                  R"(apply_config_to_device("acc-1", "five", 5, "50"))",
                  R"(apply_config_to_device("acc-1", "volume", 32, "7"))",
              }),
              bench.driver_calls());
}

TEST(SettingsWhileSending, OneThatTheHostReplacesIsNotSentAgain) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(32, ConfigParam{32, "volume", "1", "Admin"});
    config.set_map_entry(33, ConfigParam{33, "gain", "2", "Admin"});
    bench.plugins.config_driver.hook = [&](const std::string& /*call*/) {
        config.update_from_host("volume", 32, "9");
    };

    config.apply_config_to_device(ApplyType::RESET);

    EXPECT_EQ((Calls{
                  R"(apply_config_to_device("acc-1", "volume", 32, "1"))",
                  R"(apply_config_to_device("acc-1", "gain", 33, "2"))",
              }),
              bench.driver_calls());
    EXPECT_EQ((Settings{"32 volume=9 ()", "33 gain=2 (Admin)"}), settings_of(config));
}

TEST(SettingsWhileSending, OneThatTheHostPutsBehindTheCurrentOneIsNotSent) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(40, ConfigParam{40, "forty", "1", "Admin"});
    bench.plugins.config_driver.hook = [&](const std::string& /*call*/) {
        config.update_from_host("volume", 32, "9");
    };

    config.apply_config_to_device(ApplyType::RESET);

    EXPECT_EQ((Calls{R"(apply_config_to_device("acc-1", "forty", 40, "1"))"}),
              bench.driver_calls());
}

TEST(SettingsWhileSending, MapThatIsEmptiedFromInsideTheHostEndsTheSending) {
    ConfigBench bench;
    bench.accessory.model = "Varos K40";
    OpenConfig config("acc-1", &bench.accessory);
    config.current_model = "Varos K20";
    for (int usage_id = 1; usage_id <= 50; ++usage_id) {
        config.set_map_entry(usage_id, ConfigParam{usage_id, "n", "1", "Admin"});
    }
    // Another model than before: parsing this empties the map.
    bench.plugins.config_driver.hook = [&](const std::string& /*call*/) {
        config.update_from_server(R"({"templateConfiguration": {}})");
    };

    config.apply_config_to_device(ApplyType::CONFIGURE);

    EXPECT_EQ((Calls{R"(apply_config_to_device("acc-1", "n", 1, "1"))"}), bench.driver_calls());
    EXPECT_EQ(Settings{}, settings_of(config));
}

TEST(SettingsWhileSending, MapThatIsEmptiedFromInsideTheLogIsNotReadAgain) {
    ConfigBench bench;
    bench.accessory.model = "Varos K40";
    OpenConfig config("acc-1", &bench.accessory);
    config.current_model = "Varos K20";
    config.set_map_entry(1, ConfigParam{1, "one", "1", "Admin"});
    config.set_map_entry(2, ConfigParam{2, "two", "2", "Admin"});
    bool emptied = false;
    bench.plugins.log.hook = [&](const LogLine& /*line*/) {
        if (!emptied) {
            emptied = true;
            config.update_from_server(R"({"templateConfiguration": {}})");
        }
    };

    config.apply_config_to_device(ApplyType::CONFIGURE);

    // The entry was copied before its first line, so it is still sent; the next one is gone.
    EXPECT_EQ((Calls{R"(apply_config_to_device("acc-1", "one", 1, "1"))"}), bench.driver_calls());
}

TEST(SettingsWhileSending, OneIsSentAsItWasWhenItsTurnCame) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(32, ConfigParam{32, "volume", "1", "Admin"});
    bool replaced = false;
    bench.plugins.log.hook = [&](const LogLine& /*line*/) {
        if (!replaced) {
            replaced = true;
            config.update_from_host("volume", 32, "9");
        }
    };

    config.apply_config_to_device(ApplyType::CONFIGURE);

    EXPECT_EQ((Calls{R"(apply_config_to_device("acc-1", "volume", 32, "1"))"}),
              bench.driver_calls());
    EXPECT_EQ((Settings{"32 volume=9 ()"}), settings_of(config));
}

TEST(SettingsWhileSending, HostMayUpdateFromAnotherThread) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.update_from_host("volume", 32, "1");

    std::thread host([&config] {
        for (int round = 0; round < 300; ++round) {
            config.update_from_host("volume", 32, round % 2 == 0 ? "1" : "22");
            config.update_from_host("gain", 33, "3");
        }
    });
    for (int round = 0; round < 300; ++round) {
        config.apply_config_to_device(ApplyType::RESET);
    }
    host.join();

    const std::set<std::string> whole{
        R"(apply_config_to_device("acc-1", "volume", 32, "1"))",
        R"(apply_config_to_device("acc-1", "volume", 32, "22"))",
        R"(apply_config_to_device("acc-1", "gain", 33, "3"))",
    };
    EXPECT_GE(bench.driver_calls().size(), 300U);
    for (const std::string& call : bench.driver_calls()) {
        EXPECT_EQ(1U, whole.count(call)) << call;
    }
}

}  // namespace
}  // namespace headsetmgmt::test_support
