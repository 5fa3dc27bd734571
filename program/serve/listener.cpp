// SPDX-License-Identifier: Apache-2.0
// The socket on which a server takes connections.

#include "program/serve/listener.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>

#include "program/refused_input.h"
#include "program/serve/server_error.h"

namespace headsetmgmt::program {

namespace {

struct SocketAddress {
    sockaddr_storage storage = {};
    socklen_t length = sizeof(sockaddr_storage);

    sockaddr* get() { return reinterpret_cast<sockaddr*>(&storage); }
    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }
};

SocketAddress read_address(const std::string& text, std::uint16_t port) {
    SocketAddress result;
    sockaddr_in v4 = {};
    if (inet_pton(AF_INET, text.c_str(), &v4.sin_addr) == 1) {
        v4.sin_family = AF_INET;
        v4.sin_port = htons(port);
        std::memcpy(&result.storage, &v4, sizeof v4);
        result.length = sizeof v4;
        return result;
    }
    addrinfo wanted = {};
    wanted.ai_family = AF_INET6;
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    if (getaddrinfo(text.c_str(), std::to_string(port).c_str(), &wanted, &found) != 0) {
        throw RefusedInput("\"" + text +
                           "\" is no IPv4 or IPv6 address; give --address one such "
                           "as 127.0.0.1 or ::1");
    }
    std::memcpy(&result.storage, found->ai_addr, found->ai_addrlen);
    result.length = found->ai_addrlen;
    freeaddrinfo(found);
    return result;
}

[[noreturn]] void refuse_to_listen(const std::string& address, std::uint16_t port, int error) {
    const std::string what = "cannot listen on address " + address + ", port " +
                             std::to_string(port) + ": " + std::generic_category().message(error) +
                             "; ";
    switch (error) {
    case EADDRNOTAVAIL:
    case EINVAL:  // a link-local address without the interface
    case ENODEV:
        throw RefusedInput(what + "give --address one of this machine's addresses");
    case EADDRINUSE:
        throw ServerError(what + "give --port another port, or 0 for any free one");
    case EACCES:
        throw ServerError(what + "give --port a port from 1024 on");
    default:
        throw ServerError(what + "try another --address or --port");
    }
}

}  // namespace

FileHandle listen_on(const std::string& address, std::uint16_t port) {
    const SocketAddress found = read_address(address, port);
    FileHandle listener(
        socket(found.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int yes = 1;
    if (!listener.is_open() ||
        // A port of connections that have just ended can be had again; one that
        // is listened on not.
        setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) != 0 ||
        bind(listener.get(), found.get(), found.length) != 0 ||
        listen(listener.get(), SOMAXCONN) != 0) {
        refuse_to_listen(address, port, errno);
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

}  // namespace headsetmgmt::program
