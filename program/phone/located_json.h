// JSON text of which the line of each value is known, for messages.

#pragma once

#include <cstddef>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

namespace headsetmgmt::program {

/// The member's name as it stands in a place: "~0" for "~", "~1" for "/".
std::string name_in_place(const std::string& name);

/// A JSON document and where its values stand.
class LocatedJson {
public:
    /// `file` is for the messages. Throws `BenchError` when the text is no JSON, or when an object
    /// has a member twice.
    LocatedJson(const std::string& text, const std::string& file);

    const nlohmann::json& document() const { return root; }

    /// Line of the value at a place such as "/accessories/0/type", a JSON pointer; 1 for the
    /// document itself.
    std::size_t line_of(const std::string& place) const;

private:
    nlohmann::json root;
    std::map<std::string, std::size_t> lines;
};

}  // namespace headsetmgmt::program
