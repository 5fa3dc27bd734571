// SPDX-License-Identifier: Apache-2.0
// What a request that is refused is answered with.

#include "program/serve/refusal.h"

namespace headsetmgmt::program {

std::string refusal_body(const std::string& message, const std::string& method,
                         const std::string& path, const Event& facts) {
    Event body = {{"error", message}, {"method", method}, {"path", path}};
    body.update(facts);
    return body.dump(2, ' ', false, Event::error_handler_t::replace) + "\n";
}

}  // namespace headsetmgmt::program
