// SPDX-License-Identifier: Apache-2.0
// The eleven functions of the flat interface, called at random.

#include "stress/random_calls.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <thread>
#include <type_traits>

#include "headsetmgmt/phone/flat_interface.h"

#include "stress/dice.h"
#include "stress/properties.h"
#include "stress/stress_host.h"
#include "stress/tally.h"
#include "stress/watchdog.h"

namespace headsetmgmt::stress {

namespace {

using Clock = std::chrono::steady_clock;

/// In the order of the flat interface.
enum Function : std::size_t {
    create,
    start,
    stop,
    set_urls,
    configure,
    inventory,
    update,
    retrieve,
    response,
    reset,
    remove,
    number_of_functions
};

constexpr std::array<const char*, number_of_functions> names = {
    "create_headset_mgmt", "start_headset_mgmt", "stop_headset_mgmt", "setHeadsetConfigUrl",
    "configure_headset",   "send_inventory",     "update_config",     "retrieve_config",
    "httpResponse",        "factory_reset",      "remove_peripheral"};

// Relaxed: counting puts the threads into no order.
std::array<std::atomic<unsigned long>, number_of_functions> calls{};
std::array<std::atomic<unsigned long>, number_of_functions> answered_true{};
std::atomic<Clock::rep> longest{0};

/// Counts and watches one call.
template <typename Call>
auto counted(Function function, Call call) {
    const WatchedCall watched(names[function]);
    calls[function].fetch_add(1, std::memory_order_relaxed);
    if constexpr (std::is_void_v<decltype(call())>) {
        call();
    } else {
        const bool result = call();
        if (result) {
            answered_true[function].fetch_add(1, std::memory_order_relaxed);
        }
        return result;
    }
}

/// Lets one of all threads do something every `interval`.
class Pace {
public:
    explicit constexpr Pace(Clock::duration wanted_interval) : interval(wanted_interval) {}

    bool allows() {
        const Clock::rep now = Clock::now().time_since_epoch().count();
        Clock::rep next = next_time.load(std::memory_order_relaxed);
        return now >= next && next_time.compare_exchange_strong(next, now + interval.count(),
                                                                std::memory_order_relaxed);
    }

private:
    Clock::duration interval;
    std::atomic<Clock::rep> next_time{0};
};

// Reports are queued without limit: faster than the worker can send them, the queue would grow.
#ifdef STRESS_WITH_SANITIZERS
Pace reports_pace(std::chrono::milliseconds(10));
#else
Pace reports_pace(std::chrono::milliseconds(1));
#endif

// What is stopped most of the time does not meet much.
Pace stops_pace(std::chrono::milliseconds(300));

/// A library that turns its callers away, as it does while it stops, is not called in a tight loop:
/// that would only keep the processor from the thread that stops it. Nor does it stay stopped.
void cope_with(bool turned_away) {
    constexpr unsigned int often = 4;
    if (turned_away && !is_inside_host()) {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        if (dice().one_in(often)) {
            start_library();
        }
    }
}

std::atomic<bool> urls_are_withheld{false};

const char* url_to_give() {
    return urls_are_withheld.load(std::memory_order_relaxed) ? "" : any_url();
}

void give_urls() {
    const bool taken = counted(set_urls, [] {
        // One after the other: which servers are valid is known until the thread's next question.
        const char* tftp[3] = {};
        const char** servers = any_servers();
        if (servers != nullptr) {
            std::copy(servers, servers + 3, tftp);
            servers = tftp;
        }
        return setHeadsetConfigUrl(url_to_give(), url_to_give(), any_url(), servers, any_servers(),
                                   any_text());
    });
    cope_with(!taken);
}

void attach() {
    const std::shared_ptr<AccessoryCache> accessory = any_accessory();
    const bool configured = counted(configure, [&] { return configure_headset(accessory); });
    if (configured && !may_be_configured(accessory.get())) {
        fail("configure_headset answers true for what is neither headset nor camera");
    }
}

void report() {
    if (reports_pace.allows()) {
        counted(inventory, [] { send_inventory(any_accessory()); });
    }
}

void change_setting() {
    static constexpr CONFIG_SETTING_USAGE_ID ids[] = {
        USAGE_SIDETONE, USAGE_EQUALIZER, CONFIG_SETTING_USAGE_ID(0),
        CONFIG_SETTING_USAGE_ID(std::numeric_limits<std::int32_t>::min())};
    static constexpr int values[] = {0, 7, -1, std::numeric_limits<int>::min()};
    if (counted(update, [&] {
            return update_config(any_device_id(), dice().any_of(ids), dice().any_of(values));
        })) {
        fail("update_config answers true");
    }
}

void read_setting() {
    constexpr int ids[] = {32, 34, 35, 36, 39, 41, 77, 0, -1, 2000000000};
    constexpr unsigned int seldom = 50;
    constexpr int untouched = -12345;
    int value = untouched;
    int* const place = dice().one_in(seldom) ? nullptr : &value;
    const auto usage_id = CONFIG_SETTING_USAGE_ID(dice().any_of(ids));
    const bool found =
        counted(retrieve, [&] { return retrieve_config(any_device_id(), usage_id, place); });
    if (found ? value == untouched : value != untouched) {
        fail("retrieve_config answers %d and leaves %d", found, value);
    }
}

void answer_unasked() {
    static constexpr int statuses[] = {200, 200, 200, 404, 503, 0, -1, 204};
    deliver_answer(any_document(), dice().any_of(statuses));
}

void restore() {
    counted(reset, [] { return factory_reset(any_device_id()); });
}

void detach() {
    const bool removed = counted(remove, [] { return remove_peripheral(any_device_id()); });
    cope_with(!removed);
}

void register_callback() {
    // Without a callback for a while, now and then; that also hides lines from the counts.
    constexpr unsigned int seldom = 10;
    const HostLogCallback callback = dice().one_in(seldom) ? nullptr : take_log_line;
    counted(create, [&] { return create_headset_mgmt(callback); });
}

void stop_if_due() {
    if (is_inside_host() || stops_pace.allows()) {
        stop_library();
    }
}

}  // namespace

void call_at_random() {
    struct Choice {
        unsigned int weight;
        void (*call)();
    };
    constexpr unsigned int all = 1000;
    constexpr Choice choices[] = {
        {220, attach},           {150, detach},
        {150, answer_unasked},   {60, restore},
        {150, read_setting},     {80, report},
        {80, give_urls},         {50, change_setting},
        {10, register_callback}, {40, [] { start_library(); }},
        {10, stop_if_due},
    };
    unsigned int chance = dice().below(all);
    for (const Choice& choice : choices) {
        if (chance < choice.weight) {
            choice.call();
            return;
        }
        chance -= choice.weight;
    }
}

void start_or_stop_at_random() {
    constexpr unsigned int choices = 5;
    switch (dice().below(choices)) {
    case 0:
    case 1:
        stop_library();
        break;
    case 2:
    case 3:
        start_library();
        break;
    default:
        register_callback();
        break;
    }
}

void withhold_urls(bool wanted) {
    urls_are_withheld.store(wanted, std::memory_order_relaxed);
}

bool start_library() {
    return counted(start, [] { return start_headset_mgmt(any_text(), any_text(), any_text()); });
}

void stop_library() {
    const Clock::time_point began = Clock::now();
    counted(stop, [] { stop_headset_mgmt(); });
    const Clock::rep took = (Clock::now() - began).count();
    Clock::rep longest_yet = longest.load(std::memory_order_relaxed);
    while (took > longest_yet &&
           !longest.compare_exchange_weak(longest_yet, took, std::memory_order_relaxed)) {
    }
}

bool create_library() {
    return counted(create, [] { return create_headset_mgmt(take_log_line); });
}

void deliver_answer(const char* body, int status) {
    counted(response, [&] { httpResponse(body, status); });
}

void expect_all_turned_away() {
    int value = 1;
    const bool any_true =
        setHeadsetConfigUrl("u", "u", "u", nullptr, nullptr, "u") || configure_headset(probe()) ||
        factory_reset(probe_id) || retrieve_config(probe_id, USAGE_EQUALIZER, &value) ||
        update_config(probe_id, USAGE_EQUALIZER, 1) || remove_peripheral(probe_id);
    send_inventory(probe());
    httpResponse(good_document(), 200);
    if (any_true || value != 1) {
        fail("a function answers true after the stop");
    }
}

std::array<CallCount, 11> call_counts() {
    std::array<CallCount, number_of_functions> counts{};
    for (std::size_t i = 0; i < counts.size(); ++i) {
        counts[i] = {names[i], calls[i], answered_true[i]};
    }
    return counts;
}

std::chrono::milliseconds longest_stop() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::duration(longest));
}

}  // namespace headsetmgmt::stress
