// SPDX-License-Identifier: Apache-2.0
// One request over the network, to its end.

#include "program/network/transfer.h"

#include <string_view>
#include <strings.h>
#include <utility>

#include <curl/curl.h>

#include "program/network/transfer_failure.h"
#include "program/url_mask.h"

namespace headsetmgmt::program {

namespace {

constexpr char fetch_protocols[] = "http,https,tftp";
constexpr char post_and_redirect_protocols[] = "http,https";
constexpr int poll_milliseconds = 1000;

struct EasyDeleter {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct HeadersDeleter {
    void operator()(curl_slist* headers) const { curl_slist_free_all(headers); }
};
using Easy = std::unique_ptr<CURL, EasyDeleter>;
using Headers = std::unique_ptr<curl_slist, HeadersDeleter>;

/// The options of a request, and the first failure to set one: without it, the request would be
/// another one.
class Options {
public:
    explicit Options(CURL* easy) : handle(easy) {}

    template <typename Value>
    void set(CURLoption option, Value value) {
        const CURLcode code = curl_easy_setopt(handle, option, value);
        failure = failure == CURLE_OK ? code : failure;
    }

    CURLcode result() const { return failure; }

private:
    CURL* handle;
    CURLcode failure = CURLE_OK;
};

/// Where an answer's bytes go, counted here: libcurl's own limit holds neither for TFTP, nor for an
/// answer that does not report its length, nor for trailers.
struct Sink {
    CURL* handle = nullptr;
    std::string body;
    std::size_t limit = 0;
    std::size_t header_limit = 0;
    std::size_t header_bytes = 0;
    bool too_large = false;
    bool header_too_large = false;
    bool header_begun = false;
    bool header_ended = false;
    bool https_alone = false;  // a request was sent by https: a redirect must not leave it
};

/// Called before each request is sent, those after a redirect included.
int prepare_request(void* context, char* /*server*/, char* /*client*/, int /*server_port*/,
                    int /*client_port*/) {
    auto* sink = static_cast<Sink*>(context);
    const char* url = nullptr;
    curl_easy_getinfo(sink->handle, CURLINFO_EFFECTIVE_URL, &url);
    if (url != nullptr && is_https_url(url) && !sink->https_alone) {
        sink->https_alone = true;
        const CURLcode code = curl_easy_setopt(sink->handle, CURLOPT_REDIR_PROTOCOLS_STR, "https");
        return code == CURLE_OK ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
    }
    return CURL_PREREQFUNC_OK;
}

/// Counts the lines of headers and trailers, and notes how far a header came: libcurl takes one
/// that breaks off for a complete answer.
std::size_t take_header_line(char* bytes, std::size_t size, std::size_t count, void* context) {
    auto* sink = static_cast<Sink*>(context);
    const std::string_view line(bytes, size * count);
    if (line.size() > sink->header_limit - sink->header_bytes) {
        sink->header_too_large = true;
        return 0;
    }
    sink->header_bytes += line.size();
    // A status line begins a header. Trailers have none: they do not make the header incomplete.
    constexpr std::string_view status_line = "HTTP/";
    if (line.substr(0, status_line.size()) == status_line) {
        sink->header_begun = true;
        sink->header_ended = false;
    } else if (line == "\r\n" || line == "\n") {
        sink->header_ended = true;
    }
    return line.size();
}

std::size_t take_bytes(char* bytes, std::size_t size, std::size_t count, void* context) {
    auto* sink = static_cast<Sink*>(context);
    const std::size_t length = size * count;
    if (length > sink->limit - sink->body.size()) {
        sink->too_large = true;
        return 0;
    }
    sink->body.append(bytes, length);
    return length;
}

/// Where redirects led; empty without one.
std::string final_url_of(CURL* handle) {
    long redirects = 0;
    const char* url = nullptr;
    curl_easy_getinfo(handle, CURLINFO_REDIRECT_COUNT, &redirects);
    curl_easy_getinfo(handle, CURLINFO_EFFECTIVE_URL, &url);
    return redirects != 0 && url != nullptr ? url : "";
}

}  // namespace

bool is_success(int status) {
    constexpr int first_success = 200;
    constexpr int first_redirect = 300;
    return status >= first_success && status < first_redirect;
}

std::string remark_on(int status) {
    constexpr int no_content = 204;
    constexpr int not_modified = 304;
    constexpr int first_redirect = 300;
    constexpr int first_error = 400;
    if (status == no_content) {
        return "no document in the answer";
    }
    // One with a Location would have been followed.
    const bool is_redirect =
        status >= first_redirect && status < first_error && status != not_modified;
    return is_redirect ? "a redirect without Location" : "";
}

std::string failure_of(const TransferResult& result) {
    if (!result.error.empty()) {
        return result.error;
    }
    const std::string remark = remark_on(result.status);
    return "status " + std::to_string(result.status) + (remark.empty() ? "" : ", " + remark);
}

bool is_tftp_url(const std::string& url) {
    constexpr char prefix[] = "tftp://";
    return strncasecmp(url.c_str(), prefix, sizeof(prefix) - 1) == 0;
}

bool is_https_url(const std::string& url) {
    constexpr char prefix[] = "https:";
    return strncasecmp(url.c_str(), prefix, sizeof(prefix) - 1) == 0;
}

Transfers::Transfers(TransferLimits transfer_limits)
    : limits(std::move(transfer_limits)), multi(curl_multi_init()) {}

void Transfers::interrupt() {
    is_interrupted = true;
    curl_multi_wakeup(multi.get());
}

TransferResult Transfers::perform(const TransferRequest& request) {
    const auto start = std::chrono::steady_clock::now();
    const Easy easy(curl_easy_init());
    const Headers headers(curl_slist_append(nullptr, "Content-Type: application/json"));
    char detail[CURL_ERROR_SIZE] = "";
    CURL* handle = easy.get();
    Sink sink;
    sink.handle = handle;
    sink.limit = limits.bytes;
    sink.header_limit = limits.header_bytes;
    Options options(handle);
    options.set(CURLOPT_URL, request.url.c_str());
    options.set(CURLOPT_PROTOCOLS_STR,
                request.is_post ? post_and_redirect_protocols : fetch_protocols);
    options.set(CURLOPT_REDIR_PROTOCOLS_STR, post_and_redirect_protocols);
    options.set(CURLOPT_FOLLOWLOCATION, 1L);
    options.set(CURLOPT_MAXREDIRS, redirects_at_most);
    options.set(CURLOPT_POSTREDIR, static_cast<long>(CURL_REDIR_POST_ALL));
    options.set(CURLOPT_NOSIGNAL, 1L);
    options.set(CURLOPT_QUICK_EXIT, 1L);  // a name that is looked up is not waited for
    options.set(CURLOPT_PROXY, "");
    options.set(CURLOPT_USERAGENT, "headsetmgmt-phone");
    options.set(CURLOPT_TIMEOUT_MS, static_cast<long>(limits.total.count()));
    options.set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits.connect.count()));
    options.set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    options.set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(limits.stall.count()));
    options.set(CURLOPT_ERRORBUFFER, detail);
    // What a server sends beyond its answer is no answer to the next request.
    options.set(CURLOPT_FORBID_REUSE, 1L);
    // libcurl takes the size 0 that a TFTP server may answer for an error.
    options.set(CURLOPT_TFTP_NO_OPTIONS, 1L);
    options.set(CURLOPT_HEADERFUNCTION, take_header_line);
    options.set(CURLOPT_HEADERDATA, &sink);
    options.set(CURLOPT_WRITEFUNCTION, take_bytes);
    options.set(CURLOPT_WRITEDATA, &sink);
    options.set(CURLOPT_PREREQFUNCTION, prepare_request);
    options.set(CURLOPT_PREREQDATA, &sink);
    options.set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));  // at least
    if (!limits.ca_file.empty()) {
        options.set(CURLOPT_CAINFO, limits.ca_file.c_str());
        options.set(CURLOPT_CAPATH, static_cast<char*>(nullptr));
    }
    if (request.is_post) {
        options.set(CURLOPT_POSTFIELDSIZE, static_cast<long>(request.body.size()));
        options.set(CURLOPT_POSTFIELDS, request.body.c_str());
        options.set(CURLOPT_HTTPHEADER, headers.get());
    }

    TransferResult result;
    const bool has_memory = handle != nullptr && headers != nullptr && multi != nullptr;
    const CURLcode setup = has_memory ? options.result() : CURLE_OUT_OF_MEMORY;
    if (setup != CURLE_OK) {
        result.error = std::string("the request could not be set up: ") + curl_easy_strerror(setup);
        return result;
    }
    const CURLMcode added = curl_multi_add_handle(multi.get(), handle);
    if (added != CURLM_OK) {
        result.error = std::string("the request could not be begun: ") + curl_multi_strerror(added);
        return result;
    }
    CURLMsg* message = nullptr;
    int running = 1;
    while (!is_interrupted && message == nullptr && running != 0) {
        curl_multi_perform(multi.get(), &running);
        int queued = 0;
        message = curl_multi_info_read(multi.get(), &queued);
        if (message == nullptr && running != 0) {
            curl_multi_poll(multi.get(), nullptr, 0, poll_milliseconds, nullptr);
        }
    }
    result.duration = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start);
    long status = 0;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
    if (message == nullptr) {
        result.interrupted = true;
        result.error = "interrupted";
    } else if (message->data.result == CURLE_OK && sink.header_begun && !sink.header_ended) {
        result.error = "the answer broke off in its header";
    } else if (message->data.result == CURLE_OK) {
        constexpr int status_ok = 200;
        result.status = is_tftp_url(request.url) ? status_ok : static_cast<int>(status);
        result.body = std::move(sink.body);
    } else {
        result.error = with_masked_passwords(
            explain({handle, message->data.result, detail, request, limits, result.duration,
                     final_url_of(handle), !sink.body.empty(), sink.too_large,
                     sink.header_too_large, sink.https_alone}));
        // No redirect follows a success: the header that came whole is the answer's own.
        const bool is_taken =
            request.is_post && sink.header_ended && is_success(static_cast<int>(status));
        result.status = is_taken ? static_cast<int>(status) : 0;
    }
    result.final_url = masked_url(final_url_of(handle));
    curl_multi_remove_handle(multi.get(), handle);
    return result;
}

}  // namespace headsetmgmt::program
