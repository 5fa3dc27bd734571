// One request over the network, to its end.

#include "program/phone/transfer.h"

#include <cstring>
#include <sstream>
#include <strings.h>
#include <utility>

#include <curl/curl.h>

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

/// Where an answer's bytes go, counted here: libcurl's own limit holds neither for TFTP nor for an
/// answer that does not tell its length.
struct Sink {
    std::string body;
    std::size_t limit = 0;
    bool too_large = false;
    bool header_begun = false;
    bool header_ended = false;
};

/// Notes how far the header came: libcurl takes one that breaks off for a complete answer.
std::size_t take_header_line(char* bytes, std::size_t size, std::size_t count, void* context) {
    auto* sink = static_cast<Sink*>(context);
    const std::string line(bytes, size * count);
    sink->header_begun = true;
    sink->header_ended = line == "\r\n" || line == "\n";
    return size * count;
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
    const char* url = nullptr;
    curl_easy_getinfo(ended.handle, CURLINFO_EFFECTIVE_URL, &url);
    constexpr char https[] = "https:";
    const bool is_https = url != nullptr && strncasecmp(url, https, sizeof(https) - 1) == 0;
    return is_https ? "no connection, or no TLS handshake," : "no connection";
}

/// TFTP has no connections, and libcurl makes limits of its own for it out of all that were set:
/// none of them can be named, but how long it took.
std::string tftp_time_out(const EndedTransfer& ended, bool anything_came) {
    constexpr long tenth = 100;
    const std::chrono::milliseconds duration{(ended.duration.count() + tenth / 2) / tenth * tenth};
    return (anything_came ? "not complete after " : "no answer for ") + in_seconds(duration);
}

/// Which limit was reached. libcurl has one code for all; but for TFTP the stall alone has words of
/// its own, and of the others the one for the whole request is reached no earlier than its time.
std::string time_out(const EndedTransfer& ended, bool anything_came) {
    constexpr char stalled[] = "Operation too slow";
    if (std::strncmp(ended.detail, stalled, sizeof(stalled) - 1) == 0) {
        return "nothing arrived for " + in_seconds(ended.limits.stall) + " (--stall)";
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
std::string refused_protocol(const EndedTransfer& ended) {
    const std::string final_url = final_url_of(ended.handle);
    const std::string& url = final_url.empty() ? ended.request.url : final_url;
    const std::string protocol = url.substr(0, url.find(':'));
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

/// What the result code means. For TFTP, libcurl's own text of a failed transfer is wrong.
std::string explain(const EndedTransfer& ended, const Sink& sink) {
    if (sink.too_large) {
        return "the answer is larger than the limit of " + std::to_string(sink.limit) +
               " bytes (--limit)";
    }
    std::string libcurls_own =
        *ended.detail != '\0' ? ended.detail : curl_easy_strerror(ended.code);
    switch (ended.code) {
    case CURLE_TFTP_NOTFOUND:
        return "the TFTP server has no such file";
    case CURLE_TFTP_PERM:
        return "the TFTP server denies access to the file";
    case CURLE_TFTP_ILLEGAL:
        return "the TFTP server refused the request";
    case CURLE_OPERATION_TIMEDOUT:
        return time_out(ended, !sink.body.empty());
    case CURLE_UNSUPPORTED_PROTOCOL: {
        std::string refusal = refused_protocol(ended);
        return refusal.empty() ? libcurls_own : refusal;
    }
    case CURLE_TOO_MANY_REDIRECTS:
        return "more than " + std::to_string(redirects_at_most) + " redirects";
    default:
        return libcurls_own;
    }
}

}  // namespace

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
    Sink sink;
    sink.limit = limits.bytes;
    char detail[CURL_ERROR_SIZE] = "";
    CURL* handle = easy.get();
    curl_easy_setopt(handle, CURLOPT_URL, request.url.c_str());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR,
                     request.is_post ? post_and_redirect_protocols : fetch_protocols);
    curl_easy_setopt(handle, CURLOPT_REDIR_PROTOCOLS_STR, post_and_redirect_protocols);
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(handle, CURLOPT_MAXREDIRS, redirects_at_most);
    curl_easy_setopt(handle, CURLOPT_POSTREDIR, static_cast<long>(CURL_REDIR_POST_ALL));
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);  // a name that is looked up is not waited for
    curl_easy_setopt(handle, CURLOPT_PROXY, "");
    curl_easy_setopt(handle, CURLOPT_USERAGENT, "headsetmgmt-phone");
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(limits.total.count()));
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits.connect.count()));
    curl_easy_setopt(handle, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(handle, CURLOPT_LOW_SPEED_TIME, static_cast<long>(limits.stall.count()));
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, detail);
    // What a server sends beyond its answer is no answer to the next request.
    curl_easy_setopt(handle, CURLOPT_FORBID_REUSE, 1L);
    // libcurl takes the size 0 that a TFTP server may answer for an error.
    curl_easy_setopt(handle, CURLOPT_TFTP_NO_OPTIONS, 1L);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, take_header_line);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, &sink);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, take_bytes);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &sink);
    if (!limits.ca_file.empty()) {
        curl_easy_setopt(handle, CURLOPT_CAINFO, limits.ca_file.c_str());
        curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
    }
    if (request.is_post) {
        curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE, static_cast<long>(request.body.size()));
        curl_easy_setopt(handle, CURLOPT_POSTFIELDS, request.body.c_str());
        curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers.get());
    }

    TransferResult result;
    curl_multi_add_handle(multi.get(), handle);
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
    if (message == nullptr) {
        result.interrupted = true;
        result.error = "interrupted";
    } else if (message->data.result == CURLE_OK && sink.header_begun && !sink.header_ended) {
        result.error = "the answer broke off in its header";
    } else if (message->data.result == CURLE_OK) {
        long status = 0;
        curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
        constexpr int status_ok = 200;
        result.status = is_tftp_url(request.url) ? status_ok : static_cast<int>(status);
        result.body = std::move(sink.body);
    } else {
        result.error =
            explain({handle, message->data.result, detail, request, limits, result.duration}, sink);
    }
    result.final_url = final_url_of(handle);
    curl_multi_remove_handle(multi.get(), handle);
    return result;
}

}  // namespace headsetmgmt::program
