// What the host application provides. The library binds these by name and parameter types. Log
// lines go to a callback instead (`HostLogCallback`): all at level 5, and one may hold the whole
// rest of a broken document, such as 10 MB.
//
// The library calls them from its worker thread and from host threads that are inside the flat
// interface. Texts that go in are valid for the call only; texts that come out are copied at once
// and never freed, and null counts as empty. A function may call the flat interface again; start
// and stop do nothing there. It must not take a lock that another thread may hold while it
// calls the flat interface: that thread may be waiting for the call that this function is in. A
// function should return soon: stopping the library waits for the one that is running. It must not
// end or cancel its thread, nor unload the library. The worker thread has a stack of the system's
// default size.
//
// The texts of a document arrive as they stand there: names, values and names of images may hold
// any bytes but NUL, such as line feeds, ESC or "../", and be of any length, such as 100 MB; so may
// log lines. Only the version of an upgrade is made of letters, digits and hyphens alone, but as
// long as the document has it. Check a text before you show it, store it or use it in a path.

#pragma once

#include "headsetmgmt/phone/host_types.h"

/// Keeps a function visible to the library in a host that hides its symbols.
#define HEADSETMGMT_HOST_FUNCTION [[gnu::visibility("default")]]

/// Starts a request and returns without waiting for its answer. The answer to a fetch is delivered
/// with `httpResponse`, exactly once, also when it is a time-out or another failure, and a failure
/// only after a pause (`httpResponse` says why); the answer to a post must not be delivered. `body`
/// is null for a fetch. The result is not looked at.
///
/// `url` is the one that `setHeadsetConfigUrl` was given, with its tokens replaced. For a fetch it
/// may begin with "tftp://", or be a bare file name: "defaultheadsetconfig.json" if the host gave
/// no URL. The user id stands in it as the host gave it: nothing is escaped.
HEADSETMGMT_HOST_FUNCTION bool httpRequest(HttpRequestType type, const char* url, const char* body);

/// Gives the device the setting `usage_id`, called `name`, the value `value`. The result is not
/// looked at.
HEADSETMGMT_HOST_FUNCTION bool apply_changes(const char* device_id, const char* name, int usage_id,
                                             const char* value);

/// Upgrades the device (or its dongle, when it has one) to `version` with the image
/// `firmware_name`. The result is not looked at.
HEADSETMGMT_HOST_FUNCTION bool request_firmware_upgrade(const char* device_id, const char* version,
                                                        const char* firmware_name);

/// Whether the host would upgrade the device by itself. No flow of the library asks.
HEADSETMGMT_HOST_FUNCTION bool check_firmware_upgrade(const char* device_id);

/// The phone's serial number, asked anew for every report on an accessory of the maker's.
HEADSETMGMT_HOST_FUNCTION const char* get_host_serial_num();

/// The version of the phone's operating system, asked like the serial number.
HEADSETMGMT_HOST_FUNCTION const char* get_host_os_ver();

/// The version of the phone's software, asked like the serial number.
HEADSETMGMT_HOST_FUNCTION const char* get_orvik_ver();

#undef HEADSETMGMT_HOST_FUNCTION
