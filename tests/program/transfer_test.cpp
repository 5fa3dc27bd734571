// Tests of single requests: answers, limits, servers that fail, time-outs and interruptions.

#include <array>
#include <chrono>
#include <cstddef>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program/phone/transfer.h"
#include "scripted_server.h"

namespace headsetmgmt::program {
namespace {

using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::StartsWith;

TransferResult get(Transfers& transfers, const std::string& url) {
    return transfers.perform({url, false, ""});
}

/// What is too long for a test to wait for.
constexpr milliseconds very_long = std::chrono::minutes(10);

TransferLimits limits_of(std::size_t bytes) {
    TransferLimits limits;
    limits.bytes = bytes;
    return limits;
}

/// A listener whose queue of connections is full, so that the system leaves further ones
/// unanswered.
class FullListener {
public:
    FullListener() : listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        bind(listener, generic, length);
        listen(listener, 0);
        getsockname(listener, generic, &length);
        port = ntohs(address.sin_port);
        for (int& client : clients) {
            client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            connect(client, generic, length);
        }
    }
    ~FullListener() {
        for (const int client : clients) {
            close(client);
        }
        close(listener);
    }

    FullListener(const FullListener&) = delete;
    FullListener& operator=(const FullListener&) = delete;

    std::string url() const { return "http://127.0.0.1:" + std::to_string(port) + "/"; }

private:
    int listener;
    std::array<int, 8> clients = {};
    unsigned int port = 0;
};

TransferLimits patient_limits() {
    TransferLimits limits;
    limits.total = very_long;
    limits.connect = very_long;
    limits.stall = std::chrono::minutes(10);
    return limits;
}

TEST(Transfers, GoodAnswerIsHandedOverWhole) {
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n{\"a\": 1}"}});
    Transfers transfers{TransferLimits()};

    const TransferResult result = get(transfers, server.url("/a/b.json?c=d"));

    EXPECT_EQ(200, result.status);
    EXPECT_EQ("{\"a\": 1}", result.body);
    EXPECT_EQ("", result.error);
    EXPECT_FALSE(result.interrupted);
    ASSERT_EQ(1U, server.requests().size());
    EXPECT_THAT(server.requests()[0], StartsWith("GET /a/b.json?c=d HTTP/1.1\r\n"));
    EXPECT_THAT(server.requests()[0], HasSubstr("\r\nUser-Agent: headsetmgmt-phone\r\n"));
}

TEST(Transfers, AnyByteMayStandInABody) {
    const std::string body("\0a\xff\n\0", 5);
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n" + body}});
    Transfers transfers{TransferLimits()};

    EXPECT_EQ(body, get(transfers, server.url()).body);
}

TEST(Transfers, StatusIsTheServers) {
    const ScriptedServer server(
        {{"HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\ngone"},
         {"HTTP/1.1 503 Service Unavailable\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"}});
    Transfers transfers{TransferLimits()};

    const TransferResult missing = get(transfers, server.url());
    const TransferResult unavailable = get(transfers, server.url());

    EXPECT_EQ(404, missing.status);
    EXPECT_EQ("gone", missing.body);
    EXPECT_EQ("", missing.error);
    EXPECT_EQ(503, unavailable.status);
    EXPECT_EQ("", unavailable.error);
}

TEST(Transfers, PostSendsItsBodyAsJson) {
    const ScriptedServer server({{"HTTP/1.1 202 Accepted\r\nContent-Length: 0\r\n\r\n"}});
    Transfers transfers{TransferLimits()};

    const TransferResult result = transfers.perform({server.url("/inventory"), true, "{\"a\":1}"});

    EXPECT_EQ(202, result.status);
    ASSERT_EQ(1U, server.requests().size());
    EXPECT_THAT(server.requests()[0], StartsWith("POST /inventory HTTP/1.1\r\n"));
    EXPECT_THAT(server.requests()[0], HasSubstr("\r\nContent-Type: application/json\r\n"));
    EXPECT_THAT(server.requests()[0], testing::EndsWith("\r\n\r\n{\"a\":1}"));
}

TEST(Transfers, EmptyPostIsAPostStill) {
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"}});
    Transfers transfers{TransferLimits()};

    EXPECT_EQ(200, transfers.perform({server.url(), true, ""}).status);
    EXPECT_THAT(server.requests().at(0), StartsWith("POST / HTTP/1.1\r\n"));
}

TEST(Transfers, AnswerOfExactlyTheLimitIsTaken) {
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n0123456789"}});
    Transfers transfers{limits_of(10)};

    const TransferResult result = get(transfers, server.url());

    EXPECT_EQ(200, result.status);
    EXPECT_EQ("0123456789", result.body);
}

TEST(Transfers, AnswerAboveTheLimitIsRefused) {
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nContent-Length: 11\r\n\r\n0123456789a"}});
    Transfers transfers{limits_of(10)};

    const TransferResult result = get(transfers, server.url());

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.body);
    EXPECT_EQ("the answer is larger than the limit of 10 bytes (--limit)", result.error);
    EXPECT_FALSE(result.interrupted);
}

TEST(Transfers, LimitHoldsWithoutALength) {
    const ScriptedServer server({{"HTTP/1.0 200 OK\r\n\r\n0123456789a"}});
    Transfers transfers{limits_of(10)};

    EXPECT_EQ("the answer is larger than the limit of 10 bytes (--limit)",
              get(transfers, server.url()).error);
}

TEST(Transfers, LimitHoldsForAllChunksTogether) {
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                  "6\r\n012345\r\n5\r\n6789a\r\n0\r\n\r\n"}});
    Transfers transfers{limits_of(10)};

    EXPECT_EQ("the answer is larger than the limit of 10 bytes (--limit)",
              get(transfers, server.url()).error);
}

TEST(Transfers, AnswerWithoutALengthEndsWithTheConnection) {
    const ScriptedServer server({{"HTTP/1.0 200 OK\r\n\r\n0123456789"}});
    Transfers transfers{limits_of(10)};

    EXPECT_EQ("0123456789", get(transfers, server.url()).body);
}

TEST(Transfers, RefusedConnectionIsAnError) {
    const std::string port = std::to_string(closed_port());
    Transfers transfers{TransferLimits()};

    const TransferResult result = get(transfers, "http://127.0.0.1:" + port + "/");

    EXPECT_EQ(0, result.status);
    EXPECT_THAT(result.error, StartsWith("Failed to connect to 127.0.0.1 port " + port));
    EXPECT_FALSE(result.interrupted);
}

TEST(Transfers, HalfAnAnswerIsNone) {
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"half\":"}});
    Transfers transfers{TransferLimits()};

    const TransferResult result = get(transfers, server.url());

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.body);
    EXPECT_EQ("transfer closed with 92 bytes remaining to read", result.error);
}

TEST(Transfers, ChunksWithoutAnEndAreNoAnswer) {
    const ScriptedServer server(
        {{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\n{\"a\"\r\n"}});
    Transfers transfers{TransferLimits()};

    const TransferResult result = get(transfers, server.url());

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.body);
    EXPECT_NE("", result.error);
}

TEST(Transfers, ConnectionThatEndsWithoutAWordIsAnError) {
    const ScriptedServer server({{""}});
    Transfers transfers{TransferLimits()};

    const TransferResult result = get(transfers, server.url());

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("Empty reply from server", result.error);
}

TEST(Transfers, ServerThatSaysNothingTimesOut) {
    const ScriptedServer server({{"", true}});
    TransferLimits limits = patient_limits();
    limits.total = milliseconds(100);
    Transfers transfers{limits};

    const TransferResult result = get(transfers, server.url());

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("not complete after 0.1 s (--timeout)", result.error);
    EXPECT_FALSE(result.interrupted);
    EXPECT_GE(result.duration, milliseconds(100));
}

TEST(Transfers, ServerThatStopsHalfWayTimesOut) {
    const ScriptedServer server(
        {{"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"half\":", true}});
    TransferLimits limits = patient_limits();
    limits.total = milliseconds(200);
    Transfers transfers{limits};

    const TransferResult result = get(transfers, server.url());

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.body);
    EXPECT_EQ("not complete after 0.2 s (--timeout)", result.error);
}

TEST(Transfers, ServerThatTakesNoConnectionIsLeftAfterTheLimitForThat) {
    const FullListener listener;
    TransferLimits limits = patient_limits();
    limits.connect = milliseconds(100);
    Transfers transfers{limits};

    const TransferResult result = get(transfers, listener.url());

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("no connection after 0.1 s", result.error);
}

TEST(Transfers, ConnectionThatTheWholeTimeDoesNotSufficeForIsNamed) {
    const FullListener listener;
    TransferLimits limits = patient_limits();
    limits.total = milliseconds(100);
    limits.connect = milliseconds(100);
    Transfers transfers{limits};

    EXPECT_EQ("no connection after 0.1 s (--timeout)", get(transfers, listener.url()).error);
}

TEST(Transfers, ServerThatSpeaksNoTlsIsToldAsOnePossibility) {
    const ScriptedServer server({{"", true}});
    TransferLimits limits = patient_limits();
    limits.connect = milliseconds(100);
    Transfers transfers{limits};

    EXPECT_EQ("no connection, or no TLS handshake, after 0.1 s",
              get(transfers, "HTTPS" + server.url().substr(4)).error);
}

TEST(Transfers, InterruptionEndsARequestThatIsUnderWay) {
    ScriptedServer server({{"", true}});
    Transfers transfers{patient_limits()};
    TransferResult result;
    std::thread network([&] { result = get(transfers, server.url()); });

    const bool came = server.wait_for_request();
    transfers.interrupt();
    network.join();

    EXPECT_TRUE(came);
    EXPECT_TRUE(result.interrupted);
    EXPECT_EQ("interrupted", result.error);
    EXPECT_EQ(0, result.status);
    EXPECT_LT(result.duration, very_long);
}

TEST(Transfers, InterruptionEndsEveryLaterRequestToo) {
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"}});
    Transfers transfers{patient_limits()};

    transfers.interrupt();

    EXPECT_TRUE(get(transfers, server.url()).interrupted);
    EXPECT_TRUE(get(transfers, server.url()).interrupted);
    EXPECT_EQ(0U, server.requests().size());
}

TEST(Transfers, RequestAfterAFailedOneIsAsGoodAsTheFirst) {
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nx"},
                                 {"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}"}});
    Transfers transfers{TransferLimits()};

    EXPECT_NE("", get(transfers, server.url()).error);
    const TransferResult second = get(transfers, server.url());

    EXPECT_EQ("", second.error);
    EXPECT_EQ("{}", second.body);
}

TEST(Transfers, ReportsAreNotPostedByTftp) {
    Transfers transfers{TransferLimits()};

    const TransferResult result = transfers.perform({"tftp://127.0.0.1/inventory", true, "{}"});

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("protocol \"tftp\" is refused: a report is posted by http or https", result.error);
}

TEST(Transfers, OtherProtocolsAreRefused) {
    Transfers transfers{TransferLimits()};

    EXPECT_EQ("protocol \"file\" is refused: a document is fetched by http, https or tftp",
              get(transfers, "file:///etc/hostname").error);
    EXPECT_EQ("protocol \"ftp\" is refused: a document is fetched by http, https or tftp",
              get(transfers, "ftp://127.0.0.1/c.json").error);
}

TEST(Transfers, TftpPortThatIsNoneIsRefusedAtOnce) {
    Transfers transfers{patient_limits()};

    const TransferResult result = get(transfers, "tftp://127.0.0.1:99999/c.json");

    EXPECT_EQ(0, result.status);
    EXPECT_NE("", result.error);
    EXPECT_FALSE(result.interrupted);
}

TEST(Transfers, TftpServerThatIsNotThereDoesNotOutlastTheLimit) {
    TransferLimits limits = patient_limits();
    limits.total = milliseconds(100);
    Transfers transfers{limits};

    const TransferResult result =
        get(transfers, "tftp://127.0.0.1:" + std::to_string(closed_port()) + "/c.json");

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("not complete after 0.1 s (--timeout)", result.error);
}

TEST(RemarkOn, TellsWhatAStatusLacks) {
    EXPECT_EQ("no document in the answer", remark_on(204));
    EXPECT_EQ("a redirect without Location", remark_on(300));
    EXPECT_EQ("a redirect without Location", remark_on(399));
    EXPECT_EQ("", remark_on(304));
    EXPECT_EQ("", remark_on(299));
    EXPECT_EQ("", remark_on(404));
}

TEST(FailureOf, IsTheErrorOrTheStatusWithItsRemark) {
    TransferResult result;
    result.error = "Empty reply from server";
    EXPECT_EQ("Empty reply from server", failure_of(result));
    result.error = "";
    result.status = 404;
    EXPECT_EQ("status 404", failure_of(result));
    result.status = 204;
    EXPECT_EQ("status 204, no document in the answer", failure_of(result));
}

TEST(IsTftpUrl, AnswersByTheProtocolInAnyCase) {
    EXPECT_TRUE(is_tftp_url("tftp://10.0.0.1/c.json"));
    EXPECT_TRUE(is_tftp_url("TFTP://10.0.0.1/c.json"));
    EXPECT_FALSE(is_tftp_url("http://10.0.0.1/tftp://c.json"));
    EXPECT_FALSE(is_tftp_url("tftp:/"));
    EXPECT_FALSE(is_tftp_url("c.json"));
    EXPECT_FALSE(is_tftp_url(""));
}

}  // namespace
}  // namespace headsetmgmt::program
