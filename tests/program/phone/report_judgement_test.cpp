// SPDX-License-Identifier: Apache-2.0
// Tests of why a report was not built.

#include <optional>

#include <gtest/gtest.h>

#include "program/phone/report_judgement.h"

namespace headsetmgmt::program {
namespace {

using Kind = LibraryLine::Kind;

TEST(ReportJudgement, MissingSerialNumberIsTheCause) {
    ReportJudgement judged;

    EXPECT_EQ(std::nullopt, judged.on_line({Kind::report_begun, ""}));
    EXPECT_EQ(std::nullopt, judged.on_line({Kind::report_without_serial_number, ""}));
    EXPECT_EQ("the accessory has no serial number", judged.on_line({Kind::report_failed, ""}));
}

TEST(ReportJudgement, CauseOfOneReportIsNotTheNextOnes) {
    ReportJudgement judged;
    judged.on_line({Kind::report_without_serial_number, ""});
    judged.on_line({Kind::report_failed, ""});
    judged.on_line({Kind::report_begun, ""});

    EXPECT_EQ("the library does not say why", judged.on_line({Kind::report_failed, ""}));
}

TEST(ReportJudgement, OtherLinesSayNothing) {
    ReportJudgement judged;

    EXPECT_EQ(std::nullopt, judged.on_line({Kind::other, ""}));
    EXPECT_EQ(std::nullopt, judged.on_line({Kind::document_failed, ""}));
}

}  // namespace
}  // namespace headsetmgmt::program
