// SPDX-License-Identifier: Apache-2.0
// The refusal of a bench file, for the tests of benches.

#pragma once

#include <string>

#include "program/phone/bench_file.h"
#include "program/refused_input.h"

namespace headsetmgmt::program {

/// The refusal of `text` as the file bench.json; "accepted" when it is taken.
inline std::string refusal(const std::string& text) {
    try {
        read_bench(text, "bench.json");
    } catch (const RefusedInput& error) {
        return error.what();
    }
    return "accepted";
}

}  // namespace headsetmgmt::program
