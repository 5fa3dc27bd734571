// SPDX-License-Identifier: Apache-2.0
// The marketed model of a headset, and whether it is the maker's.

#include <string>

#include <gtest/gtest.h>

#include "headsetmgmt/utilities.h"

#include "support/fake_accessory.h"
#include "support/fake_plugins.h"

using headsetmgmt::test_support::FakeAccessory;
using headsetmgmt::test_support::FakePlugins;

namespace {

/// Notes whether its serial number was read.
class WatchedAccessory : public FakeAccessory {
public:
    std::string get_serial_number(headsetmgmt::SystemInfoInterface* system_info) override {
        serial_number_was_read = true;
        return FakeAccessory::get_serial_number(system_info);
    }
    bool serial_number_was_read = false;
};

TEST(HeadsetModelTest, FourAtTheEighthPlaceMakesAK20) {
    EXPECT_EQ(get_headset_model("Varos K30", "ABCDEFG4"), "Varos K20");
    EXPECT_EQ(get_headset_model("Varos K30", "ABCDEFG4XYZ"), "Varos K20");
}

TEST(HeadsetModelTest, AnotherCharacterAtTheEighthPlaceLeavesAK30) {
    EXPECT_EQ(get_headset_model("Varos K30", "ABCDEFG3"), "Varos K30");
    EXPECT_EQ(get_headset_model("Varos K30", "ABCDEFGH"), "Varos K30");
}

TEST(HeadsetModelTest, FourAtAnotherPlaceLeavesAK30) {
    EXPECT_EQ(get_headset_model("Varos K30", "ABCDEF4H"), "Varos K30");
    EXPECT_EQ(get_headset_model("Varos K30", "ABCDEFGH4"), "Varos K30");
}

TEST(HeadsetModelTest, SerialNumberOfSevenCharactersLeavesAK30) {
    EXPECT_EQ(get_headset_model("Varos K30", "ABCDEFG"), "Varos K30");
    EXPECT_EQ(get_headset_model("Varos K30", "4444444"), "Varos K30");
}

TEST(HeadsetModelTest, EmptySerialNumberLeavesAK30) {
    EXPECT_EQ(get_headset_model("Varos K30", ""), "Varos K30");
}

TEST(HeadsetModelTest, ReportedK20StaysWhateverTheSerialNumber) {
    EXPECT_EQ(get_headset_model("Varos K20", "ABCDEFG4"), "Varos K20");
    EXPECT_EQ(get_headset_model("Varos K20", "ABCDEFG3"), "Varos K20");
}

TEST(HeadsetModelTest, EveryOtherModelStaysAsItIs) {
    EXPECT_EQ(get_headset_model("Other", "ABCDEFG4"), "Other");
    EXPECT_EQ(get_headset_model("varos k30", "ABCDEFG4"), "varos k30");
    EXPECT_EQ(get_headset_model("Varos K30 ", "ABCDEFG4"), "Varos K30 ");
    EXPECT_EQ(get_headset_model("", "ABCDEFG4"), "");
}

TEST(HeadsetModelTest, NoAccessoryHasNoModel) {
    EXPECT_EQ(get_headset_model(nullptr), "");
}

TEST(HeadsetModelTest, AccessorysSerialNumberDecides) {
    const FakePlugins plugins;
    FakeAccessory accessory;
    accessory.model = "Varos K30";
    accessory.serial_number = "ABCDEFG4";

    EXPECT_EQ(get_headset_model(&accessory), "Varos K20");
    accessory.serial_number = "ABCDEFG5";
    EXPECT_EQ(get_headset_model(&accessory), "Varos K30");
    accessory.serial_number = "ABCDEFG";
    EXPECT_EQ(get_headset_model(&accessory), "Varos K30");
}

TEST(HeadsetModelTest, SerialNumberIsAskedWithTheRecordsSystemInformation) {
    FakePlugins plugins;
    FakeAccessory accessory;
    accessory.model = "Varos K30";

    get_headset_model(&accessory);

    EXPECT_EQ(accessory.asked_with, &plugins.system_info);
}

TEST(HeadsetModelTest, SerialNumberOfAK30IsRead) {
    const FakePlugins plugins;
    WatchedAccessory accessory;
    accessory.model = "Varos K30";

    get_headset_model(&accessory);

    EXPECT_TRUE(accessory.serial_number_was_read);
}

TEST(HeadsetModelTest, SerialNumberOfAnotherModelIsNotRead) {
    const FakePlugins plugins;
    WatchedAccessory accessory;
    accessory.model = "Varos K20";
    accessory.serial_number = "ABCDEFG4";

    EXPECT_EQ(get_headset_model(&accessory), "Varos K20");

    EXPECT_FALSE(accessory.serial_number_was_read);
}

TEST(HeadsetModelTest, MakersHeadsetIsRecognisedByItsVendorId) {
    FakeAccessory accessory;

    accessory.varos_vid = true;
    EXPECT_TRUE(isVarosHeadset(&accessory));
    accessory.varos_vid = false;
    EXPECT_FALSE(isVarosHeadset(&accessory));
}

TEST(HeadsetModelTest, VendorNameDoesNotMakeAMakersHeadset) {
    FakeAccessory accessory;
    accessory.vendor = "Varos";
    accessory.model = "Varos K30";
    accessory.varos_vid = false;

    EXPECT_FALSE(isVarosHeadset(&accessory));
}

}  // namespace
