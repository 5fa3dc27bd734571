// SPDX-License-Identifier: Apache-2.0
// Fuzzes a configuration document, any bytes, through parsing and applying.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "headsetmgmt/config.h"

#include "fuzz/oracle.h"
#include "fuzz/second_reader.h"
#include "support/config_bench.h"

namespace headsetmgmt::fuzz {
namespace {

using test_support::Calls;
using test_support::ConfigBench;
using test_support::FakeAccessory;
using test_support::Lines;
using test_support::OpenConfig;

using Map = std::map<int, ConfigParam>;

/// Everything that one document brought about.
struct Outcome {
    bool applied;
    Calls calls;
    Lines lines;
    Map settings;
};

struct HeadsetWithDongle : FakeAccessory {
    HeadsetWithDongle() {
        model = "Varos K30";
        serial_number = "HIJKLMN7456";
        software_version = "2-1-0";
        dongle_model = "Varos Link";
        dongle_version = "1-3-0";
    }
};

struct Camera : FakeAccessory {
    Camera() : FakeAccessory(CAMERA) {
        model = "Varos Eye 2";
        software_version = "3-0-1";
    }
};

bool starts_with(const std::string& text, const std::string& beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

std::string lower(std::string text) {
    for (char& character : text) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character - 'A' + 'a');
        }
    }
    return text;
}

/// The calls that send the settings that `chosen` picks, in the order of their ids.
template <typename Choice>
Calls sent(const Map& settings, Choice chosen) {
    Calls calls;
    for (const auto& [usage_id, setting] : settings) {
        if (chosen(setting)) {
            calls.push_back("apply_config_to_device(\"accessory\", \"" + setting.name + "\", " +
                            std::to_string(usage_id) + ", \"" + setting.value + "\")");
        }
    }
    return calls;
}

Calls sent_to_device(const Calls& calls) {
    Calls result;
    for (const std::string& call : calls) {
        if (starts_with(call, "apply_config_to_device(")) {
            result.push_back(call);
        }
    }
    return result;
}

void expect_whole_map_or_nothing(const Outcome& outcome) {
    const Calls calls = sent_to_device(outcome.calls);
    expect(calls.size() <= outcome.settings.size(),
           "at most as many settings are sent as there are");
    if (calls.empty()) {
        return;
    }
    const Calls wanted = sent(outcome.settings, [](const ConfigParam& setting) {
        return lower(setting.access) == "admin";
    });
    expect(calls == wanted, "the administrator's settings are sent, each once, as the map has them",
           calls.front());
}

void expect_one_firmware_request(const Outcome& outcome) {
    const std::size_t others = outcome.calls.size() - sent_to_device(outcome.calls).size();
    expect(others <= 1, "the host is asked about firmware once at most");
    expect(others == 0 || outcome.applied, "whose firmware block is acted upon is applied");
}

void expect_sound_map(const Map& settings) {
    for (const auto& [usage_id, setting] : settings) {
        expect(usage_id == setting.usage_id, "a setting stands under its own id", setting.name);
        expect(!setting.name.empty(), "a setting has a name");
        expect(setting.access == "User" || lower(setting.access) == "admin",
               "a setting is the user's or the administrator's", setting.access);
    }
}

void expect_well_formed(const Lines& lines) {
    for (const std::string& line : lines) {
        const std::size_t level_end = line.find(' ');
        expect(line.compare(level_end + 1, 19, "HeadsetConfigImpl: ") == 0,
               "a line begins with its component", line);
        expect(line.size() > level_end + 20, "a line says something", line);
    }
}

Outcome apply(ConfigBench& bench, OpenConfig& config, const std::string& document) {
    bench.clear_lines();
    bench.plugins.config_driver.take_calls();
    Outcome outcome;
    outcome.applied = config.update_from_server(document);
    outcome.calls = bench.driver_calls();
    outcome.lines = bench.lines();
    outcome.settings = config.retrieve_config();

    expect(bench.locks_held() == 0, "no lock is left held");
    expect_whole_map_or_nothing(outcome);
    expect_one_firmware_request(outcome);
    expect_sound_map(outcome.settings);
    expect_well_formed(outcome.lines);
    return outcome;
}

/// The same map under the same ids, in every text.
bool same_settings(const Map& left, const Map& right) {
    return std::equal(
        left.begin(), left.end(), right.begin(), right.end(), [](const auto& one, const auto& two) {
            return one.first == two.first && one.second.name == two.second.name &&
                   one.second.value == two.second.value && one.second.access == two.second.access;
        });
}

/// What the library read is what another parser reads.
void expect_read_again(const Outcome& outcome, const OpenConfig& config,
                       const std::string& document, const Device& device) {
    const std::optional<Reading> reading = read_again(document, device);
    if (!reading) {
        return;
    }
    expect(outcome.applied == reading->applied, "the firmware block decides on the result");
    expect(config.last_updated_time == reading->updated_time, "the time is the document's");
    expect(same_settings(outcome.settings, reading->settings), "the settings are the document's");
    const bool asked = outcome.calls.size() > sent_to_device(outcome.calls).size();
    expect((asked ? outcome.calls.back() : "") == reading->firmware_call,
           "the firmware is the document's", reading->firmware_call);
}

/// The lines that do not depend on what was there before the document.
Lines lines_of_document(const Outcome& outcome) {
    Lines lines;
    for (const std::string& line : outcome.lines) {
        if (line.find("current map size: ") == std::string::npos &&
            line.find("Model change detected !!") == std::string::npos) {
            lines.push_back(line);
        }
    }
    return lines;
}

void expect_same(const Outcome& left, const Outcome& right, const char* claim) {
    expect(left.applied == right.applied, claim, "another result");
    expect(left.calls == right.calls, claim, "other calls");
    expect(same_settings(left.settings, right.settings), claim, "other settings");
    expect(lines_of_document(left) == lines_of_document(right), claim, "other lines");
}

void expect_reset_sends_all(ConfigBench& bench, OpenConfig& config) {
    bench.plugins.config_driver.take_calls();
    config.reset_config();
    const Calls wanted = sent(config.retrieve_config(), [](const ConfigParam&) { return true; });
    expect(bench.driver_calls() == wanted, "a reset sends every setting once");
}

}  // namespace
}  // namespace headsetmgmt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace headsetmgmt::fuzz;
    const std::string document(reinterpret_cast<const char*>(data), size);
    const HeadsetWithDongle headset;
    const Camera other;

    ConfigBench bench;
    bench.plugins.config_driver.hook = [&bench](const std::string& call) {
        expect(bench.plugins.mutex_factory.held_by_this_thread() == 0,
               "no lock is held while the host is called", call);
    };
    OpenConfig config("accessory", &headset);
    const Outcome first = apply(bench, config, document);
    expect_read_again(first, config, document,
                      {"accessory", "Varos K30", "2-1-0", "Varos Link", "1-3-0"});
    expect_same(first, apply(bench, config, document), "a document applied again does the same");
    expect_reset_sends_all(bench, config);

    config.update(&other);
    OpenConfig fresh("accessory", &other);
    const Outcome anew = apply(bench, fresh, document);
    expect_read_again(anew, fresh, document, {"accessory", "Varos Eye 2", "3-0-1", "", ""});
    expect_same(apply(bench, config, document), anew,
                "another model is configured as if it were new");

    const std::size_t nul = document.find('\0');
    if (nul != std::string::npos && nul != 0) {
        OpenConfig up_to_nul("accessory", &headset);
        expect_same(first, apply(bench, up_to_nul, document.substr(0, nul)),
                    "a document ends at its first NUL");
    }
    return 0;
}
