// SPDX-License-Identifier: Apache-2.0
// An HTTP server that answers as a test wants it, byte by byte.

#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/event.h"

namespace headsetmgmt::program {

/// One answer of a `ScriptedServer`: what is sent, and whether the connection stays open then.
struct ScriptedAnswer {
    std::string bytes;
    bool stays_open = false;  ///< until the client closes it or the server is deleted
};

/// Listens on a loopback port of the system's choice and answers one request a connection: the
/// first with the first answer, and so on, those beyond with the last one.
///
/// Made and deleted by one thread.
class ScriptedServer {
public:
    /// "{port}" in an answer stands for the server's own port.
    explicit ScriptedServer(std::vector<ScriptedAnswer> answers);
    ~ScriptedServer();

    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    /// "http://127.0.0.1:<port>" and `path`.
    std::string url(const std::string& path = "/") const;

    /// The requests so far, header and body. Any thread.
    std::vector<std::string> requests() const;

    /// Waits for the first request, 20 seconds at most; whether it came. Any thread.
    bool wait_for_request() { return requested.wait(); }

private:
    void serve();
    void answer(int connection, const ScriptedAnswer& scripted);
    std::string read_request(int connection) const;
    bool wait_until_readable(int descriptor) const;

    std::vector<ScriptedAnswer> script;
    int listener = -1;
    int stop_reader = -1;  // readable once the server is to end
    int stop_writer = -1;
    int port = 0;
    mutable std::mutex requests_mutex;  // guards the next
    std::vector<std::string> taken;
    test_support::Event requested;
    std::thread server;
};

/// A loopback port on which nobody listens.
int closed_port();

}  // namespace headsetmgmt::program
