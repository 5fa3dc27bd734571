// SPDX-License-Identifier: Apache-2.0
// Tests that no nesting hurts, wherever it stands: a thousand levels are read, more are refused,
// and a small stack is enough for both.

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "support/config_bench.h"
#include "support/small_stack.h"

namespace headsetmgmt::test_support {
namespace {

constexpr int deepest = 1000;  // what the parser reads
constexpr int deep = 100000;

std::string repeated(const std::string& piece, int times) {
    std::string text;
    text.reserve(piece.size() * static_cast<std::size_t>(times));
    for (int i = 0; i < times; ++i) {
        text += piece;
    }
    return text;
}

/// What one level of nesting looks like.
struct Nesting {
    const char* name;
    const char* open;
    const char* core;
    const char* close;
};

constexpr Nesting arrays = {"Arrays", "[", "", "]"};
constexpr Nesting objects = {"Objects", R"({"a":)", "1", "}"};

/// Where the nested value stands, and how many levels the document has above it.
struct Place {
    const char* name;
    const char* before;
    const char* after;
    int levels;
};

constexpr Place places[] = {
    {"Root", "", "", 0},
    {"Template", R"({"templateConfiguration":)", "}", 1},
    {"UpdatedTime", R"({"templateConfiguration":{"updatedTime":)", "}}", 2},
    {"CommonSettings", R"({"templateConfiguration":{"commonSettings":)", "}}", 2},
    {"Parameter", R"({"templateConfiguration":{"commonSettings":[)", "]}}", 3},
    {"ParameterValue",
     R"({"templateConfiguration":{"commonSettings":[{"name":"n","usageId":1,"access":"Admin","value":)",
     "}]}}", 4},
    {"ModelEntries", R"({"templateConfiguration":{"modelSpecificSettings":)", "}}", 2},
    {"Models", R"({"templateConfiguration":{"modelSpecificSettings":[{"models":)", "}]}}", 4},
    {"ModelName", R"({"templateConfiguration":{"modelSpecificSettings":[{"models":[)", "]}]}}", 5},
    {"ModelFirmware",
     R"({"templateConfiguration":{"modelSpecificSettings":[{"models":["K20"],"modelFirmware":)",
     "}]}}", 4},
    {"FirmwareParams",
     R"({"templateConfiguration":{"modelSpecificSettings":[{"models":["K20"],"modelFirmware":[)"
     R"({"firmwareName":"latest","firmwareParams":)",
     "}]}]}}", 6},
    {"BesideTheTemplate", R"({"templateConfiguration":{"updatedTime":7},"other":)", "}", 1},
};

std::string document(const Place& place, const Nesting& nesting, int levels, bool closed = true) {
    return place.before + repeated(nesting.open, levels) +
           (closed ? nesting.core + repeated(nesting.close, levels) + place.after : "");
}

/// Whether a headset's object can use `text`, found out on a small stack; the lines are left on the
/// bench.
bool is_usable(ConfigBench& bench, const std::string& text) {
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);
    bool usable = false;
    on_a_small_stack([&] { usable = config.update_from_server(text); });
    return usable;
}

class DocumentDepth : public testing::TestWithParam<Place> {};

TEST_P(DocumentDepth, MoreThanTheParserReadsIsRefusedFromThereOn) {
    for (const Nesting& nesting : {arrays, objects}) {
        for (const bool closed : {true, false}) {
            ConfigBench bench;
            const std::string text = document(GetParam(), nesting, deep, closed);
            const std::size_t refused_at =
                std::string(GetParam().before).size() +
                std::string(nesting.open).size() *
                    static_cast<std::size_t>(deepest - GetParam().levels);

            EXPECT_FALSE(is_usable(bench, text)) << nesting.name;

            ASSERT_EQ(1U, bench.lines().size()) << nesting.name;
            EXPECT_TRUE(bench.lines().front() ==
                        "info HeadsetConfigImpl: update_from_server: " + text.substr(refused_at))
                << nesting.name;
        }
    }
}

TEST_P(DocumentDepth, OneLevelTooManyIsRefusedAndOneFewerIsRead) {
    for (const Nesting& nesting : {arrays, objects}) {
        ConfigBench bench;
        const int levels = deepest - GetParam().levels;

        is_usable(bench, document(GetParam(), nesting, levels + 1));
        EXPECT_EQ(1U, bench.lines().size()) << nesting.name;

        bench.clear_lines();
        is_usable(bench, document(GetParam(), nesting, levels));
        ASSERT_LT(1U, bench.lines().size()) << nesting.name;
        EXPECT_EQ("info HeadsetConfigImpl: update_from_server Enter:", bench.lines().front());
    }
}

INSTANTIATE_TEST_SUITE_P(Places, DocumentDepth, testing::ValuesIn(places),
                         [](const auto& place) { return place.param.name; });

TEST(DocumentDepthTranscript, SettingsAreReadBesideTheDeepestValue) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const std::string text = R"({"templateConfiguration":{"commonSettings":[)"
                             R"({"name":"a","usageId":1,"value":2,"access":"Admin"},)"
                             R"({"name":"b","usageId":3,"access":"Admin","value":)" +
                             repeated("[", 996) + repeated("]", 996) + "}]}}";

    on_a_small_stack([&] { EXPECT_FALSE(config.update_from_server(text)); });

    EXPECT_EQ((Settings{"1 a=2 (Admin)"}), settings_of(config));
    EXPECT_EQ(
        (Lines{
            "info HeadsetConfigImpl: update_from_server Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config Enter:",
            "info HeadsetConfigImpl: parse_remote_default_config parsed updated_time:",
            "info HeadsetConfigImpl: parse_remote_default_config: Current accessory plugged in: ",
            "notice HeadsetConfigImpl: parse_remote_default_config: No timestamp found on the "
            "config. Proceed with updating config.",
            "debug HeadsetConfigImpl: save_config_to_map: 1, key: a, value: 2, access: Admin",
            "notice HeadsetConfigImpl: save_config_to_map[KORM-ERR]: Invalid Value for param b",
            "debug HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 1",
            "notice HeadsetConfigImpl: save_common_settings_params: success",
            "debug HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME ",
            "notice HeadsetConfigImpl: extract_model_firmware_settings[KORM-ERR]: Model specific "
            "settings not found in config",
            "info HeadsetConfigImpl: save_model_specific_settings_params : "
            "Model_firmware_settings do not exist",
            "info HeadsetConfigImpl: parse_remote_default_config: Model specific settings were "
            "not saved",
            "notice HeadsetConfigImpl: upgrade_firmware[PARSING-ERR]: Model_firmware_settings do "
            "not exist",
            "info HeadsetConfigImpl: parse_remote_default_config: Failed",
            "debug HeadsetConfigImpl: update_from_server: Parsing remote config failed.",
        }),
        bench.lines());
}

TEST(DocumentDepthTranscript, TemplateBelowTheDeepestWrappersIsFound) {
    for (const Nesting& nesting : {arrays, objects}) {
        ConfigBench bench;
        OpenConfig config("acc-1", &bench.accessory);
        // Two levels are the template's own. Arrays are stepped over in pairs, objects one by one.
        const std::string text = repeated(nesting.open, deepest - 2) +
                                 R"({"templateConfiguration":{"updatedTime":7}})" +
                                 repeated(nesting.close, deepest - 2);

        on_a_small_stack([&] { EXPECT_FALSE(config.update_from_server(text)); });

        EXPECT_EQ(7.0, config.last_updated_time) << nesting.name;
    }
}

}  // namespace
}  // namespace headsetmgmt::test_support
