// SPDX-License-Identifier: Apache-2.0
// Tests that the library writes the lines that the phone reads, and that no other is taken for one.

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/phone/flat_interface.h"
#include "headsetmgmt/types.h"

#include "program/phone/library_lines.h"
#include "support/fake_host.h"

namespace headsetmgmt::program {
namespace {

using test_support::FakeHost;
using test_support::fresh_fake_host;
using test_support::record_host_log_line;
using Kind = LibraryLine::Kind;
/// Kinds of lines with their texts.
using Lines = std::vector<std::pair<Kind, std::string>>;

constexpr char good_document[] =
    R"({"templateConfiguration": {"modelSpecificSettings": [
        {"models": ["Varos"], "modelFirmware": [{"firmwareName": "LATEST"}]}]}})";

std::shared_ptr<AccessoryCache> accessory(const std::string& id, int type,
                                          const std::string& serial_number) {
    auto facts = std::make_shared<AccessoryCache>();
    facts->device_id = id;
    facts->accessory_type = type;
    facts->model = "Varos K30";
    facts->software_version = "2-0-4";
    facts->serial_number = serial_number;
    return facts;
}

/// A library that is started, and what it logs.
class LibraryLines : public testing::Test {
protected:
    LibraryLines() {
        const char* servers[] = {"", "", ""};
        EXPECT_TRUE(create_headset_mgmt(record_host_log_line));
        EXPECT_TRUE(start_headset_mgmt("TRM", "1-0-0", "./"));
        EXPECT_TRUE(setHeadsetConfigUrl("http://server/a.json", "http://server/inventory", "",
                                        servers, servers, ""));
    }
    ~LibraryLines() override { stop_headset_mgmt(); }

    /// The lines that the phone reads, of all that there are so far.
    Lines lines() const {
        Lines result;
        for (const auto& [level, text] : host.log_lines()) {
            const LibraryLine line = read_library_line(text);
            if (line.kind != Kind::other) {
                result.emplace_back(line.kind, line.text);
            }
        }
        return result;
    }

    FakeHost& host = fresh_fake_host();
};

TEST_F(LibraryLines, OfADocumentThatIsTaken) {
    configure_headset(accessory("a", HEADSET, "ABCDEFG4"));
    ASSERT_TRUE(host.wait_for_http_requests(1));
    httpResponse(good_document, 200);

    EXPECT_EQ((Lines{{Kind::fetch_queued, ""},
                     {Kind::accessory_model, "Varos K20"},
                     {Kind::document_taken, ""}}),
              lines());
}

TEST_F(LibraryLines, OfADocumentThatACameraTakes) {
    configure_headset(accessory("a", CAMERA, "CM000991"));
    ASSERT_TRUE(host.wait_for_http_requests(1));
    httpResponse(good_document, 200);

    EXPECT_EQ((Lines{{Kind::fetch_queued, ""},
                     {Kind::accessory_model, "Varos K30"},
                     {Kind::document_taken, ""}}),
              lines());
}

TEST_F(LibraryLines, OfASecondAccessoryThatJoinsTheFetch) {
    configure_headset(accessory("a", HEADSET, "1"));
    configure_headset(accessory("b", HEADSET, "2"));

    EXPECT_EQ((Lines{{Kind::fetch_queued, ""}}), lines());
}

TEST_F(LibraryLines, OfADocumentWithoutAnEntry) {
    configure_headset(accessory("a", HEADSET, "1"));
    ASSERT_TRUE(host.wait_for_http_requests(1));
    httpResponse(R"({"templateConfiguration": {}})", 200);

    EXPECT_EQ((Lines{{Kind::fetch_queued, ""},
                     {Kind::accessory_model, "Varos K30"},
                     {Kind::document_failed, ""}}),
              lines());
}

// The library logs such a document from the fault on, here all of it.
TEST_F(LibraryLines, OfATextThatIsNotJsonAndReadsLikeALine) {
    configure_headset(accessory("a", HEADSET, "1"));
    ASSERT_TRUE(host.wait_for_http_requests(1));
    httpResponse("success", 200);

    EXPECT_EQ((Lines{{Kind::fetch_queued, ""}, {Kind::document_failed, ""}}), lines());
}

TEST_F(LibraryLines, OfADocumentThatNobodyAwaits) {
    configure_headset(accessory("a", HEADSET, "1"));
    ASSERT_TRUE(host.wait_for_http_requests(1));
    remove_peripheral("a");
    httpResponse(good_document, 200);

    EXPECT_EQ((Lines{{Kind::fetch_queued, ""}, {Kind::document_dropped, ""}}), lines());
}

TEST_F(LibraryLines, OfAReportThatCannotBeBuilt) {
    const auto nameless = accessory("a", HEADSET, "");
    configure_headset(nameless);
    ASSERT_TRUE(host.wait_for_http_requests(1));
    send_inventory(nameless);

    ASSERT_TRUE(host.wait_until([this] {
        const Lines written = lines();
        return !written.empty() && written.back().first == Kind::report_failed;
    }));
    EXPECT_EQ((Lines{{Kind::fetch_queued, ""},
                     {Kind::report_begun, ""},
                     {Kind::report_without_serial_number, ""},
                     {Kind::report_failed, ""}}),
              lines());
}

TEST_F(LibraryLines, OfAReportThatIsBuilt) {
    const auto complete = accessory("a", HEADSET, "1");
    configure_headset(complete);
    send_inventory(complete);

    ASSERT_TRUE(host.wait_for_http_requests(2));
    EXPECT_EQ((Lines{{Kind::fetch_queued, ""}, {Kind::report_begun, ""}}), lines());
}

TEST(ReadLibraryLine, LinesOfOtherComponentsSayNothing) {
    for (const char* line : {
             "parse_remote_default_config: Success",
             ": parse_remote_default_config: Success",
             "Lib::ConfigManagerImpl: parse_remote_default_config: Success",
             "HeadsetConfigImpl: update_from_server: parse_remote_default_config: Success",
             "HeadsetConfigImpl: parse_remote_default_config: Success.",
             "HeadsetConfigImpl: on_fetch_config_success: no configuration in progress, dropping "
             "data",
             "Lib::ConfigManagerImpl: on_fetch_config_failure: no configuration in progress, "
             "dropping data",
         }) {
        EXPECT_EQ(Kind::other, read_library_line(line).kind) << line;
    }
}

}  // namespace
}  // namespace headsetmgmt::program
