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
        /// How long a reader who reads nothing is waited for. One who reads, however slowly, is
        /// waited for until the line fits.
        std::chrono::milliseconds patience{5000};
        /// False: what does not fit is lost at once. For threads that serve requests.
        bool waits = true;
    };

    /// How it ended. A reader who closed its end wants no more, which is neither.
    struct Result {
        std::size_t lost_lines = 0;  ///< that did not fit, or were left when nobody read them
        int error = 0;               ///< the number of the first error; 0: none
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

    /// Adds `text`, one or more whole lines, which are lost together.
    void add(std::string text);

    /// The program is asked to end: from now on nothing that does not fit is waited for, and
    /// `finish` waits no longer than this, counted from now.
    void hurry();
    static constexpr std::chrono::milliseconds longest_hurry{1500};

    /// Adds `last`, even when it does not fit, and ends the queue: what is added later goes
    /// nowhere, uncounted. Returns when all lines are written, or when nothing was read for as long
    /// as the limits say.
    Result finish(std::string last = {});

private:
    struct Queue;

    std::shared_ptr<Queue> queue;  // the writing thread's too, which may outlive this object
};

}  // namespace headsetmgmt::program
