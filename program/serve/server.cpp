// A small HTTP server for tests and shows: gives documents away, takes
// inventory reports.

#include "program/serve/server.h"

#include <cstddef>
#include <cstdlib>
#include <exception>
#include <memory>
#include <strings.h>
#include <system_error>
#include <utility>

#include "program/serve/listener.h"

namespace headsetmgmt::program {

namespace {

constexpr unsigned int most_connections = 64;
constexpr std::size_t memory_of_a_connection = 32UL * 1024;
// A client reads its answer only after it has sent its body, so some more is
// read, and forgotten.
constexpr std::size_t largest_body = 16 * largest_report;

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

/// Whether the client holds its body back until it is told to go on.
bool waits_with_body(MHD_Connection* connection) {
    const char* text =
        MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_EXPECT);
    return text != nullptr && strcasecmp(text, "100-continue") == 0;
}

std::string ending(const Request& request, MHD_RequestTerminationCode how, unsigned int patience) {
    if (!request.error.empty()) {
        return request.error;
    }
    switch (how) {
    case MHD_REQUEST_TERMINATED_COMPLETED_OK:
        return "";
    case MHD_REQUEST_TERMINATED_TIMEOUT_REACHED:
        return "nothing moved for " + std::to_string(patience) + " s";
    case MHD_REQUEST_TERMINATED_DAEMON_SHUTDOWN:
        return "broken off: the server stops";
    case MHD_REQUEST_TERMINATED_READ_ERROR:
    case MHD_REQUEST_TERMINATED_CLIENT_ABORT:
        return "broken off by the client";
    case MHD_REQUEST_TERMINATED_WITH_ERROR:
        break;
    }
    return request.status == 0
               ? "broken off before it was complete, or its header is malformed or too long"
               : "broken off during the answer";
}

// From here on: what the HTTP library calls. No exception may pass through it.

MHD_Result on_connecting(void* connections, const sockaddr* address, socklen_t /*length*/) {
    try {
        return static_cast<Connections*>(connections)->admit(address) ? MHD_YES : MHD_NO;
    } catch (const std::exception& /*out of memory*/) {
        return MHD_NO;
    }
}

void on_connection(void* connections, MHD_Connection* connection, void** context,
                   MHD_ConnectionNotificationCode what) {
    auto* all = static_cast<Connections*>(connections);
    try {
        if (what == MHD_CONNECTION_NOTIFY_STARTED) {
            *context = new Connections::Connection(all->begin(address_of(connection)));
            return;
        }
        const std::unique_ptr<Connections::Connection> ended(
            static_cast<Connections::Connection*>(*context));
        *context = nullptr;
        if (ended != nullptr) {
            all->end(*ended);
        }
    } catch (const std::exception& /*out of memory*/) {
        // The connection goes on untold.
    }
}

void* on_first_line(void* /*server*/, const char* target, MHD_Connection* connection) {
    try {
        const MHD_ConnectionInfo* info =
            MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
        if (info != nullptr && info->socket_context != nullptr) {
            static_cast<Connections::Connection*>(info->socket_context)->has_request = true;
        }
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

void on_completed(void* server, MHD_Connection* /*connection*/, void** context,
                  MHD_RequestTerminationCode how) {
    const std::unique_ptr<Request> request(static_cast<Request*>(*context));
    *context = nullptr;
    if (request != nullptr) {
        static_cast<Server*>(server)->complete(*request, how);
    }
}

Documents open_documents(const std::string& folder) {
    try {
        return Documents(folder);
    } catch (const std::system_error& error) {
        throw ServerError(exit_usage, "the documents folder \"" + folder +
                                          "\" cannot be opened: " + error.code().message() +
                                          "; give --documents a folder that can be read");
    }
}

}  // namespace

Server::Server(const ServerOptions& options, Tell teller)
    : tell(std::move(teller)), answers(open_documents(options.documents), tell),
      patience_seconds(options.patience_seconds) {
    FileHandle listener = listen_on(options.address, options.port);
    listening_port = port_of(listener);
    // Told before the first request can be: clients that connect now wait.
    tell({{"event", "listening"},
          {"address", options.address},
          {"port", listening_port},
          {"documents", options.documents}});
    // With poll: the library's epoll does not hear of a client that closes right after it has sent.
    // clang-format off
    daemon.reset(MHD_start_daemon(
        MHD_USE_POLL_INTERNAL_THREAD | MHD_USE_ITC, 0, on_connecting, &connections, on_request, this,
        MHD_OPTION_LISTEN_SOCKET, listener.get(),
        MHD_OPTION_URI_LOG_CALLBACK, on_first_line, this,
        MHD_OPTION_NOTIFY_COMPLETED, on_completed, this,
        MHD_OPTION_CONNECTION_LIMIT, most_connections,
        MHD_OPTION_NOTIFY_CONNECTION, on_connection, &connections,
        MHD_OPTION_CONNECTION_TIMEOUT, patience_seconds,
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, memory_of_a_connection,
        MHD_OPTION_END));
    // clang-format on
    // From its start on the listener is the library's, failed or not.
    listener.release();
    if (daemon == nullptr) {
        throw ServerError(exit_failed, "the server could not be started: the system lacks memory, "
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
    daemon.reset();
    tell({{"event", "stopped"}, {"requests", requests.load()}, {"reports", answers.reports()}});
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
            return answers.answer(connection, request);
        }
        return MHD_YES;
    }
    if (*body_size == 0) {
        return answers.answer(connection, request);
    }
    request.body_bytes += *body_size;
    if (request.body_bytes > largest_body) {
        request.error =
            "broken off: the body is longer than " + std::to_string(largest_body) + " bytes";
        return MHD_NO;
    }
    if (request.method == MHD_HTTP_METHOD_POST && request.body_bytes <= largest_report) {
        request.body.append(body, *body_size);
    }
    *body_size = 0;
    return MHD_YES;
}

void Server::complete(const Request& request, MHD_RequestTerminationCode how) {
    ++requests;
    Event event = {{"event", "request"},
                   {"method", request.method},
                   {"path", request.target},
                   {"status", request.status}};
    const std::string error = ending(request, how, patience_seconds);
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
    tell(event);
}

}  // namespace headsetmgmt::program
