// SPDX-License-Identifier: Apache-2.0
// Why a transfer failed, in words.

#pragma once

#include <chrono>
#include <string>

#include <curl/curl.h>

#include "program/network/transfer.h"

namespace headsetmgmt::program {

/// Redirects of a request.
inline constexpr long redirects_at_most = 5;

/// A transfer that libcurl has ended without an answer.
struct EndedTransfer {
    CURL* handle;
    CURLcode code;
    const char* detail;  ///< libcurl's own words; may be empty
    const TransferRequest& request;
    const TransferLimits& limits;
    std::chrono::milliseconds duration;
    std::string final_url;  ///< where redirects led; empty without one
    bool anything_came;     ///< of the answer's body
    bool too_large;         ///< the body is over its limit
    bool header_too_large;  ///< headers and trailers are over theirs
    bool https_alone;       ///< a request was sent by https: a redirect must not leave it
};

/// Why there is no answer. May hold a URL's password.
std::string explain(const EndedTransfer& ended);

}  // namespace headsetmgmt::program
