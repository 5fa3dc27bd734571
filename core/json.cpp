// The parser and its error, read as one step.

#include "core/json.h"

#include <mutex>

namespace headsetmgmt {

namespace {

// cJSON notes the place of its last error in a process-wide variable.
std::mutex parser_mutex;

}  // namespace

JsonOwner parse_json(const std::string& text, std::optional<std::string>& rest) {
    const std::lock_guard<std::mutex> parser_lock(parser_mutex);
    // The place comes from the call itself: another user of cJSON in this process may have moved
    // the process-wide one into a text of its own.
    const char* error_place = nullptr;
    JsonOwner tree(cJSON_ParseWithOpts(text.c_str(), &error_place, 0));
    // cJSON 1.7 always knows the place; its interface does not promise it.
    if (!tree && error_place != nullptr) {
        rest = error_place;
    }
    return tree;
}

}  // namespace headsetmgmt
