// SPDX-License-Identifier: Apache-2.0
// Why a text is not JSON.

#include "program/json/fault.h"

#include "program/json/places.h"
#include "program/utf8.h"

namespace headsetmgmt::program::json {

namespace {

/// The library reads a text up to its first NUL byte.
std::string_view read_part(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

std::string place_of(std::string_view text, std::size_t offset) {
    const Place place = place_at(text, offset);
    return "line " + std::to_string(place.line) + ", column " + std::to_string(place.column);
}

/// The reason without the place.
std::string reason(std::string_view text, const Fault& fault) {
    const std::string bytes = std::to_string(read_part(text).size());
    switch (fault.kind) {
    case Fault::Kind::empty:
        return "the document is empty (0 bytes)";
    case Fault::Kind::begins_with_nul:
        return "the document begins with a NUL byte, so it counts as empty";
    case Fault::Kind::blank:
        return "the document is nothing but white space (" + bytes + " bytes)";
    case Fault::Kind::cut_off:
    case Fault::Kind::cut_off_in_string:
        return "no JSON: it ends in the middle (byte " + bytes + ")";
    case Fault::Kind::too_deep:
        return "nested deeper than the library reads, which is " + std::to_string(library_levels) +
               " levels";
    case Fault::Kind::unexpected:
        break;
    }
    return "no JSON";
}

/// Enough of a text to find it by: at most 60 bytes, and "..." when there are more.
std::string beginning_of(std::string_view text) {
    constexpr std::size_t enough = 60;
    const std::size_t cut = cut_between_characters(text, enough);
    return std::string(text.substr(0, cut)) + (cut < text.size() ? "..." : "");
}

}  // namespace

std::string explanation(std::string_view text, const Fault& fault) {
    text = read_part(text);
    switch (fault.kind) {
    case Fault::Kind::cut_off_in_string:
        return reason(text, fault) + ", in a text that begins at " + place_of(text, fault.offset);
    case Fault::Kind::too_deep:
    case Fault::Kind::unexpected:
        return reason(text, fault) + ": " + place_of(text, fault.offset) + ": \"" +
               beginning_of(text.substr(fault.offset)) + "\"";
    default:
        return reason(text, fault);
    }
}

}  // namespace headsetmgmt::program::json
