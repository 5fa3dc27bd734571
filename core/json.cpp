// SPDX-License-Identifier: Apache-2.0
// The JSON parser.

#include "core/json.h"

#include "core/locks.h"

namespace headsetmgmt {

namespace {

// cJSON stores the place of its last error in a process-wide variable.
Mutex parser_mutex;

JsonOwner parse(const std::string& text, const char*& error_place) REQUIRES(parser_mutex) {
    return JsonOwner(cJSON_ParseWithOpts(text.c_str(), &error_place, 0));
}

}  // namespace

JsonOwner parse_json(const std::string& text, std::optional<std::string>& rest) {
    const ScopedLock<Mutex> parser_lock(parser_mutex);
    // The place comes from the call itself: another user of cJSON in this process may have
    // overwritten the process-wide one.
    const char* error_place = nullptr;
    JsonOwner tree = parse(text, error_place);
    // cJSON 1.7 always reports the place; its interface does not guarantee it.
    if (!tree && error_place != nullptr) {
        rest = error_place;
    }
    return tree;
}

}  // namespace headsetmgmt
