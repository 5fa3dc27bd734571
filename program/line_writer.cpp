// Lines on their way to a reader who may not read.

#include "program/line_writer.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdint>
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

/// Writes a beginning of `text`; how much, or -1.
ssize_t write_piece(int descriptor, std::string_view text) {
    while (true) {
        const ssize_t count = write(descriptor, text.data(), std::min(text.size(), piece));
        if (count >= 0 || (errno != EINTR && errno != EAGAIN)) {
            return count;
        }
        if (errno == EAGAIN) {  // whoever shares the descriptor wants it so
            pollfd ready = {descriptor, POLLOUT, 0};
            poll(&ready, 1, -1);
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

    Queue(int to, Limits queue_limits, LossLine line_of_a_loss, OnError teller)
        : descriptor(to), limits(queue_limits), loss_line(std::move(line_of_a_loss)),
          on_error(std::move(teller)) {}

    const int descriptor;
    const Limits limits;
    const LossLine loss_line;
    const OnError on_error;

    std::mutex mutex;  // guards all below
    std::condition_variable changed;
    std::list<Entry> entries;  // filled and emptied by splicing, which takes no memory
    std::size_t bytes = 0;     // of the entries, the one in hand included
    bool is_writing = false;   // an entry is in hand
    std::size_t lines_in_hand = 0;
    std::size_t lost_lines = 0;
    std::uint64_t progress = 0;  // pieces written
    int error = 0;               // the first
    bool has_reader = true;
    bool is_stalled = false;                       // nothing was read for as long as was waited
    std::optional<Clock::time_point> last_moment;  // once asked to hurry
    bool is_closed = false;
    bool is_given_up = false;  // what was left is counted as lost

    bool fits(std::size_t size) const { return bytes == 0 || bytes + size <= limits.bytes; }
    bool is_empty() const { return entries.empty() && !is_writing; }

    void wait_until_fits(std::size_t size, Lock& lock);
    void lose(std::list<Entry>& added);
    void write_all();
    void write_entry(std::string text);
};

/// Waits for as long as the reader goes on reading.
void LineWriter::Queue::wait_until_fits(std::size_t size, Lock& lock) {
    while (!fits(size) && !is_stalled && !last_moment) {
        const std::uint64_t before = progress;
        changed.wait_for(lock, limits.patience, [this, size, before] {
            return fits(size) || last_moment || progress != before;
        });
        is_stalled = progress == before && !fits(size) && !last_moment;
    }
}

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
            write_entry(entry.lost_lines == 0 ? std::move(entry.text)
                                              : loss_line(entry.lost_lines));
        }
        in_hand.clear();
        lock.lock();
        bytes -= size;
        is_writing = false;
        lines_in_hand = 0;
        changed.notify_all();
    }
}

void LineWriter::Queue::write_entry(std::string text) {
    std::string_view left = text;
    while (!left.empty()) {
        const ssize_t count = write_piece(descriptor, left);
        const int failure = count < 0 ? errno : 0;
        bool is_first_failure = false;
        {
            const Lock lock(mutex);
            if (is_given_up) {
                return;
            }
            if (failure == EPIPE) {
                has_reader = false;
            } else if (failure != 0 && error == 0) {
                error = failure;
                is_first_failure = true;
            }
            ++progress;
            is_stalled = false;
            changed.notify_all();
        }
        if (is_first_failure) {
            on_error(failure);
        }
        if (failure != 0) {
            return;
        }
        left.remove_prefix(static_cast<std::size_t>(count));
    }
}

LineWriter::LineWriter(int descriptor, Limits limits, LossLine loss_line, OnError on_error)
    : queue(
          std::make_shared<Queue>(descriptor, limits, std::move(loss_line), std::move(on_error))) {
    // Signals are for other threads, and a reader that has gone is an error of its write.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
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
    if (queue->limits.waits) {
        queue->wait_until_fits(size, lock);
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
    queue->last_moment = Clock::now() + longest_hurry;
    queue->changed.notify_all();
}

LineWriter::Result LineWriter::finish(std::string last) {
    std::list<Queue::Entry> added;
    if (!last.empty()) {
        added.push_back({std::move(last), 0});
    }
    Lock lock(queue->mutex);
    queue->is_closed = true;
    queue->entries.splice(queue->entries.end(), added);
    queue->changed.notify_all();
    std::uint64_t before = queue->progress;
    Clock::time_point end = Clock::now() + queue->limits.patience;
    while (!queue->is_empty()) {
        if (queue->progress != before) {
            before = queue->progress;
            end = Clock::now() + queue->limits.patience;
        }
        const Clock::time_point moment = std::min(end, queue->last_moment.value_or(end));
        if (Clock::now() >= moment) {
            break;
        }
        queue->changed.wait_until(lock, moment);
    }
    queue->lost_lines += queue->lines_in_hand;
    for (const Queue::Entry& entry : queue->entries) {
        queue->lost_lines += lines_in(entry.text);
    }
    queue->lines_in_hand = 0;
    queue->entries.clear();
    queue->is_given_up = true;
    queue->changed.notify_all();
    return {queue->lost_lines, queue->error};
}

}  // namespace headsetmgmt::program
