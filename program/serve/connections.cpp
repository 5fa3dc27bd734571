// SPDX-License-Identifier: Apache-2.0
// The connections that clients have with a server.

#include "program/serve/connections.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <iterator>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "program/serve/client_socket.h"
#include "program/serve/listener.h"

namespace headsetmgmt::program {

namespace {

constexpr std::size_t most_connections = 64;
constexpr std::ptrdiff_t most_of_a_client = 32;
constexpr auto refused_report_interval = std::chrono::seconds(1);
constexpr std::chrono::milliseconds tick(100);  // between two looks at the clock

std::string in_words(std::chrono::milliseconds time) {
    const auto count = time.count();
    return count % 1000 == 0 ? std::to_string(count / 1000) + " s" : std::to_string(count) + " ms";
}

}  // namespace

Connections::Connection::Connection(FileHandle socket, const sockaddr_storage& from,
                                    socklen_t length)
    : owned(std::move(socket)), fd(owned.get()), address(from), address_length(length),
      client(client_name(reinterpret_cast<const sockaddr*>(&from))),
      host(host_name(reinterpret_cast<const sockaddr*>(&from))) {}

Connections::Connections(FileHandle listening_socket, const TimeLimits& time_limits,
                         EventSink event_sink, HandOver on_proper_header)
    : listener(std::move(listening_socket)), limits(time_limits), sink(std::move(event_sink)),
      hand_over(std::move(on_proper_header)), wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      arrived(largest_header) {}

Connections::~Connections() {
    stop();
}

std::uint16_t Connections::port() const {
    return port_of(listener);
}

void Connections::start() {
    if (!wake.is_open()) {
        throw std::system_error(EMFILE, std::generic_category());
    }
    thread = std::thread([this] { run(); });
}

void Connections::stop() {
    if (!listener.is_open()) {
        return;
    }
    stopping = true;
    eventfd_write(wake.get(), 1);
    if (thread.joinable()) {
        thread.join();
    }
    { const FileHandle closed(listener.release()); }
    Outcome outcome;
    {
        const std::lock_guard<std::mutex> lock(table_mutex);
        for (auto place = table.begin(); place != table.end();) {
            place = place->second.owned.is_open()
                        ? end(place, "broken off: the server stops", outcome)
                        : std::next(place);
        }
    }
    report_refused(outcome);
    finish(outcome);
}

void Connections::begin_answer(int socket) {
    const std::lock_guard<std::mutex> lock(table_mutex);
    const auto place = table.find(socket);
    if (place != table.end()) {
        place->second.phase = Phase::answer;
        place->second.last_move = Clock::now();
    }
}

std::string Connections::reason_of_shutdown(int socket) {
    const std::lock_guard<std::mutex> lock(table_mutex);
    const auto place = table.find(socket);
    return place == table.end() ? "" : place->second.shutdown;
}

void Connections::forget(int socket) {
    const std::lock_guard<std::mutex> lock(table_mutex);
    if (table.size() >= most_connections) {
        eventfd_write(wake.get(), 1);  // one more can be accepted
    }
    table.erase(socket);
}

void Connections::run() {
    while (!stopping) {
        try {
            wait_for_events();
            Outcome outcome;
            {
                const std::lock_guard<std::mutex> lock(table_mutex);
                look_at_all(outcome);
                accept_waiting();
                make_room(outcome);
            }
            if (refused != 0 && Clock::now() - refused_reported >= refused_report_interval) {
                report_refused(outcome);
            }
            finish(outcome);
        } catch (const std::exception& /*out of memory*/) {
            // What was not done is done the next time, or is not reported.
            std::this_thread::sleep_for(tick);
        }
    }
}

/// Waits until there is something to do, or time to look at the clock.
void Connections::wait_for_events() {
    std::vector<pollfd> polled = {{wake.get(), POLLIN, 0}};
    bool is_idle = false;
    {
        const std::lock_guard<std::mutex> lock(table_mutex);
        // As long as all connections are taken, a client that waits is no event.
        const bool can_accept = table.size() < most_connections && Clock::now() >= accept_from;
        polled.push_back({can_accept ? listener.get() : -1, POLLIN, 0});
        for (const auto& [socket, connection] : table) {
            if (connection.owned.is_open()) {
                polled.push_back({socket, POLLIN | POLLRDHUP, 0});
            }
        }
        is_idle = can_accept && table.empty() && refused == 0;
    }
    poll(polled.data(), polled.size(), is_idle ? -1 : static_cast<int>(tick.count()));
    eventfd_t ignored = 0;
    eventfd_read(wake.get(), &ignored);
    pollfd waiting = {listener.get(), POLLIN, 0};
    is_client_waiting = poll(&waiting, 1, 0) == 1;
    const std::lock_guard<std::mutex> lock(table_mutex);
    for (const pollfd& one : polled) {
        const auto place = table.find(one.fd);
        if (place != table.end()) {
            place->second.events = one.revents;
        }
    }
}

void Connections::look_at_all(Outcome& outcome) {
    outcome.proper.reserve(
        table.size());  // from there on a socket is not lost when memory runs out
    for (auto place = table.begin(); place != table.end();) {
        Connection& connection = place->second;
        if (connection.owned.is_open() && connection.events != 0 && !serve(connection, outcome)) {
            place = table.erase(place);
            continue;
        }
        const std::string reason = overdue(connection);
        place = reason.empty() ? std::next(place) : end(place, reason, outcome);
    }
}

void Connections::accept_waiting() {
    // A flood of connections to refuse does not keep the others waiting.
    for (std::size_t i = 0; i < most_connections && table.size() < most_connections; ++i) {
        is_client_waiting = false;  // as far as is known until the next turn
        sockaddr_storage address = {};
        socklen_t length = sizeof address;
        FileHandle socket(accept4(listener.get(), reinterpret_cast<sockaddr*>(&address), &length,
                                  SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!socket.is_open()) {
            if (errno != EAGAIN) {
                accept_from = Clock::now() + tick;
            }
            return;
        }
        const std::string host = host_name(reinterpret_cast<const sockaddr*>(&address));
        const auto open = std::count_if(table.begin(), table.end(), [&host](const auto& entry) {
            return entry.second.host == host;
        });
        if (open >= most_of_a_client) {
            ++refused;
            refused_last = {{"event", "connection"},
                            {"client", client_name(reinterpret_cast<const sockaddr*>(&address))},
                            {"error", "refused: this client has " + std::to_string(open) +
                                          " connections open, and may have " +
                                          std::to_string(most_of_a_client)}};
            continue;
        }
        const int fd = socket.get();
        table.erase(fd);  // left there if libmicrohttpd could not report its end
        table.try_emplace(fd, std::move(socket), address, length);
    }
}

void Connections::report_refused(Outcome& outcome) {
    if (refused == 0) {
        return;
    }
    refused_last["count"] = std::exchange(refused, 0);
    refused_reported = Clock::now();
    outcome.events.push_back(refused_last);
}

/// Why the connection is to end now; empty when it is within its time.
std::string Connections::overdue(Connection& connection) const {
    if (!connection.shutdown.empty()) {
        return "";
    }
    const Clock::time_point now = Clock::now();
    const auto is_over = [now](Clock::time_point begin, std::chrono::milliseconds limit) {
        return now - begin >= limit;
    };
    if (connection.phase == Phase::header || connection.phase == Phase::refused) {
        return is_over(connection.phase_begin, limits.header)
                   ? "the header was not complete after " + in_words(limits.header)
                   : "";
    }
    const std::uint64_t moved = bytes_moved(connection.fd);
    if (moved != connection.moved) {
        connection.moved = moved;
        connection.last_move = now;
    }
    const bool is_body = connection.phase == Phase::body;
    const std::chrono::milliseconds pause = is_body ? limits.body_pause : limits.answer_pause;
    if (is_over(connection.last_move, pause)) {
        return "nothing moved for " + in_words(pause);
    }
    return is_body && is_over(connection.phase_begin, limits.body)
               ? "the body was not complete after " + in_words(limits.body)
               : "";
}

/// Ends a connection; one that was handed over ends when its owner notices. The place behind it.
Connections::Table::iterator Connections::end(Table::iterator place, const std::string& reason,
                                              Outcome& outcome) {
    Connection& connection = place->second;
    if (!connection.owned.is_open()) {
        connection.shutdown = reason;
        ::shutdown(connection.fd, SHUT_RDWR);
        return std::next(place);
    }
    if (connection.phase == Phase::header) {
        outcome.events.push_back(without_header(connection.client, connection.target, reason));
    }
    return table.erase(place);
}

/// Ends the slowest connection when all are taken and a client waits.
void Connections::make_room(Outcome& outcome) {
    if (!is_client_waiting || table.size() < most_connections) {
        return;
    }
    const Clock::time_point now = Clock::now();
    auto slowest = table.end();
    double least = 0;
    for (auto place = table.begin(); place != table.end(); ++place) {
        const Connection& connection = place->second;
        if (!connection.shutdown.empty()) {
            return;  // it makes room already
        }
        const std::chrono::duration<double> age = now - connection.begin;
        const double speed = static_cast<double>(bytes_moved(connection.fd)) / age.count();
        if (age >= limits.grace && (slowest == table.end() || speed < least)) {
            slowest = place;
            least = speed;
        }
    }
    if (slowest != table.end()) {
        end(slowest,
            "it was the slowest of " + std::to_string(most_connections) +
                " connections, and another client waited",
            outcome);
    }
}

/// Without the lock: `hand_over` may wait for one under which `forget` is called.
void Connections::finish(Outcome& outcome) {
    for (Proper& proper : outcome.proper) {
        const int socket = proper.socket.release();
        if (!hand_over(socket, reinterpret_cast<const sockaddr*>(&proper.address),
                       proper.address_length)) {
            forget(socket);
        }
    }
    for (const Event& event : outcome.events) {
        sink(event);
    }
}

}  // namespace headsetmgmt::program
