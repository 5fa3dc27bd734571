// SPDX-License-Identifier: Apache-2.0
// Tests of documents whose names, versions and keys are a megabyte long: they are kept, compared
// and reported whole.

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "support/config_bench.h"
#include "support/small_stack.h"

namespace headsetmgmt::test_support {
namespace {

constexpr std::size_t megabyte = 1000000;

/// Makes `config` read `text` on a small stack; what it answers.
bool read(OpenConfig& config, const std::string& text) {
    bool result = false;
    on_a_small_stack([&] { result = config.update_from_server(text); });
    return result;
}

/// Without gtest's difference of two lines, which takes far longer than the test.
void expect_line(const ConfigBench& bench, const std::string& line) {
    for (const std::string& written : bench.lines()) {
        if (written == line) {
            return;
        }
    }
    ADD_FAILURE() << "no line " << line.substr(0, 200) << "... of " << line.size() << " characters";
}

std::string with_firmware(const std::string& model, const std::string& name,
                          const std::string& version) {
    return R"({"templateConfiguration":{"modelSpecificSettings":[{"models":[")" + model +
           R"("],"modelFirmware":[{"firmwareName":")" + name + R"(","firmwareVersion":")" +
           version + R"("}]}]}})";
}

TEST(LongNames, OfASettingAreStoredSentAndLogged) {
    ConfigBench bench;
    bench.accessory.model = "K20";
    OpenConfig config("acc-1", &bench.accessory);
    const std::string name(megabyte, 'n');

    EXPECT_TRUE(
        read(config, R"({"templateConfiguration":{"modelSpecificSettings":[{"models":["K20"],)"
                     R"("modelFirmware":[{"firmwareName":"latest","firmwareParams":[{"name":")" +
                         name + R"(","usageId":7,"value":"v","access":"Admin"}]}]}]}})"));

    EXPECT_TRUE(settings_of(config) == (Settings{"7 " + name + "=v (Admin)"}));
    EXPECT_TRUE(bench.driver_calls() ==
                (Calls{R"(apply_config_to_device("acc-1", ")" + name + R"(", 7, "v"))",
                       R"(check_legacy_upgrade("acc-1"))"}));
    expect_line(bench, "debug HeadsetConfigImpl: save_config_to_map: 7, key: " + name +
                           ", value: v, access: Admin");
    expect_line(bench, "debug HeadsetConfigImpl: apply_config_to_device: " + name +
                           " : (usage id: 7 , value: v)");
}

TEST(LongNames, OfAFaultySettingAreLogged) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const std::string name(megabyte, 'n');

    EXPECT_FALSE(read(config, R"({"templateConfiguration":{"commonSettings":[{"name":")" + name +
                                  R"("}]}})"));

    EXPECT_EQ(Settings{}, settings_of(config));
    expect_line(bench, "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Null Usage ID for "
                       "param " +
                           name);
}

TEST(LongNames, OfAModelAreComparedToTheirEnd) {
    const std::string model(megabyte, 'M');
    for (const bool serves : {true, false}) {
        ConfigBench bench;
        bench.accessory.model = "The " + model;
        OpenConfig config("acc-1", &bench.accessory);
        const std::string configured = model + (serves ? "" : "x");

        EXPECT_EQ(serves, read(config, with_firmware(configured, "latest", "")));

        expect_line(bench, "debug HeadsetConfigImpl: extract_model_firmware_settings "
                           "config_model_name: " +
                               configured + ", device_model_name: The " + model);
    }
}

TEST(LongNames, OfFirmwareAreRequested) {
    ConfigBench bench;
    bench.accessory.model = "K20";
    bench.accessory.software_version = "1";
    OpenConfig config("acc-1", &bench.accessory);
    const std::string name(megabyte, 'f');
    const std::string version(megabyte, '9');

    EXPECT_TRUE(read(config, with_firmware("K20", name, version)));

    EXPECT_TRUE(bench.driver_calls() ==
                (Calls{R"(request_upgrade("acc-1", ")" + version + R"(", ")" + name + R"("))"}));
    expect_line(bench,
                "notice HeadsetConfigImpl: upgrade_firmware: Requesting upgrade to " + version);
}

TEST(LongNames, VersionOfAMillionFieldsIsCompared) {
    ConfigBench bench;
    bench.accessory.model = "K20";
    bench.accessory.software_version = "1-2-3";
    OpenConfig config("acc-1", &bench.accessory);
    const std::string version(megabyte, '-');

    EXPECT_TRUE(read(config, with_firmware("K20", "f", version)));

    EXPECT_EQ(megabyte + 1, config.parse_firmware_version(version).size());
    EXPECT_TRUE(bench.driver_calls() ==
                (Calls{R"(request_upgrade("acc-1", ")" + version + R"(", "f"))"}));
}

TEST(LongNames, AccessThatOnlyBeginsLikeTheAdministratorsIsTheUsers) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_FALSE(read(config, R"({"templateConfiguration":{"commonSettings":[{"name":"n",)"
                              R"("usageId":1,"value":2,"access":"Admin)" +
                                  std::string(megabyte, 'n') + R"("}]}})"));

    EXPECT_EQ((Settings{"1 n=2 (User)"}), settings_of(config));
}

TEST(LongNames, KeysThatNobodyReadsDoNoHarm) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const std::string key(megabyte, 'k');

    EXPECT_FALSE(read(config, R"({"templateConfiguration":{")" + key + R"(":1,"updatedTime":7,")" +
                                  key + R"(":2}})"));

    EXPECT_EQ(7.0, config.last_updated_time);
}

}  // namespace
}  // namespace headsetmgmt::test_support
