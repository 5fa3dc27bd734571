// SPDX-License-Identifier: Apache-2.0
// Scans JSON text as the library's parser does.

#include "program/json/scan.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "program/json/tokens.h"

namespace headsetmgmt::program::json {

namespace {

using Kind = Fault::Kind;

bool is_digit(char byte) {
    return byte >= '0' && byte <= '9';
}

/// Whether `text` begins a word or number and ends before it is whole.
bool is_cut_off_word(std::string_view text) {
    const std::string_view words[] = {"true", "false", "null", "-0"};
    return std::any_of(std::begin(words), std::end(words), [text](std::string_view word) {
        return text.size() < word.size() && word.substr(0, text.size()) == text;
    });
}

/// Whether `text` is an exponent without its digits.
bool is_cut_off_exponent(std::string_view text) {
    const std::string_view exponents[] = {"e", "E", "e+", "e-", "E+", "E-"};
    return std::find(std::begin(exponents), std::end(exponents), text) != std::end(exponents);
}

class Scanner {
public:
    Scanner(std::string_view given, std::size_t levels)
        : text(given.substr(0, given.find('\0'))), most_levels(levels) {}

    std::optional<Fault> run() {
        // The parser asks for one more byte than the mark and its NUL.
        if (text.size() > 3 && text.substr(0, 3) == "\xef\xbb\xbf") {
            at = 3;
        }
        skip_blanks();
        std::optional<Fault> fault = read_value(Value::no_name_);
        while (!fault && !holders.empty()) {
            skip_blanks();
            fault = go_on();
        }
        return fault;
    }

    std::vector<Value> values;

private:
    bool is_at(char byte) const { return at < text.size() && text[at] == byte; }

    void skip_blanks() {
        while (at < text.size() && is_blank(text[at])) {
            ++at;
        }
    }

    /// Goes on in the innermost object or array: to its end, or over one value.
    std::optional<Fault> go_on() {
        Value& holder = values[holders.back()];
        const bool is_object = text[holder.begin] == '{';
        if (is_at(is_object ? '}' : ']')) {
            ++at;
            holder.end = at;
            holders.pop_back();
            return std::nullopt;
        }
        const bool is_first = holders.back() == values.size() - 1;
        if (!is_first) {
            if (!is_at(',')) {
                return fault_behind_value();
            }
            ++at;
            skip_blanks();
        }
        return is_object ? read_member() : read_value(Value::no_name_);
    }

    std::optional<Fault> read_member() {
        const std::size_t name = at;
        if (!is_at('"')) {
            return at < text.size() ? Fault{Kind::unexpected, at, at + 1} : cut_off();
        }
        if (auto fault = read_string()) {
            return fault;
        }
        skip_blanks();
        if (!is_at(':')) {
            return at < text.size() ? unexpected() : cut_off();
        }
        ++at;
        skip_blanks();
        return read_value(name);
    }

    std::optional<Fault> read_value(std::size_t name) {
        const std::size_t begin = at;
        values.push_back({begin, begin, name});
        if (is_at('{') || is_at('[')) {
            if (holders.size() >= most_levels) {
                return Fault{Kind::too_deep, at, at};
            }
            holders.push_back(values.size() - 1);
            ++at;
            return std::nullopt;
        }
        std::optional<Fault> fault = read_plain_value();
        values.back().end = at;
        return fault;
    }

    std::optional<Fault> read_plain_value() {
        if (is_at('"')) {
            return read_string();
        }
        const std::string_view rest = text.substr(at);
        for (const std::string_view word : {"null", "false", "true"}) {
            if (rest.substr(0, word.size()) == word) {
                at += word.size();
                return std::nullopt;
            }
        }
        if (is_at('-') || (!rest.empty() && is_digit(rest.front()))) {
            const std::size_t end = number_end(text, at);
            if (end > at) {
                at = end;
                return std::nullopt;
            }
        }
        return fault_at_value();
    }

    std::optional<Fault> read_string() {
        const std::size_t begin = at;
        const std::size_t end = string_end(text, begin);
        if (end >= text.size()) {
            return Fault{Kind::cut_off_in_string, begin, begin + 1};
        }
        // Not searched behind the string: the next backslash may be megabytes away.
        const std::string_view up_to_end = text.substr(0, end);
        std::size_t backslash = up_to_end.find('\\', begin);
        while (backslash < end) {
            const auto escape = escape_at(text, backslash, end);
            if (!escape) {
                return Fault{Kind::unexpected, backslash, backslash};
            }
            backslash = up_to_end.find('\\', backslash + escape->length);
        }
        at = end + 1;
        return std::nullopt;
    }

    Fault unexpected() const { return {Kind::unexpected, at, at}; }
    Fault cut_off() const { return {Kind::cut_off, text.size(), at}; }

    /// What is wrong where a value must stand.
    Fault fault_at_value() const {
        const std::string_view rest = text.substr(at);
        if (rest.empty() && std::all_of(text.begin(), text.end(), is_blank)) {
            return {Kind::blank, 0, at};
        }
        return is_cut_off_word(rest) ? cut_off() : unexpected();
    }

    /// What is wrong where a comma or the end of the innermost object or array must stand.
    Fault fault_behind_value() const {
        const std::string_view rest = text.substr(at);
        const Value& last = values.back();
        const bool is_behind_number =
            last.end == at && (is_digit(text[last.begin]) || text[last.begin] == '-');
        const bool is_cut_off = rest.empty() || (is_behind_number && is_cut_off_exponent(rest));
        return is_cut_off ? cut_off() : unexpected();
    }

    std::string_view text;
    std::size_t most_levels;
    std::size_t at = 0;
    std::vector<std::size_t> holders;  ///< numbers of the objects and arrays that are open
};

}  // namespace

std::variant<Index, Fault> scan(std::string_view text, std::size_t most_levels) {
    if (text.empty()) {
        return Fault{Kind::empty, 0, 0};
    }
    if (text.front() == '\0') {
        return Fault{Kind::begins_with_nul, 0, 0};
    }
    Scanner scanner(text, most_levels);
    if (const auto fault = scanner.run()) {
        return *fault;
    }
    return Index(text, std::move(scanner.values));
}

std::optional<Place> place_of_pointer(std::string_view text, std::string_view pointer) {
    const auto scanned = scan(text, any_levels);
    const auto* index = std::get_if<Index>(&scanned);
    const auto found = index != nullptr ? index->find(pointer) : std::nullopt;
    return found ? std::optional<Place>(place_at(text, (*index)[*found].member_begin()))
                 : std::nullopt;
}

}  // namespace headsetmgmt::program::json
