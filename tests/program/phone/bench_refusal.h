// What the bench reader says of a wrong text, for the tests of benches.

#pragma once

#include <string>

#include "program/phone/bench.h"

namespace headsetmgmt::program {

/// The refusal of `text`, told as the file bench.json; "accepted" when it is taken.
inline std::string refusal(const std::string& text) {
    try {
        read_bench(text, "bench.json");
    } catch (const BenchError& error) {
        return error.what();
    }
    return "accepted";
}

}  // namespace headsetmgmt::program
