// Enumerations that every part of the library shares.

#pragma once

#include <cstdint>
#include <string>

namespace headsetmgmt {

/// What kind of accessory is attached. Any 32-bit value may arrive from the host.
enum ACCESSORY_TYPE : std::int32_t {
    UNKNOWN = 0,
    HEADSET = 1,
    CAMERA = 2,
    MAX_ACCESSORY_TYPE = 3,
};

/// Outcome of a request.
enum RequestStatus : std::int32_t {
    REQUEST_DONE = 0,     ///< nothing more will come: document delivered, or body handed over
    REQUEST_REFUSED = 1,  ///< not fit to be sent, or its document could not be used
    REQUEST_PENDING = 2,  ///< the answer comes later through a reply handler
};

}  // namespace headsetmgmt

/// Display word of an accessory type; "OTHER" for a value that is no member. Any thread.
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
