// SPDX-License-Identifier: Apache-2.0
// A connection until it is handed over: its header arrives, and is taken or refused.

#include <algorithm>
#include <cerrno>
#include <microhttpd.h>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <utility>

#include "program/serve/connections.h"
#include "program/serve/refusal.h"

namespace headsetmgmt::program {

namespace {

constexpr std::size_t most_dropped = 16UL * 1024 * 1024;

/// The rest of what has arrived stays in the socket.
std::size_t peek(int socket, std::vector<char>& bytes) {
    const ssize_t count = recv(socket, bytes.data(), bytes.size(), MSG_PEEK | MSG_DONTWAIT);
    return static_cast<std::size_t>(std::max<ssize_t>(count, 0));
}

/// What cannot be sent at once is not sent: a new connection has room for far more.
void send_text(int socket, const std::string& text) {
    static_cast<void>(send(socket, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL));
}

/// From here on the socket is readable when it holds so many bytes, or its client has closed.
void be_readable_with(int socket, std::size_t bytes) {
    const int count = static_cast<int>(bytes);
    setsockopt(socket, SOL_SOCKET, SO_RCVLOWAT, &count, sizeof count);
}

Event without_request(const std::string& client, const std::string& reason) {
    return {{"event", "connection"}, {"client", client}, {"error", "no request: " + reason}};
}

bool has_body(const RequestHeader& refused) {
    return refused.method != MHD_HTTP_METHOD_HEAD;
}

/// The answer to a request that is refused by its header.
std::string refusal_text(const RequestHeader& header, const std::string& body) {
    return "HTTP/1.1 " + std::to_string(header.status) + " " +
           MHD_get_reason_phrase_for(header.status) +
           "\r\nConnection: close\r\nContent-Type: application/json\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + (has_body(header) ? body : "");
}

/// Why a header is refused that is longer than can be read.
RequestHeader too_long(const std::string& target) {
    RequestHeader header;
    header.target = target;
    header.status =
        target.empty() ? MHD_HTTP_URI_TOO_LONG : MHD_HTTP_REQUEST_HEADER_FIELDS_TOO_LARGE;
    header.message = std::string(target.empty() ? "the first line" : "the header") + " has " +
                     std::to_string(largest_header) + " bytes or more";
    return header;
}

}  // namespace

Event Connections::without_header(const std::string& client, const std::string& target,
                                  const std::string& reason) {
    if (target.empty()) {
        return without_request(client, reason);
    }
    return {{"event", "request"}, {"method", ""},    {"path", target},
            {"status", 0},        {"error", reason}, {"client", client}};
}

/// False when the connection has ended.
bool Connections::serve(Connection& connection, Outcome& outcome) {
    return connection.phase == Phase::header ? serve_header(connection, outcome)
                                             : drop_input(connection);
}

bool Connections::serve_header(Connection& connection, Outcome& outcome) {
    const std::string_view text(arrived.data(), peek(connection.fd, arrived));
    const std::size_t length = header_length(text);
    if (length != 0) {
        const RequestHeader header = read_header(text.substr(0, length));
        if (header.status != 0) {
            refuse(connection, header, outcome);
            return true;
        }
        be_readable_with(connection.fd, 1);
        if (header.expects_continue_in_a_list) {
            send_text(connection.fd, "HTTP/1.1 100 Continue\r\n\r\n");
        }
        connection.phase = Phase::body;
        connection.phase_begin = connection.last_move = Clock::now();
        outcome.proper.push_back(
            {std::move(connection.owned), connection.address, connection.address_length});
        return true;
    }
    connection.target = target_of(text);
    if (text.size() == largest_header) {
        refuse(connection, too_long(connection.target), outcome);
        return true;
    }
    if ((connection.events & (POLLRDHUP | POLLHUP | POLLERR)) != 0) {
        outcome.events.push_back(
            without_header(connection.client, connection.target, "broken off by the client"));
        return false;
    }
    be_readable_with(connection.fd, text.size() + 1);
    return true;
}

void Connections::refuse(Connection& connection, const RequestHeader& header, Outcome& outcome) {
    const std::string body = refusal_body(header.message, header.method, header.target);
    if (header.target.empty()) {
        outcome.events.push_back(without_request(connection.client, header.message));
    } else {
        outcome.events.push_back({{"event", "request"},
                                  {"method", header.method},
                                  {"path", header.target},
                                  {"status", header.status},
                                  {"bytes", has_body(header) ? body.size() : 0},
                                  {"client", connection.client},
                                  {"message", header.message}});
    }
    send_text(connection.fd, refusal_text(header, body));
    // The answer would be lost if the connection were closed before the client has sent the rest.
    ::shutdown(connection.fd, SHUT_WR);
    be_readable_with(connection.fd, 1);
    connection.phase = Phase::refused;
    connection.phase_begin = Clock::now();
}

/// False when the connection has ended.
bool Connections::drop_input(Connection& connection) {
    const ssize_t count = recv(connection.fd, arrived.data(), arrived.size(), MSG_DONTWAIT);
    if (count < 0) {
        return errno == EAGAIN || errno == EINTR;
    }
    connection.dropped += static_cast<std::size_t>(count);
    return count != 0 && connection.dropped <= most_dropped;
}

}  // namespace headsetmgmt::program
