// Types that the phone's host application and the library exchange.

#pragma once

#include <cstdint>
#include <string>

#include "headsetmgmt/types.h"

// The texts of `AccessoryCache` would lie elsewhere than the library reads them.
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

/// What `httpRequest` is asked to do.
enum HttpRequestType : std::int32_t {
    HTTP_REQUEST_GET = 0,   ///< fetch a document; the answer goes to `httpResponse`
    HTTP_REQUEST_POST = 2,  ///< send a body; no answer is wanted
};

/// The host's own record of an accessory. The library reads it during the call, each text whole,
/// and never writes it. What it passes on as a C string ends at the text's first NUL.
struct AccessoryCache {
    std::string device_id;            ///< names the accessory in every call
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

/// Receives every log line: the host's level, which is always 5, and a text that is valid for the
/// call only. The line about a document that cannot be parsed holds the document from the fault on,
/// all of it: 10 MB in one line if so much is left. Called from any thread, from several at once. A
/// callback that throws ends the process. It is called again for each line that a function writes
/// which it calls: one that calls such a function for every line overflows the stack.
using HostLogCallback = void (*)(int level, const char* text);
