// A small HTTP server for tests and shows: gives documents away, takes
// inventory reports.

#include "program/serve/server.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <netdb.h>
#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "program/serve/inventory_report.h"

namespace headsetmgmt::program {

/// A request from its first line to its end.
struct Request {
    std::string target;  // as the client wrote it
    std::string client;
    std::string method;  // empty until the header is complete
    std::string body;    // of a report
    std::uint64_t body_bytes = 0;
    unsigned int status = 0;  // 0 without an answer
    std::uint64_t answer_bytes = 0;
    std::string message;  // what the answer says to whom it refuses
    std::string error;    // why it ended without a complete answer, if known before its end
};

namespace {

constexpr unsigned int most_connections = 64;
constexpr std::size_t memory_of_a_connection = 32UL * 1024;
constexpr std::size_t largest_report = 1024UL * 1024;
// A client reads its answer only after it has sent its body, so some more is
// read, and forgotten.
constexpr std::size_t largest_body = 16 * largest_report;

std::string system_message(int error) {
    return std::generic_category().message(error);
}

struct SocketAddress {
    sockaddr_storage storage = {};
    socklen_t length = sizeof(sockaddr_storage);

    sockaddr* get() { return reinterpret_cast<sockaddr*>(&storage); }
    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }
};

SocketAddress read_address(const ServerOptions& options) {
    SocketAddress result;
    sockaddr_in v4 = {};
    if (inet_pton(AF_INET, options.address.c_str(), &v4.sin_addr) == 1) {
        v4.sin_family = AF_INET;
        v4.sin_port = htons(options.port);
        std::memcpy(&result.storage, &v4, sizeof v4);
        result.length = sizeof v4;
        return result;
    }
    addrinfo wanted = {};
    wanted.ai_family = AF_INET6;
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    if (getaddrinfo(options.address.c_str(), std::to_string(options.port).c_str(), &wanted,
                    &found) != 0) {
        throw ServerError(exit_usage, "\"" + options.address +
                                          "\" is no IPv4 or IPv6 address; give --address one such "
                                          "as 127.0.0.1 or ::1");
    }
    std::memcpy(&result.storage, found->ai_addr, found->ai_addrlen);
    result.length = found->ai_addrlen;
    freeaddrinfo(found);
    return result;
}

[[noreturn]] void refuse_to_listen(const ServerOptions& options, int error) {
    const std::string what = "cannot listen on address " + options.address + ", port " +
                             std::to_string(options.port) + ": " + system_message(error) + "; ";
    switch (error) {
    case EADDRNOTAVAIL:
    case EINVAL:  // a link-local address without the interface
    case ENODEV:
        throw ServerError(exit_usage, what + "give --address one of this machine's addresses");
    case EADDRINUSE:
        throw ServerError(exit_failed, what + "give --port another port, or 0 for any free one");
    case EACCES:
        throw ServerError(exit_failed, what + "give --port a port from 1024 on");
    default:
        throw ServerError(exit_failed, what + "try another --address or --port");
    }
}

FileHandle listen_on(const SocketAddress& address, const ServerOptions& options) {
    FileHandle listener(
        socket(address.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int yes = 1;
    if (!listener.is_open() ||
        // A port of connections that have just ended can be had again; one that
        // is listened on not.
        setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) != 0 ||
        bind(listener.get(), address.get(), address.length) != 0 ||
        listen(listener.get(), SOMAXCONN) != 0) {
        refuse_to_listen(options, errno);
    }
    return listener;
}

std::uint16_t port_of(const FileHandle& listener) {
    SocketAddress address;
    getsockname(listener.get(), address.get(), &address.length);
    std::array<char, NI_MAXSERV> port = {};
    getnameinfo(address.get(), address.length, nullptr, 0, port.data(), port.size(),
                NI_NUMERICSERV);
    return static_cast<std::uint16_t>(std::strtoul(port.data(), nullptr, 10));
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

/// Whether the client holds its body back until it is told to go on.
bool waits_with_body(MHD_Connection* connection) {
    const char* text =
        MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_EXPECT);
    return text != nullptr && strcasecmp(text, "100-continue") == 0;
}

struct ResponseDeleter {
    void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
using ResponseOwner = std::unique_ptr<MHD_Response, ResponseDeleter>;

MHD_Result queue(MHD_Connection* connection, Request& request, unsigned int status,
                 std::uint64_t bytes, const ResponseOwner& response) {
    if (response == nullptr || MHD_queue_response(connection, status, response.get()) != MHD_YES) {
        request.error = "no answer could be made";
        return MHD_NO;
    }
    request.status = status;
    request.answer_bytes = request.method == MHD_HTTP_METHOD_HEAD ? 0 : bytes;
    return MHD_YES;
}

/// Answers with a JSON object that says what is wrong: `facts`, with the
/// message among them.
MHD_Result refuse(MHD_Connection* connection, Request& request, unsigned int status,
                  const std::string& message, const Event& facts = Event::object()) {
    Event body = {{"error", message}, {"method", request.method}, {"path", request.target}};
    body.update(facts);
    std::string text = body.dump(2, ' ', false, Event::error_handler_t::replace) + "\n";
    const ResponseOwner response(
        MHD_create_response_from_buffer(text.size(), text.data(), MHD_RESPMEM_MUST_COPY));
    if (response != nullptr) {
        MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, "application/json");
        if (status == MHD_HTTP_METHOD_NOT_ALLOWED) {
            MHD_add_response_header(response.get(), MHD_HTTP_HEADER_ALLOW, "GET, HEAD, POST");
        }
    }
    request.message = message;
    return queue(connection, request, status, text.size(), response);
}

bool is_json(const std::string& target) {
    const std::string path = target.substr(0, target.find('?'));
    constexpr std::size_t length = 5;
    return path.size() > length && path.compare(path.size() - length, length, ".json") == 0;
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

/// A document on its way. Read piece by piece here: what the library has for files waits for ever,
/// and busily, for the rest of one that got shorter.
struct DocumentTransfer {
    FileHandle file;
    std::string& error;  // the request's, which lives as long as its answer is read
};

constexpr std::size_t bytes_at_once = 64UL * 1024;

ssize_t read_document(void* transfer, std::uint64_t position, char* bytes, std::size_t size) {
    const auto* document = static_cast<DocumentTransfer*>(transfer);
    const ssize_t count = pread(document->file.get(), bytes, size, static_cast<off_t>(position));
    if (count > 0) {
        return count;
    }
    document->error = count == 0 ? "broken off: the document got shorter"
                                 : "broken off: the document could not be read";
    return MHD_CONTENT_READER_END_WITH_ERROR;
}

void end_document(void* transfer) {
    const std::unique_ptr<DocumentTransfer> ended(static_cast<DocumentTransfer*>(transfer));
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
    : documents(open_documents(options.documents)), tell(std::move(teller)),
      patience_seconds(options.patience_seconds) {
    FileHandle listener = listen_on(read_address(options), options);
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
    tell({{"event", "stopped"}, {"requests", requests.load()}, {"reports", reports.load()}});
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
        request.body.append(body, *body_size);
    }
    *body_size = 0;
    return MHD_YES;
}

MHD_Result Server::answer(MHD_Connection* connection, Request& request) {
    if (request.method == MHD_HTTP_METHOD_GET || request.method == MHD_HTTP_METHOD_HEAD) {
        return answer_document(connection, request);
    }
    if (request.method == MHD_HTTP_METHOD_POST) {
        return answer_report(connection, request);
    }
    return refuse(connection, request, MHD_HTTP_METHOD_NOT_ALLOWED,
                  "the method is none of GET, HEAD, POST");
}

MHD_Result Server::answer_document(MHD_Connection* connection, Request& request) {
    OpenedDocument document = documents.open(request.target);
    if (!document.file.is_open()) {
        const unsigned int status =
            document.is_missing ? MHD_HTTP_NOT_FOUND : MHD_HTTP_INTERNAL_SERVER_ERROR;
        return refuse(connection, request, status, document.reason);
    }
    const std::uint64_t size = document.size;
    auto transfer = std::make_unique<DocumentTransfer>(
        DocumentTransfer{std::move(document.file), request.error});
    const ResponseOwner response(MHD_create_response_from_callback(
        size, bytes_at_once, read_document, transfer.get(), end_document));
    if (response != nullptr) {
        static_cast<void>(transfer.release());  // the response deletes it
        MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE,
                                is_json(request.target) ? "application/json"
                                                        : "application/octet-stream");
    }
    return queue(connection, request, MHD_HTTP_OK, size, response);
}

MHD_Result Server::answer_report(MHD_Connection* connection, Request& request) {
    if (request.body_bytes > largest_report) {
        return refuse(connection, request, MHD_HTTP_CONTENT_TOO_LARGE,
                      "the body is longer than " + std::to_string(largest_report) + " bytes");
    }
    try {
        const Event report = read_report(request.body);
        const Event& accessory = report["value"]["headset"];
        Event facts = Event::object();
        for (const char* member : {"serialNumber", "model", "firmwareVersion"}) {
            facts[member] = accessory.value(member, Event(""));
        }
        tell({{"event", "report"},
              {"path", request.target},
              {"key", report["key"]},
              {"accessory", facts},
              {"report", report}});
        ++reports;
    } catch (const ReportRefusal& refusal) {
        return refuse(
            connection, request, MHD_HTTP_BAD_REQUEST, refusal.what(),
            {{"member", refusal.member}, {"expected", refusal.expected}, {"found", refusal.found}});
    }
    const ResponseOwner response(
        MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT));
    return queue(connection, request, MHD_HTTP_NO_CONTENT, 0, response);
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
