// SPDX-License-Identifier: Apache-2.0
// Lines on their way to a reader who may not read.

#include "program/line_writer.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <list>
#include <mutex>
#include <optional>
#include <poll.h>
#include <pthread.h>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace headsetmgmt::program {

namespace {

using Clock = std::chrono::steady_clock;
using Lock = std::unique_lock<std::mutex>;

/// What a pipe takes as a whole, and what counts as progress of the reader.
constexpr std::size_t piece = 4096;

std::size_t lines_in(std::string_view text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

/// Writes a beginning of `text`; its length, or -1.
ssize_t write_piece(int descriptor, std::string_view text) {
    while (true) {
        const ssize_t count = write(descriptor, text.data(), std::min(text.size(), piece));
        if (count > 0) {
            return count;
        }
        if (count == 0) {
            errno = EIO;  // a device that takes nothing and says nothing
            return -1;
        }
        if (errno == EAGAIN) {  // another process that has the descriptor, too, made it so
            pollfd ready = {descriptor, POLLOUT, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return -1;
        }
    }
}

}  // namespace

/// What the writing thread shares with the others.
struct LineWriter::Queue {
    struct Entry {
        std::string text;
        std::size_t lost_lines = 0;  // when it stands for lines that are missing
        std::size_t size() const { return text.size() + sizeof(Entry); }
    };

    Queue(int to, Limits queue_limits, LossLine line_of_a_loss, OnError report_error)
        : descriptor(to), limits(queue_limits), loss_line(std::move(line_of_a_loss)),
          on_error(std::move(report_error)) {}

    const int descriptor;
    const Limits limits;
    const LossLine loss_line;
    const OnError on_error;

    std::mutex mutex;  // guards what follows, up to `is_given_up`
    std::condition_variable changed;
    std::list<Entry> entries;  // filled and emptied by splicing, which takes no memory
    std::size_t bytes = 0;     // of the entries, the one in hand included
    std::size_t lines_in_hand = 0;
    bool is_writing = false;  // an entry is in hand
    std::size_t lost_lines = 0;
    std::uint64_t progress = 0;  // pieces written
    int error = 0;               // the first
    bool has_reader = true;
    std::optional<Clock::time_point> hurried;  // when it was asked to hurry
    bool is_closed = false;
    bool has_last = false;     // the last of `entries`, once it is closed
    bool is_given_up = false;  // what was left is counted as lost

    // Of the writing thread alone.
    std::size_t failed_lines = 0;  // since the last that were written
    bool is_within_line = false;   // an error came within one

    bool fits(std::size_t size) const { return bytes == 0 || bytes + size <= limits.bytes; }
    bool is_written() const { return entries.empty() && !is_writing; }

    void lose(std::list<Entry>& added);
    void lose_all_but_last();
    bool wait_until_written(Lock& lock);
    void wait_until_written_by(Clock::time_point moment, Lock& lock);
    void give_up();
    void write_all();
    void write_entry(const Entry& entry);
    std::size_t write_text(std::string_view text);
    void keep_error(int number);
};

/// Turns the entry into one that stands for its lines, or counts them in the one before.
void LineWriter::Queue::lose(std::list<Entry>& added) {
    Entry& entry = added.front();
    const std::size_t lines = lines_in(entry.text);
    lost_lines += lines;
    if (!entries.empty() && entries.back().lost_lines != 0) {
        entries.back().lost_lines += lines;
        return;
    }
    entry.text.clear();
    entry.lost_lines = lines;
    bytes += entry.size();
    entries.splice(entries.end(), added);
}

/// Turns the waiting entries into one that stands for them, but for the last line of all.
void LineWriter::Queue::lose_all_but_last() {
    const auto end = has_last && !entries.empty() ? std::prev(entries.end()) : entries.end();
    if (entries.begin() == end) {
        return;
    }
    std::size_t missing = 0;
    for (auto entry = entries.begin(); entry != end; ++entry) {
        const std::size_t lines = lines_in(entry->text);
        lost_lines += lines;
        missing += lines + entry->lost_lines;
    }
    entries.front().text.clear();
    entries.front().lost_lines = missing;
    entries.erase(std::next(entries.begin()), end);
}

/// Waits for as long as the reader goes on reading; false when the program has to hurry.
bool LineWriter::Queue::wait_until_written(Lock& lock) {
    while (!is_written() && !hurried) {
        const std::uint64_t before = progress;
        const bool is_moving = changed.wait_for(lock, limits.patience, [this, before] {
            return is_written() || hurried || progress != before;
        });
        if (!is_moving) {
            return true;
        }
    }
    return !hurried;
}

void LineWriter::Queue::wait_until_written_by(Clock::time_point moment, Lock& lock) {
    changed.wait_until(lock, moment, [this] { return is_written(); });
}

void LineWriter::Queue::give_up() {
    lost_lines += lines_in_hand;
    lines_in_hand = 0;
    for (const Entry& entry : entries) {
        lost_lines += lines_in(entry.text);
    }
    entries.clear();
    is_given_up = true;
    changed.notify_all();
}

void LineWriter::Queue::write_all() {
    Lock lock(mutex);
    while (true) {
        changed.wait(lock, [this] { return !entries.empty() || is_closed; });
        if (entries.empty()) {
            return;
        }
        std::list<Entry> in_hand;
        in_hand.splice(in_hand.end(), entries, entries.begin());
        Entry& entry = in_hand.front();
        const std::size_t size = entry.size();
        is_writing = true;
        lines_in_hand = lines_in(entry.text);
        const bool is_wanted = has_reader;
        lock.unlock();
        if (is_wanted) {
            write_entry(entry);
        }
        in_hand.clear();
        lock.lock();
        bytes -= size;
        is_writing = false;
        lines_in_hand = 0;
        changed.notify_all();
    }
}
/// Writes the entry behind the line for those that are missing before it.
void LineWriter::Queue::write_entry(const Entry& entry) {
    const std::size_t missing = failed_lines + entry.lost_lines;
    std::string text = is_within_line ? "\n" : "";
    if (missing != 0) {
        text += loss_line(missing);
    }
    text += entry.text;
    const std::size_t written = write_text(text);
    failed_lines = written == text.size() ? 0 : missing + lines_in(entry.text);
    if (written != 0) {
        is_within_line = text[written - 1] != '\n';
    }
}

/// How many bytes of it are written: all, unless there is an error or it was given up.
std::size_t LineWriter::Queue::write_text(std::string_view text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write_piece(descriptor, text.substr(written));
        if (count < 0) {
            keep_error(errno);
            break;
        }
        written += static_cast<std::size_t>(count);
        const Lock lock(mutex);
        if (is_given_up) {
            break;
        }
        ++progress;
        changed.notify_all();
    }
    return written;
}

void LineWriter::Queue::keep_error(int number) {
    {
        const Lock lock(mutex);
        if (number == EPIPE) {
            has_reader = false;
            return;
        }
        if (error != 0) {
            return;
        }
        error = number;
    }
    on_error(number);
}

LineWriter::LineWriter(int descriptor, Limits limits, LossLine loss_line, OnError on_error)
    : queue(
          std::make_shared<Queue>(descriptor, limits, std::move(loss_line), std::move(on_error))) {
    // Signals that end the program are for another thread; a reader that has gone, and a file that
    // is full, are errors of their write.
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    for (const int number : {SIGINT, SIGTERM, SIGUSR1, SIGPIPE, SIGXFSZ}) {
        sigaddset(&blocked, number);
    }
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    try {
        // Nobody can wait for its end: it may be in a write that never returns.
        std::thread([shared = queue] { shared->write_all(); }).detach();
    } catch (...) {
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        throw;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

LineWriter::~LineWriter() {
    finish();
}

void LineWriter::add(std::string text) {
    std::list<Queue::Entry> added;
    added.push_back({std::move(text), 0});
    const std::size_t size = added.front().size();
    Lock lock(queue->mutex);
    if (queue->is_closed || !queue->has_reader) {
        return;
    }
    if (queue->fits(size)) {
        queue->bytes += size;
        queue->entries.splice(queue->entries.end(), added);
    } else {
        queue->lose(added);
    }
    queue->changed.notify_all();
}

void LineWriter::hurry() {
    const Lock lock(queue->mutex);
    queue->hurried = queue->hurried.value_or(Clock::now());
    queue->changed.notify_all();
}

LineWriter::Result LineWriter::finish(std::string last) {
    std::list<Queue::Entry> added;
    const bool has_last = !last.empty();
    if (has_last) {
        added.push_back({std::move(last), 0});
    }
    Lock lock(queue->mutex);
    if (!queue->is_closed) {
        queue->is_closed = true;
        queue->has_last = has_last;
        queue->entries.splice(queue->entries.end(), added);
        queue->changed.notify_all();
    }
    if (!queue->is_given_up) {
        const Clock::time_point begin = Clock::now();
        if (!queue->wait_until_written(lock)) {
            const Clock::time_point moment =
                std::max(begin, *queue->hurried) + queue->limits.hurry_for_all;
            queue->wait_until_written_by(moment, lock);
            queue->lose_all_but_last();
            queue->wait_until_written_by(moment + queue->limits.hurry_for_last, lock);
        }
        queue->give_up();
    }
    return {queue->lost_lines, queue->error};
}

}  // namespace headsetmgmt::program
