// The connections that clients have with a server.

#include "program/serve/connections.h"

#include <array>
#include <netdb.h>
#include <netinet/in.h>

namespace headsetmgmt::program {

namespace {

constexpr unsigned int most_of_a_client = 32;

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

std::string client_name(const sockaddr* address) {
    const Client client = client_at(address);
    return client.host.empty() ? "unknown" : client.host + ":" + client.port;
}

bool Connections::admit(const sockaddr* address) const {
    const auto open = open_by_host.find(client_at(address).host);
    if (open == open_by_host.end() || open->second < most_of_a_client) {
        return true;
    }
    tell({{"event", "connection"},
          {"client", client_name(address)},
          {"error", "refused: this client has " + std::to_string(open->second) +
                        " connections open, and may have " + std::to_string(most_of_a_client)}});
    return false;
}

Connections::Connection Connections::begin(const sockaddr* address) {
    const std::string host = client_at(address).host;
    ++open_by_host[host];
    return {client_name(address), host, false};
}

void Connections::end(const Connection& connection) {
    const auto open = open_by_host.find(connection.host);
    if (open != open_by_host.end() && --open->second == 0) {
        open_by_host.erase(open);
    }
    if (!connection.has_request) {
        tell({{"event", "connection"},
              {"client", connection.client},
              {"error",
               "no request: nothing was sent, or its first line is malformed or too long"}});
    }
}

}  // namespace headsetmgmt::program
