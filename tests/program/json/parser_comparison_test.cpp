// SPDX-License-Identifier: Apache-2.0
// Holds the scanner against the library's parser: same verdict, same place of a fault, same values.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include "program/json/preorder.h"
#include "program/json/scan.h"

namespace headsetmgmt::program::json {
namespace {

using Tree = std::unique_ptr<cJSON, decltype(&cJSON_Delete)>;

/// The tree of a text, parsed as the library does; the place where the parser stopped.
Tree parsed(const std::string& text, std::size_t& stop) {
    const char* end = nullptr;
    Tree tree(cJSON_ParseWithOpts(text.c_str(), &end, 0), cJSON_Delete);
    stop = static_cast<std::size_t>(end - text.c_str());
    return tree;
}

Type type_of(const cJSON& node) {
    switch (node.type & 0xff) {
    case cJSON_NULL:
        return Type::null;
    case cJSON_True:
    case cJSON_False:
        return Type::boolean;
    case cJSON_Number:
        return Type::number;
    case cJSON_String:
        return Type::string;
    case cJSON_Array:
        return Type::array;
    default:
        return Type::object;
    }
}

/// The parts of a value that both sides know, one line each.
struct Description {
    Type type;
    bool is_member;
    std::string name;    // up to its first NUL character
    std::size_t holder;  // number of the object or array around it, its own for the root
};

bool operator==(const Description& left, const Description& right) {
    return left.type == right.type && left.is_member == right.is_member &&
           left.name == right.name && left.holder == right.holder;
}

std::vector<Description> described(const cJSON* tree) {
    std::vector<Description> result;
    const auto describe = [&result](const auto& self, const cJSON* node,
                                    std::size_t holder) -> void {
        const bool is_member = node->string != nullptr;
        const std::size_t number = result.size();
        result.push_back({type_of(*node), is_member, is_member ? node->string : "", holder});
        for (const cJSON* child = node->child; child != nullptr; child = child->next) {
            self(self, child, number);
        }
    };
    describe(describe, tree, 0);
    return result;
}

std::vector<Description> described(const Index& index) {
    std::vector<Description> result(index.size());
    for (std::size_t number = 0; number < index.size(); ++number) {
        Description& description = result[number];
        description.type = index.type(number);
        description.is_member = index[number].name != Value::no_name_;
        description.name = index.name(number).c_str();
        for (auto child = index.first_child(number); child; child = index.next_sibling(*child)) {
            result[*child].holder = number;
        }
    }
    return result;
}

/// Compares values that hold no other. cJSON's own comparison finds infinity unlike itself.
bool is_same_value(const cJSON& left, const cJSON& right) {
    const auto text_of = [](const cJSON& node) {
        return std::string(node.valuestring != nullptr ? node.valuestring : "");
    };
    return left.type == right.type && left.valuedouble == right.valuedouble &&
           text_of(left) == text_of(right);
}

/// Whether the bytes of each value that holds no other are, parsed alone, the same value.
bool are_values_where_they_stand(const std::string& text, const Index& index, const cJSON* tree) {
    bool are = true;
    for_each_value(tree, [&](const cJSON& node, std::size_t number) {
        const Value& place = index[number];
        if (node.child == nullptr) {
            std::size_t stop = 0;
            const std::string bytes = text.substr(place.begin, place.end - place.begin);
            const Tree alone = parsed(bytes, stop);
            are = are && alone && stop == bytes.size() && is_same_value(*alone, node);
        }
    });
    return are;
}

/// What differs between the scanner and the parser; empty when nothing does.
std::string difference(const std::string& text) {
    std::size_t stop = 0;
    const Tree tree = parsed(text, stop);
    const auto scanned = scan(text);
    if (const auto* fault = std::get_if<Fault>(&scanned)) {
        if (tree) {
            return "the scanner alone refuses it: " + explanation(text, *fault);
        }
        return fault->parser_offset == stop
                   ? ""
                   : "the parser gives up at " + std::to_string(stop) + ", the scanner at " +
                         std::to_string(fault->parser_offset);
    }
    if (!tree) {
        return "the parser alone refuses it, at " + std::to_string(stop);
    }
    const Index& index = std::get<Index>(scanned);
    if (index[0].end != stop) {
        return "the parser's value ends at " + std::to_string(stop) + ", the scanner's at " +
               std::to_string(index[0].end);
    }
    if (!(described(index) == described(tree.get()))) {
        return "the values differ";
    }
    return are_values_where_they_stand(text, index, tree.get()) ? "" : "a value stands elsewhere";
}

/// The documents that are kept in this project.
std::vector<std::string> documents() {
    std::vector<std::filesystem::path> paths;
    std::istringstream folders(DOCUMENT_FOLDERS);
    for (std::string folder; std::getline(folders, folder, ':');) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());  // a seed means the same on every machine
    std::vector<std::string> texts;
    for (const std::filesystem::path& path : paths) {
        std::ifstream file(path, std::ios::binary);
        texts.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return texts;
}

/// Changes a text here and there.
class Mutation {
public:
    explicit Mutation(unsigned int seed) : random(seed) {}

    std::string of(std::string text, const std::string& other) {
        for (std::size_t changes = 1 + below(4); changes > 0; --changes) {
            const std::size_t at = below(text.size() + 1);
            switch (below(5)) {
            case 0:
                text.insert(at, pieces[below(std::size(pieces))]);
                break;
            case 1:
                text.erase(at, 1 + below(3));
                break;
            case 2:
                text.resize(at);
                break;
            case 3:
                text.insert(at, 1, static_cast<char>(below(256)));
                break;
            default:
                text.insert(at, other.substr(below(other.size() + 1), below(40)));
                break;
            }
        }
        return text;
    }

    std::size_t below(std::size_t end) { return random() % end; }

private:
    static constexpr const char* pieces[] = {"{",
                                             "}",
                                             "[",
                                             "]",
                                             ",",
                                             ":",
                                             "\"",
                                             "\\",
                                             "{\"\":",
                                             "-",
                                             "+",
                                             ".",
                                             "e",
                                             "E+",
                                             "0",
                                             "17",
                                             "1.",
                                             "-.5e3",
                                             "0x10",
                                             "01",
                                             "null",
                                             "true",
                                             "false",
                                             "tru",
                                             "nan",
                                             "-inf",
                                             "\\u00e4",
                                             "\\u12",
                                             "\\uz",
                                             "\\ud83d",
                                             "\\ud83d\\ude00",
                                             "\\udc00",
                                             "\\\"",
                                             "\\\\",
                                             "\\q",
                                             "\xef\xbb\xbf",
                                             "\xff",
                                             "\t",
                                             "\x01",
                                             " \r\n",
                                             "\"\":",
                                             "\"a\":1,",
                                             "[[",
                                             "{}",
                                             "[]"};

    std::mt19937 random;
};

TEST(ParserComparison, DocumentsOfThisProject) {
    const std::vector<std::string> texts = documents();
    ASSERT_GT(texts.size(), 30U);

    for (const std::string& text : texts) {
        EXPECT_EQ("", difference(text)) << text;
    }
}

TEST(ParserComparison, EveryBeginningOfADocument) {
    const std::string document =
        "\xef\xbb\xbf{\"empty\": {}, \"blank\": { }, \"none\":[ ],\n"
        "\"numbers\": [0, -0, 17, -2.5e3, 1E+2, 6.25e-1, 01, 1., -.5],\n"
        "\"words\": [true, false, null], \"\\u00e4\\\"\": \"\\\\ \\n\\ud83d\\ude00\",\n"
        "\"\xc3\xa4\": [{}, {\"a\": [[], {\"b\": {}}]}, \"\"]} behind";
    for (std::size_t bytes = 0; bytes <= document.size(); ++bytes) {
        EXPECT_EQ("", difference(document.substr(0, bytes))) << document.substr(0, bytes);
    }
}

TEST(ParserComparison, EveryByteInEveryPlaceOfAShortDocument) {
    const std::string document = " {\"a\" : [1 , \"\\u0041\\n\"],\"b\":-1.5e3 }";
    for (std::size_t at = 0; at < document.size(); ++at) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string text = document;
            text[at] = static_cast<char>(byte);
            EXPECT_EQ("", difference(text)) << text;
            text = document;
            text.insert(at, 1, static_cast<char>(byte));
            EXPECT_EQ("", difference(text)) << text;
        }
    }
}

TEST(ParserComparison, ChangedDocuments) {
    constexpr int rounds = 20000;
    const std::vector<std::string> texts = documents();
    Mutation mutation(1);
    int taken = 0;
    for (int round = 0; round < rounds; ++round) {
        const std::string& text = texts[mutation.below(texts.size())];
        const std::string changed = mutation.of(text, texts[mutation.below(texts.size())]);
        ASSERT_EQ("", difference(changed)) << changed;
        taken += std::holds_alternative<Index>(scan(changed)) ? 1 : 0;
    }
    // Both verdicts are compared.
    EXPECT_GT(taken, rounds / 20);
    EXPECT_LT(taken, rounds - rounds / 20);
}

}  // namespace
}  // namespace headsetmgmt::program::json
