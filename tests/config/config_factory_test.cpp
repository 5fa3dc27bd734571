// SPDX-License-Identifier: Apache-2.0
// Tests of which configuration object an accessory gets.

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "headsetmgmt/config.h"

#include "support/config_bench.h"

namespace headsetmgmt::test_support {
namespace {

struct ConfigDeleter {
    void operator()(config::ConfigInterface* object) const { delete_config(object); }
};
using ConfigOwner = std::unique_ptr<config::ConfigInterface, ConfigDeleter>;

TEST(ConfigFactory, HeadsetGetsAHeadsetsObject) {
    ConfigBench bench;
    bench.accessory.type = HEADSET;
    const ConfigOwner config(create_config("acc-1", &bench.accessory));

    ASSERT_NE(nullptr, config);
    EXPECT_NE(nullptr, dynamic_cast<config::HeadsetConfigImpl*>(config.get()));
    EXPECT_EQ(HEADSET, config->get_type());
    EXPECT_EQ("acc-1", config->get_accessory_id());
    EXPECT_EQ(Lines{}, bench.lines());
}

TEST(ConfigFactory, CameraGetsACamerasObject) {
    ConfigBench bench;
    bench.accessory.type = CAMERA;
    const ConfigOwner config(create_config("cam-1", &bench.accessory));

    ASSERT_NE(nullptr, config);
    EXPECT_NE(nullptr, dynamic_cast<config::CameraConfigImpl*>(config.get()));
    EXPECT_EQ(CAMERA, config->get_type());
}

TEST(ConfigFactory, LinesOfEachObjectBeginWithItsClass) {
    ConfigBench bench;
    bench.accessory.type = HEADSET;
    const ConfigOwner headset(create_config("acc-1", &bench.accessory));
    bench.accessory.type = CAMERA;
    const ConfigOwner camera(create_config("cam-1", &bench.accessory));

    headset->update_from_server("");
    camera->update_from_server("");

    EXPECT_EQ((Lines{
                  "info HeadsetConfigImpl: update_from_server: Nothing to parse",
                  "info CameraConfigImpl: update_from_server: Nothing to parse",
              }),
              bench.lines());
}

TEST(ConfigFactory, UnknownTypeGetsNoObject) {
    ConfigBench bench;
    bench.accessory.type = UNKNOWN;

    EXPECT_EQ(nullptr, create_config("acc-1", &bench.accessory));
    EXPECT_EQ((Lines{"info ConfigFactory: ::create_config: Unknown accessory type"}),
              bench.lines());
    EXPECT_EQ(0U, bench.plugins.mutex_factory.made());
}

TEST(ConfigFactory, EveryOtherTypeGetsNoObject) {
    ConfigBench bench;

    for (const int type : {3, 4, -1, 2147483647}) {
        bench.accessory.type = static_cast<ACCESSORY_TYPE>(type);
        EXPECT_EQ(nullptr, create_config("acc-1", &bench.accessory)) << type;
    }
    EXPECT_EQ(4U, bench.lines().size());
    EXPECT_EQ("info ConfigFactory: ::create_config: Unknown accessory type", bench.lines().back());
    EXPECT_EQ(1, bench.accessory.shared->alive);
}

TEST(ConfigFactory, DeletingNothingDoesNothing) {
    ConfigBench bench;

    delete_config(nullptr);

    EXPECT_EQ(Lines{}, bench.lines());
    EXPECT_EQ(0U, bench.plugins.mutex_factory.deleted());
}

TEST(ConfigFactory, DeletedObjectReleasesItsLocksAndItsAccessory) {
    ConfigBench bench;
    config::ConfigInterface* config = create_config("acc-1", &bench.accessory);
    EXPECT_EQ(2, bench.accessory.shared->alive);

    delete_config(config);

    EXPECT_EQ(1, bench.accessory.shared->alive);
    EXPECT_EQ(2U, bench.plugins.mutex_factory.made());
    EXPECT_EQ(2U, bench.plugins.mutex_factory.deleted());
    EXPECT_EQ(0, bench.locks_held());
}

}  // namespace
}  // namespace headsetmgmt::test_support
