// What a server answers: documents, and what an inventory service says.

#include "program/serve/answers.h"

#include <memory>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

#include "program/serve/inventory_report.h"

namespace headsetmgmt::program {

namespace {

struct ResponseDeleter {
    void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
using ResponseOwner = std::unique_ptr<MHD_Response, ResponseDeleter>;

MHD_Result queue(MHD_Connection* connection, Request& request, unsigned int status,
                 std::uint64_t bytes, const ResponseOwner& response) {
    if (response == nullptr || MHD_queue_response(connection, status, response.get()) != MHD_YES) {
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
    Event body = {{"error", message}, {"method", request.method}, {"path", request.target}};
    body.update(facts);
    std::string text = body.dump(2, ' ', false, Event::error_handler_t::replace) + "\n";
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

bool is_json(const std::string& target) {
    const std::string path = target.substr(0, target.find('?'));
    constexpr std::size_t length = 5;
    return path.size() > length && path.compare(path.size() - length, length, ".json") == 0;
}

/// A document on its way. Read piece by piece here: what the library has for files waits for ever,
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

Answers::Answers(Documents folder, const Tell& teller)
    : documents(std::move(folder)), tell(teller) {}

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
        const unsigned int status =
            document.is_missing ? MHD_HTTP_NOT_FOUND : MHD_HTTP_INTERNAL_SERVER_ERROR;
        return refuse(connection, request, status, document.reason);
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
    if (request.body_bytes > largest_report) {
        return refuse(connection, request, MHD_HTTP_CONTENT_TOO_LARGE,
                      "the body is longer than " + std::to_string(largest_report) + " bytes");
    }
    try {
        const Event report = read_report(request.body);
        const Event& accessory = report["value"]["headset"];
        Event facts = Event::object();
        for (const char* member : {"serialNumber", "model", "firmwareVersion"}) {
            facts[member] = accessory.value(member, Event(""));
        }
        tell({{"event", "report"},
              {"path", request.target},
              {"key", report["key"]},
              {"accessory", facts},
              {"report", report}});
        ++reports_taken;
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
