// SPDX-License-Identifier: Apache-2.0
// Tests of fetches of one URL that wait together, and of the phone that joins them.

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "headsetmgmt/types.h"

#include "program/network/scripted_server.h"
#include "program/phone/joined_fetches.h"
#include "program/phone/phone_host.h"
#include "program/phone/phone_wording.h"

namespace headsetmgmt::program {
namespace {

using testing::StartsWith;

TEST(JoinedFetches, TheFirstOfAUrlNeedsATransferAndTheOthersJoinIt) {
    JoinedFetches fetches;

    EXPECT_TRUE(fetches.add("http://server/a"));
    EXPECT_FALSE(fetches.add("http://server/a"));
    EXPECT_TRUE(fetches.add("http://server/b"));
    EXPECT_FALSE(fetches.add("http://server/a"));
}

TEST(JoinedFetches, AreAnsweredEachOnce) {
    JoinedFetches fetches;
    fetches.add("http://server/a");
    fetches.add("http://server/a");
    fetches.add("http://server/b");

    EXPECT_EQ(2, fetches.take("http://server/a"));
    EXPECT_EQ(0, fetches.take("http://server/a"));
    EXPECT_EQ(1, fetches.take("http://server/b"));
}

TEST(JoinedFetches, NeedANewTransferOnceTheLastOneHasEnded) {
    JoinedFetches fetches;
    fetches.add("http://server/a");
    fetches.take("http://server/a");

    EXPECT_TRUE(fetches.add("http://server/a"));
}

/// A phone with one headset, whose server gives each request the same answer.
class PhoneWithOneHeadset {
public:
    explicit PhoneWithOneHeadset(const std::string& answer) : server({{answer}}) {
        options.bench.config_url = server.url("/of-the-accessory");
        // The run ends no sooner than the report, which is sent after all earlier requests.
        options.bench.inventory_url = server.url("/inventory");
        AccessoryCache headset;
        headset.device_id = "desk";
        headset.accessory_type = HEADSET;
        headset.software_version = "2-0-4";
        headset.model = "Varos K30";
        headset.serial_number = "1";
        options.bench.accessories = {headset};
        options.verbose = true;
    }

    /// Has the host asked for `path` three times before anything else, and runs it; its lines.
    std::string run_asked_thrice_for(const std::string& path) {
        Output output(false, phone_event_in_words);
        PhoneHost host(options, output);
        const std::string url = server.url(path);
        for (int request = 0; request < 3; ++request) {
            host.request(HTTP_REQUEST_GET, url.c_str(), nullptr);
        }
        testing::internal::CaptureStdout();
        host.run();
        return testing::internal::GetCapturedStdout();
    }

    /// How many requests for `path` reached the server.
    std::ptrdiff_t requests_for(const std::string& path) const {
        const std::vector<std::string> requests = server.requests();
        return std::count_if(requests.begin(), requests.end(), [&path](const std::string& request) {
            return testing::Value(request, StartsWith("GET " + path + " "));
        });
    }

    PhoneOptions options;

private:
    ScriptedServer server;
};

std::size_t count_of(const std::string& piece, const std::string& text) {
    std::size_t count = 0;
    for (std::size_t at = text.find(piece); at != std::string::npos;
         at = text.find(piece, at + 1)) {
        ++count;
    }
    return count;
}

TEST(PhoneHostNetwork, MakesOneTransferOfRequestsThatWaitTogetherAndAnswersEachOnce) {
    const std::string document = R"({"templateConfiguration": {}})";
    PhoneWithOneHeadset phone("HTTP/1.1 200 OK\r\nContent-Length: " +
                              std::to_string(document.size()) + "\r\n\r\n" + document);

    const std::string lines = phone.run_asked_thrice_for("/asked-thrice");

    EXPECT_EQ(1, phone.requests_for("/asked-thrice")) << lines;
    EXPECT_EQ(1, phone.requests_for("/of-the-accessory")) << lines;
    // The phone reports the result of each answer.
    EXPECT_EQ(4U, count_of("\ndocument ", lines)) << lines;
}

TEST(PhoneHostNetwork, AnswersEachOfTheRequestsThatWaitTogetherWithTheirFailureOnce) {
    PhoneWithOneHeadset phone("HTTP/1.1 500 Internal Server Error\r\nContent-Length: 0\r\n\r\n");
    phone.options.give_up_after = 3;

    const std::string lines = phone.run_asked_thrice_for("/asked-thrice");

    EXPECT_EQ(1, phone.requests_for("/asked-thrice")) << lines;
    EXPECT_EQ(2, phone.requests_for("/of-the-accessory")) << lines;
    // Three failures of the one and at least one of the other, but no more than were asked for.
    const std::size_t failures = count_of("on_fetch_config_failure reason code: 500", lines);
    EXPECT_LE(4U, failures) << lines;
    EXPECT_GE(3 + count_of("configure_accessory_task: pending fetch config", lines), failures)
        << lines;
}

}  // namespace
}  // namespace headsetmgmt::program
