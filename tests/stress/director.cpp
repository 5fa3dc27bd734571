// SPDX-License-Identifier: Apache-2.0
// The stops: at rest, where what the library left behind is counted, and during calls.

#include "stress/director.h"

#include <chrono>
#include <thread>

#include "headsetmgmt/phone/flat_interface.h"

#include "stress/dice.h"
#include "stress/late_answers.h"
#include "stress/properties.h"
#include "stress/random_calls.h"
#include "stress/stress_host.h"
#include "stress/tally.h"
#include "stress/watchdog.h"

namespace headsetmgmt::stress {

namespace {

using Clock = std::chrono::steady_clock;

/// Waits for what nothing but the library can bring about.
template <typename Happened>
void wait_for(const char* what, Happened happened) {
    const Clock::time_point limit = Clock::now() + patience;
    while (!happened()) {
        if (Clock::now() > limit) {
            give_up(what);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
}

void pause_for_a_moment() {
    constexpr unsigned int longest = 10000;
    std::this_thread::sleep_for(std::chrono::microseconds(dice().below(longest)));
}

/// The library that went through all this still configures an accessory and reports on it. All
/// host threads are in a meeting, and the host is calm.
void expect_service() {
    const WatchedCall watched("the service of a library at rest");
    const char* no_servers[3] = {};
    if (!setHeadsetConfigUrl("http://phone.example/document", "http://phone.example/report", "",
                             no_servers, no_servers, "user")) {
        fail("a started library takes no URLs");
    }
    // Ends the run that may wait for an answer which never came.
    deliver_answer(good_document(), 200);

    // Again and again: a fetch that was queued before may serve the first of them.
    constexpr int rounds = 5;
    for (int round = 0; round < rounds; ++round) {
        const unsigned long settings = count_of(Counter::probe_setting);
        if (!configure_headset(probe())) {
            fail("the probe's configuration is refused");
        }
        wait_for("a configuration run",
                 [&] { return count_of(Counter::probe_setting) > settings; });
    }
    int value = 1;
    if (!retrieve_config(probe_id, USAGE_EQUALIZER, &value) || value != 0) {
        fail("the probe has no settings");
    }

    const unsigned long reports = count_of(Counter::probe_report);
    send_inventory(probe());
    wait_for("a report", [&] { return count_of(Counter::probe_report) > reports; });
}

/// Leaves tasks in the queue for the stop to drop.
void leave_work_behind() {
    const WatchedCall watched("a call at rest");
    constexpr int accessories_left = 20;
    for (int i = 0; i < accessories_left; ++i) {
        configure_headset(any_accessory());
        send_inventory(any_accessory());
    }
}

}  // namespace

Director::Director(HostThreads& the_threads) : threads(the_threads), before_start(footprint()) {}

void Director::begin() {
    create_library();
    start_library();
    threads.meeting().dismiss();
}

void Director::stop_at_rest() {
    // In this order: each of them may bring about what the next one waits for.
    become_calm();
    threads.meeting().convene();
    wait_for("a host function", [] { return !is_worker_inside(); });
    late_answers().drain();
    if (!create_library()) {
        fail("the callback is not registered");
    }
    if (!start_library()) {
        fail("the library does not start");
    }
    if (dice().one_in(2)) {
        leave_work_behind();
    } else {
        expect_service();
    }
    stop_library();
    ++stops;
    expect_all_turned_away();
    compare();
    if (!start_library()) {
        fail("the library does not start again");
    }
    become_wild();
    threads.meeting().dismiss();
}

/// Whether a stop left more behind than the first one did.
void Director::compare() {
    // A thread that was joined stays in the system's list for a moment more.
    const Clock::time_point limit = Clock::now() + patience;
    do {
        latest_footprint = footprint();
    } while (latest_footprint.threads > before_start.threads && Clock::now() < limit);

    if (stops == 1) {
        first_footprint = latest_footprint;
    }
    const auto expect_at_most = [this](long before, long now, const char* what, const char* when) {
        if (now > before) {
            fail("stop %u left %ld %s, %ld more than there were %s", stops, now, what, now - before,
                 when);
        }
    };
    expect_at_most(first_footprint.allocations, latest_footprint.allocations, "live allocations",
                   "after the first");
    expect_at_most(before_start.threads, latest_footprint.threads, "threads",
                   "before the first start");
    expect_at_most(before_start.descriptors, latest_footprint.descriptors, "descriptors",
                   "before the first start");
}

void Director::stop_amid_calls() {
    stop_library();
    if (dice().one_in(2)) {
        pause_for_a_moment();
    }
    // A library that was just started knows no URLs, and refuses fetches until it does.
    withhold_urls(dice().one_in(2));
    start_library();
    pause_for_a_moment();
    withhold_urls(false);
}

void Director::stop_from_all_threads() {
    threads.start_and_stop(true);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    threads.start_and_stop(false);
    start_library();
}

}  // namespace headsetmgmt::stress
