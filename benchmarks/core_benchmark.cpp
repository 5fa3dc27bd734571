// SPDX-License-Identifier: Apache-2.0
// What the library's inside costs where no host looks: a log line and a task, each beside the least
// that anyone could do for the same result, and queues of any length.

#include <cstddef>
#include <deque>
#include <mutex>
#include <sstream>
#include <string>

#include <benchmark/benchmark.h>

#include "headsetmgmt/executor.h"
#include "headsetmgmt/log.h"

#include "benchmarks/comparison.h"
#include "benchmarks/least.h"
#include "benchmarks/processor_time.h"
#include "benchmarks/resting_worker.h"
#include "core/owners.h"
#include "runtime/executor_impl.h"

namespace headsetmgmt::benchmarks {
namespace {

/// Takes lines as the library's own sink does, and counts them.
class CountingLog : public log::HostLogInterface {
public:
    int map_to_host_log_level(log::LogLevel level) const override {
        return static_cast<int>(level);
    }

    void print(log::LogLevel /*level*/, const std::string& line) override {
        benchmark::DoNotOptimize(line.c_str());
        ++lines;
    }

    std::size_t lines = 0;
};

// The pieces of a line that a document causes for each of its settings.
int usage_id = 34;
std::string name = "Speaker Volume";
std::string value = "medium";
std::string access = "Admin";

constexpr std::size_t lines_at_a_time = 1000;

/// How long one line of ours takes.
double seconds_of_our_line(const log::Logger& logger) {
    return processor_seconds_of([&] {
               for (std::size_t i = 0; i < lines_at_a_time; ++i) {
                   benchmark::DoNotOptimize(usage_id);
                   logger.debug() << "save_config_to_map: " << usage_id << ", key: " << name
                                  << ", value: " << value << ", access: " << access;
               }
           }) /
           lines_at_a_time;
}

/// How long the same line takes that is composed and handed over, and nothing else.
double seconds_of_bare_line(log::HostLogInterface* sink) {
    const std::string component = "HeadsetConfigImpl";
    return processor_seconds_of([&] {
               for (std::size_t i = 0; i < lines_at_a_time; ++i) {
                   benchmark::DoNotOptimize(usage_id);
                   benchmark::DoNotOptimize(sink);
                   std::ostringstream stream;
                   stream << component << ": "
                          << "save_config_to_map: " << usage_id << ", key: " << name
                          << ", value: " << value << ", access: " << access;
                   sink->print(log::LogLevel::debug, stream.str());
               }
           }) /
           lines_at_a_time;
}

void compare_lines(benchmark::State& state, log::HostLogInterface* our_sink) {
    CountingLog sink;
    const LoggerOwner logger(create_logger(our_sink, "HeadsetConfigImpl", true));
    compare(
        state, [&] { return seconds_of_our_line(*logger); },
        [&] { return seconds_of_bare_line(&sink); });
}

void log_line(benchmark::State& state) {
    CountingLog sink;
    compare_lines(state, &sink);
}

void log_line_with_no_host(benchmark::State& state) {
    compare_lines(state, nullptr);
}

/// An executor whose worker rests.
class Worker {
public:
    Worker() : executor(&sink) {
        let_worker_rest();
        executor.run("worker", 0, 0);
        wait_for_worker();
    }
    ~Worker() {
        executor.requestExit();
        wake_worker_for_good();
        executor.join();
    }

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    CountingLog sink;
    ExecutorImpl executor;
};

constexpr std::size_t hand_overs = 1000;

/// Tasks that each queue the next one, and how long the worker took from the first to the last.
struct Chain {
    ExecutorInterface& executor;
    std::size_t left;
    double begin;
    double end;

    void step(TaskParametersInterface* params) {
        if (left == hand_overs) {
            begin = processor_seconds();
        }
        if (left == 0) {
            end = processor_seconds();
            return;
        }
        --left;
        executor.add_task(run, this, params);
    }

    static void run(void* chain, TaskParametersInterface* params) {
        static_cast<Chain*>(chain)->step(params);
    }
};

/// A queue that does nothing more than it must.
class BareQueue {
public:
    explicit BareQueue(log::HostLogInterface& log_sink) : sink(&log_sink) {}

    void push(task_functor functor, void* context, const TaskParametersInterface& params) {
        print(lines[0]);
        const Entry entry = {functor, context, params.clone()};
        print(lines[1]);
        const std::lock_guard<std::mutex> lock(mutex);
        entries.push_back(entry);
    }

    void pop_and_run() {
        Entry entry = {};
        {
            const std::lock_guard<std::mutex> lock(mutex);
            entry = entries.front();
            entries.pop_front();
        }
        print(lines[2]);
        entry.functor(entry.context, entry.params);
        print(lines[3]);
        delete entry.params;
    }

private:
    struct Entry {
        task_functor functor;
        void* context;
        TaskParametersInterface* params;
    };

    void print(const std::string& line) {
        benchmark::DoNotOptimize(sink);
        sink->print(log::LogLevel::debug, line);
    }

    const std::string lines[4] = {"ExecutorImpl::add_task: ENTER.\n",
                                  "ExecutorImpl::ExecutorImpl adding a task\n",
                                  "ExecutorImpl::threadLoop, start executing task\n",
                                  "ExecutorImpl::threadLoop, complete executing task\n"};
    std::mutex mutex;
    std::deque<Entry> entries;
    log::HostLogInterface* sink;
};

void do_nothing(void* context, TaskParametersInterface* params) {
    benchmark::DoNotOptimize(context);
    benchmark::DoNotOptimize(params);
}

/// The worker is in a pass: from `add_task` to the task's beginning.
void add_task_to_run(benchmark::State& state) {
    Worker worker;
    CountingLog sink;
    BareQueue queue(sink);
    Errand errand;
    const auto ours = [&] {
        Chain chain{worker.executor, hand_overs, 0, 0};
        worker.executor.add_task(Chain::run, &chain, &errand);
        run_worker();
        return (chain.end - chain.begin) / hand_overs;
    };
    const auto floor = [&] {
        return processor_seconds_of([&] {
                   for (std::size_t i = 0; i < hand_overs; ++i) {
                       queue.push(do_nothing, nullptr, errand);
                       queue.pop_and_run();
                   }
               }) /
               hand_overs;
    };
    compare(state, ours, floor);
}

/// So many tasks queued while the worker rests, and run in one pass; the time a task.
void queue_of(benchmark::State& state) {
    Worker worker;
    const auto tasks = static_cast<int>(state.range(0));
    Errand errand;
    for ([[maybe_unused]] auto _ : state) {
        double seconds = processor_seconds_of([&] {
            for (int i = 0; i < tasks; ++i) {
                worker.executor.add_task(do_nothing, nullptr, &errand);
            }
        });
        seconds += run_worker();
        state.SetIterationTime(seconds / tasks);
    }
}

BENCHMARK(log_line)->Iterations(50)->UseManualTime();
BENCHMARK(log_line_with_no_host)->Iterations(50)->UseManualTime();
BENCHMARK(add_task_to_run)->Iterations(50)->UseManualTime();
BENCHMARK(queue_of)->Arg(10)->Iterations(200)->UseManualTime();
BENCHMARK(queue_of)->Arg(100)->Iterations(100)->UseManualTime();
BENCHMARK(queue_of)->Arg(1000)->Iterations(30)->UseManualTime();
BENCHMARK(queue_of)->Arg(10000)->Iterations(3)->UseManualTime();

}  // namespace
}  // namespace headsetmgmt::benchmarks

BENCHMARK_MAIN();
