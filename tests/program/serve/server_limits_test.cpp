// SPDX-License-Identifier: Apache-2.0
// The time that a server grants its clients.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "program/serve/http_client.h"
#include "program/serve/server.h"

namespace headsetmgmt::program {
namespace {

using std::chrono::milliseconds;

struct ServerLimitsTest : testing::Test {
    TemporaryFolder folder;
    SeenEvents seen;
    std::optional<Server> server;

    void start(const TimeLimits& limits) {
        server.emplace(ServerOptions{folder.path.string(), "127.0.0.1", 0, limits},
                       [this](const Event& event) { seen.add(event); });
    }

    /// Sends a byte now and then until the server closes: never still, and never done.
    void drip(const RawClient& client) const {
        constexpr milliseconds pause(20);
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!client.is_closed_within(pause)) {
            ASSERT_LT(std::chrono::steady_clock::now(), end);
            client.send_more("x");
        }
    }
};

TEST_F(ServerLimitsTest, HeaderThatDripsIsBrokenOff) {
    TimeLimits limits;
    limits.header = milliseconds(200);
    start(limits);
    const RawClient client(server->port(), "GET /a HTTP/1.1\r\nA: ");

    drip(client);

    EXPECT_EQ(seen.wait_for("request").value("error", ""),
              "the header was not complete after 200 ms");
    EXPECT_EQ(seen.wait_for("request").value("path", ""), "/a");
}

TEST_F(ServerLimitsTest, FirstLineThatDripsIsBrokenOff) {
    TimeLimits limits;
    limits.header = milliseconds(200);
    start(limits);
    const RawClient client(server->port(), "GET /");

    drip(client);

    EXPECT_EQ(seen.wait_for("connection").value("error", ""),
              "no request: the header was not complete after 200 ms");
}

TEST_F(ServerLimitsTest, BodyThatDripsIsBrokenOff) {
    TimeLimits limits;
    limits.body = milliseconds(300);
    start(limits);
    const RawClient client(server->port(),
                           "POST /r HTTP/1.1\r\nHost: x\r\nContent-Length: 1000000\r\n\r\n{");

    drip(client);

    EXPECT_EQ(seen.wait_for("request").value("error", ""),
              "the body was not complete after 300 ms");
}

TEST_F(ServerLimitsTest, BodyThatStallsIsBrokenOff) {
    TimeLimits limits;
    limits.body_pause = milliseconds(1000);
    start(limits);
    const RawClient client(server->port(),
                           "POST /r HTTP/1.1\r\nHost: x\r\nContent-Length: 100\r\n\r\n{");

    EXPECT_EQ(client.read_all(), "");
    EXPECT_EQ(seen.wait_for("request").value("error", ""), "nothing moved for 1 s");
}

struct ServerAnswerLimitsTest : ServerLimitsTest {
    static constexpr std::uintmax_t size = 16UL * 1024 * 1024;
    static constexpr int client_buffer = 4096;

    ServerAnswerLimitsTest() {
        folder.write("big.bin", "");
        fs::resize_file(folder.path / "big.bin", size);
    }
};

TEST_F(ServerAnswerLimitsTest, SlowReaderGetsTheWholeAnswer) {
    TimeLimits limits;
    limits.header = limits.body = limits.body_pause = limits.answer_pause = milliseconds(1000);
    start(limits);
    const RawClient client(server->port(), "GET /big.bin HTTP/1.1\r\nHost: x\r\n\r\n",
                           client_buffer);

    // Far longer than any limit, and far less than the system keeps ready for it.
    std::size_t count = 0;
    const auto end = std::chrono::steady_clock::now() + milliseconds(2500);
    while (std::chrono::steady_clock::now() < end) {
        count += client.read_some().size();
        std::this_thread::sleep_for(milliseconds(50));
    }
    count += client.read_all().size();

    EXPECT_GT(count, size);
    server->stop();
    EXPECT_EQ(seen.wait_for("request").value("bytes", std::uintmax_t{0}), size);
}

TEST_F(ServerAnswerLimitsTest, ReaderThatStandsStillIsDisconnected) {
    TimeLimits limits;
    limits.answer_pause = milliseconds(300);
    start(limits);
    const RawClient client(server->port(), "GET /big.bin HTTP/1.1\r\nHost: x\r\n\r\n",
                           client_buffer);

    EXPECT_EQ(seen.wait_for("request").value("error", ""), "nothing moved for 300 ms");
}

}  // namespace
}  // namespace headsetmgmt::program
