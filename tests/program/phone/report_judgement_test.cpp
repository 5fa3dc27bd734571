// Tests of why a report was not built, as the library's log lines tell it.

#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "program/phone/report_judgement.h"

namespace headsetmgmt::program {
namespace {

const std::string component = "HeadsetInventoryMetricsImpl: ";
const std::string begun = component + "send_task: Enter";
const std::string not_built = component + "send_task: building metrics failed";
const std::string no_serial_number =
    component + "build_accessory_payload: accessory serial number is empty.";
const std::string no_accessory =
    component + "assemble_metrics[LIB-ERR]: Building accessory payload failed";
const std::string no_dock = component + "assemble_metrics[LIB-ERR]: Building dock payload failed";

TEST(ReportJudgement, MissingSerialNumberIsTheCause) {
    ReportJudgement judged;

    EXPECT_EQ(std::nullopt, judged.on_line(begun));
    EXPECT_EQ(std::nullopt, judged.on_line(no_serial_number));
    EXPECT_EQ(std::nullopt, judged.on_line(no_accessory));
    EXPECT_EQ("the accessory has no serial number", judged.on_line(not_built));
}

TEST(ReportJudgement, OtherCausesAreInTheLibrarysWords) {
    ReportJudgement judged;

    judged.on_line(begun);
    judged.on_line(component + "assemble_metrics[LIB-ERR]: Building host payload failed");

    EXPECT_EQ("the library says: Building host payload failed", judged.on_line(not_built));
}

TEST(ReportJudgement, MissingDockIsNoCause) {
    ReportJudgement judged;

    judged.on_line(begun);
    judged.on_line(no_dock);
    judged.on_line(no_accessory);

    EXPECT_EQ("the library says: Building accessory payload failed", judged.on_line(not_built));
}

TEST(ReportJudgement, CauseOfOneReportIsNotTheNextOnes) {
    ReportJudgement judged;

    judged.on_line(begun);
    judged.on_line(no_serial_number);
    judged.on_line(not_built);
    judged.on_line(begun);

    EXPECT_EQ("the library does not say why", judged.on_line(not_built));
}

TEST(ReportJudgement, LinesOfOtherPartsSayNothing) {
    ReportJudgement judged;

    EXPECT_EQ(std::nullopt, judged.on_line("stop headset mgmt\n"));
    EXPECT_EQ(std::nullopt, judged.on_line(component + "assemble_metrics: success"));
}

}  // namespace
}  // namespace headsetmgmt::program
