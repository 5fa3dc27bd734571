// SPDX-License-Identifier: Apache-2.0
// Memory that runs out while the inventory report is built: at each place, one after the other.

#include <cstddef>
#include <cstdlib>
#include <string>
#include <vector>

#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include "metrics/inventory_metric.h"
#include "support/fake_accessory.h"
#include "support/fake_plugins.h"
#include "support/virtual_time.h"

namespace headsetmgmt::metrics {

namespace {

using log::LogLevel;
using test_support::FakeAccessory;
using test_support::FakePlugins;
using test_support::LogLine;
using test_support::VirtualTime;

/// The memory that cJSON gets, for the life of the object: all of it but the `fail_at`th piece, 1
/// being the first. One at a time.
class JsonMemory {
public:
    explicit JsonMemory(int fail_at) {
        failing_call = fail_at;
        calls = 0;
        alive = 0;
        cJSON_Hooks hooks = {allocate, release};
        cJSON_InitHooks(&hooks);
    }
    ~JsonMemory() { cJSON_InitHooks(nullptr); }

    JsonMemory(const JsonMemory&) = delete;
    JsonMemory& operator=(const JsonMemory&) = delete;

    /// Whether the piece that fails was asked for.
    static bool has_failed() { return failing_call > 0 && calls >= failing_call; }

    /// How many pieces were asked for.
    static int pieces() { return calls; }

    /// How many pieces were not given back.
    static int pieces_alive() { return alive; }

private:
    static void* allocate(std::size_t size) {
        if (++calls == failing_call) {
            return nullptr;
        }
        ++alive;
        return std::malloc(size);
    }

    static void release(void* piece) {
        if (piece != nullptr) {
            --alive;
        }
        std::free(piece);
    }

    static int failing_call;
    static int calls;
    static int alive;
};

int JsonMemory::failing_call = 0;
int JsonMemory::calls = 0;
int JsonMemory::alive = 0;

class InventoryReportMemoryTest : public testing::Test {
protected:
    InventoryReportMemoryTest() {
        headset.varos_vid = false;
        headset.vendor = "Acme";
        headset.model = "Acme One";
        headset.serial_number = "A-1";
    }

    /// Builds a report while the `fail_at`th piece of memory is missing.
    std::string report_with_failure_at(int fail_at) {
        const JsonMemory memory(fail_at);
        const std::string report = HeadsetInventoryMetrics(&headset).assemble_metrics();
        failed = JsonMemory::has_failed();
        pieces = JsonMemory::pieces();
        EXPECT_EQ(JsonMemory::pieces_alive(), 0) << "with failure at " << fail_at;
        return report;
    }

    void make_it_the_makers_with_a_dock() {
        headset.vendor = "Varos";
        headset.dock_serial_number = "DK7781";
        headset.dock_model = "Varos Dock 3";
    }

    VirtualTime clock{1795248000};
    FakePlugins plugins;
    FakeAccessory headset{HEADSET};
    bool failed = false;
    int pieces = 0;
};

TEST_F(InventoryReportMemoryTest, ReportIsCompleteOrEmptyWhereverMemoryRunsOut) {
    for (int fail_at = 1;; ++fail_at) {
        const std::string report = report_with_failure_at(fail_at);
        if (!failed) {
            EXPECT_GT(fail_at, 30) << "too few places were tried";
            EXPECT_EQ(report, "{\n"
                              "\t\"time\":\t1795248000,\n"
                              "\t\"key\":\t\"headsetInventory\",\n"
                              "\t\"value\":\t{\n"
                              "\t\t\"host\":\t{\n"
                              "\t\t\t\"userId\":\t\"\"\n"
                              "\t\t},\n"
                              "\t\t\"headset\":\t{\n"
                              "\t\t\t\"serialNumber\":\t\"A-1\",\n"
                              "\t\t\t\"firmwareVersion\":\t\"\",\n"
                              "\t\t\t\"vendor\":\t\"Acme\",\n"
                              "\t\t\t\"model\":\t\"Acme One\",\n"
                              "\t\t\t\"connectionType\":\t\"\",\n"
                              "\t\t\t\"connectionStatus\":\t\"\"\n"
                              "\t\t}\n"
                              "\t}\n"
                              "}");
            return;
        }
        EXPECT_EQ(report, "") << "with failure at " << fail_at;
        EXPECT_EQ(plugins.log.take().back().level, LogLevel::error);
    }
}

/// The dock alone may be missing, as it is when there is none, and then the log says so.
TEST_F(InventoryReportMemoryTest, OnlyTheDockIsLeftOutWhereverMemoryRunsOut) {
    make_it_the_makers_with_a_dock();
    const std::string before_dock = "{\n"
                                    "\t\"time\":\t1795248000,\n"
                                    "\t\"key\":\t\"headsetInventory\",\n"
                                    "\t\"value\":\t{\n"
                                    "\t\t\"host\":\t{\n"
                                    "\t\t\t\"client\":\t\"\",\n"
                                    "\t\t\t\"serialNumber\":\t\"\",\n"
                                    "\t\t\t\"deviceName\":\t\"\",\n"
                                    "\t\t\t\"model\":\t\"\",\n"
                                    "\t\t\t\"firmwareVersion\":\t\"\",\n"
                                    "\t\t\t\"hostOSVersion\":\t\"\",\n"
                                    "\t\t\t\"userId\":\t\"\"\n"
                                    "\t\t},\n";
    const std::string dock = "\t\t\"dock\":\t{\n"
                             "\t\t\t\"serialNumber\":\t\"DK7781\",\n"
                             "\t\t\t\"model\":\t\"Varos Dock 3\"\n"
                             "\t\t},\n";
    const std::string after_dock = "\t\t\"headset\":\t{\n"
                                   "\t\t\t\"serialNumber\":\t\"A-1\",\n"
                                   "\t\t\t\"firmwareVersion\":\t\"\",\n"
                                   "\t\t\t\"vendor\":\t\"Varos\",\n"
                                   "\t\t\t\"model\":\t\"Acme One\",\n"
                                   "\t\t\t\"connectionType\":\t\"\",\n"
                                   "\t\t\t\"connectionStatus\":\t\"\"\n"
                                   "\t\t}\n"
                                   "\t}\n"
                                   "}";
    int without_dock = 0;
    for (int fail_at = 1;; ++fail_at) {
        plugins.log.take();
        const std::string report = report_with_failure_at(fail_at);
        if (!failed) {
            EXPECT_EQ(report, before_dock + dock + after_dock);
            break;
        }
        const bool reported = plugins.log.contains(
            "HeadsetInventoryMetricsImpl: assemble_metrics[LIB-ERR]: Building dock payload failed");
        EXPECT_EQ(report, reported ? before_dock + after_dock : "")
            << "with failure at " << fail_at;
        without_dock += reported ? 1 : 0;
    }
    EXPECT_GT(without_dock, 0);
}

TEST_F(InventoryReportMemoryTest, FailedEnvelopeIsLogged) {
    EXPECT_EQ(report_with_failure_at(1), "");

    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_envelop: Enter"},
                  {LogLevel::error, "HeadsetInventoryMetricsImpl: assemble_metrics[LIB-ERR]: "
                                    "Envelop build failed"},
              }));
}

TEST_F(InventoryReportMemoryTest, FailedHostPayloadIsLogged) {
    // The envelope takes six pieces: itself, two for "time", three for "key"; "value" the seventh.
    EXPECT_EQ(report_with_failure_at(8), "");

    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_envelop: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_host_payload: Enter"},
                  {LogLevel::error, "HeadsetInventoryMetricsImpl: assemble_metrics[LIB-ERR]: "
                                    "Building host payload failed"},
              }));
}

TEST_F(InventoryReportMemoryTest, ReportThatCannotBePrintedIsLogged) {
    report_with_failure_at(0);
    const int last_piece = pieces;
    plugins.log.take();

    EXPECT_EQ(report_with_failure_at(last_piece), "");

    EXPECT_EQ(plugins.log.lines(),
              (std::vector<LogLine>{
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: assemble_metrics: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_envelop: Enter"},
                  {LogLevel::notice, "HeadsetInventoryMetricsImpl: build_host_payload: Enter"},
                  {LogLevel::info, "HeadsetInventoryMetricsImpl: build_accessory_payload: Enter"},
                  {LogLevel::error, "HeadsetInventoryMetricsImpl: assemble_metrics[LIB-ERR]: JSON "
                                    "was not formed correctly"},
              }));
}

}  // namespace

}  // namespace headsetmgmt::metrics
