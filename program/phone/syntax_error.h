// Where a document stops being JSON.

#pragma once

#include <string>
#include <string_view>

namespace headsetmgmt::program {

/// What is wrong with a document that the library could not parse, and where: `document` is what it
/// was given, `rest` what it reported of it from the place of the error on. The library reads up to
/// the first NUL byte, and so does this. A rest that is not what is left of this document is quoted
/// alone: then another parser read the document.
std::string syntax_error(std::string_view document, std::string_view rest);

}  // namespace headsetmgmt::program
