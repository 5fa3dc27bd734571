// SPDX-License-Identifier: Apache-2.0
// Why a transfer failed, in words.

#include "program/network/transfer_failure.h"

#include <cstring>
#include <sstream>
#include <strings.h>

namespace headsetmgmt::program {

namespace {

/// The URL of the last request: where redirects led, or what was asked for.
const std::string& last_url(const EndedTransfer& ended) {
    return ended.final_url.empty() ? ended.request.url : ended.final_url;
}

std::string in_seconds(std::chrono::milliseconds time) {
    std::ostringstream text;
    text << std::chrono::duration<double>(time).count() << " s";
    return text.str();
}

std::string in_tenths_of_seconds(std::chrono::milliseconds time) {
    constexpr long tenth = 100;
    return in_seconds(std::chrono::milliseconds((time.count() + tenth / 2) / tenth * tenth));
}

/// What was missing when the limit for connecting was reached. For https that limit covers the TLS
/// handshake too.
std::string missing_connection(const EndedTransfer& ended) {
    return is_https_url(last_url(ended)) ? "no connection, or no TLS handshake," : "no connection";
}

/// TFTP has no connections, and libcurl derives limits of its own from all that were set: the
/// message can name none of them, only how long it took.
std::string tftp_time_out(const EndedTransfer& ended) {
    return (ended.anything_came ? "not complete after " : "no answer for ") +
           in_tenths_of_seconds(ended.duration);
}

/// Which limit was reached. libcurl has one code for all; but for TFTP the stall alone has words of
/// its own, and of the others the one for the whole request is reached no earlier than its time.
std::string time_out(const EndedTransfer& ended) {
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
        return is_tftp ? tftp_time_out(ended)
                       : missing_connection(ended) + " after " + in_seconds(ended.limits.connect);
    }
    const std::string what =
        is_tftp || connected_after != 0 ? "not complete" : missing_connection(ended);
    return what + " after " + in_seconds(ended.limits.total) + " (--timeout)";
}

/// The refusal of the URL's protocol; empty when it is not the protocol that was refused.
std::string refused_protocol(const EndedTransfer& ended) {
    const std::string& url = last_url(ended);
    const std::string protocol = url.substr(0, url.find(':'));
    if (strcasecmp(protocol.c_str(), "http") == 0 && ended.https_alone) {
        return "a redirect from https to http is refused: http encrypts nothing; let the server "
               "redirect to https";
    }
    if (strcasecmp(protocol.c_str(), "http") == 0 || strcasecmp(protocol.c_str(), "https") == 0) {
        return "";  // what the server speaks is none
    }
    const std::string refusal = "protocol \"" + protocol + "\" is refused: ";
    if (!ended.final_url.empty()) {
        return refusal + "a redirect is followed to http and https only";
    }
    return refusal + (ended.request.is_post ? "a report is posted by http or https"
                                            : "a document is fetched by http, https or tftp");
}

/// libcurl's own text; for TFTP it may mention a connection, and TFTP has none.
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

}  // namespace

std::string explain(const EndedTransfer& ended) {
    if (ended.too_large) {
        return "the answer is larger than the limit of " + std::to_string(ended.limits.bytes) +
               " bytes (--limit)";
    }
    if (ended.header_too_large) {
        return "the answer's headers and trailers are larger than the limit of " +
               std::to_string(ended.limits.header_bytes) + " bytes";
    }
    if (is_tftp_url(ended.request.url)) {
        std::string explanation = explain_tftp(ended);
        if (!explanation.empty()) {
            return explanation;
        }
    }
    switch (ended.code) {
    case CURLE_OPERATION_TIMEDOUT:
        return time_out(ended);
    case CURLE_UNSUPPORTED_PROTOCOL: {
        std::string refusal = refused_protocol(ended);
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

}  // namespace headsetmgmt::program
