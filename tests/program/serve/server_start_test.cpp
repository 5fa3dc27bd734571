// SPDX-License-Identifier: Apache-2.0
// Tests of what a server refuses to start with.

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "program/refused_input.h"
#include "program/serve/server.h"
#include "program/serve/server_error.h"

namespace headsetmgmt::program {
namespace {

/// Why a server with these options does not start, and whether its input is at fault.
std::string refusal(const ServerOptions& options) {
    try {
        const Server server(options, [](const Event&) {});
        return "started";
    } catch (const RefusedInput& error) {
        return std::string("refused: ") + error.what();
    } catch (const ServerError& error) {
        return std::string("failed: ") + error.what();
    }
}

TEST(ServerStartTest, MissingFolderIsAnErrorOfUsage) {
    EXPECT_EQ(
        refusal({"/nowhere/documents", "127.0.0.1", 0}),
        "refused: the documents folder \"/nowhere/documents\" cannot be opened: No such file or "
        "directory; give --documents a folder that can be read");
}

TEST(ServerStartTest, FileInPlaceOfTheFolderIsAnErrorOfUsage) {
    EXPECT_EQ(refusal({"/dev/null", "127.0.0.1", 0}),
              "refused: the documents folder \"/dev/null\" cannot be opened: Not a directory; give "
              "--documents a folder that can be read");
}

TEST(ServerStartTest, HostNameIsNoAddress) {
    EXPECT_EQ(
        refusal({"/", "localhost", 0}),
        "refused: \"localhost\" is no IPv4 or IPv6 address; give --address one such as 127.0.0.1 "
        "or ::1");
}

TEST(ServerStartTest, AddressOfAnotherMachineIsAnErrorOfUsage) {
    EXPECT_EQ(
        refusal({"/", "192.0.2.1", 8080}),
        "refused: cannot listen on address 192.0.2.1, port 8080: Cannot assign requested address; "
        "give --address one of this machine's addresses");
}

TEST(ServerStartTest, PortInUseIsAFailure) {
    const Server first({"/", "127.0.0.1", 0}, [](const Event&) {});

    EXPECT_EQ(refusal({"/", "127.0.0.1", first.port()}),
              "failed: cannot listen on address 127.0.0.1, port " + std::to_string(first.port()) +
                  ": Address already in use; give --port another port, or 0 for any free one");
}

}  // namespace
}  // namespace headsetmgmt::program
