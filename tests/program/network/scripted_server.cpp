// SPDX-License-Identifier: Apache-2.0
// An HTTP server that answers as a test wants it, byte by byte.

#include "program/network/scripted_server.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace headsetmgmt::program {

namespace {

int checked(int result, const char* operation) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), operation);
    }
    return result;
}

/// A TCP socket bound to a loopback port of the system's choice.
int bound_socket(int& port) {
    const int bound = checked(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* any_address = reinterpret_cast<sockaddr*>(&address);
    checked(bind(bound, any_address, size), "bind");
    checked(getsockname(bound, any_address, &size), "getsockname");
    port = ntohs(address.sin_port);
    return bound;
}

/// How many bytes of body a request's header announces.
std::size_t body_length(const std::string& header) {
    constexpr char name[] = "Content-Length: ";
    const std::size_t place = header.find(name);
    return place == std::string::npos
               ? 0
               : std::strtoul(header.c_str() + place + sizeof(name) - 1, nullptr, 10);
}

}  // namespace

ScriptedServer::ScriptedServer(std::vector<ScriptedAnswer> answers) : script(std::move(answers)) {
    listener = bound_socket(port);
    checked(listen(listener, SOMAXCONN), "listen");
    for (ScriptedAnswer& scripted : script) {
        constexpr char token[] = "{port}";
        const std::size_t place = scripted.bytes.find(token);
        if (place != std::string::npos) {
            scripted.bytes.replace(place, sizeof(token) - 1, std::to_string(port));
        }
    }
    std::array<int, 2> ends = {};
    checked(pipe(ends.data()), "pipe");
    stop_reader = ends[0];
    stop_writer = ends[1];
    server = std::thread([this] { serve(); });
}

ScriptedServer::~ScriptedServer() {
    close(stop_writer);
    server.join();
    close(stop_reader);
    close(listener);
}

std::string ScriptedServer::url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port) + path;
}

std::vector<std::string> ScriptedServer::requests() const {
    const std::lock_guard<std::mutex> requests_lock(requests_mutex);
    return taken;
}

void ScriptedServer::serve() {
    for (std::size_t i = 0; wait_until_readable(listener); ++i) {
        const int connection = accept(listener, nullptr, nullptr);
        if (connection >= 0) {
            answer(connection, script[std::min(i, script.size() - 1)]);
            close(connection);
        }
    }
}

void ScriptedServer::answer(int connection, const ScriptedAnswer& scripted) {
    std::string request = read_request(connection);
    {
        const std::lock_guard<std::mutex> requests_lock(requests_mutex);
        taken.push_back(std::move(request));
    }
    requested.happen();
    std::size_t sent = 0;
    while (sent < scripted.bytes.size()) {
        const ssize_t length = send(connection, scripted.bytes.data() + sent,
                                    scripted.bytes.size() - sent, MSG_NOSIGNAL);
        if (length <= 0) {
            return;  // the client has had enough
        }
        sent += static_cast<std::size_t>(length);
    }
    if (scripted.stays_open) {
        wait_until_readable(connection);
    }
}

std::string ScriptedServer::read_request(int connection) const {
    constexpr char end_of_header[] = "\r\n\r\n";
    std::string request;
    std::array<char, 4096> bytes = {};
    while (wait_until_readable(connection)) {
        const ssize_t length = recv(connection, bytes.data(), bytes.size(), 0);
        if (length <= 0) {
            break;
        }
        request.append(bytes.data(), static_cast<std::size_t>(length));
        const std::size_t end = request.find(end_of_header);
        if (end != std::string::npos &&
            request.size() >= end + sizeof(end_of_header) - 1 + body_length(request)) {
            break;
        }
    }
    return request;
}

/// False when the server is to end.
bool ScriptedServer::wait_until_readable(int descriptor) const {
    std::array<pollfd, 2> waiting = {{{descriptor, POLLIN, 0}, {stop_reader, POLLIN, 0}}};
    while (poll(waiting.data(), waiting.size(), -1) < 0 && errno == EINTR) {
    }
    return waiting[1].revents == 0;
}

int closed_port() {
    int port = 0;
    close(bound_socket(port));
    return port;
}

}  // namespace headsetmgmt::program
