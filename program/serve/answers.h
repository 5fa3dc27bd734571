// SPDX-License-Identifier: Apache-2.0
// What a server answers: documents, and what an inventory service says.

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <microhttpd.h>
#include <string>

#include "program/output.h"
#include "program/serve/documents.h"

namespace headsetmgmt::program {

inline constexpr std::size_t largest_report = 1024UL * 1024;

/// A request from its first line to its end.
struct Request {
    std::string target;  // as the client wrote it
    std::string client;
    std::string method;             // empty until the header is complete
    std::string body;               // of a report
    bool is_out_of_memory = false;  // its body could not be kept
    std::uint64_t body_bytes = 0;
    unsigned int status = 0;  // 0 without an answer
    std::uint64_t answer_bytes = 0;
    std::string message;  // what the answer says to whom it refuses
    std::string error;    // why it ended without a complete answer, if known before its end
};

/// Answers GET and HEAD with the documents of a folder, and POST with what an inventory service
/// says. On the server's thread, but for `reports`.
class Answers {
public:
    using EventSink = std::function<void(const Event&)>;

    /// `event_sink` is borrowed; it is given each report that was taken.
    Answers(Documents folder, const EventSink& event_sink);

    /// Answers a request that has arrived, or is refused before all of it has.
    MHD_Result answer(MHD_Connection* connection, Request& request);

    /// How many were taken. Any thread.
    std::uint64_t reports() const { return reports_taken; }

private:
    MHD_Result answer_document(MHD_Connection* connection, Request& request);
    MHD_Result answer_report(MHD_Connection* connection, Request& request);

    Documents documents;
    const EventSink& sink;
    std::atomic<std::uint64_t> reports_taken{0};
};

}  // namespace headsetmgmt::program
