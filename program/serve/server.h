// SPDX-License-Identifier: Apache-2.0
// A small HTTP server: serves documents, takes inventory reports.

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <microhttpd.h>
#include <string>

#include "program/output.h"
#include "program/serve/answers.h"
#include "program/serve/connections.h"

namespace headsetmgmt::program {

struct ServerOptions {
    std::string documents;
    std::string address = "127.0.0.1";  ///< IPv4 or IPv6
    std::uint16_t port = 0;             ///< 0: the system picks one
    TimeLimits limits = {};
};

/// Answers GET and HEAD with the documents of a folder, and POST with what an
/// inventory service says, on a thread of its own. Without encryption, without
/// knowing who asks.
///
/// One request a connection: every header is looked at before libmicrohttpd reads it.
///
/// Reports by events: "listening" first, one "request" for every request whose first line could be
/// read at its end, however it ends, a "report" for each report taken, a "connection" for those
/// that are refused and for one that ends without such a request, "stopped" last.
class Server {
public:
    using EventSink = std::function<void(const Event&)>;

    /// Listens from here on. `event_sink` is called on the server's threads, two at a time,
    /// "listening" and "stopped" on the caller's. Throws RefusedInput or
    /// ServerError.
    Server(const ServerOptions& options, EventSink event_sink);
    ~Server();

    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// The port that is listened on.
    std::uint16_t port() const { return listening_port; }

    /// Closes every connection and reports "stopped"; does nothing the second time. Called by the
    /// thread that made the server.
    void stop();

    // What libmicrohttpd calls, on the server's thread.
    MHD_Result receive(MHD_Connection* connection, Request& request, const char* method,
                       const char* body, std::size_t* body_size);
    void complete(MHD_Connection* connection, Request& request, MHD_RequestTerminationCode how);
    void forget(MHD_Connection* connection);

private:
    struct DaemonDeleter {
        void operator()(MHD_Daemon* stopped) const { MHD_stop_daemon(stopped); }
    };

    MHD_Result answer(MHD_Connection* connection, Request& request);

    std::atomic<std::uint64_t> requests{0};
    EventSink sink;
    Answers answers;
    Connections connections;
    std::uint16_t listening_port;
    std::unique_ptr<MHD_Daemon, DaemonDeleter> daemon;  // last: its thread uses all above
};

}  // namespace headsetmgmt::program
