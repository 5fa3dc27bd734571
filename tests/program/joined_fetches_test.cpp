// Tests of fetches of one URL that wait together, and of the phone that joins them.

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "headsetmgmt/types.h"

#include "program/phone/joined_fetches.h"
#include "program/phone/phone_host.h"
#include "scripted_server.h"

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

TEST(PhoneHostNetwork, MakesOneTransferOfRequestsThatWaitTogether) {
    const std::string document = R"({"templateConfiguration": {}})";
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nContent-Length: " +
                                  std::to_string(document.size()) + "\r\n\r\n" + document}});
    PhoneOptions options;
    options.bench.config_url = server.url("/of-the-accessory");
    // The run ends no sooner than the report, which is sent after all requests below.
    options.bench.inventory_url = server.url("/inventory");
    AccessoryCache headset;
    headset.device_id = "desk";
    headset.accessory_type = HEADSET;
    headset.software_version = "2-0-4";
    headset.model = "Varos K30";
    headset.serial_number = "1";
    options.bench.accessories = {headset};
    Output output(true, phone_event_in_words);
    PhoneHost host(options, output);
    const std::string asked_thrice = server.url("/asked-thrice");
    for (int request = 0; request < 3; ++request) {
        host.request(HTTP_REQUEST_GET, asked_thrice.c_str(), nullptr);
    }

    testing::internal::CaptureStdout();
    host.run();
    const std::string events = testing::internal::GetCapturedStdout();

    const std::vector<std::string> requests = server.requests();
    EXPECT_EQ(1, std::count_if(requests.begin(), requests.end(),
                               [](const std::string& request) {
                                   return testing::Value(request, StartsWith("GET /asked-thrice "));
                               }))
        << events;
}

}  // namespace
}  // namespace headsetmgmt::program
