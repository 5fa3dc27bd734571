// SPDX-License-Identifier: Apache-2.0
// Enumerations that every part of the library shares.

#pragma once

#include <cstdint>
#include <string>

namespace headsetmgmt {

/// Kind of accessory. The host may pass any 32-bit value.
enum ACCESSORY_TYPE : std::int32_t {
    UNKNOWN = 0,
    HEADSET = 1,
    CAMERA = 2,
    MAX_ACCESSORY_TYPE = 3,
};

/// Result of a request.
enum RequestStatus : std::int32_t {
    REQUEST_DONE = 0,     ///< complete: document delivered, or body sent
    REQUEST_REFUSED = 1,  ///< not a valid request, or its document could not be used
    REQUEST_PENDING = 2,  ///< the answer is delivered later to a reply handler
};

}  // namespace headsetmgmt

/// Name of an accessory type, for display; "OTHER" for any other value. Any thread.
inline std::string accessory_type_to_string(headsetmgmt::ACCESSORY_TYPE type) {
    switch (type) {
    case headsetmgmt::UNKNOWN:
        return "UNKNOWN";
    case headsetmgmt::HEADSET:
        return "HEADSET";
    case headsetmgmt::CAMERA:
        return "CAMERA";
    case headsetmgmt::MAX_ACCESSORY_TYPE:
        return "MAX_ACCESSORY_TYPE";
    default:
        return "OTHER";
    }
}
