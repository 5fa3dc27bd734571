// SPDX-License-Identifier: Apache-2.0
// A client's end of a connection: its address, and what the system says about the socket.

#include "program/serve/client_socket.h"

#include <array>
#include <linux/tcp.h>  // the C library's lacks the counters
#include <netdb.h>
#include <netinet/in.h>

namespace headsetmgmt::program {

namespace {

struct Client {
    std::string host;
    std::string port;
};

Client client_at(const sockaddr* address) {
    if (address == nullptr) {
        return {};
    }
    const bool is_v6 = address->sa_family == AF_INET6;
    std::array<char, NI_MAXHOST> host = {};
    std::array<char, NI_MAXSERV> port = {};
    if (getnameinfo(address, is_v6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in), host.data(),
                    host.size(), port.data(), port.size(), NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        return {};
    }
    return {is_v6 ? "[" + std::string(host.data()) + "]" : host.data(), port.data()};
}

}  // namespace

std::string host_name(const sockaddr* address) {
    return client_at(address).host;
}

std::string client_name(const sockaddr* address) {
    const Client client = client_at(address);
    return client.host.empty() ? "unknown" : client.host + ":" + client.port;
}

std::uint64_t bytes_moved(int socket) {
    tcp_info info = {};
    socklen_t size = sizeof info;
    if (getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) != 0) {
        return 0;
    }
    return info.tcpi_bytes_received + info.tcpi_bytes_acked;
}

}  // namespace headsetmgmt::program
