// SPDX-License-Identifier: Apache-2.0
// The functions through which the phone's host application drives the library.
//
// Order of use: `create_headset_mgmt`, `start_headset_mgmt`, `setHeadsetConfigUrl`, then the others
// in any order; at the end `stop_headset_mgmt`. A start after a stop begins from scratch.
//
// Threads: any host thread, also from inside a host function or the log callback. Calls that work
// on accessories run one at a time: a call may wait until another thread's call returns from the
// host function that it is in. So do not call any function of this header, nor `exit`, while you
// hold a lock that a host function or the log callback takes. A thread inside the library must not
// be cancelled, nor leave it by `pthread_exit` or `longjmp`.
//
// Errors: no function throws. A null text counts as empty. A function returns false or does nothing
// before `create_headset_mgmt` or `start_headset_mgmt`, during a start or stop (also from the log
// callback of that start or stop), once the process exits, and when memory runs out.
//
// Processes: a daemon calls `create_headset_mgmt` after it has forked. A forked child must not call
// any function of this header. The process may exit without a stop, unless a host function uses
// objects that were made after `create_headset_mgmt`: then stop the library first. If a host
// function calls `exit`, the library cannot wait for it: calls under way continue to call host
// functions until the end, which must not use anything that the exit destroys. A new-handler must
// not call `exit`, nor may a host function while another thread exits.
//
// Unloading: only when no host thread is inside the library. Stop it first if a host function loads
// a library or looks up a symbol (which may load one): unloading holds the loader's lock.

#pragma once

#include <memory>

#include "headsetmgmt/export.h"
#include "headsetmgmt/phone/host_types.h"

/// Makes the library's one plug-in object if there is none, and registers the log callback instead
/// of an earlier one; null for none. Call this first: earlier lines are lost. Another thread may
/// still be inside a replaced callback until the library is stopped. True when the callback is
/// registered.
HEADSETMGMT_EXPORT bool create_headset_mgmt(HostLogCallback callback);

/// Starts the library and its one thread. The three texts are not used. True when the library runs,
/// also if it did before; false when the thread could not be started (a later start tries again) or
/// another thread is starting or stopping the library. From inside a host function or the log
/// callback, only returns whether the library runs.
///
/// The thread inherits the caller's signal mask and scheduling: block signals that other threads
/// should receive before this call.
HEADSETMGMT_EXPORT bool start_headset_mgmt(const char* phone_model, const char* phone_version,
                                           const char* storage_path);

/// Stops the library: waits for the calls and the task under way, ends the thread, and removes all
/// accessories, servers and URLs. Calls of other threads return false meanwhile. Does
/// nothing from inside a host function or the log callback, or while another thread is stopping the
/// library. The callback stays registered.
HEADSETMGMT_EXPORT void stop_headset_mgmt();

/// Sets URLs, servers and user. Call it after each start and before accessories are attached.
/// `config_url` may contain "{tftp}" (replaced by the first TFTP server) and "{userid}",
/// `inventory_post_url` may contain "{korm}" (replaced by the first call-control server). The two
/// arrays have three entries each; an entry without a server is empty or null. An empty text keeps
/// the earlier value; servers are added to the earlier ones until the stop. False when the library
/// is not started.
HEADSETMGMT_EXPORT bool setHeadsetConfigUrl(const char* config_url, const char* inventory_post_url,
                                            const char* service_url, const char** tftp_servers,
                                            const char** korm_servers, const char* user_id);

/// Reports that an accessory was attached, or changed. Its default configuration is fetched and
/// applied. True when a configuration run was started or is under way; false for null, for a new
/// accessory that is neither headset nor camera, for an empty id (the accessory is still
/// configured), and when the library is not started.
///
/// Without software version or model the fetch waits 60 seconds, even if they are reported
/// meanwhile: attach when they are known, or remove and attach again. Facts that a host function
/// reports while this accessory's document is being applied take effect with the next document.
HEADSETMGMT_EXPORT bool configure_headset(std::shared_ptr<AccessoryCache> accessory);

/// Queues the inventory report of an accessory; it is posted with `httpRequest`. Does nothing for
/// null and when the library is not started.
HEADSETMGMT_EXPORT void send_inventory(std::shared_ptr<AccessoryCache> accessory);

/// Reserved for settings that the user changes on the phone. Always false, and nothing is recorded.
HEADSETMGMT_EXPORT bool update_config(const char* device_id, CONFIG_SETTING_USAGE_ID usage_id,
                                      int value);

/// Sets `*value` to the number at the start of the setting's name (not its value), 0 if there is no
/// number. False, with `*value` unchanged, when there is no such setting or accessory, when its
/// name is empty, when `value` is null, or when the library is not started.
HEADSETMGMT_EXPORT bool retrieve_config(const char* device_id, CONFIG_SETTING_USAGE_ID usage_id,
                                        int* value);

/// Delivers the answer to a fetch: with status 200, `body` is the document. Any other status is a
/// failure, after which the library requests the document again at once, unless version or model
/// are missing (`configure_headset`). While no configuration run is under way, the answer is
/// dropped.
///
/// The host determines the rate of requests:
/// - Report a failure after a pause.
/// - Answer each request exactly once: two failures for one request cause two requests, then four.
/// - Join waiting requests for one URL into one transfer, and answer each with its result. An
///   accessory that is removed and attached again while its request is outstanding adds a request
///   to every round until one succeeds.
///
/// An hour of failures 10 s apart (1 s, 60 s) takes 360 requests (3,600, 60). With an accessory
/// that is replugged every minute it takes 10,980 (109,800, 1,830), joined into 360 transfers
/// (3,600, 60). At most 100 requests are queued; further failures add none.
///
/// The document is parsed and applied on the calling thread before this function returns. That
/// needs 112 KiB of stack, in addition to the host functions that it calls. Most documents take 6
/// KiB of it, a document nested 990 levels deep takes 97.
///
/// Settings accumulate: an accessory keeps those of earlier documents and gets all of them after
/// each document, until it is removed, is attached as another model, or the library is stopped.
/// Their number is not limited: 40 documents of 3.5 MB, each with its own usage ids, took 0.9 GB.
HEADSETMGMT_EXPORT void httpResponse(const char* body, int status);

/// Sends all settings of an accessory to it again, including the user's. False when the accessory
/// is not known or the library is not started.
HEADSETMGMT_EXPORT bool factory_reset(const char* device_id);

/// Reports that an accessory was removed; the library drops its settings. False when the library is
/// not started; else true, also for an unknown accessory.
HEADSETMGMT_EXPORT bool remove_peripheral(const char* device_id);
