// SPDX-License-Identifier: Apache-2.0
// Types that the phone's host application and the library exchange.

#pragma once

#include <cstdint>
#include <string>

#include "headsetmgmt/types.h"

// With the older ABI, `AccessoryCache` has another layout than the library expects.
#if defined(_GLIBCXX_USE_CXX11_ABI) && _GLIBCXX_USE_CXX11_ABI == 0
#error "headsetmgmt needs a host that is compiled with _GLIBCXX_USE_CXX11_ABI=1"
#endif

/// A setting's id on the device. Any 32-bit value may be passed.
enum CONFIG_SETTING_USAGE_ID : std::int32_t {
    USAGE_SPEAKER_VOLUME = 32,
    USAGE_MICROPHONE_GAIN = 33,
    USAGE_SIDETONE = 34,
    USAGE_EQUALIZER = 35,
    USAGE_AUDIO_BANDWIDTH = 36,
    USAGE_BLUETOOTH = 39,
};

/// Kind of an `httpRequest`.
enum HttpRequestType : std::int32_t {
    HTTP_REQUEST_GET = 0,   ///< fetch a document; deliver the answer to `httpResponse`
    HTTP_REQUEST_POST = 2,  ///< send a body; do not deliver the answer
};

/// The host's record of an accessory. The library only reads it, during the call. A text may
/// contain NULs, but where the library passes it on as a C string it ends at the first.
struct AccessoryCache {
    std::string device_id;            ///< identifies the accessory in every call
    std::int32_t accessory_type = 0;  ///< `headsetmgmt::HEADSET` or `headsetmgmt::CAMERA`
    std::int32_t vendor_id = 0;       ///< USB vendor id
    std::string software_version;
    std::string hardware_version;
    std::string model;
    std::string serial_number;
    std::string vendor;
    std::string dock_serial_number;
    std::string dock_model;
    std::string dongle_serial_number;
    std::string dongle_model;
    std::string dongle_version;
    std::string connection_type;
    std::string connection_status;
};

/// Receives every log line: the host's level, always 5, and a text that is valid for the call only.
/// Called from any thread, from several at once.
///
/// The line about a document that cannot be parsed contains the whole rest of the document from the
/// error on, possibly 10 MB. A callback that throws ends the process. If the callback calls a
/// function of the library that writes a line, it is called again for this line: doing so for every
/// line overflows the stack.
using HostLogCallback = void (*)(int level, const char* text);
