// SPDX-License-Identifier: Apache-2.0
// Tests of a configuration object's making, copying, accessors, new facts and reset.

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/config.h"

#include "config/config_impl.h"
#include "support/config_bench.h"

namespace headsetmgmt::test_support {
namespace {

using config::ConfigImpl;
using config::ConfigInterface;

std::unique_ptr<ConfigInterface> clone_of(ConfigInterface& object) {
    return std::unique_ptr<ConfigInterface>(object.clone());
}

TEST(ConfigObject, BeginsEmptyAtTimeZeroWithoutRetries) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ("acc-1", config.get_accessory_id());
    EXPECT_EQ(Settings{}, settings_of(config));
    EXPECT_EQ("", config.current_model);
    EXPECT_EQ(0.0, config.last_updated_time);
    EXPECT_EQ("", config.pending_firmware);
    EXPECT_EQ("HeadsetConfigImpl", config.logger_name);
    EXPECT_EQ(0, config.get_config_retries());
    EXPECT_EQ(Lines{}, bench.lines());
}

TEST(ConfigObject, TypeIsItsClasssWhateverTheAccessorySays) {
    ConfigBench bench;
    bench.accessory.type = UNKNOWN;
    const config::HeadsetConfigImpl headset("acc-1", &bench.accessory);
    const config::CameraConfigImpl camera("cam-1", &bench.accessory);

    EXPECT_EQ(1, static_cast<int>(headset.get_type()));
    EXPECT_EQ(2, static_cast<int>(camera.get_type()));
}

TEST(ConfigObject, MakesTwoLocksThatAreNotRecursive) {
    ConfigBench bench;
    const OpenConfig config("acc-1", &bench.accessory);

    EXPECT_EQ((std::vector<bool>{false, false}), bench.plugins.mutex_factory.recursive_choices());
}

TEST(ConfigObject, KeepsAnAccessoryOfItsOwn) {
    ConfigBench bench;
    bench.accessory.software_version = "1-2-3";
    OpenConfig config("acc-1", &bench.accessory);

    bench.accessory.software_version = "9-9-9";

    EXPECT_NE(&bench.accessory, config.get_accessory());
    EXPECT_EQ("1-2-3", config.get_firmware_version());
}

TEST(ConfigObject, RetriesAreWhatWasSet) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    config.set_config_retries(3);

    EXPECT_EQ(3, config.get_config_retries());
}

TEST(ConfigObject, UpgradeRequestIsPassedToTheHostUnchanged) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    config.request_upgrade("1-2-4", "k20.bin");

    EXPECT_EQ((Calls{R"(request_upgrade("acc-1", "1-2-4", "k20.bin"))"}), bench.driver_calls());
    EXPECT_EQ(Lines{}, bench.lines());
}

TEST(ConfigObject, FailureToMakeTheSecondLockLeavesNothingBehind) {
    ConfigBench bench;
    bench.plugins.mutex_factory.throw_at_create(2);

    EXPECT_THROW(OpenConfig("acc-1", &bench.accessory), std::runtime_error);
    EXPECT_EQ(1U, bench.plugins.mutex_factory.made());
    EXPECT_EQ(1U, bench.plugins.mutex_factory.deleted());
    EXPECT_EQ(1, bench.accessory.shared->alive);
}

TEST(ConfigReset, SendsEverySettingAndIsLogged) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(7, ConfigParam{7, "seven", "70", "User"});

    EXPECT_TRUE(config.reset_config());
    EXPECT_EQ((Lines{
                  "info HeadsetConfigImpl: reset_config: Resetting config",
                  "notice HeadsetConfigImpl: apply_config_to_device: Apply type: RESET",
                  "debug HeadsetConfigImpl: apply_config_to_device: seven : (usage id: 7 , value: "
                  "70)",
              }),
              bench.lines());
    EXPECT_EQ((Calls{R"(apply_config_to_device("acc-1", "seven", 7, "70"))"}),
              bench.driver_calls());
}

TEST(ConfigReset, SucceedsEvenWithoutSettings) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_TRUE(config.reset_config());
    EXPECT_EQ((Lines{
                  "info HeadsetConfigImpl: reset_config: Resetting config",
                  "error HeadsetConfigImpl: apply_config_to_device: No config settings found to "
                  "apply to device",
              }),
              bench.lines());
}

TEST(ConfigUpdate, ForgetsTimeAndRetriesAndKeepsTheSettings) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    OpenConfig config("acc-1", &bench.accessory);
    config.update_from_server(R"({"templateConfiguration": {"updatedTime": 1700,
        "commonSettings": [{"name": "a", "usageId": 1, "value": 1, "access": "Admin"}]}})");
    config.set_config_retries(2);

    EXPECT_TRUE(config.update(&bench.accessory));
    EXPECT_EQ(0.0, config.last_updated_time);
    EXPECT_EQ(0, config.get_config_retries());
    EXPECT_EQ((Settings{"1 a=1 (Admin)"}), settings_of(config));
    EXPECT_EQ("Varos K20", config.current_model);
}

TEST(ConfigUpdate, TakesTheNewFactsAndDropsTheOld) {
    ConfigBench bench;
    bench.accessory.software_version = "1-0";
    OpenConfig config("acc-1", &bench.accessory);
    FakeAccessory newer;
    newer.software_version = "2-0";

    config.update(&newer);

    EXPECT_EQ("2-0", config.get_firmware_version());
    EXPECT_EQ(1, bench.accessory.shared->alive);
    EXPECT_EQ(2, newer.shared->alive);
}

TEST(ConfigUpdate, KeepsClassLoggerAndLocks) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    FakeAccessory camera(CAMERA);

    config.update(&camera);
    config.update_from_server("");

    EXPECT_EQ(HEADSET, config.get_type());
    EXPECT_EQ(CAMERA, config.get_accessory()->get_type());
    EXPECT_EQ("acc-1", config.get_accessory_id());
    EXPECT_EQ((Lines{"info HeadsetConfigImpl: update_from_server: Nothing to parse"}),
              bench.lines());
    EXPECT_EQ(2U, bench.plugins.mutex_factory.made());
}

TEST(ConfigUpdate, TakesTheObjectsOwnAccessory) {
    ConfigBench bench;
    bench.accessory.software_version = "1-0";
    OpenConfig config("acc-1", &bench.accessory);

    EXPECT_TRUE(config.update(config.get_accessory()));
    EXPECT_EQ("1-0", config.get_firmware_version());
    EXPECT_EQ(2, bench.accessory.shared->alive);
}

TEST(ConfigUpdate, OldFactsStayWhenTheNewOnesCannotBeCloned) {
    ConfigBench bench;
    bench.accessory.software_version = "1-0";
    OpenConfig config("acc-1", &bench.accessory);
    FakeAccessory newer;
    newer.throw_at_clone(1);

    EXPECT_THROW(config.update(&newer), std::runtime_error);
    EXPECT_EQ("1-0", config.get_firmware_version());
}

/// Records the retry counts that are set through the interface.
class RetryRecorder : public OpenConfig {
public:
    using OpenConfig::OpenConfig;

    void set_config_retries(int retries) override { set.push_back(retries); }

    std::vector<int> set;
};

TEST(ConfigUpdate, ForgetsRetriesThroughTheInterface) {
    ConfigBench bench;
    RetryRecorder config("acc-1", &bench.accessory);

    config.update(&bench.accessory);

    EXPECT_EQ((std::vector<int>{0}), config.set);
}

TEST(ConfigClone, HoldsTheSameValues) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.set_map_entry(7, ConfigParam{7, "seven", "70", "User"});
    config.set_map_entry(5, ConfigParam{5, "five", "50", "Admin"});
    config.current_model = "Varos K20";
    config.last_updated_time = 123.5;
    config.pending_firmware = "1-2-4";
    config.set_config_retries(2);

    const std::unique_ptr<ConfigInterface> clone = clone_of(config);

    EXPECT_EQ((Settings{"5 five=50 (Admin)", "7 seven=70 (User)"}), settings_of(*clone));
    EXPECT_EQ("acc-1", clone->get_accessory_id());
    EXPECT_EQ(2, clone->get_config_retries());
    EXPECT_FALSE(clone->is_config_required("x-123.5"));
}

/// A copy whose members are open, which `clone` makes in its own class.
class OpenCopy : public ConfigImpl {
public:
    explicit OpenCopy(const OpenConfig& other) : ConfigImpl(other) {}

    using ConfigImpl::current_model;
    using ConfigImpl::last_updated_time;
    using ConfigImpl::logger_name;
    using ConfigImpl::pending_firmware;
};

TEST(ConfigClone, KeepsModelTimeCandidateAndTheNameItDoesNotLogWith) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    config.current_model = "Varos K20";
    config.last_updated_time = 123.5;
    config.pending_firmware = "1-2-4";

    const OpenCopy copy(config);

    EXPECT_EQ("Varos K20", copy.current_model);
    EXPECT_EQ(123.5, copy.last_updated_time);
    EXPECT_EQ("1-2-4", copy.pending_firmware);
    EXPECT_EQ("HeadsetConfigImpl", copy.logger_name);
}

TEST(ConfigClone, LinesBeginWithNoName) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const std::unique_ptr<ConfigInterface> clone = clone_of(config);
    const std::unique_ptr<ConfigInterface> clone_of_clone = clone_of(*clone);

    clone->update_from_server("");
    clone_of_clone->update_from_server("");
    config.update_from_server("");

    EXPECT_EQ((Lines{
                  "info : update_from_server: Nothing to parse",
                  "info : update_from_server: Nothing to parse",
                  "info HeadsetConfigImpl: update_from_server: Nothing to parse",
              }),
              bench.lines());
}

TEST(ConfigClone, IsAPlainObjectOfTheSameType) {
    ConfigBench bench;
    config::HeadsetConfigImpl headset("acc-1", &bench.accessory);
    config::CameraConfigImpl camera("cam-1", &bench.accessory);

    const std::unique_ptr<ConfigInterface> headset_clone = clone_of(headset);
    const std::unique_ptr<ConfigInterface> camera_clone = clone_of(camera);

    EXPECT_EQ(1, static_cast<int>(headset_clone->get_type()));
    EXPECT_EQ(2, static_cast<int>(camera_clone->get_type()));
    EXPECT_NE(nullptr, dynamic_cast<ConfigImpl*>(headset_clone.get()));
    EXPECT_EQ(nullptr, dynamic_cast<config::HeadsetConfigImpl*>(headset_clone.get()));
    EXPECT_EQ(nullptr, dynamic_cast<config::CameraConfigImpl*>(camera_clone.get()));
}

TEST(ConfigClone, OwnsItsAccessoryAndTwoLocks) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);

    std::unique_ptr<ConfigInterface> clone = clone_of(config);
    EXPECT_NE(config.get_accessory(), clone->get_accessory());
    EXPECT_EQ(3, bench.accessory.shared->alive);
    EXPECT_EQ((std::vector<bool>{false, false, false, false}),
              bench.plugins.mutex_factory.recursive_choices());

    clone.reset();
    EXPECT_EQ(2, bench.accessory.shared->alive);
    EXPECT_EQ(2U, bench.plugins.mutex_factory.deleted());
}

TEST(ConfigClone, LaterChangesDoNotReachTheOther) {
    ConfigBench bench;
    OpenConfig config("acc-1", &bench.accessory);
    const std::unique_ptr<ConfigInterface> clone = clone_of(config);

    config.update_from_host("volume", 32, "1");
    clone->update_from_host("gain", 33, "2");
    clone->set_config_retries(5);

    EXPECT_EQ((Settings{"32 volume=1 ()"}), settings_of(config));
    EXPECT_EQ((Settings{"33 gain=2 ()"}), settings_of(*clone));
    EXPECT_EQ(0, config.get_config_retries());
}

TEST(ConfigClone, OutlivesItsOriginal) {
    ConfigBench bench;
    bench.accessory.model = "Varos K20";
    auto config = std::make_unique<OpenConfig>("acc-1", &bench.accessory);
    config->update_from_host("volume", 32, "1");
    const std::unique_ptr<ConfigInterface> clone = clone_of(*config);

    config.reset();

    EXPECT_TRUE(clone->reset_config());
    EXPECT_EQ((Calls{R"(apply_config_to_device("acc-1", "volume", 32, "1"))"}),
              bench.driver_calls());
}

}  // namespace
}  // namespace headsetmgmt::test_support
