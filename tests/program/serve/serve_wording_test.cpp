// SPDX-License-Identifier: Apache-2.0
// Tests of the sentences for the events of a server.

#include <gtest/gtest.h>

#include "program/serve/serve_wording.h"

namespace headsetmgmt::program {
namespace {

TEST(ServeWording, ListeningIsReportedAsAUrl) {
    EXPECT_EQ(serve_event_in_words({{"event", "listening"},
                                    {"address", "127.0.0.1"},
                                    {"port", 40123},
                                    {"documents", "docs"}}),
              "listening on http://127.0.0.1:40123/, documents from docs");
    EXPECT_EQ(serve_event_in_words(
                  {{"event", "listening"}, {"address", "::1"}, {"port", 80}, {"documents", "d"}}),
              "listening on http://[::1]:80/, documents from d");
}

TEST(ServeWording, ListeningOnAllAddressesIsNoUrl) {
    EXPECT_EQ(
        serve_event_in_words(
            {{"event", "listening"}, {"address", "0.0.0.0"}, {"port", 80}, {"documents", "d"}}),
        "listening on port 80 of every IPv4 address, documents from d");
    EXPECT_EQ(serve_event_in_words(
                  {{"event", "listening"}, {"address", "0::0"}, {"port", 80}, {"documents", "d"}}),
              "listening on port 80 of every address, documents from d");
}

TEST(ServeWording, ConnectionIsALine) {
    EXPECT_EQ(serve_event_in_words({{"event", "connection"},
                                    {"client", "127.0.0.1:4711"},
                                    {"error", "no request: nothing was sent"}}),
              "127.0.0.1:4711: no request: nothing was sent");
}

TEST(ServeWording, NoteIsItsText) {
    EXPECT_EQ(serve_event_in_words({{"event", "note"}, {"text", "the folder is empty"}}),
              "the folder is empty");
}

TEST(ServeWording, RequestIsALine) {
    EXPECT_EQ(serve_event_in_words({{"event", "request"},
                                    {"method", "GET"},
                                    {"path", "/a\x1b[2J"},
                                    {"status", 404},
                                    {"bytes", 70},
                                    {"client", "127.0.0.1:4711"},
                                    {"message", "no such document"}}),
              "127.0.0.1:4711 GET /a\\x1b[2J: status 404, 70 bytes: no such document");
}

TEST(ServeWording, RequestWithoutAnAnswerReportsWhy) {
    EXPECT_EQ(serve_event_in_words({{"event", "request"},
                                    {"method", ""},
                                    {"path", "/a"},
                                    {"status", 0},
                                    {"error", "broken off by the client"},
                                    {"client", "[::1]:4711"}}),
              "[::1]:4711 /a: broken off by the client");
}

TEST(ServeWording, ReportIsALine) {
    Event event = {
        {"event", "report"},
        {"path", "/r"},
        {"key", "headsetInventory"},
        {"accessory", {{"serialNumber", "S1\n"}, {"model", "Varos K30"}, {"firmwareVersion", ""}}},
        {"report", {{"value", {{"host", {{"userId", "jdoe"}}}}}}}};
    EXPECT_EQ(
        serve_event_in_words(event),
        "report to /r: headsetInventory, serial number S1\\n, model Varos K30, firmware none, "
        "user jdoe");

    event["report"]["value"]["dock"] = {{"serialNumber", "D1"}, {"model", "Dock"}};
    EXPECT_EQ(
        serve_event_in_words(event),
        "report to /r: headsetInventory, serial number S1\\n, model Varos K30, firmware none, "
        "user jdoe, dock D1, model Dock");
}

TEST(ServeWording, StoppedIsCounted) {
    EXPECT_EQ(serve_event_in_words({{"event", "stopped"}, {"requests", 3}, {"reports", 1}}),
              "stopped: requests 3, reports 1");
}

}  // namespace
}  // namespace headsetmgmt::program
