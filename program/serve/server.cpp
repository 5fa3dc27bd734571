// SPDX-License-Identifier: Apache-2.0
// A small HTTP server: serves documents, takes inventory reports.

#include "program/serve/server.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <strings.h>
#include <system_error>
#include <utility>

#include "program/refused_input.h"
#include "program/serve/client_socket.h"
#include "program/serve/listener.h"
#include "program/serve/server_error.h"

namespace headsetmgmt::program {

namespace {

// More than the connections that are handed over: libmicrohttpd counts one a little longer.
constexpr unsigned int most_connections = 128;
constexpr std::size_t memory_of_a_connection = 32UL * 1024;
// A client reads its answer only after it has sent its body, so some more is
// read, and forgotten.
constexpr std::size_t largest_body = 16 * largest_report;

int socket_of(MHD_Connection* connection) {
    const MHD_ConnectionInfo* info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    return info == nullptr ? -1 : info->connect_fd;
}

/// Null when it is not known.
const sockaddr* address_of(MHD_Connection* connection) {
    const MHD_ConnectionInfo* info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    return info == nullptr ? nullptr : info->client_addr;
}

/// What the client says about its body's length; 0 when it says nothing.
std::uint64_t announced_bytes(MHD_Connection* connection) {
    const char* text =
        MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_CONTENT_LENGTH);
    return text == nullptr ? 0 : std::strtoull(text, nullptr, 10);
}

/// Whether the client holds its body back until it may go on.
bool waits_with_body(MHD_Connection* connection) {
    const char* text =
        MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_EXPECT);
    return text != nullptr && strcasecmp(text, "100-continue") == 0;
}

std::string ending(const Request& request, MHD_RequestTerminationCode how) {
    if (!request.error.empty()) {
        return request.error;
    }
    switch (how) {
    case MHD_REQUEST_TERMINATED_COMPLETED_OK:
        return "";
    case MHD_REQUEST_TERMINATED_DAEMON_SHUTDOWN:
        return "broken off: the server stops";
    case MHD_REQUEST_TERMINATED_READ_ERROR:
    case MHD_REQUEST_TERMINATED_CLIENT_ABORT:
        return "broken off by the client";
    case MHD_REQUEST_TERMINATED_TIMEOUT_REACHED:  // not asked for
    case MHD_REQUEST_TERMINATED_WITH_ERROR:
        break;
    }
    return request.status == 0
               ? "broken off before it was complete, or its header is malformed or too long"
               : "broken off during the answer";
}

void keep_body(Request& request, const char* bytes, std::size_t size) {
    try {
        if (!request.is_out_of_memory) {
            request.body.append(bytes, size);
        }
    } catch (const std::bad_alloc&) {
        // Answered when the rest of it has been read: the client looks for an answer only then.
        request.is_out_of_memory = true;
        request.body = std::string();
    }
}

// From here on: what libmicrohttpd calls. No exception may pass through it.

void on_connection(void* server, MHD_Connection* connection, void** /*context*/,
                   MHD_ConnectionNotificationCode what) {
    if (what == MHD_CONNECTION_NOTIFY_CLOSED) {
        static_cast<Server*>(server)->forget(connection);
    }
}

void* on_first_line(void* /*server*/, const char* target, MHD_Connection* connection) {
    try {
        auto request = std::make_unique<Request>();
        request->target = target;
        request->client = client_name(address_of(connection));
        return request.release();
    } catch (const std::exception& /*out of memory*/) {
        return nullptr;
    }
}

MHD_Result on_request(void* server, MHD_Connection* connection, const char* /*decoded_path*/,
                      const char* method, const char* /*version*/, const char* body,
                      std::size_t* body_size, void** context) {
    auto* request = static_cast<Request*>(*context);
    if (request == nullptr) {
        return MHD_NO;
    }
    try {
        return static_cast<Server*>(server)->receive(connection, *request, method, body, body_size);
    } catch (const std::exception& error) {
        request->error = error.what();
        return MHD_NO;
    }
}

void on_completed(void* server, MHD_Connection* connection, void** context,
                  MHD_RequestTerminationCode how) {
    const std::unique_ptr<Request> request(static_cast<Request*>(*context));
    *context = nullptr;
    if (request != nullptr) {
        static_cast<Server*>(server)->complete(connection, *request, how);
    }
}

Documents open_documents(const std::string& folder) {
    try {
        return Documents(folder);
    } catch (const std::system_error& error) {
        throw RefusedInput("the documents folder \"" + folder + "\" cannot be opened: " +
                           error.code().message() + "; give --documents a folder that can be read");
    }
}

}  // namespace

Server::Server(const ServerOptions& options, EventSink event_sink)
    : sink([this, next = std::move(event_sink)](const Event& event) {
          if (event["event"] == "request") {
              ++requests;
          }
          next(event);
      }),
      answers(open_documents(options.documents), sink),
      connections(listen_on(options.address, options.port), options.limits, sink,
                  [this](int socket, const sockaddr* address, socklen_t length) {
                      return MHD_add_connection(daemon.get(), socket, address, length) == MHD_YES;
                  }),
      listening_port(connections.port()) {
    // Before the first request can be: clients that connect now wait.
    sink({{"event", "listening"},
          {"address", options.address},
          {"port", listening_port},
          {"documents", options.documents}});
    // With poll: libmicrohttpd's epoll does not hear of a client that closes right after it has
    // sent.
    // clang-format off
    daemon.reset(MHD_start_daemon(
        MHD_USE_POLL_INTERNAL_THREAD | MHD_USE_ITC | MHD_USE_NO_LISTEN_SOCKET, 0,
        nullptr, nullptr, on_request, this,
        MHD_OPTION_URI_LOG_CALLBACK, on_first_line, this,
        MHD_OPTION_NOTIFY_COMPLETED, on_completed, this,
        MHD_OPTION_CONNECTION_LIMIT, most_connections,
        MHD_OPTION_NOTIFY_CONNECTION, on_connection, this,
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, memory_of_a_connection,
        MHD_OPTION_END));
    // clang-format on
    try {
        if (daemon == nullptr) {
            throw std::system_error(EAGAIN, std::generic_category());
        }
        connections.start();
    } catch (const std::system_error& /*error*/) {
        throw ServerError("the server could not be started: the system lacks memory, "
                          "threads or file descriptors");
    }
}

Server::~Server() {
    stop();
}

void Server::stop() {
    if (daemon == nullptr) {
        return;
    }
    connections.stop();
    daemon.reset();
    sink({{"event", "stopped"}, {"requests", requests.load()}, {"reports", answers.reports()}});
}

/// Called when the header is complete, for every piece of the body, and at the
/// end.
MHD_Result Server::receive(MHD_Connection* connection, Request& request, const char* method,
                           const char* body, std::size_t* body_size) {
    if (request.method.empty()) {
        request.method = method;
        const std::uint64_t announced = announced_bytes(connection);
        if (announced > largest_body ||
            (announced > largest_report && waits_with_body(connection))) {
            // Answered at once: what was announced counts for what was sent.
            request.body_bytes = announced;
            return answer(connection, request);
        }
        return MHD_YES;
    }
    if (*body_size == 0) {
        return answer(connection, request);
    }
    request.body_bytes += *body_size;
    if (request.body_bytes > largest_body) {
        request.error =
            "broken off: the body is longer than " + std::to_string(largest_body) + " bytes";
        return MHD_NO;
    }
    if (request.method == MHD_HTTP_METHOD_POST && request.body_bytes <= largest_report) {
        keep_body(request, body, *body_size);
    }
    *body_size = 0;
    return MHD_YES;
}

MHD_Result Server::answer(MHD_Connection* connection, Request& request) {
    connections.begin_answer(socket_of(connection));
    return answers.answer(connection, request);
}

void Server::complete(MHD_Connection* connection, Request& request,
                      MHD_RequestTerminationCode how) {
    const std::string shutdown = connections.reason_of_shutdown(socket_of(connection));
    if (how != MHD_REQUEST_TERMINATED_COMPLETED_OK && !shutdown.empty()) {
        request.error = shutdown;
    }
    Event event = {{"event", "request"},
                   {"method", request.method},
                   {"path", request.target},
                   {"status", request.status}};
    const std::string error = ending(request, how);
    if (error.empty()) {
        event["bytes"] = request.answer_bytes;
    } else {
        // How much of the answer reached the client is not known.
        event["error"] = error;
    }
    event["client"] = request.client;
    if (!request.message.empty()) {
        event["message"] = request.message;
    }
    sink(event);
}

void Server::forget(MHD_Connection* connection) {
    connections.forget(socket_of(connection));
}

}  // namespace headsetmgmt::program
