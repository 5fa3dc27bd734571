// Where a document stops being JSON.

#include "program/phone/syntax_error.h"

#include <variant>

#include "program/json/fault.h"
#include "program/json/scan.h"

namespace headsetmgmt::program {

std::string syntax_error(std::string_view document, std::string_view rest) {
    const std::string_view text = document.substr(0, document.find('\0'));
    const auto scanned = json::scan(document);
    const auto* fault = std::get_if<json::Fault>(&scanned);
    // The library reports an empty document in words of its own.
    if (fault != nullptr && (text.empty() || text.substr(fault->parser_offset) == rest)) {
        return json::explanation(document, *fault);
    }
    return "no JSON at: " + json::beginning_of(rest);
}

}  // namespace headsetmgmt::program
