// SPDX-License-Identifier: Apache-2.0
// URLs as they may be shown: without the password in them.

#pragma once

#include <string>

namespace headsetmgmt::program {

/// The URL with "***" in place of the password before its host; as it is when it has none. A URL
/// without "://" is taken to begin with its host, and a password with a "/", "?" or "#", which ends
/// the host, is masked too.
std::string masked_url(const std::string& url);

/// The text with every URL in it masked so; a URL ends before the next blank.
std::string with_masked_passwords(const std::string& text);

}  // namespace headsetmgmt::program
