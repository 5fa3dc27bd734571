// SPDX-License-Identifier: Apache-2.0
// One request over the network, to its end.

#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include <curl/curl.h>

namespace headsetmgmt::program {

/// How long a request may take, and how large its answer may be.
struct TransferLimits {
    std::chrono::milliseconds total{30000};
    std::chrono::milliseconds connect{10000};
    std::chrono::seconds stall{10};
    std::size_t bytes = 4UL * 1024 * 1024;
    std::size_t header_bytes = 256UL * 1024;  ///< redirects, interim answers and trailers included
    std::string ca_file;  ///< certificates to trust instead of the system's; empty: the system's
};

struct TransferRequest {
    std::string url;
    bool is_post = false;
    std::string body;  ///< of a post
};

/// How a request ended: with an answer (`error` is empty) or without. Holds no URL's password.
struct TransferResult {
    /// The server's; 200 for a TFTP success; 0 without a complete answer. Of a post a success
    /// stands here with an `error` too: nobody needs the body of its answer.
    int status = 0;
    std::string body;
    std::string error;      ///< what went wrong below HTTP, for people
    std::string final_url;  ///< where redirects led; empty without one
    bool interrupted = false;
    std::chrono::milliseconds duration{0};
};

/// Carries out requests, one at a time: http, https (TLS 1.2 or newer, certificates are verified)
/// and tftp, at most five redirects, none from https to http.
class Transfers {
public:
    explicit Transfers(TransferLimits transfer_limits);

    /// Returns with the answer, an error or a time-out. One thread.
    TransferResult perform(const TransferRequest& request);

    /// Ends the request that is under way, and every later one, at once. Any thread.
    void interrupt();

private:
    struct MultiDeleter {
        void operator()(CURLM* handle) const { curl_multi_cleanup(handle); }
    };

    TransferLimits limits;
    std::atomic<bool> is_interrupted{false};
    std::unique_ptr<CURLM, MultiDeleter> multi;
};

/// Whether the HTTP status is a success, 200 to 299.
bool is_success(int status);

/// What an HTTP status says of a request that did not succeed, beyond its name; may be empty.
std::string remark_on(int status);

/// Why a request did not succeed, in a few words.
std::string failure_of(const TransferResult& result);

/// Whether the URL is one for TFTP.
bool is_tftp_url(const std::string& url);

/// Whether the URL is one for https.
bool is_https_url(const std::string& url);

}  // namespace headsetmgmt::program
