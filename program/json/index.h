// SPDX-License-Identifier: Apache-2.0
// Where the values of a JSON text stand.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace headsetmgmt::program::json {

/// Where one value stands: offsets of bytes.
struct Value {
    static constexpr std::size_t no_name_ = std::string_view::npos;

    std::size_t begin;
    std::size_t end;   ///< behind its last byte
    std::size_t name;  ///< the opening quotation mark of a member's name; `no_name_` elsewhere

    /// Where the member begins, name included; of other values, where the value begins.
    std::size_t member_begin() const { return name != no_name_ ? name : begin; }
};

enum class Type { null, boolean, number, string, array, object };

/// A name that stands a second time in its object: numbers of both values.
struct Repetition {
    std::size_t first;
    std::size_t second;
};

/// The values of a text in their order, each before its own members or elements: the value with the
/// number n is the n-th, from 0, of the parser's tree walked in this order (`for_each_value`).
///
/// Made by `scan`. Borrows the text. A number must be one of this index.
class Index {
public:
    Index(std::string_view text, std::vector<Value> values);

    std::size_t size() const { return entries.size(); }
    const Value& operator[](std::size_t number) const { return entries[number]; }

    Type type(std::size_t number) const;
    /// Name of a member, without escapes; empty for other values. The parser's own name ends at
    /// its first NUL character.
    std::string name(std::size_t number) const;

    /// Number of the first member or element.
    std::optional<std::size_t> first_child(std::size_t number) const;
    /// Number of the next member or element of the same object or array.
    std::optional<std::size_t> next_sibling(std::size_t number) const;

    /// JSON pointer of a value, such as "/accessories/0/type"; empty for the document itself.
    std::string pointer(std::size_t number) const;
    /// Number of the value that a JSON pointer names; of repeated members, the first.
    std::optional<std::size_t> find(std::string_view pointer) const;

    /// The first name, in the order of the text, that its object has already.
    std::optional<Repetition> first_repetition() const;

private:
    /// Number of the first value that begins behind `number` and all that it holds.
    std::size_t behind(std::size_t number) const;
    /// Number of the member or element of `number` that a pointer's token names.
    std::optional<std::size_t> child(std::size_t number, std::string_view token) const;

    std::string_view source;
    std::vector<Value> entries;
};

/// The name of a member as a JSON pointer has it: "~0" for "~", "~1" for "/".
std::string pointer_token(std::string_view name);

}  // namespace headsetmgmt::program::json
