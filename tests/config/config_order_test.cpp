// SPDX-License-Identifier: Apache-2.0
// Tests of the order in which configuration objects and their manager make, use and release what
// they own: a program of its own, which makes and deletes the loggers in the library's place.

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/config_manager.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/mutex.h"
#include "headsetmgmt/plugins.h"

#include "config/config_impl.h"
#include "config/config_manager_impl.h"
#include "support/config_bench.h"
#include "support/fake_config.h"

namespace {

std::vector<std::string> steps;
std::map<headsetmgmt::log::Logger*, std::string> logger_names;

}  // namespace

headsetmgmt::log::Logger* create_logger(headsetmgmt::log::HostLogInterface* host,
                                        const std::string& name, bool enabled) {
    steps.push_back("make logger \"" + name + "\"");
    auto logger = std::make_unique<headsetmgmt::log::Logger>(host, name, enabled);
    logger_names[logger.get()] = name;
    return logger.release();
}

void delete_logger(headsetmgmt::log::Logger* logger) {
    steps.push_back("delete logger \"" + logger_names.at(logger) + "\"");
    logger_names.erase(logger);
    delete logger;
}

namespace headsetmgmt::test_support {
namespace {

using config::ConfigImpl;
using config::ConfigInterface;
using Steps = std::vector<std::string>;

/// The steps since the last call.
Steps take_steps() {
    return std::exchange(steps, {});
}

/// Numbers its mutexes in the order of their making. They lock nothing: there is one thread.
class RecordingMutexFactory : public MutexFactoryInterface {
public:
    /// What is added to the step of each lock and unlock.
    std::function<std::string()> remark = [] { return std::string(); };

    MutexInterface* create_mutex(bool recursive) override {
        ++made;
        steps.push_back((recursive ? "make recursive mutex " : "make plain mutex ") +
                        std::to_string(made));
        return new RecordingMutex(*this, made);
    }
    void delete_mutex(MutexInterface* mutex) override {
        steps.push_back("delete mutex " + dynamic_cast<RecordingMutex&>(*mutex).number);
        delete mutex;
    }

private:
    struct RecordingMutex : MutexInterface {
        RecordingMutex(RecordingMutexFactory& maker, int mutex_number)
            : factory(maker), number(std::to_string(mutex_number)) {}

        bool lock() override {
            steps.push_back("lock mutex " + number + factory.remark());
            return true;
        }
        void unlock() override { steps.push_back("unlock mutex " + number + factory.remark()); }

        RecordingMutexFactory& factory;
        std::string number;
    };

    int made = 0;
};

/// Records the clones that are made of it and of its clones, and their ends.
class RecordingAccessory : public FakeAccessory {
public:
    RecordingAccessory() = default;
    ~RecordingAccessory() override { steps.push_back("delete accessory"); }

    ACCESSORY_TYPE get_type() const override {
        steps.push_back("ask for the type");
        return FakeAccessory::get_type();
    }
    AccessoryInfoInterface* clone() const override {
        steps.push_back("clone accessory");
        return new RecordingAccessory(*this);
    }

private:
    RecordingAccessory(const RecordingAccessory&) = default;
};

/// Records the objects' ends.
class RecordingConfig : public FakeConfig {
public:
    using FakeConfig::FakeConfig;
    ~RecordingConfig() override { steps.push_back("delete object " + get_accessory_id()); }
};

/// The plug-in record with a mutex factory that records.
struct OrderBench {
    OrderBench() {
        plugins.record.mutex_factory = &mutex_factory;
        init(plugins.record);
        take_steps();
    }

    FakePlugins plugins;
    RecordingMutexFactory mutex_factory;
    RecordingAccessory accessory;
};

/// The steps of storing a setting and of noting a candidate version.
Steps steps_under_locks(ConfigImpl& config) {
    take_steps();
    config.set_map_entry(32, ConfigParam{32, "volume", "7", "User"});
    config.upgrade_firmware("1-0", "k20.bin", "1-0");
    return take_steps();
}

TEST(ConfigOrder, ObjectMakesItsLoggerThenItsLocksThenItsCloneOfTheAccessory) {
    OrderBench bench;

    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ((Steps{"make logger \"HeadsetConfigImpl\"", "make plain mutex 1",
                     "make plain mutex 2", "clone accessory"}),
              take_steps());
    EXPECT_EQ((Steps{"lock mutex 1", "unlock mutex 1", "lock mutex 2", "unlock mutex 2"}),
              steps_under_locks(config));
}

TEST(ConfigOrder, CopyMakesItsNamelessLoggerBetweenItsSettingsLockAndItsAccessory) {
    OrderBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    take_steps();

    const std::unique_ptr<ConfigInterface> copy(config.clone());

    EXPECT_EQ(
        (Steps{"make plain mutex 3", "make logger \"\"", "clone accessory", "make plain mutex 4"}),
        take_steps());
    EXPECT_EQ((Steps{"lock mutex 3", "unlock mutex 3", "lock mutex 4", "unlock mutex 4"}),
              steps_under_locks(dynamic_cast<ConfigImpl&>(*copy)));
}

TEST(ConfigOrder, EndClearsTheSettingsUnderTheirLockAndReleasesThatLockLast) {
    OrderBench bench;
    auto config = std::make_unique<OpenConfig>("acc-1", &bench.accessory);
    config->set_map_entry(32, ConfigParam{32, "volume", "7", "User"});
    bench.mutex_factory.remark = [&settings = config->settings] {
        return ", settings: " + std::to_string(settings.size());
    };
    take_steps();

    config.reset();

    EXPECT_EQ((Steps{"lock mutex 1, settings: 1", "unlock mutex 1, settings: 0", "delete accessory",
                     "delete logger \"HeadsetConfigImpl\"", "delete mutex 2", "delete mutex 1"}),
              take_steps());
}

/// Records the time that the object has when its retries are set.
class RetryWatcher : public OpenConfig {
public:
    using OpenConfig::OpenConfig;

    void set_config_retries(int retries) override {
        steps.push_back("set retries " + std::to_string(retries) + " at time " +
                        std::to_string(static_cast<int>(last_updated_time)));
        OpenConfig::set_config_retries(retries);
    }
};

TEST(ConfigOrder, UpdateResetsTimeThenRetriesAndClonesBeforeItDeletes) {
    OrderBench bench;
    RetryWatcher config("acc-1", &bench.accessory);
    config.last_updated_time = 1700.0;
    take_steps();

    config.update(&bench.accessory);

    EXPECT_EQ((Steps{"set retries 0 at time 0", "clone accessory", "delete accessory"}),
              take_steps());
}

TEST(ConfigOrder, FactoryKeepsItsLoggerUntilTheObjectIsMade) {
    OrderBench bench;

    ConfigInterface* config = create_config("acc-1", &bench.accessory);

    EXPECT_EQ((Steps{"make logger \"ConfigFactory\"", "ask for the type",
                     "make logger \"HeadsetConfigImpl\"", "make plain mutex 1",
                     "make plain mutex 2", "clone accessory", "delete logger \"ConfigFactory\""}),
              take_steps());
    delete_config(config);
}

TEST(ConfigOrder, FactoryReleasesItsLoggerWhenItMakesNothing) {
    OrderBench bench;
    bench.accessory.type = UNKNOWN;

    EXPECT_EQ(nullptr, create_config("acc-1", &bench.accessory));

    EXPECT_EQ((Steps{"make logger \"ConfigFactory\"", "ask for the type",
                     "delete logger \"ConfigFactory\""}),
              take_steps());
}

TEST(ManagerOrder, ManagerMakesItsLoggerThenTheRegistrysLockThenTheFlags) {
    OrderBench bench;

    config::ConfigManagerImpl* manager = config::ConfigManagerImpl::get_instance();
    EXPECT_EQ((Steps{"make logger \"Lib::ConfigManagerImpl\"", "make recursive mutex 1",
                     "make plain mutex 2"}),
              take_steps());

    manager->set_configure_accessory_pending(true);
    EXPECT_EQ((Steps{"lock mutex 2", "unlock mutex 2"}), take_steps());
    config::delete_config_manager();
}

TEST(ManagerOrder, ManagerDeletesItsObjectsUnderTheRegistrysLockThenBothLocksThenItsLogger) {
    OrderBench bench;
    config::ConfigManagerImpl* manager = config::ConfigManagerImpl::get_instance();
    const FakeAccessory headset;
    manager->add_config_object("acc-1", new RecordingConfig("acc-1", &headset));
    manager->add_config_object("acc-2", new RecordingConfig("acc-2", &headset));
    take_steps();

    config::delete_config_manager();

    EXPECT_EQ(
        (Steps{"lock mutex 1", "delete object acc-1", "delete object acc-2", "unlock mutex 1",
               "delete mutex 1", "delete mutex 2", "delete logger \"Lib::ConfigManagerImpl\""}),
        take_steps());
}

}  // namespace
}  // namespace headsetmgmt::test_support
