// SPDX-License-Identifier: Apache-2.0
// Where the values of a JSON text stand.

#include "program/json/index.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "program/json/tokens.h"

namespace headsetmgmt::program::json {

namespace {

/// The name that a token of a JSON pointer stands for.
std::string name_of_token(std::string_view token) {
    std::string result;
    for (std::size_t at = 0; at < token.size(); ++at) {
        const std::string_view two = token.substr(at, 2);
        if (two == "~0" || two == "~1") {
            result += two == "~0" ? '~' : '/';
            ++at;
        } else {
            result += token[at];
        }
    }
    return result;
}

}  // namespace

Index::Index(std::string_view text, std::vector<Value> values)
    : source(text), entries(std::move(values)) {}

Type Index::type(std::size_t number) const {
    switch (source[entries[number].begin]) {
    case '{':
        return Type::object;
    case '[':
        return Type::array;
    case '"':
        return Type::string;
    case 'n':
        return Type::null;
    case 't':
    case 'f':
        return Type::boolean;
    default:
        return Type::number;
    }
}

std::string Index::name(std::size_t number) const {
    const std::size_t begin = entries[number].name;
    return begin != Value::no_name_ ? string_text(source, begin) : std::string();
}

std::size_t Index::behind(std::size_t number) const {
    const auto begin = entries.begin() + static_cast<std::ptrdiff_t>(number);
    const std::size_t end = begin->end;
    const auto result = std::partition_point(
        begin, entries.end(), [end](const Value& value) { return value.begin < end; });
    return static_cast<std::size_t>(result - entries.begin());
}

std::optional<std::size_t> Index::first_child(std::size_t number) const {
    const std::size_t next = number + 1;
    const bool is_inside = next < size() && entries[next].begin < entries[number].end;
    return is_inside ? std::optional<std::size_t>(next) : std::nullopt;
}

std::optional<std::size_t> Index::next_sibling(std::size_t number) const {
    std::size_t at = entries[number].end;
    while (at < source.size() && is_blank(source[at])) {
        ++at;
    }
    const std::size_t next = behind(number);
    // Behind the text's own value, which has no sibling, anything may stand.
    const bool is_sibling = next < size() && source[at] == ',';
    return is_sibling ? std::optional<std::size_t>(next) : std::nullopt;
}

std::string Index::pointer(std::size_t number) const {
    std::string result;
    std::size_t holder = 0;
    while (holder != number) {
        std::size_t child = holder + 1;
        std::size_t position = 0;
        for (std::size_t next = behind(child); next <= number; next = behind(child)) {
            child = next;
            ++position;
        }
        const bool is_member = entries[child].name != Value::no_name_;
        result += "/" + (is_member ? pointer_token(name(child)) : std::to_string(position));
        holder = child;
    }
    return result;
}

std::optional<std::size_t> Index::child(std::size_t number, std::string_view token) const {
    const bool is_object = type(number) == Type::object;
    const std::string wanted = is_object ? name_of_token(token) : std::string(token);
    std::size_t position = 0;
    for (auto child = first_child(number); child; child = next_sibling(*child)) {
        if ((is_object ? name(*child) : std::to_string(position)) == wanted) {
            return child;
        }
        ++position;
    }
    return std::nullopt;
}

std::optional<std::size_t> Index::find(std::string_view pointer) const {
    std::optional<std::size_t> found = 0;
    while (found && !pointer.empty()) {
        if (pointer.front() != '/') {
            return std::nullopt;
        }
        pointer.remove_prefix(1);
        const std::size_t token_end = std::min(pointer.find('/'), pointer.size());
        found = child(*found, pointer.substr(0, token_end));
        pointer.remove_prefix(token_end);
    }
    return found;
}

std::optional<Repetition> Index::first_repetition() const {
    std::optional<Repetition> first;
    for (std::size_t object = 0; object < size(); ++object) {
        if (type(object) != Type::object) {
            continue;
        }
        std::unordered_map<std::string, std::size_t> members;
        for (auto member = first_child(object); member; member = next_sibling(*member)) {
            const auto [earlier, is_new] = members.emplace(name(*member), *member);
            if (!is_new && (!first || *member < first->second)) {
                first = Repetition{earlier->second, *member};
            }
        }
    }
    return first;
}

std::string pointer_token(std::string_view name) {
    std::string result;
    for (const char byte : name) {
        if (byte == '~') {
            result += "~0";
        } else if (byte == '/') {
            result += "~1";
        } else {
            result += byte;
        }
    }
    return result;
}

}  // namespace headsetmgmt::program::json
