// SPDX-License-Identifier: Apache-2.0
// Everything that a host does between start and stop, on a phone that owns the clock, and the calls
// of host functions that follow.

#pragma once

#include <cstddef>
#include <functional>
#include <iosfwd>

#include "support/phone_host.h"

namespace headsetmgmt::test_support {

/// How often each host function was called.
struct CallCounts {
    std::size_t fetches;  ///< `httpRequest` of one kind and the other
    std::size_t posts;
    std::size_t changes;   ///< `apply_changes`
    std::size_t upgrades;  ///< `request_firmware_upgrade`
    int facts;             ///< the three functions that answer a text
    std::size_t checks;    ///< `check_firmware_upgrade`
};

bool operator==(const CallCounts& left, const CallCounts& right);
void PrintTo(const CallCounts& calls, std::ostream* stream);

/// The calls of the fake host from the making of the object on.
class CallsSince {
public:
    CallsSince();
    CallCounts now() const;

private:
    CallCounts before;
};

/// The calls of `attach_configure_report_reset` when nothing goes wrong.
constexpr CallCounts usual_calls = {2, 1, 6, 2, 3, 0};

/// A document that gives the headsets below two settings and a firmware.
extern const char document_with_firmware[];

/// Attaches the headsets "headset-1" and "headset-2", and answers whether a run is under way.
bool attach_both();

/// Removes them.
void remove_both();

/// Attaches both, has the first of two fetches fail and the second bring the document, reports the
/// one and resets it; answers what the reset answered. `wait_for_requests` waits until there were
/// `requests` calls of `httpRequest`, or no more are to come.
bool attach_configure_report_reset(
    const std::function<void(std::size_t requests)>& wait_for_requests);

/// Removes both first, then the same on a phone that decides when its worker runs.
bool attach_configure_report_reset(PhoneHost& host);

/// Expects that the started library does all of this as usual, also after a stop and a start.
void expect_usual_runs(PhoneHost& host);

}  // namespace headsetmgmt::test_support
