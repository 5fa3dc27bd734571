// SPDX-License-Identifier: Apache-2.0
// Calls from many threads at once, in a seeded order, with a host that calls back in.

#include <atomic>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/phone_host.h"

namespace headsetmgmt::test_support {
namespace {

constexpr unsigned int thread_count = 8;
constexpr int calls_of_a_thread = 150;

void call_at_random(std::minstd_rand& random) {
    const std::string id = "headset-" + std::to_string(random() % 4);
    int value = 0;
    switch (random() % 9) {
    case 0:
    case 1:
        configure_headset(shared(headset_named(id)));
        break;
    case 2:
        remove_peripheral(id.c_str());
        break;
    case 3:
    case 4:
        httpResponse(document_with_sidetone, 200);
        break;
    case 5:
        httpResponse("", 404);
        break;
    case 6:
        set_urls();
        break;
    case 7:
        send_inventory(shared(headset_named(id)));
        break;
    default:
        factory_reset(id.c_str());
        retrieve_config(id.c_str(), USAGE_SIDETONE, &value);
        break;
    }
}

/// Answers from inside the request, and changes what is attached while settings arrive.
HostBehaviour host_that_calls_back_in(std::atomic<unsigned int>& calls) {
    HostBehaviour behaviour = usual_behaviour();
    behaviour.on_http_request = [&calls](const HttpRequestCall& call) {
        if (call.type == HTTP_REQUEST_GET) {
            ++calls % 3 == 0 ? httpResponse("", 500) : httpResponse(document_with_sidetone, 200);
        }
    };
    behaviour.on_apply_changes = [&calls](const ApplyChangesCall& call) {
        switch (++calls % 4) {
        case 0:
            remove_peripheral(call.device_id.c_str());
            break;
        case 1:
            configure_headset(shared(headset_named(call.device_id)));
            break;
        default:
            break;
        }
    };
    return behaviour;
}

/// Runs `body(thread's number)` on all threads.
template <typename Body>
void on_all_threads(Body body) {
    std::vector<std::thread> threads;
    for (unsigned int number = 0; number < thread_count; ++number) {
        threads.emplace_back(body, number);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(ConcurrentCallsTest, EightThreadsCallAtRandom) {
    std::atomic<unsigned int> host_calls{0};
    PhoneHost host;
    host.start_up();
    create_headset_mgmt(nullptr);
    fake_host().behave(host_that_calls_back_in(host_calls));
    host.release_worker();

    on_all_threads([](unsigned int number) {
        std::minstd_rand random(number + 1);
        for (int i = 0; i < calls_of_a_thread; ++i) {
            call_at_random(random);
        }
    });

    EXPECT_GT(host_calls, 0U);
    fake_host().behave(usual_behaviour());
    EXPECT_TRUE(configure_headset(shared(headset_1())));
    EXPECT_TRUE(factory_reset("headset-1"));
}

TEST(ConcurrentCallsTest, OneOfEightThreadsStopsAndStarts) {
    std::atomic<unsigned int> host_calls{0};
    PhoneHost host;
    host.start_up();
    create_headset_mgmt(nullptr);
    fake_host().behave(host_that_calls_back_in(host_calls));
    host.release_worker();

    on_all_threads([](unsigned int number) {
        std::minstd_rand random(number + 1);
        for (int i = 0; i < calls_of_a_thread; ++i) {
            if (number == 0 && i % 10 == 0) {
                stop_headset_mgmt();
                EXPECT_TRUE(start_headset_mgmt("", "", ""));
            }
            call_at_random(random);
        }
    });

    fake_host().behave(usual_behaviour());
    EXPECT_TRUE(set_urls());
    EXPECT_TRUE(configure_headset(shared(headset_1())));
}

TEST(ConcurrentCallsTest, StartsAndStopsOfAllThreadsLeaveOneState) {
    PhoneHost host;
    host.start_up();
    create_headset_mgmt(nullptr);
    host.release_worker();

    on_all_threads([](unsigned int number) {
        for (int i = 0; i < 20; ++i) {
            if (number % 2 == 0) {
                stop_headset_mgmt();
            } else {
                start_headset_mgmt("", "", "");
            }
        }
    });

    stop_headset_mgmt();
    EXPECT_FALSE(set_urls());
    EXPECT_TRUE(start_headset_mgmt("", "", ""));
    EXPECT_TRUE(set_urls());
}

}  // namespace
}  // namespace headsetmgmt::test_support
