// SPDX-License-Identifier: Apache-2.0
// Network requests, which the host carries out.

#pragma once

#include <cstdint>
#include <string>

namespace headsetmgmt::dispatcher {

/// One request. The requester owns it; the dispatcher copies what it needs.
struct RequestContext {
    std::string url;                 ///< full URL
    std::string method;              ///< "GET" or "POST"
    std::string requester;           ///< "CONFIGMGR" or "INVENTORY"
    std::string body;                ///< body of a POST
    std::int32_t response_code = 0;  ///< -1 while the answer to a fetch is outstanding
    std::string extra;               ///< not used
};

/// Sends requests to the network.
///
/// Worker. Returns without waiting for an answer. Made and deleted by the plug-in; everyone else
/// borrows it through `Plugins`. Results are values of `RequestStatus`.
class DispatcherInterface {
public:
    virtual ~DispatcherInterface() = default;

    /// Sends a body; its answer is not reported. 0 when it was sent, 1 when `context` is not a
    /// valid request. `context` is borrowed for the call and must not be null.
    virtual int push(RequestContext* context) const = 0;

    /// Fetches a document: 0 when it is in `document`, 1 when it cannot be fetched, 2 when the
    /// answer is delivered later to the configuration manager's reply handlers. `context` is
    /// borrowed for the call and modified; it must not be null.
    virtual int get(RequestContext* context, std::string& document) const = 0;
};

}  // namespace headsetmgmt::dispatcher
