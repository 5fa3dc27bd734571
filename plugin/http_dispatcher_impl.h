// SPDX-License-Identifier: Apache-2.0
// Requests through the phone's `httpRequest`.

#pragma once

#include <string>

#include "headsetmgmt/dispatcher.h"

namespace headsetmgmt::dispatcher {

/// Passes requests to the host and does not wait for an answer: that of a fetch arrives through
/// `httpResponse`, that of a post is not delivered. Any thread.
class HttpDispatcherImpl : public DispatcherInterface {
public:
    /// Needs the method "POST", a URL and a body.
    int push(RequestContext* context) const override;

    /// Needs a URL. Sets method and response code; never touches `document`.
    int get(RequestContext* context, std::string& document) const override;
};

}  // namespace headsetmgmt::dispatcher
