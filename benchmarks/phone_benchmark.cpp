// SPDX-License-Identifier: Apache-2.0
// What a host sees: a document's way and a report's, each beside the least that anyone could do for
// the same result.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <cjson/cJSON.h>

#include "headsetmgmt/config.h"
#include "headsetmgmt/phone/flat_interface.h"

#include "benchmarks/comparison.h"
#include "benchmarks/documents.h"
#include "benchmarks/floors.h"
#include "benchmarks/host.h"
#include "benchmarks/phone.h"
#include "benchmarks/processor_time.h"
#include "benchmarks/resting_worker.h"

namespace headsetmgmt::benchmarks {
namespace {

/// Runs `answer` for an accessory that waits for its document; what `answer` answers.
template <typename Answer>
double with_waiting_accessory(Phone& phone, Answer answer) {
    phone.attach_and_fetch(headset("1"));
    const double seconds = answer();
    remove_peripheral("1");
    return seconds;
}

/// Where a document's way ends.
enum class End { last_apply, result };

/// From `httpResponse` to the last `apply_changes`, or on to its return: a few lines, and the end
/// of the tree and of the copy of the text.
/// `remark` stands at the end of each name and text.
void document(benchmark::State& state, End end, const std::string& remark = "") {
    const auto settings = static_cast<std::size_t>(state.range(0));
    const std::string text = document_of_settings(settings, remark);
    const std::vector<ConfigParam> list = settings_of_document(settings, remark);
    Phone phone;
    const auto answer_request = [&] {
        watch_apply(settings);
        const double begin = processor_seconds();
        httpResponse(text.c_str(), 200);
        return (end == End::result ? processor_seconds() : watched_apply().processor_seconds) -
               begin;
    };
    std::vector<std::string> texts;
    with_waiting_accessory(phone, [&] {
        texts = phone.lines_of(answer_request);
        return 0.0;
    });
    if (end == End::last_apply) {
        texts.resize(watched_apply().lines_before);
    }
    const Lines lines(texts);

    const auto ours = [&] {
        const std::size_t applied = host_counts.applied;
        const double seconds = with_waiting_accessory(phone, answer_request);
        if (host_counts.applied != applied + settings) {
            throw std::logic_error("not all settings were applied");
        }
        return seconds;
    };
    const auto floor = [&] {
        return with_waiting_accessory(phone, [&] {
            std::map<int, ConfigParam> map;
            const double seconds = processor_seconds_of([&] {
                cJSON* tree = cJSON_Parse(text.c_str());
                map = map_of(list);
                lines.write();
                cJSON_Delete(tree);
            });
            httpResponse("{}", 200);
            return seconds;
        });
    };
    compare(state, ours, floor);
}

/// How much of a report's lines the floor composes.
enum class FloorLines { composed, executors_finished };

/// From `send_inventory` to the request, on both threads.
void report(benchmark::State& state, FloorLines floor_lines) {
    constexpr std::size_t at_a_time = 50;  // so that the worker's waking does not count
    Phone phone;
    const auto accessory = headset("1");
    std::vector<std::string> composed = phone.lines_of([&] {
        send_inventory(accessory);
        run_worker();
    });
    // The executor's are the same for every task.
    const auto executors =
        std::stable_partition(composed.begin(), composed.end(), [&](const std::string& line) {
            return floor_lines == FloorLines::composed || line.find("ExecutorImpl::") != 0;
        });
    const Lines finished_lines({executors, composed.end()});
    composed.erase(executors, composed.end());
    const Lines lines(composed);
    if (finished_lines.count() != (floor_lines == FloorLines::composed ? 0 : 4)) {
        throw std::logic_error("the executor has not written four lines");
    }

    const auto ours = [&] {
        const std::size_t posts = host_counts.posts;
        double seconds = processor_seconds_of([&] {
            for (std::size_t i = 0; i < at_a_time; ++i) {
                send_inventory(accessory);
            }
        });
        seconds += run_worker();
        if (host_counts.posts != posts + at_a_time) {
            throw std::logic_error("not all reports were posted");
        }
        return seconds / at_a_time;
    };
    const auto floor = [&] {
        const double seconds = processor_seconds_of([&] {
            for (std::size_t i = 0; i < at_a_time; ++i) {
                benchmark::DoNotOptimize(print_report());
                lines.write();
                finished_lines.hand_over();
            }
        });
        return seconds / at_a_time;
    };
    compare(state, ours, floor);
}

// The number of iterations is fixed: most of a run is attaching and waiting, which is not measured.
void document_to_its_last_apply(benchmark::State& state) {
    document(state, End::last_apply);
}

void document_to_its_result(benchmark::State& state) {
    document(state, End::result);
}

void document_of_long_texts(benchmark::State& state) {
    document(state, End::last_apply, long_remark);
}

void report_all_lines_composed(benchmark::State& state) {
    report(state, FloorLines::composed);
}

void report_executors_lines_finished(benchmark::State& state) {
    report(state, FloorLines::executors_finished);
}

BENCHMARK(document_to_its_last_apply)->Arg(10)->Iterations(300)->UseManualTime();
BENCHMARK(document_to_its_last_apply)->Arg(1000)->Iterations(40)->UseManualTime();
BENCHMARK(document_to_its_last_apply)->Arg(100000)->Iterations(3)->UseManualTime();
BENCHMARK(document_to_its_result)->Arg(10)->Iterations(300)->UseManualTime();
BENCHMARK(document_to_its_result)->Arg(1000)->Iterations(40)->UseManualTime();
BENCHMARK(document_to_its_result)->Arg(100000)->Iterations(3)->UseManualTime();
BENCHMARK(document_of_long_texts)->Arg(1000)->Iterations(40)->UseManualTime();
BENCHMARK(report_all_lines_composed)->Iterations(300)->UseManualTime();
BENCHMARK(report_executors_lines_finished)->Iterations(300)->UseManualTime();

}  // namespace
}  // namespace headsetmgmt::benchmarks

int main(int count, char** arguments) {
    try {
        headsetmgmt::benchmarks::check_floors();
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "phone_benchmark: %s\n", error.what());
        return 1;
    }
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
