// SPDX-License-Identifier: Apache-2.0
// Tests of several threads at one manager.

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "config/config_manager_impl.h"
#include "support/manager_bench.h"

namespace headsetmgmt::test_support {
namespace {

constexpr char document[] = R"({"templateConfiguration": {
    "commonSettings": [
        {"name": "Sidetone", "usageId": 34, "value": "3", "access": "Admin"}],
    "modelSpecificSettings": [{"models": ["K30"], "modelFirmware": [{
        "firmwareName": "LATEST"}]}]}})";

TEST(ConfigManagerThreads, AttachRemoveAskAndAnswerAtOnce) {
    constexpr int rounds = 300;
    ManagerBench bench;
    bench.headset.model = "Varos K30";
    bench.answer_with(REQUEST_DONE, document);
    config::ConfigManagerImpl& manager = bench.manager();
    std::atomic<int> hosts = 3;

    const auto come_and_go = [&](const std::string& id) {
        for (int round = 0; round < rounds; ++round) {
            manager.initialize_accessory(id, &bench.headset);
            manager.update_config_from_host(id, "Sidetone", 34, "4");
            manager.retrieve_config("shared", 34);
            manager.reset_to_admin_defaults("shared");
            manager.remove_accessory(round % 2 == 0 ? id : "shared");
        }
        --hosts;
    };
    const auto answer = [&] {
        for (int round = 0; round < rounds; ++round) {
            std::string late = document;
            manager.on_fetch_config_success(late);
            manager.initialize_accessory("shared", &bench.headset);
            manager.on_fetch_config_failure(500);
        }
        --hosts;
    };
    std::vector<std::thread> threads;
    threads.emplace_back(come_and_go, "a");
    threads.emplace_back(come_and_go, "b");
    threads.emplace_back(answer);
    threads.emplace_back([&] {
        while (hosts > 0) {
            if (!bench.plugins.executor.run_next()) {
                std::this_thread::yield();
            }
        }
    });
    for (std::thread& thread : threads) {
        thread.join();
    }

    while (bench.run_tasks() > 0) {
    }
    bench.attach("new");
    bench.run_tasks();
    EXPECT_EQ("Sidetone", manager.retrieve_config("new", 34));
    for (const char* id : {"a", "b", "shared", "new"}) {
        manager.remove_accessory(id);
    }
    EXPECT_EQ(1, bench.headset.shared->alive);
    EXPECT_EQ(0, bench.plugins.mutex_factory.held());
}

TEST(ConfigManagerThreads, AnAttachWhileTheRunEndsIsServedByThatRunOrByTheNext) {
    for (int round = 0; round < 300; ++round) {
        ManagerBench bench;
        bench.headset.model = "Varos K30";
        bench.answer_with(REQUEST_PENDING, "");
        config::ConfigManagerImpl& manager = bench.manager();
        bench.attach("a");
        bench.run_tasks();

        std::thread host([&] { manager.initialize_accessory("b", &bench.headset); });
        bench.succeed(document);
        host.join();

        bench.answer_with(REQUEST_DONE, document);
        bench.run_tasks();
        ASSERT_EQ("Sidetone", manager.retrieve_config("b", 34)) << "in round " << round;
        ASSERT_FALSE(manager.is_configure_accessory_pending());
    }
}

TEST(ConfigManagerThreads, NobodySeesARunThatHasEndedButForItsPendingSet) {
    ManagerBench bench;
    config::ConfigManagerImpl& manager = bench.manager();
    bench.attach("a");
    bench.answer_with(REQUEST_REFUSED, "");
    bool looking = false;
    int looks = 0;
    bench.plugins.mutex_factory.on_unlock = [&] {
        if (looking || bench.plugins.mutex_factory.held_by_this_thread() != 0) {
            return;
        }
        looking = true;
        ++looks;
        EXPECT_EQ(manager.is_configure_accessory_pending(),
                  manager.get_number_of_pending_configs() != 0);
        looking = false;
    };

    bench.run_tasks();

    EXPECT_FALSE(manager.is_configure_accessory_pending());
    EXPECT_LT(0, looks);
    bench.plugins.mutex_factory.on_unlock = nullptr;
}

TEST(ConfigManagerThreads, RegistryAndRunMayBeAskedForWhileAccessoriesComeAndGo) {
    ManagerBench bench;
    config::ConfigManagerImpl& manager = bench.manager();
    std::atomic<bool> asked = false;
    std::atomic<bool> done = false;
    std::thread asking([&] {
        while (!done) {
            manager.is_configure_accessory_pending();
            EXPECT_EQ(manager.get_config_object("nobody"), nullptr);
            asked = true;
        }
    });

    for (int round = 0; round < 100 || !asked; ++round) {
        bench.attach("a");
        manager.remove_accessory("a");
        bench.plugins.executor.drop_all();
    }

    done = true;
    asking.join();
    EXPECT_EQ(0u, manager.get_number_of_configs());
    EXPECT_FALSE(manager.is_configure_accessory_pending());
}

TEST(ConfigManagerThreads, TheWorkerHoldsNoLockWhileItRequests) {
    ManagerBench bench;
    bench.answer_with(REQUEST_PENDING, "");
    bench.attach("a");
    int held = -1;
    bench.plugins.dispatcher.hook = [&](const DispatchedRequest& /*request*/) {
        held = bench.plugins.mutex_factory.held_by_this_thread();
    };

    bench.run_tasks();

    EXPECT_EQ(0, held);
}

TEST(ConfigManagerThreads, AnAccessoryMayLeaveWhileTheWorkerRequests) {
    ManagerBench bench;
    bench.answer_with(REQUEST_DONE, document);
    bench.attach("a");
    bench.plugins.dispatcher.hook = [&](const DispatchedRequest& /*request*/) {
        std::thread([&] { bench.manager().remove_accessory("a"); }).join();
    };

    bench.run_tasks();

    EXPECT_EQ(0u, bench.manager().get_number_of_configs());
    EXPECT_EQ(1, bench.headset.shared->alive);
    EXPECT_TRUE(bench.plugins.log.contains(
        "Lib::ConfigManagerImpl: on_fetch_config_success: no configuration in progress, dropping "
        "data"));
}

}  // namespace
}  // namespace headsetmgmt::test_support
