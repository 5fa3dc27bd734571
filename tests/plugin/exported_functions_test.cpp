// Each exported function, used as somebody outside does: with the shared library alone, the public
// headers, and implementations of the interfaces written here.

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/config.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/metrics.h"
#include "headsetmgmt/phone/flat_interface.h"
#include "headsetmgmt/phone/host_functions.h"
#include "headsetmgmt/plugins.h"
#include "headsetmgmt/utilities.h"

namespace {

using namespace headsetmgmt;

constexpr char document[] = R"({"templateConfiguration": {
    "updatedTime": 1795248000,
    "commonSettings": [
        {"name": "1 Speaker Volume", "usageId": 32, "value": 7, "access": "User"}],
    "modelSpecificSettings": [{
        "models": ["Varos K20"],
        "modelFirmware": [{
            "firmwareName": "k20.img", "firmwareVersion": "2-1-0",
            "firmwareParams": [
                {"name": "Sidetone", "usageId": 34, "value": "medium", "access": "Admin"}]}]}]}})";

/// What the library asked of its host. Any thread.
class Host {
public:
    void tell(const std::string& deed) {
        const std::lock_guard<std::mutex> lock(mutex);
        deeds.push_back(deed);
        changed.notify_all();
    }

    /// Whether `deed` is there, or comes.
    bool wait_for(const std::string& deed) {
        std::unique_lock<std::mutex> lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(60), [&] { return count(deed) > 0; });
    }

    int times(const std::string& deed) {
        const std::lock_guard<std::mutex> lock(mutex);
        return count(deed);
    }

    void forget() {
        const std::lock_guard<std::mutex> lock(mutex);
        deeds.clear();
    }

private:
    int count(const std::string& deed) const {
        int found = 0;
        for (const std::string& done : deeds) {
            found += done == deed ? 1 : 0;
        }
        return found;
    }

    std::mutex mutex;  // guards the deeds
    std::condition_variable changed;
    std::vector<std::string> deeds;
};

Host host;

void on_log_line(int level, const char* text) {
    host.tell("log " + std::to_string(level) + " " + text);
}

}  // namespace

bool httpRequest(HttpRequestType type, const char* url, const char* body) {
    host.tell(std::string(type == HTTP_REQUEST_GET ? "GET " : "POST ") + url +
              (body != nullptr ? " with a body" : ""));
    return true;
}

bool apply_changes(const char* device_id, const char* name, int usage_id, const char* value) {
    host.tell(std::string("set ") + device_id + " " + name + " " + std::to_string(usage_id) + " " +
              value);
    return true;
}

bool request_firmware_upgrade(const char* device_id, const char* version, const char* image) {
    host.tell(std::string("upgrade ") + device_id + " " + version + " " + image);
    return true;
}

bool check_firmware_upgrade(const char* /*device_id*/) {
    return true;
}

const char* get_host_serial_num() {
    return "PH0012345";
}

const char* get_host_os_ver() {
    return "5.10.4";
}

const char* get_orvik_ver() {
    return "14-2-1";
}

namespace {

// Implementations of the core's interfaces, as another host than the phone would write them.

class Sink : public log::HostLogInterface {
public:
    int map_to_host_log_level(log::LogLevel level) const override {
        return static_cast<int>(level);
    }
    void print(log::LogLevel /*level*/, const std::string& line) override { lines.push_back(line); }

    std::vector<std::string> lines;
};

class Accessory : public AccessoryInfoInterface {
public:
    explicit Accessory(ACCESSORY_TYPE accessory_type) : type(accessory_type) {}

    ACCESSORY_TYPE get_type() const override { return type; }
    AccessoryInfoInterface* clone() const override { return new Accessory(*this); }
    std::string get_vendor(SystemInfoInterface*) override { return "Varos"; }
    std::string get_model() override { return "Varos K30"; }
    std::string get_serial_number(SystemInfoInterface*) override { return "ABCDEFG4"; }
    std::string get_software_version() override { return "2-0-4"; }
    std::string get_hardware_version() override { return ""; }
    std::string get_dock_serial_number() override { return ""; }
    std::string get_dock_model() override { return ""; }
    std::string get_dongle_serial_number() override { return ""; }
    std::string get_dongle_model() override { return ""; }
    std::string get_dongle_version() override { return ""; }
    std::string get_connection_type() override { return "USB"; }
    std::string get_connection_status() override { return "connected"; }
    bool data_ready() override { return true; }
    bool firmware_data_ready() override { return true; }
    bool is_varos_vid() override { return type == HEADSET; }
    void set_connection(const std::string&, const std::string&) override {}
    void reset() override {}

private:
    ACCESSORY_TYPE type;
};

class Dispatcher : public dispatcher::DispatcherInterface {
public:
    int push(dispatcher::RequestContext*) const override { return REQUEST_DONE; }
    int get(dispatcher::RequestContext*, std::string&) const override { return REQUEST_REFUSED; }
};

class Driver : public config::HostConfigDriverInterface {
public:
    bool apply_config_to_device(const std::string& id, const std::string& name, int usage_id,
                                const std::string& value) const override {
        applied.push_back(id + " " + name + " " + std::to_string(usage_id) + " " + value);
        return true;
    }
    bool request_upgrade(const std::string&, const std::string&,
                         const std::string&) const override {
        return true;
    }
    void on_failure(const std::string&, config::ConfigureResponse) const override {}
    void on_pending(const std::string&, config::ConfigureResponse) const override {}

    mutable std::vector<std::string> applied;
};

class SystemInfo : public SystemInfoInterface {
public:
    std::string get_host_client_type() override { return ""; }
    std::string get_host_device_name() override { return ""; }
    std::string get_host_serial_number() override { return ""; }
    std::string get_host_model() override { return ""; }
    std::string get_host_software_version() override { return ""; }
    std::string get_host_hardware_version() override { return ""; }
    std::string get_host_user_id() override { return ""; }
    std::string get_persistent_storage_location() override { return ""; }
    std::string get_config_url() override { return ""; }
    std::string get_inventory_post_url() override { return ""; }
    std::string get_metrics_service_info_url() override { return ""; }
    std::string get_korm_server(unsigned int) override { return ""; }
    std::string get_tftp_server(unsigned int) override { return ""; }
    std::vector<std::string> get_korm_servers() override { return {}; }
    bool data_ready() override { return true; }
};

class Executor final : public ExecutorInterface {
public:
    void add_task(task_functor, void*, TaskParametersInterface* params) override {
        kinds.push_back(params->get_type());
    }

    std::vector<int> kinds;
};

class Mutex : public MutexInterface {
public:
    bool lock() override {
        mutex.lock();
        return true;
    }
    void unlock() override { mutex.unlock(); }

private:
    std::recursive_mutex mutex;
};

class MutexFactory : public MutexFactoryInterface {
public:
    MutexInterface* create_mutex(bool) override { return new Mutex(); }
    void delete_mutex(MutexInterface* mutex) override { delete mutex; }
};

/// The core with a record of these. The record is never taken out again, so it lives for ever.
struct World {
    World() {
        record.log = &sink;
        record.dispatcher = &dispatcher;
        record.config_driver = &driver;
        record.system_info = &system_info;
        record.executor = &executor;
        record.mutex_factory = &mutex_factory;
    }

    Sink sink;
    Dispatcher dispatcher;
    Driver driver;
    SystemInfo system_info;
    Executor executor;
    MutexFactory mutex_factory;
    Plugins record;
};

World& installed_world() {
    static auto* world = new World;
    world->sink.lines.clear();
    world->driver.applied.clear();
    world->executor.kinds.clear();
    EXPECT_TRUE(init(world->record));
    return *world;
}

/// The phone's library, started, with one headset that was attached and configured.
class FlatInterfaceTest : public testing::Test {
protected:
    void SetUp() override {
        host.forget();
        ASSERT_TRUE(create_headset_mgmt(on_log_line));
        ASSERT_TRUE(start_headset_mgmt("TRM", "14-2-1", "./"));
        const char* tftp_servers[3] = {"192.0.2.1", "", ""};
        const char* korm_servers[3] = {"192.0.2.2", "", ""};
        ASSERT_TRUE(setHeadsetConfigUrl("http://{tftp}/{userid}.json", "http://{korm}/inventory",
                                        "", tftp_servers, korm_servers, "user-17"));
        headset->device_id = "headset-1";
        headset->accessory_type = HEADSET;
        headset->model = "Varos K30";
        headset->serial_number = "ABCDEFG4123";
        headset->software_version = "2-0-4";
        ASSERT_TRUE(configure_headset(headset));
        ASSERT_TRUE(host.wait_for("GET http://192.0.2.1/user-17.json"));
        httpResponse(document, 200);
        ASSERT_EQ(host.times("set headset-1 Sidetone 34 medium"), 1);
        ASSERT_EQ(host.times("upgrade headset-1 2-1-0 k20.img"), 1);
    }

    void TearDown() override { stop_headset_mgmt(); }

    const std::shared_ptr<AccessoryCache> headset = std::make_shared<AccessoryCache>();
};

TEST_F(FlatInterfaceTest, HostsLogCallbackGetsTheLines) {
    EXPECT_EQ(host.times("log 5 init_headsetmgmt_lib.\n"), 1);
}

TEST_F(FlatInterfaceTest, InventoryIsPosted) {
    send_inventory(headset);
    EXPECT_TRUE(host.wait_for("POST http://192.0.2.2/inventory with a body"));
}

TEST_F(FlatInterfaceTest, SettingIsRead) {
    int value = 0;
    EXPECT_TRUE(retrieve_config("headset-1", USAGE_SPEAKER_VOLUME, &value));
    EXPECT_EQ(value, 1);  // the number that the setting's name begins with
}

TEST_F(FlatInterfaceTest, SettingsChangedOnThePhoneAreNotTaken) {
    EXPECT_FALSE(update_config("headset-1", USAGE_SPEAKER_VOLUME, 3));
}

TEST_F(FlatInterfaceTest, FactoryResetSendsTheUsersSettingsToo) {
    EXPECT_TRUE(factory_reset("headset-1"));

    EXPECT_EQ(host.times("set headset-1 1 Speaker Volume 32 7"), 1);
    EXPECT_EQ(host.times("set headset-1 Sidetone 34 medium"), 2);
}

TEST_F(FlatInterfaceTest, RemovedAccessoryIsForgotten) {
    EXPECT_TRUE(remove_peripheral("headset-1"));
    EXPECT_FALSE(factory_reset("headset-1"));
}

TEST_F(FlatInterfaceTest, StoppedLibraryTurnsCallsAway) {
    stop_headset_mgmt();
    EXPECT_FALSE(factory_reset("headset-1"));
    EXPECT_FALSE(remove_peripheral("headset-1"));
}

TEST(ExportedFunctionsTest, InitInstallsACompleteRecordAndRefusesAnother) {
    installed_world();
    Plugins incomplete;
    EXPECT_THROW(init(incomplete), std::runtime_error);
}

TEST(ExportedFunctionsTest, ConfigObjectAppliesADocument) {
    World& world = installed_world();
    const Accessory headset(HEADSET);

    config::ConfigInterface* made = create_config("headset-1", &headset);
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(made->update_from_server(document));
    const std::map<int, ConfigParam> settings = made->retrieve_config();
    delete_config(made);

    EXPECT_EQ(settings.size(), 2U);
    EXPECT_EQ(world.driver.applied, (std::vector<std::string>{"headset-1 Sidetone 34 medium"}));
}

TEST(ExportedFunctionsTest, MetricQueuesATask) {
    World& world = installed_world();
    Accessory headset(HEADSET);

    metrics::MetricsInterface* metric = create_metric(&headset);
    EXPECT_EQ(metric->get_type(), metrics::HEADSET_INVENTORY);
    EXPECT_TRUE(metric->send());
    delete_metric(metric);

    EXPECT_EQ(world.executor.kinds, (std::vector<int>{1}));
}

TEST(ExportedFunctionsTest, LoggerWritesToItsSink) {
    Sink sink;
    log::Logger* logger = create_logger(&sink, "Outside", true);
    logger->notice() << "hello";
    delete_logger(logger);
    EXPECT_EQ(sink.lines, (std::vector<std::string>{"Outside: hello"}));
}

TEST(ExportedFunctionsTest, HeadsetModelIsDecidedFromTexts) {
    EXPECT_EQ(get_headset_model("Varos K30", "ABCDEFG4"), "Varos K20");
    EXPECT_EQ(get_headset_model("Varos K30", "ABCDEFG5"), "Varos K30");
}

TEST(ExportedFunctionsTest, HeadsetModelIsDecidedFromAnAccessory) {
    installed_world();
    Accessory headset(HEADSET);
    EXPECT_EQ(get_headset_model(&headset), "Varos K20");
}

TEST(ExportedFunctionsTest, MakersHeadsetIsToldFromOthers) {
    Accessory headset(HEADSET);
    Accessory camera(CAMERA);  // which here has another vendor id
    EXPECT_TRUE(isVarosHeadset(&headset));
    EXPECT_FALSE(isVarosHeadset(&camera));
}

TEST(ExportedFunctionsTest, EveryHeadsetSupportsDowngrade) {
    Accessory headset(HEADSET);
    EXPECT_TRUE(headset_support_downgrade(&headset));
    EXPECT_TRUE(headset_support_downgrade(nullptr));
}

TEST(ExportedFunctionsTest, SleepingForNoTimeReturns) {
    sleep_for(0);
}

TEST(ExportedFunctionsTest, WaitWithoutSpreadIsItsBase) {
    EXPECT_EQ(get_seconds_to_wait(30, 0), 30U);
}

TEST(ExportedFunctionsTest, WaitLiesWithinItsSpread) {
    const unsigned int wait = get_seconds_to_wait(30, 5);
    EXPECT_GE(wait, 30U);
    EXPECT_LE(wait, 35U);
}

}  // namespace
