// JSON text of which the line of each value is known, for messages.

#include "program/phone/located_json.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <vector>

#include "program/phone/bench.h"

namespace headsetmgmt::program {

namespace {

using nlohmann::json;

constexpr std::size_t deepest_named_place = 4;  // such as /accessories/0/type

/// Where in a text the parser is.
struct Position {
    std::size_t line = 1;
    bool after_line_feed = false;  // counted with the next character: a number is read one too far
};

/// Hands characters to the parser and keeps the position.
class LineCounter {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    LineCounter(const char* place, Position* parser_position)
        : at(place), position(parser_position) {}

    reference operator*() const { return *at; }
    LineCounter& operator++() {
        if (position->after_line_feed) {
            ++position->line;
        }
        position->after_line_feed = *at == '\n';
        ++at;
        return *this;
    }
    bool operator==(const LineCounter& other) const { return at == other.at; }
    bool operator!=(const LineCounter& other) const { return at != other.at; }

private:
    const char* at;
    Position* position;
};

/// Notes on which line each member and each element of a document stands.
class LineNotes : public nlohmann::json_sax<json> {
public:
    explicit LineNotes(const Position& parser_position) : position(parser_position) {}

    bool null() override { return value(); }
    bool boolean(bool /*value*/) override { return value(); }
    bool number_integer(number_integer_t /*value*/) override { return value(); }
    bool number_unsigned(number_unsigned_t /*value*/) override { return value(); }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override {
        return value();
    }
    bool string(string_t& /*value*/) override { return value(); }
    bool binary(binary_t& /*value*/) override { return value(); }
    bool start_object(std::size_t /*elements*/) override { return open(false); }
    bool start_array(std::size_t /*elements*/) override { return open(true); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(string_t& name) override {
        here.back().name = name;
        // Here, not at the value: a number ends only where the next token begins.
        if (may_be_named()) {
            const std::string member = path();
            const auto [earlier, is_first] = lines.emplace(member, position.line);
            if (!is_first && !first_repetition) {
                first_repetition = Repetition{member, earlier->second, position.line};
            }
        }
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override {
        return false;
    }

    /// A member that stands a second time in its object.
    struct Repetition {
        std::string path;
        std::size_t first_line;
        std::size_t line;
    };
    const std::optional<Repetition>& repeated() const { return first_repetition; }
    const std::map<std::string, std::size_t>& noted() const { return lines; }

private:
    struct Level {
        bool is_array;
        std::size_t index;
        std::string name;
    };

    std::string path() const {
        std::string result;
        for (const Level& level : here) {
            result +=
                "/" + (level.is_array ? std::to_string(level.index) : name_in_place(level.name));
        }
        return result;
    }
    /// Whether any message may name a place as deep as this one.
    bool may_be_named() const { return here.size() <= deepest_named_place; }
    void note() {
        if (may_be_named()) {
            lines.emplace(path(), position.line);
        }
    }
    void done() {
        if (!here.empty() && here.back().is_array) {
            ++here.back().index;
        }
    }
    bool value() {
        note();
        done();
        return true;
    }
    bool open(bool is_array) {
        note();
        here.push_back({is_array, 0, {}});
        return true;
    }
    bool close() {
        here.pop_back();
        done();
        return true;
    }

    const Position& position;
    std::vector<Level> here;
    std::map<std::string, std::size_t> lines;
    std::optional<Repetition> first_repetition;
};

[[noreturn]] void refuse(const std::string& place, const std::string& why) {
    throw BenchError(place + ": " + why);
}

/// "LINE:COLUMN" of the byte at `place`.
std::string line_and_column(const std::string& text, std::size_t place) {
    const auto at = text.begin() + static_cast<std::ptrdiff_t>(std::min(place, text.size()));
    const auto line_feed = std::find(std::make_reverse_iterator(at), text.rend(), '\n');
    return std::to_string(1 + std::count(text.begin(), at, '\n')) + ":" +
           std::to_string(1 + std::distance(line_feed.base(), at));
}

/// The parser's words without what it says of itself and of the place.
std::string without_prefix(const std::string& message) {
    const std::size_t name_end = message.find("] ");
    const std::size_t place_end = message.find(": ", message.find(", column "));
    if (message.find(", column ") != std::string::npos && place_end != std::string::npos) {
        return message.substr(place_end + 2);
    }
    return name_end != std::string::npos ? message.substr(name_end + 2) : message;
}

}  // namespace

std::string name_in_place(const std::string& name) {
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

LocatedJson::LocatedJson(const std::string& text, const std::string& file) {
    if (text.empty()) {
        refuse(file + ":1", "expected JSON, found an empty file");
    }
    Position position;
    LineNotes notes(position);
    const LineCounter begin(text.data(), &position);
    const LineCounter end(text.data() + text.size(), &position);
    json::sax_parse(begin, end, &notes);
    try {
        root = json::parse(text);
    } catch (const json::parse_error& error) {
        // The parser counts the bytes that it has read, the wrong one included.
        refuse(file + ":" + line_and_column(text, std::max<std::size_t>(error.byte, 1) - 1),
               "expected JSON: " + without_prefix(error.what()));
    } catch (const json::exception& error) {
        // A number that no double holds: the exception tells no place, but the reading for the
        // lines stopped there.
        refuse(file + ":" + std::to_string(position.line),
               "expected JSON: " + without_prefix(error.what()));
    }
    if (const auto& repeated = notes.repeated()) {
        refuse(file + ":" + std::to_string(repeated->line),
               "member " + repeated->path + ": expected once, found on line " +
                   std::to_string(repeated->first_line) + " already");
    }
    lines = notes.noted();
}

std::size_t LocatedJson::line_of(const std::string& place) const {
    const auto entry = lines.find(place);
    return entry != lines.end() ? entry->second : 1;
}

}  // namespace headsetmgmt::program
