// SPDX-License-Identifier: Apache-2.0
// The connections that clients have with a server.

#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <vector>

#include "program/output.h"
#include "program/serve/documents.h"
#include "program/serve/request_header.h"

namespace headsetmgmt::program {

/// First line and header of a request, in bytes.
inline constexpr std::size_t largest_header = 32UL * 1024;

/// How long a connection may take for each of its parts.
struct TimeLimits {
    std::chrono::milliseconds header = std::chrono::seconds(10);
    std::chrono::milliseconds body = std::chrono::seconds(30);
    /// Without a byte of the body.
    std::chrono::milliseconds body_pause = std::chrono::seconds(10);
    /// Without a byte of the answer. Long: the system of a client that reads 2 KB/s may take 64 KiB
    /// at a time.
    std::chrono::milliseconds answer_pause = std::chrono::seconds(120);
    /// A connection that is younger does not make room for others.
    std::chrono::milliseconds grace = std::chrono::seconds(1);
};

/// Takes connections and hands each one whose header is proper to libmicrohttpd. The header is
/// read without removing it from the socket: libmicrohttpd reads it again. Answers an improper one
/// itself: libmicrohttpd would take some of them for another request than the client, or a proxy,
/// meant.
///
/// Keeps every connection within its time, also after it was handed over, and a client from taking
/// all connections. When all are taken and a client waits, the slowest makes room. Reports what
/// libmicrohttpd does not see: a "connection" that is refused or ends without a request, a
/// "request" that is refused by its header or whose header does not arrive.
///
/// Made, started and stopped by one thread; has a thread of its own.
class Connections {
public:
    using EventSink = std::function<void(const Event&)>;
    /// Takes a connection over. The socket belongs to the callee, also when it fails.
    /// False: it failed.
    using HandOver = std::function<bool(int socket, const sockaddr* address, socklen_t length)>;

    /// `event_sink` is called on the connections' thread, and by `stop`; `on_proper_header` on the
    /// connections' thread.
    Connections(FileHandle listening_socket, const TimeLimits& time_limits, EventSink event_sink,
                HandOver on_proper_header);
    ~Connections();

    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    /// The port that is listened on.
    std::uint16_t port() const;

    /// Takes connections from here on. Throws std::system_error.
    void start();

    /// Takes no more, and closes those that were not handed over. Does nothing the second time.
    void stop();

    // About those that were handed over, for their owner. Any thread.

    /// The request has been read; its answer is on its way.
    void begin_answer(int socket);
    /// Why the connection was shut down here; empty when it was not.
    std::string reason_of_shutdown(int socket);
    /// The socket is about to be closed.
    void forget(int socket);

private:
    using Clock = std::chrono::steady_clock;
    enum class Phase { header, refused, body, answer };

    struct Connection {
        Connection(FileHandle socket, const sockaddr_storage& from, socklen_t length);

        FileHandle owned;  // not open any more when it is handed over
        int fd;
        sockaddr_storage address;
        socklen_t address_length;
        std::string client;  // for people
        std::string host;
        Phase phase = Phase::header;
        Clock::time_point begin = Clock::now();
        Clock::time_point phase_begin = begin;
        std::uint64_t moved = 0;  // bytes
        Clock::time_point last_move = begin;
        std::string target;       // of a header that is not whole
        std::size_t dropped = 0;  // bytes, after a refusal
        std::string shutdown;     // why
        short events = 0;         // that `poll` found
    };
    using Table = std::map<int, Connection>;  // by socket

    /// A connection that is to be handed over.
    struct Proper {
        FileHandle socket;
        sockaddr_storage address;
        socklen_t address_length;
    };

    /// What a look at the table leaves to do without its lock.
    struct Outcome {
        std::vector<Proper> proper;
        std::vector<Event> events;
    };

    void run();
    void wait_for_events();
    void look_at_all(Outcome& outcome);
    void accept_waiting();
    void report_refused(Outcome& outcome);
    std::string overdue(Connection& connection) const;
    Table::iterator end(Table::iterator place, const std::string& reason, Outcome& outcome);
    void make_room(Outcome& outcome);
    void finish(Outcome& outcome);

    // Until a connection is handed over (header_phase.cpp).
    bool serve(Connection& connection, Outcome& outcome);
    bool serve_header(Connection& connection, Outcome& outcome);
    void refuse(Connection& connection, const RequestHeader& header, Outcome& outcome);
    bool drop_input(Connection& connection);
    static Event without_header(const std::string& client, const std::string& target,
                                const std::string& reason);

    FileHandle listener;
    TimeLimits limits;
    EventSink sink;
    HandOver hand_over;
    FileHandle wake;  // an event for the thread, when there is less or nothing more to do
    std::atomic<bool> stopping{false};
    std::thread thread;

    std::mutex table_mutex;
    Table table;

    // Of the thread alone.
    std::vector<char> arrived;  // of a header
    bool is_client_waiting = false;
    Clock::time_point accept_from;  // when descriptors had run out
    std::uint64_t refused = 0;      // connections, since the last event about them
    Event refused_last;
    Clock::time_point refused_reported;
};

}  // namespace headsetmgmt::program
