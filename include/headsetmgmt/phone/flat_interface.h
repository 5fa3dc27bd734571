// The functions through which the phone's host application drives the library.
//
// Order of use: `create_headset_mgmt`, `start_headset_mgmt`, `setHeadsetConfigUrl`, then the others
// in any order, from any host thread, also from inside a host function or the log callback; at the
// end `stop_headset_mgmt`, after which a start begins afresh.
//
// None throws. A null text counts as empty. A function answers false or does nothing before
// `create_headset_mgmt` or `start_headset_mgmt`, while the library is started or stopped, from the
// log callback of that start or stop too, once the process exits, and when memory runs out.
//
// Calls that work on accessories run one at a time: a call may wait until another thread's call,
// and the host function that it is in, returns. So call nothing here, start, stop and exit
// included, while you hold a lock that a host function or the log callback takes.
//
// A thread that is inside must not be cancelled, nor leave by `pthread_exit` or `longjmp`. A daemon
// calls `create_headset_mgmt` after it has forked; a forked child calls nothing here. The process
// may exit without a stop, unless a host function uses objects that were made after
// `create_headset_mgmt`: then stop the library first. When a host function itself calls `exit`, the
// library cannot wait for it: what is under way calls host functions to the very end, so these may
// use nothing that the exit destroys. A new-handler calls no `exit`, and no host function does
// while another thread exits.
//
// The library may be unloaded when no thread of the host is inside. Stop it first if a host
// function loads libraries, or looks up names, which does: unloading holds the loader's lock.

#pragma once

#include <memory>

#include "headsetmgmt/export.h"
#include "headsetmgmt/phone/host_types.h"

/// Makes the library's one plug-in object if it is not there yet, and registers the log callback,
/// replacing an earlier one; with null, lines go nowhere. Call this first: lines written before are
/// lost. Another thread may still be inside a replaced callback until the library is stopped. True
/// once the callback is registered.
HEADSETMGMT_EXPORT bool create_headset_mgmt(HostLogCallback callback);

/// Starts the library and its one thread, which inherits the caller's signal mask and scheduling:
/// before this call, block the signals that other threads are to receive. The three texts are not
/// used. True when the library runs, also when it did so already; false when the thread could not
/// be started (a later start tries again) or another thread is starting or stopping the library.
/// From inside a host function or the log callback it does nothing and answers whether the library
/// runs.
HEADSETMGMT_EXPORT bool start_headset_mgmt(const char* phone_model, const char* phone_version,
                                           const char* storage_path);

/// Stops the library: waits for the calls and the task that are under way, ends the thread and
/// forgets all accessories, servers and URLs. Calls of other threads answer false meanwhile. Does
/// nothing from inside a host function or the log callback, or while another thread is stopping the
/// library. The callback stays registered.
HEADSETMGMT_EXPORT void stop_headset_mgmt();

/// Tells the library its URLs, servers and user. Call it after each start and before accessories
/// are attached. `config_url` may hold "{tftp}" (replaced by the first TFTP server) and "{userid}",
/// `inventory_post_url` may hold "{korm}" (replaced by the first call-control server). The two
/// arrays have three entries each, empty or null where there is no server. An empty text keeps what
/// was told before, and servers add up until the stop. False when the library is not started.
HEADSETMGMT_EXPORT bool setHeadsetConfigUrl(const char* config_url, const char* inventory_post_url,
                                            const char* service_url, const char** tftp_servers,
                                            const char** korm_servers, const char* user_id);

/// Tells that an accessory was attached, or changed. Its default configuration is fetched and
/// applied. Without software version or model the fetch waits 60 seconds, also when they are told
/// meanwhile: attach when they are known, or remove and attach again. Facts that a host function
/// tells while this accessory's document is being applied count from the next document on. True
/// when a configuration run was started or is under way; false for null, for a new accessory that
/// is neither headset nor camera, for one whose id is empty (it is configured all the same), and
/// when the library is not started.
HEADSETMGMT_EXPORT bool configure_headset(std::shared_ptr<AccessoryCache> accessory);

/// Queues the inventory report of an accessory; it is posted with `httpRequest`. Does nothing for
/// null and when the library is not started.
HEADSETMGMT_EXPORT void send_inventory(std::shared_ptr<AccessoryCache> accessory);

/// Reserved for settings that the user changes on the phone. Always false, and nothing is recorded.
HEADSETMGMT_EXPORT bool update_config(const char* device_id, CONFIG_SETTING_USAGE_ID usage_id,
                                      int value);

/// Reads a setting's record: `*value` becomes the number at the start of the setting's name, 0 when
/// it starts with none. False, with `*value` untouched, when there is no such setting or accessory,
/// when its name is empty, when `value` is null or the library is not started.
HEADSETMGMT_EXPORT bool retrieve_config(const char* device_id, CONFIG_SETTING_USAGE_ID usage_id,
                                        int* value);

/// Delivers the answer to a fetch: with status 200, `body` is the document; any other status is a
/// failure, and the library requests the document again at once, unless version or model are
/// missing (`configure_headset`). Answers that nobody waits for are dropped.
///
/// The host sets the pace: it reports a failure after a pause. It answers each request, and once:
/// one that it answers twice with a failure is followed by two requests, these by four. It joins
/// requests for one URL that wait together into one transfer and answers each with its result: an
/// accessory that leaves and comes back while its request is out adds a request to every round,
/// until one succeeds. An hour of failures 10 s apart (1 s, 60 s) takes 360 requests (3,600, 60);
/// with a replug a minute 10,980 (109,800, 1,830), which joined are 360 transfers (3,600, 60). At
/// most 100 requests are queued; a failure beyond that adds none.
///
/// The document is read and applied before this returns, on the calling thread: it needs 112 KiB of
/// stack beside what the host functions take that it calls. Most documents take 6 KiB of it; one
/// that is nested 990 levels deep takes 97.
///
/// Settings add up: an accessory keeps those of earlier documents, and is sent all of them after
/// each, until it is removed, comes back as another model, or the library is stopped. The library
/// has no limit for them: 40 documents of 3.5 MB, each with usage ids of its own, held 0.9 GB.
HEADSETMGMT_EXPORT void httpResponse(const char* body, int status);

/// Sends all settings of an accessory to it again, the user's included. False when the accessory is
/// not known or the library is not started.
HEADSETMGMT_EXPORT bool factory_reset(const char* device_id);

/// Tells that an accessory was removed; it is forgotten. False when the library is not started,
/// else true, also for an accessory that was not known.
HEADSETMGMT_EXPORT bool remove_peripheral(const char* device_id);
