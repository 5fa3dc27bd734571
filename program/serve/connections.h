// The connections that clients have with a server.

#pragma once

#include <functional>
#include <map>
#include <string>
#include <sys/socket.h>

#include "program/output.h"

namespace headsetmgmt::program {

/// A client's address and port, such as "127.0.0.1:4711" or "[::1]:4711"; "unknown" for null.
std::string client_name(const sockaddr* address);

/// Keeps a client from taking all connections, and tells, by the event "connection", of those that
/// no request tells of. On the thread of the server that it belongs to.
class Connections {
public:
    struct Connection {
        std::string client;
        std::string host;  // the client without its port
        bool has_request = false;
    };

    /// `teller` is borrowed.
    explicit Connections(const std::function<void(const Event&)>& teller) : tell(teller) {}

    /// Whether the client may have one more; when not, tells that.
    bool admit(const sockaddr* address) const;

    Connection begin(const sockaddr* address);

    /// Tells of a connection that ends without having brought a request that could be read.
    void end(const Connection& connection);

private:
    const std::function<void(const Event&)>& tell;
    std::map<std::string, unsigned int> open_by_host;
};

}  // namespace headsetmgmt::program
