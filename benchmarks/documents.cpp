// SPDX-License-Identifier: Apache-2.0
// Configuration documents of any size, for the model "Varos K20".

#include "benchmarks/documents.h"

namespace headsetmgmt::benchmarks {

namespace {

std::string parameter(std::size_t usage_id, const std::string& remark = "") {
    const std::string number = std::to_string(usage_id);
    std::string text = R"({"name": "Parameter )" + number + remark + R"(", "usageId": )" + number;
    // Half of the values are numbers, half are texts, as in documents that are in use.
    text += usage_id % 2 == 0 ? R"(, "value": )" + number
                              : R"(, "value": "level )" + number + remark + '"';
    return text + R"(, "access": "Admin"})";
}

std::string beginning() {
    return R"({"templateConfiguration": {"updatedTime": 1795248000)";
}

std::string model_entry(const std::string& parameters) {
    return R"({"models": ["Varos K20"], "modelFirmware": [{"firmwareName": "k20.img", )"
           R"("firmwareVersion": "1-0-2", "firmwareParams": [)" +
           parameters + "]}]}";
}

}  // namespace

std::string document_of_settings(std::size_t settings, const std::string& remark) {
    std::string text = beginning() + R"(, "commonSettings": [)";
    for (std::size_t usage_id = 1; usage_id < settings; ++usage_id) {
        text += usage_id == 1 ? "" : ",\n            ";
        text += parameter(usage_id, remark);
    }
    return text + R"(], "modelSpecificSettings": [)" + model_entry(parameter(settings, remark)) +
           "]}}";
}

std::string document_of_model_entries(std::size_t entries) {
    std::string text = beginning() + R"(, "modelSpecificSettings": [)";
    for (std::size_t entry = 1; entry < entries; ++entry) {
        text +=
            R"({"models": ["Arlo )" + std::to_string(entry) +
            R"("], "modelFirmware": [{"firmwareName": "arlo.img", "firmwareVersion": "1-0-0"}]},)"
            "\n";
    }
    return text + model_entry(parameter(1)) + "]}}";
}

std::string document_of_one_value(std::size_t bytes) {
    return beginning() + R"(, "modelSpecificSettings": [)" +
           model_entry(R"({"name": "n", "usageId": 1, "access": "Admin", "value": ")" +
                       std::string(bytes, 'v') + R"("})") +
           "]}}";
}

std::string broken_document(std::size_t settings) {
    std::string text = document_of_settings(settings);
    text.back() = ']';
    return text;
}

std::string deepest_document() {
    constexpr std::size_t levels = 1000;
    std::string text;
    for (std::size_t level = 0; level < levels; ++level) {
        text += R"({"a":)";
    }
    return text + "1" + std::string(levels, '}');
}

}  // namespace headsetmgmt::benchmarks
