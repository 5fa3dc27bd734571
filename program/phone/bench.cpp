// SPDX-License-Identifier: Apache-2.0
// A test bench: the phone, its servers and its accessories.

#include "program/phone/bench.h"

#include <set>

#include "program/phone/bench_file.h"
#include "program/phone/bench_urls.h"
#include "program/refused_input.h"

namespace headsetmgmt::program {

namespace {

void replace_if_given(std::string& fact, const std::string& given) {
    if (!given.empty()) {
        fact = given;
    }
}

void replace_if_given(std::vector<std::string>& servers, const std::vector<std::string>& given) {
    if (!given.empty()) {
        servers = given;
    }
}

void lay_over(Bench& bench, const BenchOptions& options) {
    replace_if_given(bench.serial_number, options.serial_number);
    replace_if_given(bench.os_version, options.os_version);
    replace_if_given(bench.software_version, options.software_version);
    replace_if_given(bench.user_id, options.user_id);
    replace_if_given(bench.config_url, options.config_url);
    replace_if_given(bench.inventory_url, options.inventory_url);
    replace_if_given(bench.service_url, options.service_url);
    replace_if_given(bench.tftp_servers, options.tftp_servers);
    replace_if_given(bench.korm_servers, options.korm_servers);
    for (const std::string& text : options.accessories) {
        bench.accessories.push_back(read_accessory(text, accessory_option));
    }
}

[[noreturn]] void refuse_id(const std::string& place, const std::string& id) {
    throw RefusedInput(place + ": expected an id of its own, found \"" + id + "\" again");
}

/// Refuses two accessories of one id: `file_text` is the bench file's, and the accessories of the
/// file precede those of the options.
void check_ids(const Bench& bench, const BenchOptions& options, const std::string& file_text) {
    const std::size_t of_file = bench.accessories.size() - options.accessories.size();
    std::set<std::string> ids;
    for (std::size_t i = 0; i < bench.accessories.size(); ++i) {
        const std::string& id = bench.accessories[i].device_id;
        if (ids.insert(id).second) {
            continue;
        }
        std::string place;
        if (i < of_file) {
            std::string pointer = "/accessories/";
            pointer.append(std::to_string(i)).append("/id");
            place = place_in_file(file_text, options.file, pointer);
        } else {
            place = place_in_option(options.accessories[i - of_file], accessory_option);
            place += ": id";
        }
        refuse_id(place, id);
    }
}

}  // namespace

Bench make_bench(const BenchOptions& options) {
    std::string file_text;
    Bench bench;
    if (!options.file.empty()) {
        file_text = read_bench_file(options.file);
        bench = read_bench(file_text, options.file);
    }
    lay_over(bench, options);
    check_ids(bench, options, file_text);
    if (bench.accessories.empty()) {
        throw RefusedInput(
            options.file.empty()
                ? "no accessory: give --bench a file with \"accessories\", or --accessory"
                : options.file +
                      ": no accessory: expected one in \"accessories\", or give --accessory");
    }
    check_urls(bench);
    return bench;
}

}  // namespace headsetmgmt::program
