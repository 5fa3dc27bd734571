// SPDX-License-Identifier: Apache-2.0
// Documents far larger than any that an administrator writes, at 1, 10 and 100 times the size: how
// the time grows that a setting, a model entry and a byte takes, and that the stack does not.

#include <cstddef>
#include <string>

#include <benchmark/benchmark.h>
#include <cjson/cJSON.h>

#include "headsetmgmt/phone/flat_interface.h"

#include "benchmarks/documents.h"
#include "benchmarks/painted_stack.h"
#include "benchmarks/phone.h"
#include "benchmarks/processor_time.h"

namespace headsetmgmt::benchmarks {
namespace {

/// Reports how long each piece and each byte took; `seconds` are those of all iterations.
void report(benchmark::State& state, double seconds, std::size_t bytes, std::size_t pieces) {
    const double each = seconds / static_cast<double>(state.iterations()) * 1e9;
    state.counters["ns_per_piece"] = each / static_cast<double>(pieces);
    state.counters["ns_per_byte"] = each / static_cast<double>(bytes);
    state.counters["bytes"] = static_cast<double>(bytes);
}

/// Gives the document to an accessory that waits for it, again and again, each time a new one.
/// `pieces` is how many there are of what the document consists of.
void hand_out(benchmark::State& state, const std::string& document, std::size_t pieces) {
    Phone phone;
    std::size_t stack = 0;
    double seconds = 0;
    for ([[maybe_unused]] auto _ : state) {
        phone.attach_and_fetch(headset("1"));
        double taken = 0;
        stack = stack_used_by(
            [&] { taken = processor_seconds_of([&] { httpResponse(document.c_str(), 200); }); });
        seconds += taken;
        state.SetIterationTime(taken);
        remove_peripheral("1");
    }
    report(state, seconds, document.size(), pieces);
    state.counters["stack"] = static_cast<double>(stack);
}

/// What the parser alone takes: the floor of the growth, with its memory and the system's.
void parser_alone(benchmark::State& state) {
    const auto pieces = static_cast<std::size_t>(state.range(0));
    const std::string document = document_of_settings(pieces);
    double seconds = 0;
    for ([[maybe_unused]] auto _ : state) {
        const double taken =
            processor_seconds_of([&] { cJSON_Delete(cJSON_Parse(document.c_str())); });
        seconds += taken;
        state.SetIterationTime(taken);
    }
    report(state, seconds, document.size(), pieces);
}

std::size_t argument_of(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

void settings(benchmark::State& state) {
    hand_out(state, document_of_settings(argument_of(state)), argument_of(state));
}

void model_entries(benchmark::State& state) {
    hand_out(state, document_of_model_entries(argument_of(state)), argument_of(state));
}

void one_long_value(benchmark::State& state) {
    hand_out(state, document_of_one_value(argument_of(state)), argument_of(state));
}

void broken_at_its_end(benchmark::State& state) {
    hand_out(state, broken_document(argument_of(state)), argument_of(state));
}

void deepest(benchmark::State& state) {
    hand_out(state, deepest_document(), argument_of(state));
}

/// Some 1, 10 and 100 MB: a setting takes about 100 bytes, a model entry a little less.
void by_pieces(benchmark::internal::Benchmark* family) {
    family->Arg(10000)->Arg(100000)->Arg(1000000)->UseManualTime()->Unit(benchmark::kMillisecond);
}

void by_bytes(benchmark::internal::Benchmark* family) {
    family->Arg(1000000)->Arg(10000000)->Arg(100000000)->UseManualTime()->Unit(
        benchmark::kMillisecond);
}

BENCHMARK(settings)->Apply(by_pieces);
BENCHMARK(parser_alone)->Apply(by_pieces);
BENCHMARK(model_entries)->Apply(by_pieces);
BENCHMARK(broken_at_its_end)->Apply(by_pieces);
BENCHMARK(one_long_value)->Apply(by_bytes);
BENCHMARK(deepest)->Arg(1000)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace headsetmgmt::benchmarks

BENCHMARK_MAIN();
