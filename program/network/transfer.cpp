// One request over the network, to its end.

#include "program/network/transfer.h"

#include <cstring>
#include <sstream>
#include <string_view>
#include <strings.h>
#include <utility>

#include <curl/curl.h>

#include "program/url_mask.h"

namespace headsetmgmt::program {

namespace {

constexpr char fetch_protocols[] = "http,https,tftp";
constexpr char post_and_redirect_protocols[] = "http,https";
constexpr long redirects_at_most = 5;
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

bool is_https(CURL* handle) {
    const char* url = nullptr;
    curl_easy_getinfo(handle, CURLINFO_EFFECTIVE_URL, &url);
    constexpr char https[] = "https:";
    return url != nullptr && strncasecmp(url, https, sizeof(https) - 1) == 0;
}

/// Called before each request is sent, those after a redirect included.
int prepare_request(void* context, char* /*server*/, char* /*client*/, int /*server_port*/,
                    int /*client_port*/) {
    auto* sink = static_cast<Sink*>(context);
    if (is_https(sink->handle) && !sink->https_alone) {
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

/// A transfer that libcurl has ended, and what was asked of it.
struct EndedTransfer {
    CURL* handle;
    CURLcode code;
    const char* detail;  // libcurl's own words; may be empty
    const TransferRequest& request;
    const TransferLimits& limits;
    std::chrono::milliseconds duration;
};

std::string in_seconds(std::chrono::milliseconds time) {
    std::ostringstream text;
    text << std::chrono::duration<double>(time).count() << " s";
    return text.str();
}

std::string in_tenths_of_seconds(std::chrono::milliseconds time) {
    constexpr long tenth = 100;
    return in_seconds(std::chrono::milliseconds((time.count() + tenth / 2) / tenth * tenth));
}

/// Where redirects led; empty without one.
std::string final_url_of(CURL* handle) {
    long redirects = 0;
    const char* url = nullptr;
    curl_easy_getinfo(handle, CURLINFO_REDIRECT_COUNT, &redirects);
    curl_easy_getinfo(handle, CURLINFO_EFFECTIVE_URL, &url);
    return redirects != 0 && url != nullptr ? url : "";
}

/// What there was none of when the limit for connecting was reached: for https that holds for the
/// TLS handshake too.
std::string missing_connection(const EndedTransfer& ended) {
    return is_https(ended.handle) ? "no connection, or no TLS handshake," : "no connection";
}

/// TFTP has no connections, and libcurl makes limits of its own for it out of all that were set:
/// none of them can be named, but how long it took.
std::string tftp_time_out(const EndedTransfer& ended, bool anything_came) {
    return (anything_came ? "not complete after " : "no answer for ") +
           in_tenths_of_seconds(ended.duration);
}

/// Which limit was reached. libcurl has one code for all; but for TFTP the stall alone has words of
/// its own, and of the others the one for the whole request is reached no earlier than its time.
std::string time_out(const EndedTransfer& ended, bool anything_came) {
    constexpr char stalled[] = "Operation too slow";
    if (std::strncmp(ended.detail, stalled, sizeof(stalled) - 1) == 0) {
        // libcurl measures the body alone: an endless header or chunk extension is none.
        curl_off_t first_byte_after = 0;
        curl_easy_getinfo(ended.handle, CURLINFO_STARTTRANSFER_TIME_T, &first_byte_after);
        return (first_byte_after == 0 ? "nothing arrived for "
                                      : "nothing of the answer's body arrived for ") +
               in_seconds(ended.limits.stall) + " (--stall)";
    }
    curl_off_t connected_after = 0;
    curl_easy_getinfo(ended.handle, CURLINFO_CONNECT_TIME_T, &connected_after);
    const bool is_tftp = is_tftp_url(ended.request.url);
    // libcurl's milliseconds may be rounded up.
    constexpr std::chrono::milliseconds rounding{1};
    if (ended.duration + rounding < ended.limits.total) {
        return is_tftp ? tftp_time_out(ended, anything_came)
                       : missing_connection(ended) + " after " + in_seconds(ended.limits.connect);
    }
    const std::string what =
        is_tftp || connected_after != 0 ? "not complete" : missing_connection(ended);
    return what + " after " + in_seconds(ended.limits.total) + " (--timeout)";
}

/// The refusal of the URL's protocol; empty when it is not the protocol that was refused.
std::string refused_protocol(const EndedTransfer& ended, const Sink& sink) {
    const std::string final_url = final_url_of(ended.handle);
    const std::string& url = final_url.empty() ? ended.request.url : final_url;
    const std::string protocol = url.substr(0, url.find(':'));
    if (strcasecmp(protocol.c_str(), "http") == 0 && sink.https_alone) {
        return "a redirect from https to http is refused: http encrypts nothing; let the server "
               "redirect to https";
    }
    if (strcasecmp(protocol.c_str(), "http") == 0 || strcasecmp(protocol.c_str(), "https") == 0) {
        return "";  // what the server speaks is none
    }
    const std::string refusal = "protocol \"" + protocol + "\" is refused: ";
    if (!final_url.empty()) {
        return refusal + "a redirect is followed to http and https only";
    }
    return refusal + (ended.request.is_post ? "a report is posted by http or https"
                                            : "a document is fetched by http, https or tftp");
}

/// libcurl's own text; for TFTP it may be about a connection, which TFTP has none of.
std::string text_of_libcurl(const EndedTransfer& ended) {
    constexpr char about_connection[] = "getpeername()";
    const bool is_useless =
        *ended.detail == '\0' ||
        std::strncmp(ended.detail, about_connection, sizeof(about_connection) - 1) == 0;
    return is_useless ? curl_easy_strerror(ended.code) : ended.detail;
}

/// What the result code means for TFTP; empty when it means the same as for HTTP.
std::string explain_tftp(const EndedTransfer& ended) {
    const std::string error = "the TFTP server answered with error ";
    switch (ended.code) {
    case CURLE_TFTP_NOTFOUND:
        return "the TFTP server has no such file";
    case CURLE_TFTP_PERM:
        return "the TFTP server denies access to the file";
    case CURLE_TFTP_ILLEGAL:
        return "the TFTP server refused the request";
    case CURLE_REMOTE_DISK_FULL:
        return error + "3 (disk full)";
    case CURLE_TFTP_UNKNOWNID:
        return error + "5 (unknown transfer)";
    case CURLE_REMOTE_FILE_EXISTS:
        return error + "6 (file exists)";
    case CURLE_TFTP_NOSUCHUSER:
        return error + "7 (no such user)";
    case CURLE_ABORTED_BY_CALLBACK:
        return error + "8 or above, which is none of a fetch";
    case CURLE_COULDNT_CONNECT:
        return "no answer, or only packets too short to be one, for " +
               in_tenths_of_seconds(ended.duration);
    default:
        return "";
    }
}

/// libcurl reports a line that is too long for it as memory that ran out.
std::string too_long_line(const std::string& part) {
    return "a line of the answer's " + part +
           " is longer than libcurl takes (about 100,000 bytes in a header, 4,000 in a trailer), "
           "or memory ran out";
}

/// What the result code means.
std::string explain(const EndedTransfer& ended, const Sink& sink) {
    if (sink.too_large) {
        return "the answer is larger than the limit of " + std::to_string(sink.limit) +
               " bytes (--limit)";
    }
    if (sink.header_too_large) {
        return "the answer's headers and trailers are larger than the limit of " +
               std::to_string(sink.header_limit) + " bytes";
    }
    if (is_tftp_url(ended.request.url)) {
        std::string explanation = explain_tftp(ended);
        if (!explanation.empty()) {
            return explanation;
        }
    }
    switch (ended.code) {
    case CURLE_OPERATION_TIMEDOUT:
        return time_out(ended, !sink.body.empty());
    case CURLE_UNSUPPORTED_PROTOCOL: {
        std::string refusal = refused_protocol(ended, sink);
        return refusal.empty() ? text_of_libcurl(ended) : refusal;
    }
    case CURLE_TOO_MANY_REDIRECTS:
        return "more than " + std::to_string(redirects_at_most) + " redirects";
    case CURLE_OUT_OF_MEMORY: {
        curl_off_t sent_after = 0;
        curl_easy_getinfo(ended.handle, CURLINFO_PRETRANSFER_TIME_T, &sent_after);
        return sent_after == 0 ? "memory ran out" : too_long_line("header");
    }
    case CURLE_RECV_ERROR: {
        constexpr char in_trailer[] = "Out of memory in chunked-encoding";
        return std::strcmp(ended.detail, in_trailer) == 0 ? too_long_line("trailer")
                                                          : text_of_libcurl(ended);
    }
    default:
        return text_of_libcurl(ended);
    }
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
        result.error = with_masked_passwords(explain(
            {handle, message->data.result, detail, request, limits, result.duration}, sink));
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
