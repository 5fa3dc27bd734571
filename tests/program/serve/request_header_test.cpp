// SPDX-License-Identifier: Apache-2.0
// What the header of a request is, and which headers are refused.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "program/serve/request_header.h"

namespace headsetmgmt::program {
namespace {

struct Case {
    std::string text;
    unsigned int status;
    std::string message;
};

TEST(RequestHeaderTest, ProperHeadersAreNotRefused) {
    for (const std::string text :
         {"GET /a HTTP/1.1\r\nHost: x\r\n\r\n", "GET /a HTTP/1.1\nhost:x\n\n",
          "GET /a HTTP/1.0\r\n\r\n", "\r\n\r\nGET /a HTTP/1.1\r\nHost: x\r\n\r\n",
          "GET http://h/a HTTP/1.1\r\nHost:\r\n\r\n",
          "POST /a HTTP/1.1\r\nHost: x\r\nContent-Length: \t17 \r\nA: b\tc\r\n\r\n",
          "POST /a HTTP/1.1\r\nHost: x\r\ntransfer-encoding: Chunked\r\n\r\n"}) {
        const RequestHeader header = read_header(text);
        EXPECT_EQ(header.status, 0U) << text << header.message;
        EXPECT_EQ(header_length(text), text.size());
    }
}

TEST(RequestHeaderTest, MethodAndTargetAreAsTheClientWroteThem) {
    const RequestHeader header = read_header("get /a%20b?c HTTP/1.1\r\nHost: x\r\n\r\n");

    EXPECT_EQ(header.method, "get");
    EXPECT_EQ(header.target, "/a%20b?c");
}

TEST(RequestHeaderTest, HeadersThatCouldBeReadInTwoWaysAreRefused) {
    using namespace std::string_literals;
    const std::string get = "GET /a HTTP/1.1\r\nHost: x\r\n";
    const std::string post = "POST /a HTTP/1.1\r\nHost: x\r\n";
    const std::string in_a_name =
        "a name in the header has a blank or another character that cannot stand there";
    const std::vector<Case> cases = {
        {"GET /a HTTP/1.1\r\n", 400, "the header has no Host"},
        {get + "Host: x\r\n", 400, "the header has more than one Host"},
        {post + "Content-Length: 1\r\nContent-Length: 2\r\n", 400,
         "the header has more than one Content-Length"},
        {post + "Content-Length: 1\r\ncontent-length: 1\r\n", 400,
         "the header has more than one Content-Length"},
        {post + "Content-Length: 1, 1\r\n", 400, "Content-Length is not a number"},
        {post + "Content-Length: +1\r\n", 400, "Content-Length is not a number"},
        {post + "Content-Length: \r\n", 400, "Content-Length is not a number"},
        {post + "Content-Length: 18446744073709551616\r\n", 413, "Content-Length is too large"},
        {post + "Content-Length: 1\r\nTransfer-Encoding: chunked\r\n", 400,
         "the header has Content-Length beside Transfer-Encoding"},
        {post + "Transfer-Encoding: gzip\r\n", 501, "a Transfer-Encoding other than chunked"},
        {post + "Transfer-Encoding: gzip, chunked\r\n", 501,
         "a Transfer-Encoding other than chunked"},
        {post + "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n", 501,
         "a Transfer-Encoding other than chunked"},
        {"POST /a HTTP/1.0\r\nTransfer-Encoding: chunked\r\n", 400,
         "the header has a Transfer-Encoding, unknown to HTTP/1.0"},
        {get + "A : b\r\n", 400, in_a_name},
        {get + "A\t: b\r\n", 400, in_a_name},
        {get + ": b\r\n", 400, in_a_name},
        {get + "A: b\r\n c\r\n", 400, "a line of the header is folded"},
        {"GET /a HTTP/1.1\r\n Host: x\r\n", 400, "a line of the header is folded"},
        {get + "A\r\n", 400, "a line of the header has no colon"},
        {get + "A: b\0c\r\n"s, 400, "a line of the header has a control character"},
        {get + "A: b\rc\r\n", 400, "a line of the header has a control character"},
        {"GET /a HTTP/2.0\r\nHost: x\r\n", 505, "the version is none of HTTP/1.0, HTTP/1.1"}};
    for (const Case& one : cases) {
        const RequestHeader header = read_header(one.text + "\r\n");
        EXPECT_EQ(header.status, one.status) << one.text;
        EXPECT_EQ(header.message, one.message) << one.text;
        EXPECT_EQ(header.target, "/a");
    }
}

TEST(RequestHeaderTest, MalformedFirstLinesAreRefusedWithoutATarget) {
    using namespace std::string_literals;
    for (const std::string& line :
         {"GET /a"s, "GET  /a HTTP/1.1"s, "GET /a b HTTP/1.1"s, "GET /a HTTP/1.1 "s, "GET /a http"s,
          " GET /a HTTP/1.1"s, "G(T /a HTTP/1.1"s, "GET /a\tb HTTP/1.1"s}) {
        const RequestHeader header = read_header(line + "\r\nHost: x\r\n\r\n");
        EXPECT_EQ(header.status, 400U) << line;
        EXPECT_EQ(header.message, "the first line is malformed") << line;
        EXPECT_EQ(header.target, "") << line;
    }
    EXPECT_EQ(read_header("GET /a\0b HTTP/1.1\r\nHost: x\r\n\r\n"s).message,
              "the first line has a control character");
}

TEST(RequestHeaderTest, HeaderIsWholeWithItsEmptyLine) {
    const std::string text = "GET /a HTTP/1.1\r\nHost: x\r\n\r\n";
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_EQ(header_length(text.substr(0, size)), 0U) << size;
    }
    EXPECT_EQ(header_length(text + "body\r\n\r\n"), text.size());
    EXPECT_EQ(header_length("\r\n\r\n"), 0U);
}

TEST(RequestHeaderTest, TargetIsKnownWhenTheFirstLineIsWhole) {
    EXPECT_EQ(target_of("GET /a HTTP/1.1\r\nHo"), "/a");
    EXPECT_EQ(target_of("GET /a HTTP/1.1"), "");
    EXPECT_EQ(target_of("garbage\r\n"), "");
}

TEST(RequestHeaderTest, ContinueIsFoundInAList) {
    const auto found = [](const std::string& fields, const std::string& version = "1.1") {
        return read_header("POST /a HTTP/" + version + "\r\nHost: x\r\n" + fields + "\r\n")
            .expects_continue_in_a_list;
    };
    EXPECT_TRUE(found("Expect: 100-continue, other\r\n"));
    EXPECT_TRUE(found("Expect: other ,\t100-Continue\r\n"));
    EXPECT_TRUE(found("Expect: other\r\nExpect: 100-continue\r\n"));
    EXPECT_FALSE(found("Expect: 100-continue\r\n"));  // the library's
    EXPECT_FALSE(found("Expect: 100-continued, other\r\n"));
    EXPECT_FALSE(found("Expect: other\r\n"));
    EXPECT_FALSE(found(""));
    EXPECT_FALSE(found("Expect: 100-continue, other\r\n", "1.0"));
}

}  // namespace
}  // namespace headsetmgmt::program
