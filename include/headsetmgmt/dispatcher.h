// Requests to the network, which the host carries out.

#pragma once

#include <cstdint>
#include <string>

namespace headsetmgmt::dispatcher {

/// One request. Whoever asks keeps it on its own stack; the dispatcher copies what it needs.
struct RequestContext {
    std::string url;                 ///< full URL
    std::string method;              ///< "GET" or "POST"
    std::string requester;           ///< who asks: "CONFIGMGR" or "INVENTORY"
    std::string body;                ///< what a POST carries
    std::int32_t response_code = 0;  ///< -1 while the answer to a fetch is outstanding
    std::string extra;               ///< carried along; nobody writes it
};

/// Hands requests to the network.
///
/// Worker. Returns without waiting for an answer. Made and deleted by the plug-in; everyone else
/// borrows it through `Plugins`. Results are values of `RequestStatus`.
class DispatcherInterface {
public:
    virtual ~DispatcherInterface() = default;

    /// Sends a body, and forgets about it: 0 when it was handed over, 1 when `context` is not fit
    /// to be sent. `context` is borrowed for the call and must not be null.
    virtual int push(RequestContext* context) const = 0;

    /// Fetches a document: 0 when `document` now holds it, 1 when it cannot be fetched, 2 when the
    /// answer will come later through the configuration manager's reply handlers. `context` is
    /// borrowed for the call, must not be null, and is changed.
    virtual int get(RequestContext* context, std::string& document) const = 0;
};

}  // namespace headsetmgmt::dispatcher
