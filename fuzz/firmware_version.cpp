// SPDX-License-Identifier: Apache-2.0
// Fuzzes the upgrade decision: the candidate version on the first line, what the accessory reports
// in the rest.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "headsetmgmt/utilities.h"

#include "config/config_impl.h"
#include "fuzz/input.h"
#include "fuzz/oracle.h"
#include "support/config_bench.h"

namespace {

bool takes_older_versions = true;

}  // namespace

// In the library's place, so that both answers are tried.
bool headset_support_downgrade(headsetmgmt::AccessoryInfoInterface* /*accessory*/) {
    return takes_older_versions;
}

namespace headsetmgmt::fuzz {
namespace {

using config::ConfigImpl;
using test_support::Calls;
using test_support::ConfigBench;
using test_support::OpenConfig;

std::string joined(const std::vector<std::string>& fields) {
    std::string text;
    for (const std::string& field : fields) {
        text += (&field == &fields.front() ? "" : "-") + field;
    }
    return text;
}

/// Digits and hyphens, no empty field: versions whose order nobody can doubt.
bool is_plain(const std::string& version) {
    return version.find_first_not_of("0123456789-") == std::string::npos && !version.empty() &&
           version.front() != '-' && version.back() != '-' &&
           version.find("--") == std::string::npos;
}

/// A version whose fields have no leading zeros and are filled up to the same width: these compare
/// as texts. Fields that are too large for the library's numbers stay what they are.
std::string comparable(const std::vector<std::string>& fields, std::size_t width) {
    std::string text;
    for (const std::string& field : fields) {
        const std::size_t zeros = std::min(field.find_first_not_of('0'), field.size());
        const std::string digits = field.substr(zeros);
        text += std::string(width - digits.size(), '0') + digits + "-";
    }
    return text;
}

bool has_wide_field(const std::vector<std::string>& fields) {
    constexpr std::size_t digits_that_always_fit = 18;
    return std::any_of(fields.begin(), fields.end(), [](const std::string& field) {
        return field.size() > digits_that_always_fit;
    });
}

int decide(ConfigImpl& config, const std::string& candidate, const std::string& reported,
           bool older_too) {
    takes_older_versions = older_too;
    return config.check_firmware_upgrade(candidate, reported);
}

void expect_fields(ConfigImpl& config, const std::string& version) {
    const std::vector<std::string> fields = config.parse_firmware_version(version);
    expect(joined(fields) == version, "the fields make up the version", joined(fields));
    for (const std::string& field : fields) {
        expect(field.find('-') == std::string::npos, "no field holds a hyphen", field);
    }
}

void expect_unchanged_version_kept(ConfigImpl& config, const std::string& version) {
    const int wanted = version.empty() ? ConfigImpl::version_unknown : ConfigImpl::keep;
    expect(decide(config, version, version, true) == wanted, "a version is kept for itself");
    expect(decide(config, version, version, false) == wanted, "a version is kept for itself");
}

/// What holds of any two different versions, whatever they look like.
void expect_sound(int decision, const std::string& candidate, const std::string& reported,
                  bool older_too) {
    if (candidate.empty() || reported.empty()) {
        expect(decision == ConfigImpl::version_unknown, "an empty version leaves it open");
        return;
    }
    constexpr char usable[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-";
    if (candidate.find_first_not_of(usable) != std::string::npos) {
        expect(decision == ConfigImpl::keep, "a name that is no version is not installed");
        return;
    }
    if (older_too) {
        expect(decision == ConfigImpl::change, "any other version is installed");
        return;
    }
    expect(decision == ConfigImpl::change || decision == ConfigImpl::downgrade_refused,
           "another version is installed, or refused as an older one");
}

/// Of two plain versions of as many fields each, the order decides, and both ways agree on it.
void expect_ordered(ConfigImpl& config, const std::string& candidate, const std::string& reported) {
    const std::vector<std::string> candidate_fields = config.parse_firmware_version(candidate);
    const std::vector<std::string> reported_fields = config.parse_firmware_version(reported);
    if (!is_plain(candidate) || !is_plain(reported) || candidate == reported ||
        candidate_fields.size() != reported_fields.size()) {
        return;
    }
    const int forth = decide(config, candidate, reported, false);
    const int back = decide(config, reported, candidate, false);
    expect(forth == ConfigImpl::change || back == ConfigImpl::change,
           "one of two versions is not older than the other");
    if (has_wide_field(candidate_fields) || has_wide_field(reported_fields)) {
        return;
    }
    constexpr std::size_t width = 18;
    const bool older = comparable(candidate_fields, width) < comparable(reported_fields, width);
    expect((forth == ConfigImpl::downgrade_refused) == older, "an older version is refused");
}

void expect_acted_upon(ConfigBench& bench, OpenConfig& config, const std::string& candidate,
                       const std::string& reported) {
    const bool wanted = decide(config, candidate, reported, false) == ConfigImpl::change;
    bench.plugins.config_driver.take_calls();
    config.upgrade_firmware(candidate, "image", reported);
    const Calls calls = bench.driver_calls();
    const Calls request = {"request_upgrade(\"headset\", \"" + candidate + "\", \"image\")"};
    expect(calls == (wanted ? request : Calls{}), "the host is asked once, for the candidate");
    expect(config.pending_firmware == candidate, "the candidate is kept");
}

void decide_on(const std::string& candidate, const std::string& reported) {
    ConfigBench bench;
    OpenConfig config("headset", &bench.accessory);

    expect_fields(config, candidate);
    expect_fields(config, reported);
    expect_unchanged_version_kept(config, candidate);
    if (candidate != reported) {
        for (const bool older_too : {true, false}) {
            expect_sound(decide(config, candidate, reported, older_too), candidate, reported,
                         older_too);
        }
    }
    expect_ordered(config, candidate, reported);
    expect_acted_upon(bench, config, candidate, reported);
    expect(bench.locks_held() == 0, "no lock is left held");
}

}  // namespace
}  // namespace headsetmgmt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    headsetmgmt::fuzz::Input input(data, size);
    const std::string candidate = input.line();
    const std::string reported = input.rest();
    headsetmgmt::fuzz::decide_on(candidate, reported);
    headsetmgmt::fuzz::decide_on(reported, candidate);
    return 0;
}
