// SPDX-License-Identifier: Apache-2.0
// What the calls carry: accessories, documents, URLs and servers, good ones and odd ones.

#pragma once

#include <memory>

#include "headsetmgmt/phone/host_types.h"

namespace headsetmgmt::stress {

/// One of the sixteen accessories that come and go, as a host passes it: headsets with and without
/// dock and dongle, cameras, some whose facts stay unknown, types that have no report, odd texts.
/// Now and then it has become another model, or it is null.
std::shared_ptr<AccessoryCache> any_accessory();

/// While it lives, every other accessory or id that the calling thread is given is this one's: what
/// a host function calls hits what the library is working on.
class AccessoryAtHand {
public:
    explicit AccessoryAtHand(const char* device_id);
    ~AccessoryAtHand();

    AccessoryAtHand(const AccessoryAtHand&) = delete;
    AccessoryAtHand& operator=(const AccessoryAtHand&) = delete;

private:
    const AccessoryCache* former;
};

/// Whether it is a headset or a camera; false for null.
bool may_be_configured(const AccessoryCache* accessory);

/// The id of one of the sixteen, or of none of them, or null.
const char* any_device_id();

/// The body of an answer: a document good, odd or broken, or null.
const char* any_document();

/// A document that gives the model of `probe` settings.
const char* good_document();

/// An accessory beside the sixteen, the maker's, which nothing but `good_document` configures.
extern const char probe_id[];
extern const char probe_serial_number[];
std::shared_ptr<AccessoryCache> probe();

/// A URL, with and without tokens, empty, null or odd.
const char* any_url();

/// Null, or three servers, each of them possibly null or empty. Valid until the thread's next call.
const char** any_servers();

/// A user's name, a fact of the phone: a text, empty or null.
const char* any_text();

}  // namespace headsetmgmt::stress
