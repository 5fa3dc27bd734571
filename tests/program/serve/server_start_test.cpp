// Starting a server: what it refuses to start with; and its events in words.

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "program/serve/server.h"

namespace headsetmgmt::program {
namespace {

/// Why a server with these options does not start; its exit code comes first.
std::string refusal(const ServerOptions& options) {
    try {
        const Server server(options, [](const Event&) {});
        return "started";
    } catch (const ServerError& error) {
        return std::to_string(error.exit_code) + ": " + error.what();
    }
}

TEST(ServerStartTest, MissingFolderIsAnErrorOfUsage) {
    EXPECT_EQ(refusal({"/nowhere/documents", "127.0.0.1", 0}),
              "2: the documents folder \"/nowhere/documents\" cannot be opened: No such file or "
              "directory; give --documents a folder that can be read");
}

TEST(ServerStartTest, FileInPlaceOfTheFolderIsAnErrorOfUsage) {
    EXPECT_EQ(refusal({"/dev/null", "127.0.0.1", 0}),
              "2: the documents folder \"/dev/null\" cannot be opened: Not a directory; give "
              "--documents a folder that can be read");
}

TEST(ServerStartTest, HostNameIsNoAddress) {
    EXPECT_EQ(refusal({"/", "localhost", 0}),
              "2: \"localhost\" is no IPv4 or IPv6 address; give --address one such as 127.0.0.1 "
              "or ::1");
}

TEST(ServerStartTest, AddressOfAnotherMachineIsAnErrorOfUsage) {
    EXPECT_EQ(refusal({"/", "192.0.2.1", 8080}),
              "2: cannot listen on address 192.0.2.1, port 8080: Cannot assign requested address; "
              "give --address one of this machine's addresses");
}

TEST(ServerStartTest, PortInUseIsAFailure) {
    const Server first({"/", "127.0.0.1", 0}, [](const Event&) {});

    EXPECT_EQ(refusal({"/", "127.0.0.1", first.port()}),
              "1: cannot listen on address 127.0.0.1, port " + std::to_string(first.port()) +
                  ": Address already in use; give --port another port, or 0 for any free one");
}

TEST(ServerWordingTest, ListeningIsToldAsAUrl) {
    EXPECT_EQ(serve_event_in_words({{"event", "listening"},
                                    {"address", "127.0.0.1"},
                                    {"port", 40123},
                                    {"documents", "docs"}}),
              "listening on http://127.0.0.1:40123/, documents from docs");
    EXPECT_EQ(serve_event_in_words(
                  {{"event", "listening"}, {"address", "::1"}, {"port", 80}, {"documents", "d"}}),
              "listening on http://[::1]:80/, documents from d");
}

TEST(ServerWordingTest, ListeningOnAllAddressesIsNoUrl) {
    EXPECT_EQ(
        serve_event_in_words(
            {{"event", "listening"}, {"address", "0.0.0.0"}, {"port", 80}, {"documents", "d"}}),
        "listening on port 80 of every IPv4 address, documents from d");
    EXPECT_EQ(serve_event_in_words(
                  {{"event", "listening"}, {"address", "0::0"}, {"port", 80}, {"documents", "d"}}),
              "listening on port 80 of every address, documents from d");
}

TEST(ServerWordingTest, ConnectionIsALine) {
    EXPECT_EQ(serve_event_in_words({{"event", "connection"},
                                    {"client", "127.0.0.1:4711"},
                                    {"error", "no request: nothing was sent"}}),
              "127.0.0.1:4711: no request: nothing was sent");
}

TEST(ServerWordingTest, NoteIsItsText) {
    EXPECT_EQ(serve_event_in_words({{"event", "note"}, {"text", "the folder is empty"}}),
              "the folder is empty");
}

TEST(ServerWordingTest, RequestIsALine) {
    EXPECT_EQ(serve_event_in_words({{"event", "request"},
                                    {"method", "GET"},
                                    {"path", "/a\x1b[2J"},
                                    {"status", 404},
                                    {"bytes", 70},
                                    {"client", "127.0.0.1:4711"},
                                    {"message", "no such document"}}),
              "127.0.0.1:4711 GET /a\\x1b[2J: status 404, 70 bytes: no such document");
}

TEST(ServerWordingTest, RequestWithoutAnAnswerTellsWhy) {
    EXPECT_EQ(serve_event_in_words({{"event", "request"},
                                    {"method", ""},
                                    {"path", "/a"},
                                    {"status", 0},
                                    {"error", "broken off by the client"},
                                    {"client", "[::1]:4711"}}),
              "[::1]:4711 /a: broken off by the client");
}

TEST(ServerWordingTest, ReportIsALine) {
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

TEST(ServerWordingTest, StoppedIsCounted) {
    EXPECT_EQ(serve_event_in_words({{"event", "stopped"}, {"requests", 3}, {"reports", 1}}),
              "stopped: requests 3, reports 1");
}

}  // namespace
}  // namespace headsetmgmt::program
