// SPDX-License-Identifier: Apache-2.0
// The functions that the host application provides. The library binds them by name and parameter
// types. Log lines go to a callback instead (`HostLogCallback`).
//
// Threads: the library calls them on its worker thread, whose stack has the system's default size,
// and on host threads that are inside the flat interface. A function should return soon: stopping
// the library waits for it. It may call the flat interface, where start and stop then do nothing.
// It must not take a lock that another thread holds while calling the flat interface: that thread
// may be waiting for the call that this function is in. It must not end or cancel its thread, nor
// unload the library.
//
// Texts: parameters are valid for the call only. A result is copied at once and never freed; null
// counts as empty. Texts of a document are not checked: names, values, image names and log lines
// may contain any bytes but NUL, for example line feeds, ESC or "../", and have any length, for
// example 100 MB. Only the version of an upgrade consists of letters, digits and hyphens, also of
// any length. Check a text before you show it, store it or use it in a path.

#pragma once

#include "headsetmgmt/phone/host_types.h"

/// Makes a function visible to the library in a host that is compiled with hidden symbols.
#define HEADSETMGMT_HOST_FUNCTION [[gnu::visibility("default")]]

/// Starts a request and returns without waiting for its answer. The library ignores the result.
///
/// Deliver the answer to a fetch with `httpResponse`, exactly once, also a time-out or another
/// failure, and a failure only after a pause (see there). Do not deliver the answer to a post.
///
/// `url` is the URL from `setHeadsetConfigUrl` with its tokens replaced. For a fetch it may begin
/// with "tftp://" or be a bare file name: "defaultheadsetconfig.json" if the host has set no URL.
/// The user id in it is not escaped. `body` is null for a fetch.
HEADSETMGMT_HOST_FUNCTION bool httpRequest(HttpRequestType type, const char* url, const char* body);

/// Sets the device's setting `usage_id`, called `name`, to `value`. The library ignores the result.
HEADSETMGMT_HOST_FUNCTION bool apply_changes(const char* device_id, const char* name, int usage_id,
                                             const char* value);

/// Upgrades the device, or its dongle if it has one, to `version` with the image `firmware_name`.
/// The library ignores the result.
HEADSETMGMT_HOST_FUNCTION bool request_firmware_upgrade(const char* device_id, const char* version,
                                                        const char* firmware_name);

/// Whether the host would upgrade the device by itself. The library never calls it, but needs it to
/// be defined.
HEADSETMGMT_HOST_FUNCTION bool check_firmware_upgrade(const char* device_id);

/// The phone's serial number; called for every report on an accessory of the maker.
HEADSETMGMT_HOST_FUNCTION const char* get_host_serial_num();

/// The version of the phone's operating system; called like `get_host_serial_num`.
HEADSETMGMT_HOST_FUNCTION const char* get_host_os_ver();

/// The version of the phone's software; called like `get_host_serial_num`.
HEADSETMGMT_HOST_FUNCTION const char* get_orvik_ver();

#undef HEADSETMGMT_HOST_FUNCTION
