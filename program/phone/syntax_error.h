// Where a document stops being JSON.

#pragma once

#include <string>
#include <string_view>

namespace headsetmgmt::program {

/// What is wrong with a document that the library could not parse, and where: `document` is what it
/// was given, `rest` what it told of it from the place of the error on. The library reads up to the
/// first NUL byte, and so does this.
std::string syntax_error(std::string_view document, std::string_view rest);

}  // namespace headsetmgmt::program
