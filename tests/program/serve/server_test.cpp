// SPDX-License-Identifier: Apache-2.0
// The server: what it answers over HTTP, what it serves and takes, and its events.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <new>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "program/serve/http_client.h"
#include "program/serve/server.h"

namespace headsetmgmt::program {
namespace {

const std::string good_report =
    R"({"time":1700000000,"key":"headsetInventory","value":{"host":{"userId":"jdoe"},)"
    R"("headset":{"serialNumber":"S1","model":"Varos K30","firmwareVersion":"1.2"}}})";

struct ServerTest : testing::Test {
    TemporaryFolder folder;
    SeenEvents seen;
    Server server{{folder.path.string(), "127.0.0.1", 0},
                  [this](const Event& event) { seen.add(event); }};

    std::string url(const std::string& target) const {
        return "http://127.0.0.1:" + std::to_string(server.port()) + target;
    }
    Answer post(const std::string& body) const { return ask(url("/inventory"), "POST", body); }
};

TEST_F(ServerTest, FirstEventReportsTheAddressAndThePortThatWasPicked) {
    EXPECT_EQ(seen.wait_for("listening"), (Event{{"event", "listening"},
                                                 {"address", "127.0.0.1"},
                                                 {"port", server.port()},
                                                 {"documents", folder.path.string()}}));
    EXPECT_NE(server.port(), 0);
}

TEST_F(ServerTest, GetAnswersWithTheDocument) {
    folder.write("sub/config.json", "{\"a\": 1}\n");

    const Answer answer = ask(url("/sub/config.json"));

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{\"a\": 1}\n");
    EXPECT_NE(answer.head.find("Content-Type: application/json\r\n"), std::string::npos);
}

TEST_F(ServerTest, OtherFilesAreOctetStreams) {
    folder.write("firmware.bin", "bytes");

    EXPECT_NE(ask(url("/firmware.bin")).head.find("Content-Type: application/octet-stream\r\n"),
              std::string::npos);
}

TEST_F(ServerTest, HeadAnswersWithTheSizeAlone) {
    folder.write("config.json", "12345678");

    const Answer answer = ask(url("/config.json"), "HEAD");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "");
    EXPECT_NE(answer.head.find("Content-Length: 8\r\n"), std::string::npos);
    EXPECT_EQ(seen.wait_for("request")["bytes"], 0);
}

TEST_F(ServerTest, EmptyDocumentIsServed) {
    folder.write("empty.json", "");

    const Answer answer = ask(url("/empty.json"));

    EXPECT_EQ(answer.how, CURLE_OK);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "");
}

TEST_F(ServerTest, PercentEscapesAreDecodedAndTheQueryIsIgnored) {
    folder.write("a b.json", "found");

    EXPECT_EQ(ask(url("/a%20%62.json?phone=%2e")).body, "found");
}

TEST_F(ServerTest, BigDocumentArrivesWhole) {
    constexpr std::uintmax_t size = 100UL * 1024 * 1024;
    folder.write("big.bin", "start");
    fs::resize_file(folder.path / "big.bin", size);

    const Answer answer = ask(url("/big.bin"));

    EXPECT_EQ(answer.how, CURLE_OK);
    EXPECT_EQ(answer.body.size(), size);
    EXPECT_EQ(answer.body.substr(0, 5), "start");
}

TEST_F(ServerTest, MissingDocumentIsNamedInTheRefusal) {
    const Answer answer = ask(url("/none.json"));

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, "{\n  \"error\": \"no such document\",\n  \"method\": \"GET\",\n"
                           "  \"path\": \"/none.json\"\n}\n");
}

TEST_F(ServerTest, NothingOutsideTheFolderIsServed) {
    const TemporaryFolder outside;
    outside.write("secret.json", "secret");
    const std::string outside_name = outside.path.filename().string();
    fs::create_symlink(outside.path / "secret.json", folder.path / "absolute.json");
    fs::create_symlink("../" + outside_name + "/secret.json", folder.path / "relative.json");
    fs::create_symlink(outside.path, folder.path / "linked");

    for (const std::string& target :
         {"/../" + outside_name + "/secret.json", "/%2e%2e/" + outside_name + "/secret.json",
          "/..%2f" + outside_name + "/secret.json", "/" + outside.path.string() + "/secret.json",
          std::string("/absolute.json"), std::string("/relative.json"),
          std::string("/linked/secret.json")}) {
        const Answer answer = ask(url(target));
        EXPECT_EQ(answer.status, 404) << target;
        EXPECT_EQ(Event::parse(answer.body)["error"], "the path leads out of the documents folder")
            << target;
    }
}

TEST_F(ServerTest, LinkThatStaysInsideIsFollowed) {
    folder.write("versions/7.json", "seven");
    fs::create_symlink("versions/7.json", folder.path / "current.json");

    EXPECT_EQ(ask(url("/current.json")).body, "seven");
}

TEST_F(ServerTest, LinksThatFormALoopAreReportedAsSuch) {
    fs::create_symlink("loop.json", folder.path / "loop.json");

    const Answer answer = ask(url("/loop.json"));

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(Event::parse(answer.body)["error"],
              "the path has symbolic links that form a loop, or too many");
}

TEST(SwitchedFolderTest, LinkToAnotherReleaseTakesEffectAtTheNextRequest) {
    const TemporaryFolder releases;
    releases.write("1/config.json", "one");
    releases.write("2/config.json", "two");
    fs::create_symlink("1", releases.path / "current");
    const Server server({(releases.path / "current").string(), "127.0.0.1", 0},
                        [](const Event&) {});
    const std::string url = "http://127.0.0.1:" + std::to_string(server.port()) + "/config.json";
    EXPECT_EQ(ask(url).body, "one");

    fs::create_symlink("2", releases.path / "next");
    fs::rename(releases.path / "next", releases.path / "current");
    EXPECT_EQ(ask(url).body, "two");

    fs::remove(releases.path / "current");
    const Answer without = ask(url);
    EXPECT_EQ(without.status, 500);
    EXPECT_EQ(Event::parse(without.body)["error"],
              "the documents folder cannot be opened: No such file or directory");
}

TEST_F(ServerTest, NulInAPathIsRefused) {
    folder.write("config.json", "{}");

    EXPECT_EQ(ask(url("/config.json%00.txt")).status, 400);
    EXPECT_EQ(ask(url("/config.json%00")).status, 400);
}

TEST_F(ServerTest, MalformedPercentEscapesAreNotFound) {
    folder.write("%zz", "text");

    EXPECT_EQ(ask(url("/%zz")).status, 404);
    EXPECT_EQ(ask(url("/%4")).status, 404);
}

TEST_F(ServerTest, FoldersAndPipesAreNoDocuments) {
    folder.write("sub/config.json", "{}");
    ASSERT_EQ(mkfifo((folder.path / "pipe").c_str(), 0600), 0);

    const Answer sub = ask(url("/sub"));
    const Answer root = ask(url("/"));
    const Answer pipe = ask(url("/pipe"));

    EXPECT_EQ(sub.status, 404);
    EXPECT_EQ(Event::parse(sub.body)["error"], "it is a folder, not a document");
    EXPECT_EQ(root.status, 404);
    EXPECT_EQ(Event::parse(root.body)["error"], "no document is named: put its name behind the /");
    EXPECT_EQ(pipe.status, 404);
    EXPECT_EQ(Event::parse(pipe.body)["error"], "no regular file");
}

TEST_F(ServerTest, OtherMethodsAreRefusedWithTheAllowedOnes) {
    for (const char* method : {"PUT", "DELETE", "OPTIONS"}) {
        const Answer answer = ask(url("/config.json"), method);
        EXPECT_EQ(answer.status, 405) << method;
        EXPECT_NE(answer.head.find("Allow: GET, HEAD, POST\r\n"), std::string::npos) << method;
    }
    EXPECT_EQ(ask(url("/config.json"), "PUT", std::string(2UL * 1024 * 1024, 'x')).status, 405);
}

TEST_F(ServerTest, ReportIsTakenAndReported) {
    const Answer answer = post(good_report);

    EXPECT_EQ(answer.status, 204);
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(seen.wait_for("report"),
              (Event{{"event", "report"},
                     {"path", "/inventory"},
                     {"key", "headsetInventory"},
                     {"accessory",
                      {{"serialNumber", "S1"}, {"model", "Varos K30"}, {"firmwareVersion", "1.2"}}},
                     {"report", Event::parse(good_report)}}));
}

TEST_F(ServerTest, CameraReportIsTaken) {
    EXPECT_EQ(post(R"({"time":1,"key":"cameraInventory","value":{"host":{},"headset":{}}})").status,
              204);
}

TEST_F(ServerTest, ReportsAreJsonOrOfNoType) {
    const std::string target = url("/r");
    for (const char* type :
         {"Content-Type:", "Content-Type: application/json; charset=utf-8",
          "Content-Type: Application/JSON ;charset=utf-8", "Content-Type: application/json"}) {
        EXPECT_EQ(ask(target, "POST", good_report, type).status, 204) << type;
    }
    for (const char* type : {"Content-Type: text/plain", "Content-Type: application/jsonp",
                             "Content-Type: application/x-www-form-urlencoded"}) {
        const Answer answer = ask(target, "POST", good_report, type);
        EXPECT_EQ(answer.status, 415) << type;
        EXPECT_EQ(Event::parse(answer.body)["error"],
                  "expected Content-Type: application/json, or none");
    }
}

TEST_F(ServerTest, ReportOfAWebPageIsRefused) {
    const Answer answer = ask(url("/r"), "POST", good_report, "Origin: http://evil.example");

    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(Event::parse(answer.body)["error"],
              "the header has an Origin: web pages may not send reports");
}

TEST(ForgetfulServerTest, MemoryThatRunsOutForAReportIsAnsweredAndTheServerGoesOn) {
    const TemporaryFolder folder;
    bool is_out = true;
    SeenEvents seen;
    const Server server({folder.path.string(), "127.0.0.1", 0}, [&](const Event& event) {
        if (event["event"] == "report" && std::exchange(is_out, false)) {
            throw std::bad_alloc();
        }
        seen.add(event);
    });
    const std::string url = "http://127.0.0.1:" + std::to_string(server.port()) + "/r";

    const Answer answer = ask(url, "POST", good_report);

    EXPECT_EQ(answer.status, 503);
    EXPECT_EQ(Event::parse(answer.body)["error"],
              "the server lacks the memory for this report; try again later");
    EXPECT_EQ(ask(url, "POST", good_report).status, 204);
}

struct RefusedReport {
    std::string body;
    std::string member;
    std::string expected;
    std::string found;
};

TEST_F(ServerTest, RefusalNamesTheMemberAndWhatWasExpected) {
    const std::string keys = R"("headsetInventory" or "cameraInventory")";
    const std::vector<RefusedReport> reports = {
        {"nope", "", "a JSON object", "no JSON: error at byte 2 of 4"},
        {"", "", "a JSON object", "nothing: the body is empty"},
        {"[]", "", "a JSON object", "a value of type array"},
        {"{}", "time", "a number", "nothing"},
        {R"({"time":"1"})", "time", "a number", R"("1")"},
        {R"({"time":1})", "key", keys, "nothing"},
        {R"({"time":1,"key":"other"})", "key", keys, R"("other")"},
        {R"({"time":1,"key":"cameraInventory"})", "value", "an object", "nothing"},
        {R"({"time":1,"key":"cameraInventory","value":[]})", "value", "an object",
         "a value of type array"},
        {R"({"time":1,"key":"cameraInventory","value":{"headset":{}}})", "value.host", "an object",
         "nothing"},
        {R"({"time":1,"key":"cameraInventory","value":{"host":{},"headset":1}})", "value.headset",
         "an object", "a value of type number"},
        {R"({"time":1,"key":"cameraInventory","value":{"host":{},"headset":{"model":{"a":1}}}})",
         "value.headset.model", "a text", "a value of type object"},
        {R"({"time":1,"key":"cameraInventory","value":{"host":{},"headset":{"serialNumber":7}}})",
         "value.headset.serialNumber", "a text", "a value of type number"},
        {R"({"time":1,"key":"cameraInventory",)"
         R"("value":{"host":{},"headset":{"firmwareVersion":null}}})",
         "value.headset.firmwareVersion", "a text", "a value of type null"},
        {R"({"time":1e999})", "", "a JSON object", "a number that is too large"},
        {std::string(500000, '['), "", "at most 32 levels", "more"}};
    for (const RefusedReport& report : reports) {
        const Answer answer = post(report.body);
        EXPECT_EQ(answer.status, 400) << report.body.substr(0, 80);
        const Event refusal = Event::parse(answer.body);
        EXPECT_EQ(refusal["member"], report.member);
        EXPECT_EQ(refusal["expected"], report.expected);
        EXPECT_EQ(refusal["found"], report.found);
    }
}

/// A report with so many members and array elements; 8 are the least.
std::string report_with_values(std::size_t count) {
    std::string list = "0";
    for (std::size_t i = 8; i < count; ++i) {
        list += i % 2 == 0 ? ",[]" : ",{}";
    }
    return R"({"time":1,"key":"cameraInventory","value":{"host":{"a":0},"headset":{"list":[)" +
           list + "]}}}";
}

TEST_F(ServerTest, ReportOfManyMembersAndElementsIsRefused) {
    EXPECT_EQ(post(report_with_values(1000)).status, 204);
    EXPECT_EQ(Event::parse(post(report_with_values(1001)).body)["expected"],
              "at most 1000 members and array elements");
}

TEST_F(ServerTest, ReportIsRefusedAtTheFirstValueTooManyAndNotAtItsEnd) {
    // What stands behind is not read: it is not JSON.
    std::string body = "[[]";
    for (int i = 0; i < 1000; ++i) {
        body += ",[]";
    }

    EXPECT_EQ(Event::parse(post(body + " not JSON").body)["expected"],
              "at most 1000 members and array elements");
}

TEST_F(ServerTest, ReportOfOneMebibyteIsTakenAndOneByteMoreIsNot) {
    constexpr std::size_t limit = 1024UL * 1024;
    const std::string longest = good_report + std::string(limit - good_report.size(), ' ');

    EXPECT_EQ(post(longest).status, 204);
    EXPECT_EQ(post(longest + " ").status, 413);
    EXPECT_EQ(ask(url("/"), "POST", longest + " ", "Expect:").status, 413);
    EXPECT_EQ(ask(url("/"), "POST", longest + " ", "Transfer-Encoding: chunked").status, 413);
}

TEST_F(ServerTest, RequestIsReportedWithItsAnswer) {
    folder.write("config.json", "12345678");
    ask(url("/config.json?x"));

    Event event = seen.wait_for("request");

    EXPECT_EQ(event["client"].get<std::string>().substr(0, 10), "127.0.0.1:");
    event.erase("client");
    EXPECT_EQ(event, (Event{{"event", "request"},
                            {"method", "GET"},
                            {"path", "/config.json?x"},
                            {"status", 200},
                            {"bytes", 8}}));
}

TEST_F(ServerTest, ReportThatIsBrokenOffIsReported) {
    {
        const RawClient client(server.port(),
                               "POST /r HTTP/1.1\r\nHost: x\r\nContent-Length: 100\r\n\r\n{");
    }
    const Event event = seen.wait_for("request");

    EXPECT_EQ(event.value("path", ""), "/r");
    EXPECT_EQ(event.value("status", -1), 0);
    EXPECT_EQ(event.value("error", ""), "broken off by the client");
}

TEST_F(ServerTest, ConnectionWithoutARequestThatCanBeReadIsReported) {
    const std::vector<std::pair<std::string, std::string>> texts = {
        {"garbage\r\n\r\n", "no request: the first line is malformed"},
        {"GET /" + std::string(40000, 'a') + " HTTP/1.1\r\n\r\n",
         "no request: the first line has 32768 bytes or more"}};
    for (const auto& [text, error] : texts) {
        SeenEvents seen_now;
        Server fresh({folder.path.string(), "127.0.0.1", 0},
                     [&seen_now](const Event& event) { seen_now.add(event); });
        {
            const RawClient client(fresh.port(), text);
            EXPECT_EQ(client.read_all().substr(0, 10), "HTTP/1.1 4");
        }

        Event event = seen_now.wait_for("connection");

        EXPECT_EQ(event["client"].get<std::string>().substr(0, 10), "127.0.0.1:");
        EXPECT_EQ(event["error"], error);
        fresh.stop();
        EXPECT_EQ(seen_now.kinds(),
                  (std::vector<std::string>{"listening", "connection", "stopped"}));
    }
}

TEST_F(ServerTest, ConnectionsOverTheLimitOfAClientAreReportedOnceASecond) {
    std::deque<RawClient> open;
    for (int i = 0; i < 32; ++i) {
        open.emplace_back(server.port(), "");
    }
    constexpr int more = 50;
    for (int i = 0; i < more; ++i) {
        EXPECT_EQ(RawClient(server.port(), "").read_some(), "");
    }
    EXPECT_EQ(seen.wait_for("connection").value("error", ""),
              "refused: this client has 32 connections open, and may have 32");

    server.stop();

    // Some at once, more for each second that it took, the rest at the end.
    std::vector<Event> refused;
    int count = 0;
    for (const Event& event : seen.all()) {
        if (event.contains("count")) {
            refused.push_back(event);
            count += event["count"].get<int>();
        }
    }
    EXPECT_EQ(count, more);
    EXPECT_LT(refused.size(), 20U);
}

TEST_F(ServerTest, EndedConnectionsDoNotCountForTheLimit) {
    for (int i = 0; i < 40; ++i) {
        const RawClient client(server.port(),
                               "GET /x HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
        while (!client.read_some().empty()) {
        }
    }
    EXPECT_EQ(ask(url("/x")).status, 404);

    server.stop();

    const std::vector<std::string> kinds = seen.kinds();
    EXPECT_EQ(std::count(kinds.begin(), kinds.end(), "connection"), 0);
    EXPECT_EQ(std::count(kinds.begin(), kinds.end(), "request"), 41);
}

TEST_F(ServerTest, AnswerThatIsBrokenOffIsReported) {
    folder.write("big.bin", "");
    fs::resize_file(folder.path / "big.bin", 100UL * 1024 * 1024);
    {
        const RawClient client(server.port(), "GET /big.bin HTTP/1.1\r\nHost: x\r\n\r\n");
        EXPECT_NE(client.read_some(), "");
    }
    const Event event = seen.wait_for("request");

    EXPECT_EQ(event.value("status", -1), 200);
    EXPECT_EQ(event.value("error", ""), "broken off during the answer");
    EXPECT_FALSE(event.contains("bytes"));
}

TEST_F(ServerTest, DocumentThatShrinksEndsItsAnswerAlone) {
    folder.write("big.bin", "");
    fs::resize_file(folder.path / "big.bin", 100UL * 1024 * 1024);
    const RawClient client(server.port(), "GET /big.bin HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_NE(client.read_some(), "");

    fs::resize_file(folder.path / "big.bin", 10);
    while (!client.read_some().empty()) {
    }

    EXPECT_EQ(seen.wait_for("request").value("error", ""), "broken off: the document got shorter");
    EXPECT_EQ(ask(url("/big.bin")).body.size(), 10U);
}

TEST_F(ServerTest, StopEndsWhatIsUnderWayAndIsReportedOnce) {
    post(good_report);
    const RawClient client(server.port(), "POST /r HTTP/1.1\r\nHost: x\r\nContent-Length: 1\r\n"
                                          "Expect: 100-continue\r\n\r\n");
    ASSERT_NE(client.read_some(), "");  // it has begun

    server.stop();
    server.stop();

    EXPECT_EQ(seen.wait_for("stopped"),
              (Event{{"event", "stopped"}, {"requests", 2}, {"reports", 1}}));
    EXPECT_EQ(seen.kinds(),
              (std::vector<std::string>{"listening", "report", "request", "request", "stopped"}));
}

}  // namespace
}  // namespace headsetmgmt::program
