// SPDX-License-Identifier: Apache-2.0
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

#include "program/network/scripted_server.h"
#include "program/network/transfer.h"

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

TEST(Transfers, TrailersDoNotMakeTheHeaderIncomplete) {
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                  "2\r\n{}\r\n0\r\nX-Checksum: 1\r\nX-More: 2\r\n\r\n"}});
    Transfers transfers{TransferLimits()};

    const TransferResult result = get(transfers, server.url());

    EXPECT_EQ("", result.error);
    EXPECT_EQ(200, result.status);
    EXPECT_EQ("{}", result.body);
}

TEST(Transfers, HeaderThatBreaksOffIsNoAnswer) {
    const ScriptedServer server(
        {{"HTTP/1.1 200 OK\r\nX-Half: 1\r\n"},
         {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nX-Half: 1\r\n"}});
    Transfers transfers{TransferLimits()};

    EXPECT_EQ("the answer broke off in its header", get(transfers, server.url()).error);
    EXPECT_EQ("the answer broke off in its header", get(transfers, server.url()).error);
}

std::string repeated(const std::string& text, std::size_t times) {
    std::string result;
    for (std::size_t i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}

/// 100 bytes.
const std::string header_line = "X: " + std::string(95, 'x') + "\r\n";

constexpr char too_large_header[] =
    "the answer's headers and trailers are larger than the limit of 262144 bytes";

TEST(Transfers, HeaderBelowItsLimitIsTaken) {
    const ScriptedServer server(
        {{"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n" + repeated(header_line, 2620) + "\r\n{}"}});
    Transfers transfers{TransferLimits()};

    EXPECT_EQ("", get(transfers, server.url()).error);
}

TEST(Transfers, HeaderAboveItsLimitIsRefused) {
    const ScriptedServer server(
        {{"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n" + repeated(header_line, 2622) + "\r\n{}"}});
    Transfers transfers{TransferLimits()};

    const TransferResult result = get(transfers, server.url());

    EXPECT_EQ(too_large_header, result.error);
    EXPECT_EQ(0, result.status);
}

TEST(Transfers, TrailersCountAsTheHeader) {
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                  "2\r\n{}\r\n0\r\n" +
                                  repeated(header_line, 2622) + "\r\n"}});
    Transfers transfers{TransferLimits()};

    const TransferResult result = get(transfers, server.url());

    EXPECT_EQ(too_large_header, result.error);
    EXPECT_EQ("", result.body);
}

TEST(Transfers, InterimAnswersCountAsTheHeader) {
    const ScriptedServer server({{repeated("HTTP/1.1 100 Continue\r\n\r\n", 10486) +
                                  "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}"}});
    Transfers transfers{TransferLimits()};

    EXPECT_EQ(too_large_header, get(transfers, server.url()).error);
}

TEST(Transfers, HeaderLineThatIsTooLongIsNamed) {
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nX: " + std::string(200000, 'x')}});
    Transfers transfers{TransferLimits()};

    EXPECT_EQ("a line of the answer's header is longer than libcurl takes (about 100,000 bytes in "
              "a header, 4,000 in a trailer), or memory ran out",
              get(transfers, server.url()).error);
}

TEST(Transfers, TrailerLineThatIsTooLongIsNamed) {
    const ScriptedServer server(
        {{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n0\r\nX: " +
          std::string(100000, 'x')}});
    Transfers transfers{TransferLimits()};

    EXPECT_THAT(get(transfers, server.url()).error,
                StartsWith("a line of the answer's trailer is longer than libcurl takes "));
}

TEST(Transfers, RequestThatCannotBeSetUpIsNotSent) {
    constexpr std::size_t more_than_libcurl_takes = 8000001;
    Transfers transfers{TransferLimits()};

    const TransferResult result =
        get(transfers, "http://127.0.0.1/" + std::string(more_than_libcurl_takes, 'x'));

    EXPECT_THAT(result.error, StartsWith("the request could not be set up: "));
    EXPECT_FALSE(result.interrupted);
}

TransferResult post_to(const ScriptedServer& server, std::size_t limit) {
    Transfers transfers{limits_of(limit)};
    return transfers.perform({server.url(), true, "{}"});
}

TEST(Transfers, StatusOfAReportHoldsWhateverItsBodyIs) {
    const ScriptedServer cut({{"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf"}});
    const ScriptedServer large({{"HTTP/1.1 201 Created\r\nContent-Length: 11\r\n\r\n0123456789a"}});

    const TransferResult of_cut = post_to(cut, 10);
    const TransferResult of_large = post_to(large, 10);

    EXPECT_EQ(200, of_cut.status);
    EXPECT_THAT(of_cut.error, StartsWith("transfer closed with "));
    EXPECT_EQ(201, of_large.status);
    EXPECT_EQ("the answer is larger than the limit of 10 bytes (--limit)", of_large.error);
}

TEST(Transfers, StatusOfAReportIsNoneBeforeTheEndOfTheHeader) {
    const ScriptedServer server({{"HTTP/1.1 200 OK\r\nX: 1\r\n"}});

    const TransferResult result = post_to(server, 10);

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("the answer broke off in its header", result.error);
}

TEST(Transfers, StatusOfAReportThatIsNoSuccessIsNoneWithAnError) {
    const ScriptedServer server({{"HTTP/1.1 500 No\r\nContent-Length: 100\r\n\r\nhalf"}});

    EXPECT_EQ(0, post_to(server, 10).status);
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

TEST(Transfers, ServerThatSpeaksNoTlsIsReportedAsOnePossibility) {
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

TEST(RemarkOn, ReportsWhatAStatusLacks) {
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
