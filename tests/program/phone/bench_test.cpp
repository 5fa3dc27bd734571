// SPDX-License-Identifier: Apache-2.0
// Tests of bench files: what each member becomes, what is there without it, and how the reader says
// that a file is wrong.

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "headsetmgmt/types.h"

#include "program/phone/bench.h"
#include "program/phone/bench_file.h"
#include "program/phone/bench_refusal.h"
#include "program/refused_input.h"

namespace headsetmgmt::program {
namespace {

using Texts = std::vector<std::string>;

std::string refusal_of_file(const std::string& path) {
    try {
        read_bench(read_bench_file(path), path);
    } catch (const RefusedInput& error) {
        return error.what();
    }
    return "accepted";
}

std::string refusal_of_option(const std::string& text) {
    try {
        read_accessory(text, "--accessory");
    } catch (const RefusedInput& error) {
        return error.what();
    }
    return "accepted";
}

/// A file for the time of a test.
class FileForATest {
public:
    explicit FileForATest(const std::string& text)
        : path(testing::TempDir() + "bench_test_" +
               testing::UnitTest::GetInstance()->current_test_info()->name() + ".json") {
        std::ofstream(path, std::ios::binary) << text;
    }
    ~FileForATest() { std::remove(path.c_str()); }
    FileForATest(const FileForATest&) = delete;
    FileForATest& operator=(const FileForATest&) = delete;

    const std::string path;
};

TEST(Bench, EmptyObjectIsAPhoneWithoutAnything) {
    const Bench bench = read_bench("{}", "bench.json");

    EXPECT_EQ("PH0000001", bench.serial_number);
    EXPECT_EQ("1.0.0", bench.os_version);
    EXPECT_EQ("1-0-0", bench.software_version);
    EXPECT_EQ("", bench.user_id);
    EXPECT_EQ("", bench.config_url);
    EXPECT_EQ("", bench.inventory_url);
    EXPECT_EQ("", bench.service_url);
    EXPECT_EQ(Texts{}, bench.tftp_servers);
    EXPECT_EQ(Texts{}, bench.korm_servers);
    EXPECT_EQ(0U, bench.accessories.size());
}

TEST(Bench, PhoneUrlsAndServersAreRead) {
    const Bench bench = read_bench(R"({
        "phone": {"serialNumber": "PH7", "osVersion": "5.1", "softwareVersion": "14-2",
                  "userId": "anna"},
        "urls": {"config": "http://c", "inventory": "http://i", "service": "http://s"},
        "servers": {"tftp": ["t1", "t2", "t3"], "korm": ["k1"]}})",
                                   "bench.json");

    EXPECT_EQ("PH7", bench.serial_number);
    EXPECT_EQ("5.1", bench.os_version);
    EXPECT_EQ("14-2", bench.software_version);
    EXPECT_EQ("anna", bench.user_id);
    EXPECT_EQ("http://c", bench.config_url);
    EXPECT_EQ("http://i", bench.inventory_url);
    EXPECT_EQ("http://s", bench.service_url);
    EXPECT_EQ((Texts{"t1", "t2", "t3"}), bench.tftp_servers);
    EXPECT_EQ((Texts{"k1"}), bench.korm_servers);
}

TEST(Bench, EmptySectionsAreAsGoodAsNone) {
    const Bench bench = read_bench(
        R"({"phone": {}, "urls": {}, "servers": {"tftp": []}, "accessories": []})", "bench.json");

    EXPECT_EQ("PH0000001", bench.serial_number);
    EXPECT_EQ(Texts{}, bench.tftp_servers);
    EXPECT_EQ(0U, bench.accessories.size());
}

TEST(Bench, EveryMemberOfAnAccessoryIsRead) {
    const Bench bench = read_bench(R"({"accessories": [{
        "id": "a", "type": "camera", "vendorId": 65535, "softwareVersion": "b",
        "hardwareVersion": "c", "model": "d", "serialNumber": "e", "vendor": "f",
        "dockSerialNumber": "g", "dockModel": "h", "dongleSerialNumber": "i", "dongleModel": "j",
        "dongleVersion": "k", "connectionType": "l", "connectionStatus": "m"}]})",
                                   "bench.json");

    ASSERT_EQ(1U, bench.accessories.size());
    const AccessoryCache& accessory = bench.accessories[0];
    EXPECT_EQ("a", accessory.device_id);
    EXPECT_EQ(CAMERA, accessory.accessory_type);
    EXPECT_EQ(65535, accessory.vendor_id);
    EXPECT_EQ("b", accessory.software_version);
    EXPECT_EQ("c", accessory.hardware_version);
    EXPECT_EQ("d", accessory.model);
    EXPECT_EQ("e", accessory.serial_number);
    EXPECT_EQ("f", accessory.vendor);
    EXPECT_EQ("g", accessory.dock_serial_number);
    EXPECT_EQ("h", accessory.dock_model);
    EXPECT_EQ("i", accessory.dongle_serial_number);
    EXPECT_EQ("j", accessory.dongle_model);
    EXPECT_EQ("k", accessory.dongle_version);
    EXPECT_EQ("l", accessory.connection_type);
    EXPECT_EQ("m", accessory.connection_status);
}

TEST(Bench, AccessoryNeedsAnIdAndATypeOnly) {
    const Bench bench =
        read_bench(R"({"accessories": [{"id": "a", "type": "headset"}]})", "bench.json");

    ASSERT_EQ(1U, bench.accessories.size());
    const AccessoryCache& accessory = bench.accessories[0];
    EXPECT_EQ("a", accessory.device_id);
    EXPECT_EQ(HEADSET, accessory.accessory_type);
    EXPECT_EQ(0, accessory.vendor_id);
    EXPECT_EQ("", accessory.software_version);
    EXPECT_EQ("", accessory.model);
    EXPECT_EQ("", accessory.serial_number);
    EXPECT_EQ("", accessory.dongle_model);
    EXPECT_EQ("USB", accessory.connection_type);
    EXPECT_EQ("connected", accessory.connection_status);
}

TEST(Bench, AccessoriesKeepTheirOrder) {
    const Bench bench = read_bench(
        R"({"accessories": [{"id": "z", "type": "headset"}, {"id": "a", "type": "camera"}]})",
        "bench.json");

    ASSERT_EQ(2U, bench.accessories.size());
    EXPECT_EQ("z", bench.accessories[0].device_id);
    EXPECT_EQ("a", bench.accessories[1].device_id);
}

TEST(BenchFile, IsReadAsItsText) {
    const FileForATest file("{\"phone\": {\"userId\": \"M\xc3\xbcller\"}}\n");

    EXPECT_EQ("M\xc3\xbcller", read_bench(read_bench_file(file.path), file.path).user_id);
}

TEST(BenchFile, LargeOneIsReadToItsEnd) {
    std::string text = "{\"accessories\": [\n";
    for (int i = 0; i < 5000; ++i) {
        text += R"({"id": "acc-)" + std::to_string(i) + R"(", "type": "headset", "model": ")" +
                std::string(200, 'm') + "\"},\n";
    }
    const FileForATest good(text + R"({"id": "last", "type": "camera"}]})");

    const Bench bench = read_bench(read_bench_file(good.path), good.path);

    ASSERT_EQ(5001U, bench.accessories.size());
    EXPECT_EQ("acc-4999", bench.accessories[4999].device_id);
    EXPECT_EQ("last", bench.accessories[5000].device_id);
    EXPECT_EQ("bench.json:5002: member /accessories/5000/type: expected a member \"type\" with "
              "\"headset\" or \"camera\", found \"robot\"",
              refusal(text + R"({"id": "last", "type": "robot"}]})"));
}

TEST(BenchFile, NulInItIsNotItsEnd) {
    const FileForATest file(std::string("{\n\"phone\": {},\n\0}", 17));

    EXPECT_THAT(refusal_of_file(file.path),
                testing::StartsWith(file.path + ":3:1: expected JSON: "));
}

TEST(BenchFile, MissingOneCannotBeRead) {
    EXPECT_EQ("/nowhere/bench.json: cannot be read: No such file or directory",
              refusal_of_file("/nowhere/bench.json"));
}

TEST(BenchFile, FolderCannotBeRead) {
    EXPECT_EQ("/: cannot be read: Is a directory", refusal_of_file("/"));
}

TEST(BenchFile, EmptyOneIsNoJson) {
    const FileForATest file("");

    EXPECT_EQ(file.path + ":1: expected JSON, found an empty file", refusal_of_file(file.path));
}

TEST(BenchFile, OneThatIsTooLargeIsRefusedWithTheLimit) {
    const FileForATest file("{}" + std::string(16777216, ' '));

    EXPECT_EQ(file.path + ": expected at most 16777216 bytes", refusal_of_file(file.path));
}

TEST(BenchFile, OneAsLargeAsTheLimitIsTaken) {
    const FileForATest file("{}" + std::string(16777214, ' '));

    EXPECT_EQ("accepted", refusal_of_file(file.path));
}

TEST(AccessoryOption, PairsAreTheMembersOfAnAccessory) {
    const AccessoryCache accessory = read_accessory(
        "id=a,type=camera,vendorId=0xF055,model=Varos Eye 2,serialNumber=x=y", "--accessory");

    EXPECT_EQ("a", accessory.device_id);
    EXPECT_EQ(CAMERA, accessory.accessory_type);
    EXPECT_EQ(61525, accessory.vendor_id);
    EXPECT_EQ("Varos Eye 2", accessory.model);
    EXPECT_EQ("x=y", accessory.serial_number);
    EXPECT_EQ("USB", accessory.connection_type);
}

TEST(AccessoryOption, VendorIdWithALeadingZeroIsDecimal) {
    EXPECT_EQ(10, read_accessory("id=a,type=headset,vendorId=010", "--accessory").vendor_id);
    EXPECT_EQ(16, read_accessory("id=a,type=headset,vendorId=0X010", "--accessory").vendor_id);
}

TEST(AccessoryOption, PairWithoutNameOrValueIsRefused) {
    EXPECT_EQ("--accessory \"id=a,K30, black\": expected NAME=VALUE,..., found \"K30\"; a value "
              "cannot hold a comma here, only in a bench file",
              refusal_of_option("id=a,K30, black"));
    EXPECT_EQ("--accessory \"id=a,=b\": expected NAME=VALUE,..., found \"=b\"; a value cannot hold "
              "a comma here, only in a bench file",
              refusal_of_option("id=a,=b"));
}

TEST(AccessoryOption, BlankBeforeANameIsRefused) {
    EXPECT_EQ("--accessory \"id=a, type=headset\": expected a name without blanks, found \" type\"",
              refusal_of_option("id=a, type=headset"));
}

TEST(AccessoryOption, NameThatIsGivenTwiceIsRefused) {
    EXPECT_EQ("--accessory \"id=a,type=headset,id=b\": id: expected once, found again",
              refusal_of_option("id=a,type=headset,id=b"));
}

TEST(AccessoryOption, BytesThatAreNoUtf8AreReplaced) {
    EXPECT_EQ("\xef\xbf\xbd", read_accessory("id=a,type=headset,model=\xff", "--accessory").model);
}

TEST(AccessoryOption, WrongMembersAreRefusedWithTheirNames) {
    EXPECT_EQ(
        "--accessory \"id=a,type=Camera\": type: expected a member \"type\" with \"headset\" or "
        "\"camera\", found \"Camera\" (capitals count)",
        refusal_of_option("id=a,type=Camera"));
    EXPECT_EQ("--accessory \"id=a,type=headset,vendorId=0xF055 \": vendorId: expected a USB vendor "
              "id, 0 to 65535, found \"0xF055 \"",
              refusal_of_option("id=a,type=headset,vendorId=0xF055 "));
    EXPECT_EQ("--accessory \"id=a,type=headset,vendorId=99999999999999999999\": vendorId: expected "
              "a USB vendor id, 0 to 65535, found \"99999999999999999999\"",
              refusal_of_option("id=a,type=headset,vendorId=99999999999999999999"));
    EXPECT_EQ(
        "--accessory \"type=headset\": expected a member \"id\" with a text that is not empty",
        refusal_of_option("type=headset"));
}

std::string refusal_of_bench(const BenchOptions& options) {
    try {
        make_bench(options);
    } catch (const RefusedInput& error) {
        return error.what();
    }
    return "accepted";
}

constexpr char two_accessories[] = "{\"phone\": {\"userId\": \"anna\"}, \"accessories\": [\n"
                                   "{\"id\": \"a\", \"type\": \"headset\"},\n"
                                   "{\"id\": \"b\", \"type\": \"camera\"}]}";

TEST(MakeBench, OptionsGoBeforeTheFileUnlessTheyAreEmpty) {
    const FileForATest file(two_accessories);
    BenchOptions options;
    options.file = file.path;
    options.serial_number = "PH7";
    options.tftp_servers = {"10.0.0.5"};
    options.accessories = {"id=c,type=camera"};

    const Bench bench = make_bench(options);

    EXPECT_EQ("anna", bench.user_id);
    EXPECT_EQ("PH7", bench.serial_number);
    EXPECT_EQ((Texts{"10.0.0.5"}), bench.tftp_servers);
    ASSERT_EQ(3U, bench.accessories.size());
    EXPECT_EQ("c", bench.accessories[2].device_id);
}

TEST(MakeBench, SecondAccessoryOfAnIdIsRefusedInTheFile) {
    const FileForATest file("{\"accessories\": [\n{\"id\": \"a\", \"type\": \"headset\"},\n"
                            "{\"id\": \"a\", \"type\": \"camera\"}]}");
    BenchOptions options;
    options.file = file.path;

    EXPECT_EQ(file.path + ":3: member /accessories/1/id: expected an id of its own, found \"a\" "
                          "again",
              refusal_of_bench(options));
}

TEST(MakeBench, SecondAccessoryOfAnIdIsRefusedInAnOption) {
    const FileForATest file(two_accessories);
    BenchOptions options;
    options.file = file.path;
    options.accessories = {"id=c,type=camera", "id=b,type=headset"};

    EXPECT_EQ("--accessory \"id=b,type=headset\": id: expected an id of its own, found \"b\" again",
              refusal_of_bench(options));
}

TEST(MakeBench, WithoutAnAccessoryIsRefused) {
    const FileForATest file("{}");
    BenchOptions options;

    EXPECT_EQ("no accessory: give --bench a file with \"accessories\", or --accessory",
              refusal_of_bench(options));
    options.file = file.path;
    EXPECT_EQ(file.path + ": no accessory: expected one in \"accessories\", or give --accessory",
              refusal_of_bench(options));
}

TEST(MakeBench, UrlThatCannotBeRequestedIsRefused) {
    BenchOptions options;
    options.config_url = "ftp://server/a.json";
    options.accessories = {"id=a,type=camera"};

    EXPECT_EQ("config URL \"ftp://server/a.json\": expected a URL of http, https, tftp, found "
              "\"ftp://\"",
              refusal_of_bench(options));
}

}  // namespace
}  // namespace headsetmgmt::program
