// SPDX-License-Identifier: Apache-2.0
// Lines on their way to a reader who may not read.

#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace headsetmgmt::program {

/// Writes lines to a descriptor, in their order, on a thread of its own: a terminal that is stopped
/// or a pipe that is full blocks that thread and no other. Any thread.
///
/// Lines wait in a queue. A line that does not fit is lost and counted. Where lines are missing,
/// the reader finds one that says how many.
class LineWriter {
public:
    struct Limits {
        /// The queue's size: eight of the largest reports, or some 50,000 events of a request. A
        /// line that is longer is taken when the queue is empty.
        std::size_t bytes = std::size_t{8} << 20U;
        /// How long `finish` waits for a reader who reads nothing. One who reads, however slowly,
        /// is waited for to the end.
        std::chrono::milliseconds patience{5000};
        /// How long `finish` waits in a hurry for all lines, and how much longer for the last one.
        std::chrono::milliseconds hurry_for_all{1000};
        std::chrono::milliseconds hurry_for_last{500};
    };

    /// What is missing. A reader who closes its end loses nothing, and is no error.
    struct Result {
        std::size_t lost_lines = 0;  ///< that did not fit, or were left when nobody read them
        int error = 0;               ///< number of the first error in writing; 0: none
    };

    /// Makes the line that stands where that many lines are missing.
    using LossLine = std::function<std::string(std::size_t lines)>;
    /// Called on the writing thread at the first error, with its number.
    using OnError = std::function<void(int error)>;

    /// `descriptor` is borrowed until the program ends: a write that blocks outlives this object.
    /// `loss_line` and `on_error` are called on the writing thread. Throws std::system_error when
    /// there can be no thread.
    LineWriter(int descriptor, Limits limits, LossLine loss_line, OnError on_error);
    ~LineWriter();

    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    /// Adds `text`, one or more whole lines, which are lost together. Never waits.
    void add(std::string text);

    /// The program is asked to end: `finish` waits no longer than the limits say.
    void hurry();

    /// Adds `last`, even when it does not fit, and closes the queue: what is added later is
    /// discarded, uncounted, a second `last` too. Returns when all lines are written, or when the
    /// limits say so; what is left then is lost.
    Result finish(std::string last = {});

private:
    struct Queue;

    std::shared_ptr<Queue> queue;  // the writing thread's too, which may outlive this object
};

}  // namespace headsetmgmt::program
