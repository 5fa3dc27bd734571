// SPDX-License-Identifier: Apache-2.0
// What the least that anyone could do is made of: log lines, a map of settings, a report; and
// whether it comes to what the library does.

#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "headsetmgmt/config.h"

#include "core/json.h"

namespace headsetmgmt::benchmarks {

/// The texts of log lines, in one piece of memory, to be written as they stand.
class Lines {
public:
    explicit Lines(const std::vector<std::string>& texts);

    /// Writes each with a string stream of its own and hands it to the log callback as a string.
    void write() const;

    /// Hands each to the log callback as it stands.
    void hand_over() const;

    std::size_t count() const { return ends.size(); }

private:
    std::string all;
    std::vector<std::size_t> ends;
};

/// The settings of `document_of_settings`, as they stand in the settings map.
std::vector<ConfigParam> settings_of_document(std::size_t settings, const std::string& remark = "");

/// A map of them.
std::map<int, ConfigParam> map_of(const std::vector<ConfigParam>& settings);

/// Builds the report on `headset`, prints it and deletes the tree.
JsonTextOwner print_report();

/// Has the library make a report and read documents, and throws `std::runtime_error` when its
/// report is not `print_report`'s, but for the time, or its settings are not those of `map_of`.
/// While there is no `Phone`.
void check_floors();

}  // namespace headsetmgmt::benchmarks
