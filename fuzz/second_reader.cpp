// SPDX-License-Identifier: Apache-2.0
// A second reading of configuration documents, made with another JSON parser.

#include "fuzz/second_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace headsetmgmt::fuzz {

namespace {

using nlohmann::json;

constexpr std::size_t deepest_document = 900;  // the library's parser refuses a little more
constexpr std::size_t longest_number = 60;     // the library's parser cuts a little more

/// A value with its key, if it has one, as the document has them: in their order, with repetitions.
struct Node {
    enum class Kind { nothing, truth, number, text, array, object };

    std::string key;
    Kind kind = Kind::nothing;
    double number = 0.0;
    std::string text;
    std::vector<Node> children;
};

/// Texts end at their first NUL.
std::string up_to_nul(const std::string& text) {
    return text.substr(0, text.find('\0'));
}

/// Builds the tree of a document; gives up where the two parsers may differ.
class TreeBuilder : public nlohmann::json_sax<json> {
public:
    Node root;

    bool null() override { return add({}); }
    bool boolean(bool /*value*/) override { return add(of_kind(Node::Kind::truth)); }
    bool number_integer(number_integer_t value) override {
        return add_number(static_cast<double>(value));
    }
    bool number_unsigned(number_unsigned_t value) override {
        return add_number(static_cast<double>(value));
    }
    bool number_float(number_float_t value, const string_t& digits) override {
        return digits.size() <= longest_number && add_number(value);
    }
    bool string(string_t& value) override {
        Node node = of_kind(Node::Kind::text);
        node.text = up_to_nul(value);
        return add(std::move(node));
    }
    bool binary(binary_t& /*value*/) override { return false; }
    bool start_object(std::size_t /*elements*/) override { return open(Node::Kind::object); }
    bool start_array(std::size_t /*elements*/) override { return open(Node::Kind::array); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(string_t& name) override {
        next_key = up_to_nul(name);
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override {
        return false;
    }

private:
    static Node of_kind(Node::Kind kind) {
        Node node;
        node.kind = kind;
        return node;
    }
    bool add_number(double value) {
        Node node = of_kind(Node::Kind::number);
        node.number = value;
        return add(std::move(node));
    }
    bool add(Node node) {
        node.key = std::exchange(next_key, {});
        if (path.empty()) {
            root = std::move(node);
        } else {
            path.back()->children.push_back(std::move(node));
        }
        return true;
    }
    bool open(Node::Kind kind) {
        add(of_kind(kind));
        path.push_back(path.empty() ? &root : &path.back()->children.back());
        return path.size() <= deepest_document;
    }
    bool close() {
        path.pop_back();
        return true;
    }

    std::vector<Node*> path;  // each but the first is the last child of the one before
    std::string next_key;
};

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A'))
                                                    : character;
    });
    return text;
}

const Node* first_of(const Node* node) {
    return node != nullptr && !node->children.empty() ? &node->children.front() : nullptr;
}

/// The first member of the name `key`, in any mix of capitals.
const Node* member(const Node* node, const char* key) {
    if (node == nullptr || node->kind != Node::Kind::object) {
        return nullptr;
    }
    const auto found =
        std::find_if(node->children.begin(), node->children.end(),
                     [key](const Node& child) { return lower(child.key) == lower(key); });
    return found != node->children.end() ? &*found : nullptr;
}

bool is_text(const Node* node) {
    return node != nullptr && node->kind == Node::Kind::text;
}

bool is_number(const Node* node) {
    return node != nullptr && node->kind == Node::Kind::number;
}

std::string text_of(const Node* node) {
    return is_text(node) ? node->text : std::string();
}

bool is_given(const Node* node) {
    return node != nullptr && node->kind != Node::Kind::nothing;
}

/// Down along the first children; the child of an array that is itself one is passed over.
const Node* find_template(const Node* node) {
    while (node != nullptr && member(node, "templateConfiguration") == nullptr) {
        const Node* first = first_of(node);
        node = first != nullptr && first->kind == Node::Kind::array ? first_of(first) : first;
    }
    return first_of(node);
}

int whole(double number) {
    constexpr int largest = std::numeric_limits<int>::max();
    constexpr int smallest = std::numeric_limits<int>::min();
    if (number >= largest) {
        return largest;
    }
    return number <= smallest ? smallest : static_cast<int>(number);
}

/// Digits as a number of 64 bits, the largest when it holds no more, cut to an int.
int whole(const std::string& digits) {
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    std::int64_t number = 0;
    for (const char digit : digits) {
        const int value = digit - '0';
        number = number > (largest - value) / 10 ? largest : number * 10 + value;
    }
    return static_cast<int>(number);
}

bool has_digits_only(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

void store_setting(const Node& parameter, Reading& reading) {
    const Node* usage_id = member(&parameter, "usageId");
    const Node* value = member(&parameter, "value");
    ConfigParam setting;
    setting.name = text_of(member(&parameter, "name"));
    setting.access = text_of(member(&parameter, "access"));
    if (setting.name.empty() || setting.access.empty() || !is_given(usage_id)) {
        return;
    }
    if (!is_number(usage_id) && !has_digits_only(text_of(usage_id))) {
        return;
    }
    if (!is_number(value) && !is_text(value)) {
        return;
    }
    setting.usage_id = is_number(usage_id) ? whole(usage_id->number) : whole(usage_id->text);
    setting.value = is_number(value) ? std::to_string(whole(value->number)) : value->text;
    if (lower(setting.access) != "admin") {
        setting.access = "User";
    }
    reading.settings[setting.usage_id] = setting;
}

void store_settings(const Node* parameters, Reading& reading) {
    if (parameters != nullptr) {
        for (const Node& parameter : parameters->children) {
            store_setting(parameter, reading);
        }
    }
}

bool serves(const Node& entry, const std::string& model) {
    const Node* names = member(&entry, "models");
    return names != nullptr &&
           std::any_of(names->children.begin(), names->children.end(), [&model](const Node& name) {
               return !text_of(&name).empty() && model.find(name.text) != std::string::npos;
           });
}

const Node* firmware_for(const Node* configuration_template, const std::string& model) {
    if (const Node* entries = member(configuration_template, "modelSpecificSettings")) {
        for (const Node& entry : entries->children) {
            if (serves(entry, model)) {
                return member(&entry, "modelFirmware");
            }
        }
    }
    return nullptr;
}

bool is_installable(const std::string& version, const std::string& reported) {
    constexpr char usable[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-";
    return !version.empty() && !reported.empty() && version != reported &&
           version.find_first_not_of(usable) == std::string::npos;
}

void decide_on_firmware(const Node* model_firmware, const std::string& id,
                        const std::string& reported, Reading& reading) {
    const Node* firmware = first_of(model_firmware);
    const Node* name = member(firmware, "firmwareName");
    if (!is_text(name)) {
        return;
    }
    reading.applied = true;
    const std::string version = text_of(member(firmware, "firmwareVersion"));
    if (lower(name->text) == "latest") {
        reading.firmware_call = "check_legacy_upgrade(\"" + id + "\")";
    } else if (lower(version) != "current" && is_installable(version, reported)) {
        reading.firmware_call =
            "request_upgrade(\"" + id + "\", \"" + version + "\", \"" + name->text + "\")";
    }
}

}  // namespace

std::optional<Reading> read_again(const std::string& document, const Device& device) {
    TreeBuilder tree;
    if (!json::sax_parse(document, &tree)) {
        return std::nullopt;
    }
    Reading reading;
    const Node* configuration_template = find_template(&tree.root);
    if (const Node* time = member(configuration_template, "updatedTime")) {
        reading.updated_time = is_number(time) ? time->number : 0.0;
    }
    store_settings(member(configuration_template, "commonSettings"), reading);
    const Node* firmware = firmware_for(configuration_template, device.model);
    store_settings(member(first_of(firmware), "firmwareParams"), reading);

    if (device.dongle_model.empty()) {
        decide_on_firmware(firmware, device.id, device.version, reading);
    } else {
        decide_on_firmware(firmware_for(configuration_template, device.dongle_model), device.id,
                           device.dongle_version, reading);
    }
    return reading;
}

}  // namespace headsetmgmt::fuzz
