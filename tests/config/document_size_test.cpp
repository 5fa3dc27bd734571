// SPDX-License-Identifier: Apache-2.0
// Tests of documents far larger than any that an administrator writes: everything in them has its
// effect, and every line is there.

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/config_bench.h"
#include "support/small_stack.h"

namespace headsetmgmt::test_support {
namespace {

constexpr std::size_t megabyte = 1000000;

// How many pieces a document has, and how long it is. Sanitizers, which watch every byte of it,
// make do with a tenth.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t many = 100000;
constexpr std::size_t sizes[] = {megabyte, 10 * megabyte};
#else
constexpr std::size_t many = 1000000;
constexpr std::size_t sizes[] = {megabyte, 10 * megabyte, 100 * megabyte};
#endif

/// So many lines in a row, each by its number in the row.
struct Row {
    std::size_t count;
    std::function<std::string(std::size_t number)> line;
};

Row one(const std::string& line) {
    return {1, [line](std::size_t) { return line; }};
}

/// A log sink that compares each line with the one that is due and keeps the first that differs:
/// lines of so many settings are not for keeping.
class DueLines : public log::HostLogInterface {
public:
    explicit DueLines(std::vector<Row> due) : rows(std::move(due)) {}

    int map_to_host_log_level(log::LogLevel level) const override {
        return static_cast<int>(level);
    }

    void print(log::LogLevel /*level*/, const std::string& line) override {
        while (row < rows.size() && number == rows[row].count) {
            ++row;
            number = 0;
        }
        if (first_difference.empty() && (row == rows.size() || line != rows[row].line(number))) {
            first_difference =
                "line " + std::to_string(number) + " of row " + std::to_string(row) + ": " + line;
        }
        ++number;
    }

    /// Whether every row was there to its last line, and nothing else.
    bool complete() const {
        return first_difference.empty() && row + 1 == rows.size() && number == rows[row].count;
    }

    std::string first_difference;

private:
    std::vector<Row> rows;
    std::size_t row = 0;
    std::size_t number = 0;  // of the next line in the row
};

/// Expects the administrator's settings "n" = "1" of the usage ids from 0 on.
class AscendingDriver : public FakeConfigDriver {
public:
    bool apply_config_to_device(const std::string& accessory_id, const std::string& name,
                                int usage_id, const std::string& value) const override {
        in_order = in_order && accessory_id == "acc-1" && name == "n" && value == "1" &&
                   static_cast<std::size_t>(usage_id) == applied;
        ++applied;
        return true;
    }

    mutable bool in_order = true;
    mutable std::size_t applied = 0;
};

/// A headset's object whose lines and device calls are checked as they come.
struct BigBench {
    explicit BigBench(std::vector<Row> due) : lines(std::move(due)) {
        fakes.record.log = &lines;
        fakes.record.config_driver = &driver;
        init(fakes.record);
        accessory.model = "Varos K20";
    }

    FakePlugins fakes;
    DueLines lines;
    AscendingDriver driver;
    FakeAccessory accessory;
};

std::string admin_parameter(std::size_t usage_id) {
    return R"({"name":"n","usageId":)" + std::to_string(usage_id) +
           R"(,"value":1,"access":"Admin"})";
}

std::string saved_line(std::size_t usage_id) {
    return "HeadsetConfigImpl: save_config_to_map: " + std::to_string(usage_id) +
           ", key: n, value: 1, access: Admin";
}

/// Two for each setting that is sent.
std::string sent_line(std::size_t number) {
    return number % 2 == 0 ? "HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE"
                           : "HeadsetConfigImpl: apply_config_to_device: n : (usage id: " +
                                 std::to_string(number / 2) + " , value: 1)";
}

std::vector<Row> joined(const std::vector<std::vector<Row>>& pieces) {
    std::vector<Row> rows;
    for (const std::vector<Row>& piece : pieces) {
        rows.insert(rows.end(), piece.begin(), piece.end());
    }
    return rows;
}

/// How every document here begins and ends, each with a firmware block that leaves the upgrade to
/// the host.
std::vector<Row> beginning() {
    return {
        one("HeadsetConfigImpl: update_from_server Enter:"),
        one("HeadsetConfigImpl: parse_remote_default_config Enter:"),
        one("HeadsetConfigImpl: parse_remote_default_config parsed updated_time:"),
        one("HeadsetConfigImpl: parse_remote_default_config: Current accessory plugged in: Varos "
            "K20"),
        one("HeadsetConfigImpl: parse_remote_default_config: No timestamp found on the config. "
            "Proceed with updating config."),
    };
}

std::vector<Row> end() {
    return {
        one("HeadsetConfigImpl: upgrade_firmware: received 1 entries for model firmware"),
        one("HeadsetConfigImpl: upgrade_firmware: Legacy Flow - delegate upgrade to config driver"),
        one("HeadsetConfigImpl: upgrade_firmware: Success."),
        one("HeadsetConfigImpl: parse_remote_default_config: Success"),
        one("HeadsetConfigImpl: update_from_server: success"),
    };
}

TEST(DocumentSize, ManySettingsAreStoredAndSentInOrder) {
    const std::string all = std::to_string(many);
    const std::string all_but_one = std::to_string(many - 1);
    std::string text = R"({"templateConfiguration":{"commonSettings":[)";
    for (std::size_t i = 0; i < many - 1; ++i) {
        text += admin_parameter(i) + (i < many - 2 ? "," : "");
    }
    text += R"(],"modelSpecificSettings":[{"models":["K20"],"modelFirmware":[)"
            R"({"firmwareName":"latest","firmwareParams":[)" +
            admin_parameter(many - 1) + "]}]}]}}";
    BigBench bench(joined({
        beginning(),
        {
            {many - 1, saved_line},
            one("HeadsetConfigImpl: save_config_to_map: Saved " + all_but_one +
                " settings. current map size: " + all_but_one),
            one("HeadsetConfigImpl: save_common_settings_params: success"),
            one("HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K20"),
            one("HeadsetConfigImpl: extract_model_firmware_settings config_model_name: K20, "
                "device_model_name: Varos K20"),
            one("HeadsetConfigImpl: save_config_to_map: " + all_but_one +
                ", key: n, value: 1, access: Admin"),
            one("HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: " +
                all),
            {2 * many, sent_line},
            one("HeadsetConfigImpl: save_model_specific_settings_params: Success."),
        },
        end(),
    }));
    OpenConfig config("acc-1", &bench.accessory);

    on_a_small_stack([&] { EXPECT_TRUE(config.update_from_server(text)); });

    EXPECT_TRUE(bench.lines.complete()) << bench.lines.first_difference;
    EXPECT_TRUE(bench.driver.in_order);
    EXPECT_EQ(many, bench.driver.applied);
}

TEST(DocumentSize, ManyModelEntriesAreWalkedToTheLast) {
    std::string text = R"({"templateConfiguration":{"modelSpecificSettings":[)";
    for (std::size_t i = 0; i < many - 1; ++i) {
        text += R"({"models":["Arlo"]},)";
    }
    text += R"({"models":["Varos"],"modelFirmware":[{"firmwareName":"latest"}]}]}})";
    BigBench bench(joined({
        beginning(),
        {
            one("HeadsetConfigImpl: save_common_settings_params: Common settings not found in "
                "config"),
            one("HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K20"),
            {many - 1,
             [](std::size_t) {
                 return "HeadsetConfigImpl: extract_model_firmware_settings config_model_name: "
                        "Arlo, device_model_name: Varos K20";
             }},
            one("HeadsetConfigImpl: extract_model_firmware_settings config_model_name: Varos, "
                "device_model_name: Varos K20"),
            one("HeadsetConfigImpl: apply_settings: No settings available for firmware"),
            one("HeadsetConfigImpl: save_model_specific_settings_params: Success."),
            one("HeadsetConfigImpl: parse_remote_default_config: Common settings were not saved"),
        },
        end(),
    }));
    OpenConfig config("acc-1", &bench.accessory);

    on_a_small_stack([&] { EXPECT_TRUE(config.update_from_server(text)); });

    EXPECT_TRUE(bench.lines.complete()) << bench.lines.first_difference;
}

class DocumentOfBytes : public testing::TestWithParam<std::size_t> {};

TEST_P(DocumentOfBytes, ThatIsOneLongValueIsSentWhole) {
    const std::string value(GetParam(), 'v');
    BigBench bench(joined({
        beginning(),
        {
            one("HeadsetConfigImpl: save_common_settings_params: Common settings not found in "
                "config"),
            one("HeadsetConfigImpl: extract_model_firmware_settings: MODEL NAME Varos K20"),
            one("HeadsetConfigImpl: extract_model_firmware_settings config_model_name: K20, "
                "device_model_name: Varos K20"),
            one("HeadsetConfigImpl: save_config_to_map: 1, key: n, value: " + value +
                ", access: Admin"),
            one("HeadsetConfigImpl: save_config_to_map: Saved 1 settings. current map size: 1"),
            one("HeadsetConfigImpl: apply_config_to_device: Apply type: CONFIGURE"),
            one("HeadsetConfigImpl: apply_config_to_device: n : (usage id: 1 , value: " + value +
                ")"),
            one("HeadsetConfigImpl: save_model_specific_settings_params: Success."),
            one("HeadsetConfigImpl: parse_remote_default_config: Common settings were not saved"),
        },
        end(),
    }));
    OpenConfig config("acc-1", &bench.accessory);
    const std::string text =
        R"({"templateConfiguration":{"modelSpecificSettings":[{"models":["K20"],"modelFirmware":[)"
        R"({"firmwareName":"latest","firmwareParams":[)"
        R"({"name":"n","usageId":1,"access":"Admin","value":")" +
        value + R"("}]}]}]}})";

    on_a_small_stack([&] { EXPECT_TRUE(config.update_from_server(text)); });

    EXPECT_TRUE(bench.lines.complete()) << bench.lines.first_difference.substr(0, 200);
}

TEST_P(DocumentOfBytes, ThatBreaksAtItsFirstByteIsLoggedWhole) {
    const std::string text(GetParam(), 'x');
    BigBench bench({one("HeadsetConfigImpl: update_from_server: " + text)});
    OpenConfig config("acc-1", &bench.accessory);

    on_a_small_stack([&] { EXPECT_FALSE(config.update_from_server(text)); });

    EXPECT_TRUE(bench.lines.complete()) << bench.lines.first_difference.substr(0, 200);
}

TEST_P(DocumentOfBytes, ThatBreaksAtItsLastByteIsLoggedFromThere) {
    BigBench bench({one("HeadsetConfigImpl: update_from_server: ]")});
    OpenConfig config("acc-1", &bench.accessory);
    const std::string text = "{" + std::string(GetParam(), ' ') + R"("a":1])";

    on_a_small_stack([&] { EXPECT_FALSE(config.update_from_server(text)); });

    EXPECT_TRUE(bench.lines.complete()) << bench.lines.first_difference.substr(0, 200);
}

INSTANTIATE_TEST_SUITE_P(Sizes, DocumentOfBytes, testing::ValuesIn(sizes), [](const auto& size) {
    return std::to_string(size.param / megabyte) + "Megabytes";
});

}  // namespace
}  // namespace headsetmgmt::test_support
