// SPDX-License-Identifier: Apache-2.0
// Requests through the phone's `httpRequest`.

#include "plugin/http_dispatcher_impl.h"

#include "headsetmgmt/phone/host_functions.h"
#include "headsetmgmt/types.h"

#include "plugin/host_call.h"

namespace headsetmgmt::dispatcher {

int HttpDispatcherImpl::push(RequestContext* context) const {
    if (context->method != "POST" || context->url.empty() || context->body.empty()) {
        return REQUEST_REFUSED;
    }
    const plugin::HostCall host_call;
    httpRequest(HTTP_REQUEST_POST, context->url.c_str(), context->body.c_str());
    return REQUEST_DONE;
}

int HttpDispatcherImpl::get(RequestContext* context, std::string& /*document*/) const {
    if (context->url.empty()) {
        return REQUEST_REFUSED;
    }
    context->method = "GET";
    context->response_code = -1;
    const plugin::HostCall host_call;
    httpRequest(HTTP_REQUEST_GET, context->url.c_str(), nullptr);
    return REQUEST_PENDING;
}

}  // namespace headsetmgmt::dispatcher
