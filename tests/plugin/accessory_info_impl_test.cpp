// SPDX-License-Identifier: Apache-2.0
// The phone's record of an accessory: what it keeps of the host's record, and what it answers.

#include <locale>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "plugin/accessory_info_impl.h"

using headsetmgmt::ACCESSORY_TYPE;
using headsetmgmt::AccessoryInfoImpl;
using headsetmgmt::AccessoryInfoInterface;
using headsetmgmt::to_accessory_info;

namespace {

using namespace std::string_literals;

/// A headset with each fact different from every other.
AccessoryInfoImpl some_headset() {
    return AccessoryInfoImpl(headsetmgmt::HEADSET, "id-1", "vendor-1", "serial-1", "model-1",
                             "sw-1", "hw-1", "dock-serial-1", "dock-model-1", "dongle-serial-1",
                             "dongle-model-1", "dongle-version-1", 4660);
}

AccessoryInfoImpl headset_with_firmware(const std::string& model, const std::string& software) {
    return AccessoryInfoImpl(headsetmgmt::HEADSET, "id", "", "", model, software, "", "", "", "",
                             "", "", 0);
}

AccessoryInfoImpl headset_of_vendor(int vendor_id) {
    return AccessoryInfoImpl(headsetmgmt::HEADSET, "id", "", "", "", "", "", "", "", "", "", "",
                             vendor_id);
}

AccessoryInfoImpl accessory_of_type(int type) {
    return AccessoryInfoImpl(static_cast<ACCESSORY_TYPE>(type), "id", "", "", "", "", "", "", "",
                             "", "", "", 0);
}

TEST(AccessoryInfoImplTest, EachFactIsAnsweredByItsGetter) {
    AccessoryInfoImpl info = some_headset();

    EXPECT_EQ(info.get_type(), headsetmgmt::HEADSET);
    EXPECT_EQ(info.device_id(), "id-1");
    EXPECT_EQ(info.get_vendor(nullptr), "vendor-1");
    EXPECT_EQ(info.get_serial_number(nullptr), "serial-1");
    EXPECT_EQ(info.get_model(), "model-1");
    EXPECT_EQ(info.get_software_version(), "sw-1");
    EXPECT_EQ(info.get_hardware_version(), "hw-1");
    EXPECT_EQ(info.get_dock_serial_number(), "dock-serial-1");
    EXPECT_EQ(info.get_dock_model(), "dock-model-1");
    EXPECT_EQ(info.get_dongle_serial_number(), "dongle-serial-1");
    EXPECT_EQ(info.get_dongle_model(), "dongle-model-1");
    EXPECT_EQ(info.get_dongle_version(), "dongle-version-1");
}

TEST(AccessoryInfoImplTest, VendorAndSerialNumberNeedNoSystemInformation) {
    AccessoryInfoImpl info = some_headset();

    EXPECT_EQ(info.get_vendor(nullptr), "vendor-1");
    EXPECT_EQ(info.get_serial_number(nullptr), "serial-1");
}

TEST(AccessoryInfoImplTest, ConnectionIsEmptyAtFirst) {
    AccessoryInfoImpl info = some_headset();

    EXPECT_EQ(info.get_connection_type(), "");
    EXPECT_EQ(info.get_connection_status(), "");
}

TEST(AccessoryInfoImplTest, SetConnectionReplacesTypeAndStatus) {
    AccessoryInfoImpl info = some_headset();
    info.set_connection("wired", "connected");

    info.set_connection("wireless", "lost");

    EXPECT_EQ(info.get_connection_type(), "wireless");
    EXPECT_EQ(info.get_connection_status(), "lost");
}

TEST(AccessoryInfoImplTest, TextHasEveryFactModelsBeforeSerialNumbers) {
    AccessoryInfoImpl info = some_headset();
    info.set_connection("wired", "connected");

    EXPECT_EQ(info.to_string(), "Accessory Info:\n"
                                "type:HEADSET\n"
                                "id:id-1\n"
                                "vendor:vendor-1\n"
                                "vendor id:4660\n"
                                "model:model-1\n"
                                "serial number:serial-1\n"
                                "sw ver:sw-1\n"
                                "hw ver:hw-1\n"
                                "dock model:dock-model-1\n"
                                "dock serial number:dock-serial-1\n"
                                "dongle model:dongle-model-1\n"
                                "dongle serial number:dongle-serial-1\n"
                                "dongle version:dongle-version-1\n"
                                "connection type:wired\n"
                                "connection status:connected\n"
                                "\n");
}

/// Writes 4660 as 4'660.
class GroupedDigits : public std::numpunct<char> {
    char do_thousands_sep() const override { return '\''; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(AccessoryInfoImplTest, TextHasItsNumbersAsTheyAreWhateverTheHostsLocale) {
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new GroupedDigits));
    const std::string text = some_headset().to_string();
    std::locale::global(before);

    EXPECT_NE(text.find("\nvendor id:4660\n"), std::string::npos) << text;
}

TEST(AccessoryInfoImplTest, TextKeepsTheLinesOfUnknownFacts) {
    AccessoryInfoImpl info(headsetmgmt::CAMERA, "", "", "", "", "", "", "", "", "", "", "", -1);

    EXPECT_EQ(info.to_string(), "Accessory Info:\n"
                                "type:CAMERA\n"
                                "id:\n"
                                "vendor:\n"
                                "vendor id:-1\n"
                                "model:\n"
                                "serial number:\n"
                                "sw ver:\n"
                                "hw ver:\n"
                                "dock model:\n"
                                "dock serial number:\n"
                                "dongle model:\n"
                                "dongle serial number:\n"
                                "dongle version:\n"
                                "connection type:\n"
                                "connection status:\n"
                                "\n");
}

TEST(AccessoryInfoImplTest, TypePastTheLastPrintsAsOther) {
    AccessoryInfoImpl info = accessory_of_type(4);

    EXPECT_EQ(info.to_string().substr(0, 27), "Accessory Info:\ntype:OTHER\n");
}

TEST(AccessoryInfoImplTest, NegativeTypePrintsAsOther) {
    AccessoryInfoImpl info = accessory_of_type(-1);

    EXPECT_EQ(info.to_string().substr(0, 27), "Accessory Info:\ntype:OTHER\n");
}

TEST(AccessoryInfoImplTest, TypeThreePrintsAsMaxAccessoryType) {
    AccessoryInfoImpl info = accessory_of_type(3);

    EXPECT_EQ(info.to_string().substr(0, 40), "Accessory Info:\ntype:MAX_ACCESSORY_TYPE\n");
}

TEST(AccessoryInfoImplTest, ClonePrintsTheSameTextConnectionIncluded) {
    AccessoryInfoImpl info = some_headset();
    info.set_connection("wired", "connected");

    const std::unique_ptr<AccessoryInfoInterface> clone(info.clone());

    EXPECT_EQ(clone->to_string(), info.to_string());
    EXPECT_EQ(clone->get_connection_type(), "wired");
    EXPECT_EQ(clone->get_connection_status(), "connected");
}

TEST(AccessoryInfoImplTest, CloneIsIndependentOfItsSource) {
    AccessoryInfoImpl info = some_headset();
    info.set_connection("wired", "connected");
    const std::unique_ptr<AccessoryInfoInterface> clone(info.clone());

    info.set_connection("wireless", "lost");

    EXPECT_EQ(clone->get_connection_type(), "wired");
    EXPECT_EQ(clone->get_connection_status(), "connected");
}

TEST(AccessoryInfoImplTest, TextsOfAHostRecordAreTakenWholeWithTheirNuls) {
    AccessoryCache cache;
    cache.device_id = "id\0x"s;
    cache.software_version = "1-0\0x"s;
    cache.hardware_version = "4\0x"s;
    cache.model = "K30\0x"s;
    cache.serial_number = "\0x"s;
    cache.vendor = "Varos\0x"s;
    cache.dock_serial_number = "\0D"s;
    cache.dock_model = "Dock\0x"s;
    cache.dongle_serial_number = "L1\0x"s;
    cache.dongle_model = "Link\0x"s;
    cache.dongle_version = "2-0\0x"s;
    cache.connection_type = "USB\0x"s;
    cache.connection_status = "connected\0"s;
    cache.vendor_id = 7;

    const auto info = to_accessory_info(cache);

    EXPECT_EQ(info->device_id(), "id\0x"s);
    EXPECT_EQ(info->get_software_version(), "1-0\0x"s);
    EXPECT_EQ(info->get_serial_number(nullptr), "\0x"s);
    EXPECT_EQ(info->get_connection_status(), "connected\0"s);
    EXPECT_EQ(info->to_string(),
              "Accessory Info:\ntype:UNKNOWN\nid:id\0x\nvendor:Varos\0x\nvendor id:7\n"
              "model:K30\0x\nserial number:\0x\nsw ver:1-0\0x\nhw ver:4\0x\ndock model:Dock\0x\n"
              "dock serial number:\0D\ndongle model:Link\0x\ndongle serial number:L1\0x\n"
              "dongle version:2-0\0x\nconnection type:USB\0x\nconnection status:connected\0\n\n"s);
}

TEST(AccessoryInfoImplTest, FirmwareDataAreReadyWithVersionAndModel) {
    EXPECT_TRUE(headset_with_firmware("Varos K30", "1-0-1").firmware_data_ready());
}

TEST(AccessoryInfoImplTest, FirmwareDataAreNotReadyWithoutModel) {
    EXPECT_FALSE(headset_with_firmware("", "1-0-1").firmware_data_ready());
}

TEST(AccessoryInfoImplTest, FirmwareDataAreNotReadyWithoutSoftwareVersion) {
    EXPECT_FALSE(headset_with_firmware("Varos K30", "").firmware_data_ready());
}

TEST(AccessoryInfoImplTest, FirmwareDataAreReadThroughTheGettersVersionFirst) {
    class Overriding : public AccessoryInfoImpl {
    public:
        Overriding() : AccessoryInfoImpl(headset_with_firmware("", "")) {}
        std::string get_software_version() override {
            asked += "version ";
            return "1-0-1";
        }
        std::string get_model() override {
            asked += "model ";
            return "Varos K30";
        }
        std::string asked;
    };
    Overriding info;

    EXPECT_TRUE(info.firmware_data_ready());

    EXPECT_EQ(info.asked, "version model ");
}

TEST(AccessoryInfoImplTest, DataAreAlwaysReady) {
    EXPECT_TRUE(headset_with_firmware("", "").data_ready());
    EXPECT_TRUE(headset_with_firmware("", "1-0-1").data_ready());
    EXPECT_TRUE(some_headset().data_ready());
}

TEST(AccessoryInfoImplTest, MakersVendorIdIsRecognised) {
    EXPECT_TRUE(headset_of_vendor(HEADSETMGMT_MAKER_VENDOR_ID).is_varos_vid());
}

TEST(AccessoryInfoImplTest, OtherVendorIdsAreNotTheMakers) {
    EXPECT_FALSE(headset_of_vendor(HEADSETMGMT_MAKER_VENDOR_ID + 1).is_varos_vid());
    EXPECT_FALSE(headset_of_vendor(HEADSETMGMT_MAKER_VENDOR_ID - 1).is_varos_vid());
    EXPECT_FALSE(headset_of_vendor(0).is_varos_vid());
    EXPECT_FALSE(headset_of_vendor(-1).is_varos_vid());
}

TEST(AccessoryInfoImplTest, ResetChangesNothing) {
    AccessoryInfoImpl info = some_headset();
    info.set_connection("wired", "connected");
    const std::string before = info.to_string();

    info.reset();

    EXPECT_EQ(info.to_string(), before);
}

TEST(AccessoryInfoImplTest, HostRecordBecomesAnAccessoryRecordFactByFact) {
    AccessoryCache cache;
    cache.device_id = "dev-7";
    cache.accessory_type = 2;
    cache.vendor_id = 99;
    cache.software_version = "sw";
    cache.hardware_version = "hw";
    cache.model = "mo";
    cache.serial_number = "sn";
    cache.vendor = "ve";
    cache.dock_serial_number = "dks";
    cache.dock_model = "dkm";
    cache.dongle_serial_number = "dgs";
    cache.dongle_model = "dgm";
    cache.dongle_version = "dgv";
    cache.connection_type = "ct";
    cache.connection_status = "cs";

    const std::shared_ptr<AccessoryInfoImpl> info = to_accessory_info(cache);

    EXPECT_EQ(info->device_id(), "dev-7");
    EXPECT_EQ(info->to_string(), "Accessory Info:\n"
                                 "type:CAMERA\n"
                                 "id:dev-7\n"
                                 "vendor:ve\n"
                                 "vendor id:99\n"
                                 "model:mo\n"
                                 "serial number:sn\n"
                                 "sw ver:sw\n"
                                 "hw ver:hw\n"
                                 "dock model:dkm\n"
                                 "dock serial number:dks\n"
                                 "dongle model:dgm\n"
                                 "dongle serial number:dgs\n"
                                 "dongle version:dgv\n"
                                 "connection type:ct\n"
                                 "connection status:cs\n"
                                 "\n");
}

TEST(AccessoryInfoImplTest, HostRecordMayCarryAnyType) {
    AccessoryCache cache;
    cache.accessory_type = -2147483647 - 1;

    EXPECT_EQ(to_accessory_info(cache)->get_type(), -2147483647 - 1);
}

TEST(AccessoryInfoImplTest, EachConversionMakesAFreshRecord) {
    const AccessoryCache cache;

    const auto first = to_accessory_info(cache);
    const auto second = to_accessory_info(cache);

    EXPECT_NE(first, second);
    EXPECT_EQ(first.use_count(), 1);
}

}  // namespace
