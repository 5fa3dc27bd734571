// SPDX-License-Identifier: Apache-2.0
// What a server answers: documents, and what an inventory service says.

#include "program/serve/answers.h"

#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <strings.h>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

#include "program/serve/inventory_report.h"
#include "program/serve/refusal.h"

namespace headsetmgmt::program {

namespace {

struct ResponseDeleter {
    void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
using ResponseOwner = std::unique_ptr<MHD_Response, ResponseDeleter>;

MHD_Result queue(MHD_Connection* connection, Request& request, unsigned int status,
                 std::uint64_t bytes, const ResponseOwner& response) {
    // One request a connection: libmicrohttpd's own reading of a second header is not relied on.
    if (response == nullptr ||
        MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONNECTION, "close") != MHD_YES ||
        MHD_queue_response(connection, status, response.get()) != MHD_YES) {
        request.error = "no answer could be made";
        return MHD_NO;
    }
    request.status = status;
    request.answer_bytes = request.method == MHD_HTTP_METHOD_HEAD ? 0 : bytes;
    return MHD_YES;
}

/// Answers with a JSON object that says what is wrong: `facts`, with the
/// message among them.
MHD_Result refuse(MHD_Connection* connection, Request& request, unsigned int status,
                  const std::string& message, const Event& facts = Event::object()) {
    std::string text = refusal_body(message, request.method, request.target, facts);
    const ResponseOwner response(
        MHD_create_response_from_buffer(text.size(), text.data(), MHD_RESPMEM_MUST_COPY));
    if (response != nullptr) {
        MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, "application/json");
        if (status == MHD_HTTP_METHOD_NOT_ALLOWED) {
            MHD_add_response_header(response.get(), MHD_HTTP_HEADER_ALLOW, "GET, HEAD, POST");
        }
    }
    request.message = message;
    return queue(connection, request, status, text.size(), response);
}

/// With as little memory as an answer takes.
MHD_Result refuse_for_lack_of_memory(MHD_Connection* connection, Request& request) {
    request.body = std::string();
    return refuse(connection, request, MHD_HTTP_SERVICE_UNAVAILABLE,
                  "the server lacks the memory for this report; try again later");
}

unsigned int status_for(OpenedDocument::Fault fault) {
    switch (fault) {
    case OpenedDocument::Fault::missing:
        return MHD_HTTP_NOT_FOUND;
    case OpenedDocument::Fault::path:
        return MHD_HTTP_BAD_REQUEST;
    case OpenedDocument::Fault::server:
        break;
    }
    return MHD_HTTP_INTERNAL_SERVER_ERROR;
}

bool is_json(const std::string& target) {
    const std::string path = target.substr(0, target.find('?'));
    constexpr std::size_t length = 5;
    return path.size() > length && path.compare(path.size() - length, length, ".json") == 0;
}

/// The value of the header field; null when it is missing.
const char* header(MHD_Connection* connection, const char* name) {
    return MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
}

/// Whether a Content-Type is application/json, with or without parameters.
bool is_json_type(const char* text) {
    constexpr std::string_view wanted = "application/json";
    if (strncasecmp(text, wanted.data(), wanted.size()) != 0) {
        return false;
    }
    const char* rest = text + wanted.size();
    rest += std::strspn(rest, " \t");
    return *rest == '\0' || *rest == ';';
}

/// A document on its way. Read piece by piece here: what libmicrohttpd has for files waits forever,
/// and busily, for the rest of one that got shorter.
struct DocumentTransfer {
    FileHandle file;
    std::string& error;  // the request's, which lives as long as its answer is read
};

constexpr std::size_t bytes_at_once = 64UL * 1024;

ssize_t read_document(void* transfer, std::uint64_t position, char* bytes, std::size_t size) {
    const auto* document = static_cast<DocumentTransfer*>(transfer);
    const ssize_t count = pread(document->file.get(), bytes, size, static_cast<off_t>(position));
    if (count > 0) {
        return count;
    }
    document->error = count == 0 ? "broken off: the document got shorter"
                                 : "broken off: the document could not be read";
    return MHD_CONTENT_READER_END_WITH_ERROR;
}

void end_document(void* transfer) {
    const std::unique_ptr<DocumentTransfer> ended(static_cast<DocumentTransfer*>(transfer));
}

}  // namespace

Answers::Answers(Documents folder, const EventSink& event_sink)
    : documents(std::move(folder)), sink(event_sink) {}

MHD_Result Answers::answer(MHD_Connection* connection, Request& request) {
    if (request.method == MHD_HTTP_METHOD_GET || request.method == MHD_HTTP_METHOD_HEAD) {
        return answer_document(connection, request);
    }
    if (request.method == MHD_HTTP_METHOD_POST) {
        return answer_report(connection, request);
    }
    return refuse(connection, request, MHD_HTTP_METHOD_NOT_ALLOWED,
                  "the method is none of GET, HEAD, POST");
}

MHD_Result Answers::answer_document(MHD_Connection* connection, Request& request) {
    OpenedDocument document = documents.open(request.target);
    if (!document.file.is_open()) {
        return refuse(connection, request, status_for(document.fault), document.reason);
    }
    const std::uint64_t size = document.size;
    auto transfer = std::make_unique<DocumentTransfer>(
        DocumentTransfer{std::move(document.file), request.error});
    const ResponseOwner response(MHD_create_response_from_callback(
        size, bytes_at_once, read_document, transfer.get(), end_document));
    if (response != nullptr) {
        static_cast<void>(transfer.release());  // the response deletes it
        MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE,
                                is_json(request.target) ? "application/json"
                                                        : "application/octet-stream");
    }
    return queue(connection, request, MHD_HTTP_OK, size, response);
}

MHD_Result Answers::answer_report(MHD_Connection* connection, Request& request) {
    // A browser sends a form or a text to any address without asking first; both name themselves.
    if (header(connection, MHD_HTTP_HEADER_ORIGIN) != nullptr) {
        return refuse(connection, request, MHD_HTTP_FORBIDDEN,
                      "the header has an Origin: web pages may not send reports");
    }
    const char* type = header(connection, MHD_HTTP_HEADER_CONTENT_TYPE);
    if (type != nullptr && !is_json_type(type)) {
        return refuse(connection, request, MHD_HTTP_UNSUPPORTED_MEDIA_TYPE,
                      "expected Content-Type: application/json, or none");
    }
    if (request.is_out_of_memory) {
        return refuse_for_lack_of_memory(connection, request);
    }
    if (request.body_bytes > largest_report) {
        return refuse(connection, request, MHD_HTTP_CONTENT_TOO_LARGE,
                      "the body is longer than " + std::to_string(largest_report) + " bytes");
    }
    try {
        const Event report = read_report(request.body);
        const Event& accessory = report["value"]["headset"];
        Event facts = Event::object();
        for (const char* member : accessory_facts) {
            facts[member] = accessory.value(member, "");
        }
        sink({{"event", "report"},
              {"path", request.target},
              {"key", report["key"]},
              {"accessory", facts},
              {"report", report}});
        ++reports_taken;
    } catch (const std::bad_alloc&) {
        return refuse_for_lack_of_memory(connection, request);
    } catch (const ReportRefusal& refusal) {
        return refuse(
            connection, request, MHD_HTTP_BAD_REQUEST, refusal.what(),
            {{"member", refusal.member}, {"expected", refusal.expected}, {"found", refusal.found}});
    }
    const ResponseOwner response(
        MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT));
    return queue(connection, request, MHD_HTTP_NO_CONTENT, 0, response);
}

}  // namespace headsetmgmt::program
