// SPDX-License-Identifier: Apache-2.0
// The host that the library talks to: it answers in every way that there is, and calls back in.

#include "stress/stress_host.h"

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string_view>

#include "headsetmgmt/phone/host_functions.h"

#include "stress/dice.h"
#include "stress/late_answers.h"
#include "stress/properties.h"
#include "stress/random_calls.h"
#include "stress/tally.h"
#include "stress/watchdog.h"

namespace headsetmgmt::stress {

namespace {

constexpr int ok = 200;

std::atomic<bool> calm{false};
std::atomic<bool> worker_is_inside{false};

thread_local int host_depth = 0;  // host functions and lines of this thread, one inside the other
thread_local int line_depth = 0;  // lines alone

/// Stands in every host function and in the log callback.
class HostScope {
public:
    HostScope() {
        // The only thread that nobody watches is the library's own.
        if (++host_depth == 1 && !is_watched()) {
            worker_is_inside = true;
        }
    }
    ~HostScope() {
        if (--host_depth == 0 && !is_watched()) {
            worker_is_inside = false;
        }
    }

    HostScope(const HostScope&) = delete;
    HostScope& operator=(const HostScope&) = delete;
};

bool is_calm() {
    return calm;
}

/// Calls the library from inside a host function, but not without end: what it calls may bring the
/// thread here again.
void call_back_in() {
    constexpr unsigned int often = 3;
    constexpr int deepest = 3;
    if (!is_calm() && host_depth < deepest && dice().one_in(often)) {
        call_at_random();
    }
}

/// A host function that fails in the worst way.
void throw_sometimes() {
    constexpr unsigned int seldom = 500;
    if (!is_calm() && dice().one_in(seldom)) {
        note(Counter::exception);
        if (dice().one_in(2)) {
            throw std::runtime_error("the host's own");
        }
        throw 42;  // no exception class at all
    }
}

int any_failure() {
    constexpr int failures[] = {404, 500, 0, -1, 201};
    return dice().any_of(failures);
}

std::chrono::microseconds any_delay() {
    constexpr unsigned int longest = 60000;
    return std::chrono::microseconds(dice().below(longest));
}

/// In all the ways in which a host may answer a fetch, and in some in which it must not.
void answer_fetch() {
    enum Way {
        at_once,
        failure_at_once,
        twice_at_once,
        late,
        late_failure,
        twice_late,
        both,
        never
    };
    constexpr Way ways[] = {at_once, at_once,      failure_at_once, twice_at_once, late,
                            late,    late_failure, twice_late,      both,          never};
    switch (dice().any_of(ways)) {
    case twice_at_once:
        deliver_answer(any_document(), ok);
        deliver_answer(any_document(), dice().one_in(2) ? ok : any_failure());
        break;
    case at_once:
        deliver_answer(any_document(), ok);
        break;
    case failure_at_once:
        deliver_answer(any_document(), any_failure());
        break;
    case twice_late:
        late_answers().add(any_document(), dice().one_in(2) ? ok : any_failure(), any_delay());
        late_answers().add(any_document(), ok, any_delay());
        break;
    case late:
        late_answers().add(any_document(), ok, any_delay());
        break;
    case late_failure:
        late_answers().add(any_document(), any_failure(), any_delay());
        break;
    case both:
        late_answers().add(any_document(), ok, any_delay());
        deliver_answer(any_document(), any_failure());
        break;
    case never:
        break;
    }
}

const char* tell_fact() {
    const HostScope scope;
    call_back_in();
    throw_sometimes();
    return any_text();
}

}  // namespace

void take_log_line(int level, const char* text) {
    constexpr int host_level = 5;
    const std::string_view line = text;
    note(Counter::line);
    if (level != host_level) {
        fail("a line of level %d", level);
    }
    if (line == "Lib::ConfigManagerImpl: clean_up_pending_config_requests: ENTER") {
        note(Counter::run);
    } else if (line == "Lib::ConfigManagerImpl: on_fetch_config_successExit") {
        note(Counter::document);
    } else if (line == "stop headset mgmt\n") {
        note(Counter::stop);
    }

    constexpr unsigned int seldom = 30;
    const HostScope scope;
    if (line_depth == 0 && !is_calm() && dice().one_in(seldom)) {
        ++line_depth;
        call_at_random();
        --line_depth;
    }
}

bool is_inside_host() {
    return host_depth != 0;
}

void become_calm() {
    calm = true;
}

void become_wild() {
    calm = false;
}

bool is_worker_inside() {
    return worker_is_inside;
}

}  // namespace headsetmgmt::stress

bool httpRequest(HttpRequestType type, const char* url, const char* body) {
    using namespace headsetmgmt::stress;
    const HostScope scope;
    if (*url == '\0') {
        fail("a request without a URL");
    }
    if (type == HTTP_REQUEST_POST) {
        note(Counter::report);
        const std::string_view report = body;
        if (report.empty() || report.front() != '{' || report.back() != '}') {
            fail("a report that is no object: %s", body);
        }
        if (report.find(probe_serial_number) != std::string_view::npos) {
            note(Counter::probe_report);
        }
        call_back_in();
    } else {
        note(Counter::fetch);
        if (is_calm()) {
            deliver_answer(good_document(), ok);
        } else {
            call_back_in();
            answer_fetch();
            call_back_in();
        }
    }
    throw_sometimes();
    return dice().one_in(2);
}

bool apply_changes(const char* device_id, const char* /*name*/, int /*usage_id*/,
                   const char* /*value*/) {
    using namespace headsetmgmt::stress;
    const HostScope scope;
    note(Counter::setting);
    if (std::string_view(device_id) == probe_id) {
        note(Counter::probe_setting);
    }
    const AccessoryAtHand at_hand(device_id);
    call_back_in();
    throw_sometimes();
    return dice().one_in(2);
}

bool request_firmware_upgrade(const char* device_id, const char* /*version*/,
                              const char* /*firmware_name*/) {
    using namespace headsetmgmt::stress;
    const HostScope scope;
    note(Counter::upgrade);
    const AccessoryAtHand at_hand(device_id);
    call_back_in();
    throw_sometimes();
    return dice().one_in(2);
}

bool check_firmware_upgrade(const char* /*device_id*/) {
    headsetmgmt::stress::fail("check_firmware_upgrade was called");
    return true;
}

const char* get_host_serial_num() {
    return headsetmgmt::stress::tell_fact();
}

const char* get_host_os_ver() {
    return headsetmgmt::stress::tell_fact();
}

const char* get_orvik_ver() {
    return headsetmgmt::stress::tell_fact();
}
