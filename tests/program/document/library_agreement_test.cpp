// SPDX-License-Identifier: Apache-2.0
// Holds the document reader against the library: same settings in the same order, same firmware,
// same accessories that cannot use the document.

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/phone/flat_interface.h"
#include "headsetmgmt/types.h"

#include "program/document/outcome.h"
#include "program/phone/hand_over.h"
#include "program/phone/library_lines.h"
#include "support/fake_host.h"
#include "support/virtual_time.h"

namespace headsetmgmt::program {
namespace {

using test_support::FakeHost;
using test_support::fresh_fake_host;
using test_support::record_host_log_line;
using test_support::VirtualTime;
using Texts = std::vector<std::string>;

AccessoryCache headset(const std::string& model, const std::string& serial_number,
                       const std::string& version) {
    AccessoryCache facts;
    facts.device_id = "accessory";
    facts.accessory_type = HEADSET;
    facts.model = model;
    facts.serial_number = serial_number;
    facts.software_version = version;
    return facts;
}

std::vector<AccessoryCache> accessories() {
    AccessoryCache with_dongle = headset("Varos K30", "ABCDEFG5", "2-1-0");
    with_dongle.dongle_model = "Varos Link";
    with_dongle.dongle_version = "1-3-0";
    AccessoryCache with_silent_dongle = with_dongle;
    with_silent_dongle.dongle_version = "";
    AccessoryCache camera = headset("Varos Eye 2", "CM000991", "3-0-1");
    camera.accessory_type = CAMERA;
    return {headset("Varos K30", "ABCDEFG5", "2-0-4"),
            headset("Varos K30", "ABCDEFG4", "2-1-0"),
            headset("K", "1", "beta"),
            with_dongle,
            with_silent_dongle,
            camera};
}

/// What the library does to an accessory with a document: calls of host functions, one text each,
/// and at the end whether it can use it.
Texts library_does(const std::string& text, const AccessoryCache& facts) {
    FakeHost& host = fresh_fake_host();
    const VirtualTime clock(1700, VirtualTime::Sleepers::move_the_clock);  // the worker's pauses
    EXPECT_TRUE(create_headset_mgmt(record_host_log_line));
    EXPECT_TRUE(start_headset_mgmt("TRM", "1-0-0", "./"));
    const char* servers[] = {"", "", ""};
    EXPECT_TRUE(setHeadsetConfigUrl("http://server/a.json", "", "", servers, servers, ""));
    EXPECT_TRUE(configure_headset(std::make_shared<AccessoryCache>(facts)));
    EXPECT_TRUE(host.wait_for_http_requests(1));
    httpResponse(text.c_str(), 200);
    stop_headset_mgmt();

    Texts calls;
    bool is_taken = true;
    for (const std::string& event : host.transcript()) {
        if (event.rfind("log ", 0) != 0 && event.rfind("httpRequest ", 0) != 0) {
            calls.push_back(event);
        }
        const std::string failed = "on_fetch_config_success: unable to update config";
        is_taken = is_taken && event.find(failed) == std::string::npos;
    }
    calls.push_back(is_taken ? "taken" : "failed");
    return calls;
}

/// The same, as the reader has it.
Texts reader_says(const std::string& text, const AccessoryCache& facts) {
    using Kind = FirmwareDecision::Kind;
    const DocumentOutcome outcome = read_document(text, {facts}, 3);
    const AccessoryOutcome& accessory = outcome.accessories.front();
    Texts calls;
    if (outcome.fault.empty() && accessory.unsent_reason.empty()) {
        for (const KeptSetting& kept : kept_settings(outcome, accessory)) {
            const ConfigParam& param = kept.setting->param;
            if (is_sent(*kept.setting)) {
                calls.push_back("apply_changes accessory|" + param.name + "|" +
                                std::to_string(param.usage_id) + "|" + param.value);
            }
        }
    }
    if (accessory.firmware.kind == Kind::upgrade) {
        calls.push_back("request_firmware_upgrade accessory|" + accessory.firmware.wanted + "|" +
                        accessory.firmware.firmware_name);
    }
    calls.push_back(accessory.failure.empty() ? "taken" : "failed");
    return calls;
}

/// The documents of the fuzzer, and the examples.
std::vector<std::filesystem::path> document_files() {
    std::vector<std::filesystem::path> files;
    for (const char* folder : {CORPUS_FOLDER, EXAMPLES_FOLDER, E2E_FOLDER}) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

TEST(LibraryAgreement, ReaderPredictsWhatTheLibraryDoesWithEachDocument) {
    const std::vector<std::filesystem::path> files = document_files();
    const std::vector<AccessoryCache> all = accessories();
    std::size_t taken = 0;
    std::size_t next = 0;
    for (const std::filesystem::path& file : files) {
        std::ifstream stream(file, std::ios::binary);
        const std::string text((std::istreambuf_iterator<char>(stream)), {});
        // One accessory after the other: each document meets two of them.
        for (int i = 0; i < 2; ++i) {
            const AccessoryCache& facts = all[next++ % all.size()];
            const Texts done = library_does(text, facts);
            EXPECT_EQ(done, reader_says(text, facts)) << file << ", " << facts.model;
            taken += done.back() == "taken" ? 1U : 0U;
        }
    }
    EXPECT_GE(taken, 20U);
}

/// "a0 taken" for each accessory, in the order of `attached`, as the program concludes from the
/// library's lines when the document is handed to all of them at once.
Texts library_does_to_all(const std::string& text, const std::vector<AccessoryCache>& attached) {
    FakeHost& host = fresh_fake_host();
    const VirtualTime clock(1700, VirtualTime::Sleepers::move_the_clock);
    EXPECT_TRUE(create_headset_mgmt(record_host_log_line));
    EXPECT_TRUE(start_headset_mgmt("TRM", "1-0-0", "./"));
    const char* servers[] = {"", "", ""};
    EXPECT_TRUE(setHeadsetConfigUrl("http://server/a.json", "", "", servers, servers, ""));
    for (const AccessoryCache& facts : attached) {
        EXPECT_TRUE(configure_headset(std::make_shared<AccessoryCache>(facts)));
    }
    EXPECT_TRUE(host.wait_for_http_requests(1));
    HandOver hand_over;
    test_support::HostBehaviour behaviour;
    behaviour.on_log_line = [&](int /*level*/, const std::string& line) {
        hand_over.on_line(read_library_line(line));
    };
    behaviour.on_apply_changes = [&](const test_support::ApplyChangesCall& call) {
        hand_over.on_host_call(call.device_id);
    };
    behaviour.on_firmware_upgrade = [&](const test_support::FirmwareUpgradeCall& call) {
        hand_over.on_host_call(call.device_id);
    };
    host.behave(behaviour);
    httpResponse(text.c_str(), 200);
    host.behave({});
    stop_headset_mgmt();

    DocumentOutcome outcome = read_document(text, attached, 3);
    Texts results;
    for (const Turn& turn : hand_over.turns(attached, outcome.accessories)) {
        results.push_back(turn.facts.device_id + (turn.is_taken ? " taken" : " failed"));
    }
    return results;
}

/// An accessory of one model like the others, whose dongle may decide.
AccessoryCache k30(const std::string& id, const std::string& dongle_model) {
    AccessoryCache facts = headset("Varos K30", "ABCDEFG5", "2-0-4");
    facts.device_id = id;
    facts.dongle_model = dongle_model;
    facts.dongle_version = dongle_model.empty() ? "" : "1-3-0";
    return facts;
}

TEST(LibraryAgreement, EachOfSeveralAccessoriesHasItsOwnResult) {
    const std::string without_calls = R"({"templateConfiguration": {"modelSpecificSettings": [
        {"models": ["K30"], "modelFirmware": [{"firmwareName": "LATEST"}]}]}})";
    const std::string with_settings = R"({"templateConfiguration": {"modelSpecificSettings": [
        {"models": ["K30"], "modelFirmware": [{"firmwareName": "LATEST", "firmwareParams": [
            {"name": "S", "usageId": 34, "value": 1, "access": "Admin"}]}]}]}})";

    for (const std::string& text : {without_calls, with_settings}) {
        EXPECT_EQ((Texts{"a0 taken", "a1 failed", "a2 taken", "a3 failed"}),
                  library_does_to_all(
                      text, {k30("a0", ""), k30("a1", "Link"), k30("a2", ""), k30("a3", "Link")}));
        EXPECT_EQ((Texts{"a1 failed", "a0 taken"}),
                  library_does_to_all(text, {k30("a1", "Link"), k30("a0", "")}));
    }
}

/// A document with one entry for every model: its firmware object has these members, and one
/// setting that is sent.
std::string document_with_firmware(const std::string& members) {
    return R"({"templateConfiguration": {"modelSpecificSettings": [{"models": ["Varos"],
               "modelFirmware": [{)" +
           members + R"(, "firmwareParams": [
               {"name": "S", "usageId": 34, "value": 1, "access": "Admin"}]}]}]}})";
}

TEST(LibraryAgreement, OnEachKindOfFirmwareDecision) {
    for (const char* members : {
             R"("firmwareName": "latest", "firmwareVersion": "9-9-9")",
             R"("firmwareName": "a.img", "firmwareVersion": "current")",
             R"("firmwareName": "a.img")",
             R"("firmwareName": "a.img", "firmwareVersion": 2)",
             R"("firmwareName": "a.img", "firmwareVersion": "2-1-0")",
             R"("firmwareName": "a.img", "firmwareVersion": "2.1.0")",
             R"("firmwareName": "a.img", "firmwareVersion": "2-0-3")",
             R"("firmwareName": "a.img", "firmwareVersion": "3-0")",
             R"("firmwareName": "", "firmwareVersion": "3-0-0")",
             R"("firmwareName": null, "firmwareVersion": "3-0-0")",
         }) {
        const std::string text = document_with_firmware(members);
        for (const AccessoryCache& facts : accessories()) {
            EXPECT_EQ(library_does(text, facts), reader_says(text, facts))
                << members << ", " << facts.model << ", " << facts.software_version;
        }
    }
}

}  // namespace
}  // namespace headsetmgmt::program
